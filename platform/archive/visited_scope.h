#ifndef PLATFORM_ARCHIVE_VISITED_SCOPE_H
#define PLATFORM_ARCHIVE_VISITED_SCOPE_H

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
    VisitedScope() noexcept;
    ~VisitedScope();
    VisitedScope(const VisitedScope&) = delete;
    VisitedScope& operator=(const VisitedScope&) = delete;

    /// The innermost scope of this thread, or null.
    static VisitedScope* current() noexcept;

    bool has(const void* object, std::size_t size) const noexcept;
    void add(const void* object, std::size_t size);

private:
    struct Mark {
        const void* object;
        std::size_t size;
    };

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
