#ifndef TESTS_SUPPORT_EXPECT_ERROR_H
#define TESTS_SUPPORT_EXPECT_ERROR_H

#include <vxclassifier/platform/exception.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace test {

/// Runs `action` and returns the message of the exception that it throws, which must be exactly of the class
/// `Error`.
template <class Error, class Action>
std::wstring messageOf(Action action) {
    try {
        action();
    } catch (const Error& error) {
        EXPECT_TRUE(typeid(error) == typeid(Error)) << "a class derived from the expected one was thrown";
        return error.message();
    } catch (const std::exception& other) {
        ADD_FAILURE() << "another exception was thrown: " << typeid(other).name() << ": " << other.what();
        return L"";
    }
    ADD_FAILURE() << "nothing was thrown";
    return L"";
}

} // namespace test

/// Expects that the statement throws exactly `Error` with exactly this message.
#define EXPECT_ERROR(statement, Error, expected)                                                             \
    EXPECT_EQ(::test::messageOf<Error>([&] { statement; }), std::wstring(expected))

/// Expects that the statement throws exactly `Error`, whatever its message.
#define EXPECT_ERROR_CLASS(statement, Error) static_cast<void>(::test::messageOf<Error>([&] { statement; }))

#endif
