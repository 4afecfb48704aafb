#include "platform/archive/visited_scope.h"

#include <algorithm>

namespace detail {

namespace {

thread_local VisitedScope* innermost = nullptr;

} // namespace

VisitedScope::VisitedScope() noexcept : outer_(innermost) {
    innermost = this;
}

VisitedScope::~VisitedScope() {
    innermost = outer_;
}

VisitedScope* VisitedScope::current() noexcept {
    return innermost;
}

bool VisitedScope::has(const void* object, std::size_t size) const noexcept {
    const auto matches = [object, size](const Mark& mark) {
        return mark.object == object && mark.size == size;
    };
    return std::any_of(first_, first_ + used_, matches) || std::any_of(more_.begin(), more_.end(), matches);
}

void VisitedScope::add(const void* object, std::size_t size) {
    const Mark mark{object, size};
    if (used_ < inlineMarks) {
        first_[used_++] = mark;
    } else {
        more_.push_back(mark);
    }
}

} // namespace detail
