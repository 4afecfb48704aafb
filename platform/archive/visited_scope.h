#ifndef PLATFORM_ARCHIVE_VISITED_SCOPE_H
#define PLATFORM_ARCHIVE_VISITED_SCOPE_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace detail {

/// One pass in the sense of the visited marks: the marks of one object record or of one embedded object.
/// Addresses are reused, and an object may be stored twice by value, so marks never outlive the record that
/// they belong to.
///
/// The innermost scope of a thread is the one that counts.
class VisitedScope {
public:
    VisitedScope() noexcept : outer_(innermost) { innermost = this; }
    ~VisitedScope() { innermost = outer_; }
    VisitedScope(const VisitedScope&) = delete;
    VisitedScope& operator=(const VisitedScope&) = delete;

    /// The innermost scope of this thread, or null.
    static VisitedScope* current() noexcept { return innermost; }

    bool isEmpty() const noexcept { return used_ == 0; }

    bool has(const void* object, std::size_t size) const noexcept {
        const auto matches = [object, size](const Mark& mark) {
            return mark.object == object && mark.size == size;
        };
        return std::any_of(first_, first_ + used_, matches) ||
               std::any_of(more_.begin(), more_.end(), matches);
    }

    void add(const void* object, std::size_t size) {
        if (used_ < inlineMarks) {
            // Member by member: a processor waits for two small stores that are copied as one.
            first_[used_].object = object;
            first_[used_].size = size;
            ++used_;
        } else {
            more_.push_back(Mark{object, size});
        }
    }

private:
    struct Mark {
        const void* object;
        std::size_t size;
    };

    // Asked for several times for each record. So it is a variable that is there when the thread begins: a
    // thread_local one may have to be made first, and finding one of a library that is loaded later takes a
    // call of the system's linker.
    [[gnu::tls_model("initial-exec")]] static __thread VisitedScope* innermost;

    // A class has few levels, which fit into the first marks; the vector takes over for the few that have
    // more.
    static constexpr std::size_t inlineMarks = 8;
    Mark first_[inlineMarks];
    std::size_t used_ = 0;
    std::vector<Mark> more_;
    VisitedScope* outer_;
};

} // namespace detail

#endif
