#ifndef TESTS_SUPPORT_EXPECT_UNKNOWN_VERSION_H
#define TESTS_SUPPORT_EXPECT_UNKNOWN_VERSION_H

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace test {

inline std::string placeOf(const char* source, long line) {
    return (source == nullptr ? std::string("nothing") : "'" + std::string(source) + "'") + ", " +
           std::to_string(line);
}

/// Runs `action` and describes the place that the vxArchive::UnknownVersion which it throws tells of.
template <class Action>
std::string unknownVersionOf(Action action) {
    try {
        action();
    } catch (const vxArchive::UnknownVersion& error) {
        return placeOf(error.sourceName(), error.line());
    } catch (const std::exception& other) {
        return "another exception: " + std::string(typeid(other).name()) + ": " + other.what();
    }
    return "no exception";
}

} // namespace test

/// Expects that the statement throws vxArchive::UnknownVersion with exactly this source (may be nullptr) and
/// line.
#define EXPECT_UNKNOWN_VERSION(statement, source, line)                                                      \
    EXPECT_EQ(::test::unknownVersionOf([&] { statement; }), ::test::placeOf(source, line))

#endif
