#ifndef TESTS_GROWTH_WORKS_H
#define TESTS_GROWTH_WORKS_H

#include <functional>
#include <string>
#include <vector>

namespace growth {

/// Work that must grow in proportion to a size.
struct Work {
    std::string name;
    /// Makes what the work needs at this size, and returns the work, which can be done any number of times.
    std::function<std::function<void()>(long size)> prepare;
};

/// Whatever the library promises to do in linear time.
const std::vector<Work>& works();

} // namespace growth

#endif
