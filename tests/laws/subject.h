#ifndef TESTS_LAWS_SUBJECT_H
#define TESTS_LAWS_SUBJECT_H

#include "tests/laws/families.h"
#include "tests/laws/handle_laws.h"

#include <vxclassifier/platform/persistent.h>

#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

// The laws that every class of a family keeps are in the tests of this folder, the classes that are held to
// them in subjects.cpp.
namespace laws {

/// A class, and what the laws need to handle its objects without knowing it.
struct Subject {
    std::string name;                           // as the archive knows the class
    int levels = 0;                             // its class levels, vxPersistent included
    std::vector<Object> (*samples)() = nullptr; // objects of the class, no two of them equal
    vxPersistent* (*make)() = nullptr;
    std::function<Object(const vxPersistent&)> copy; // by the copy constructor
    std::function<void(vxPersistent&, const vxPersistent&)> assign;
    std::function<bool(const vxPersistent&, const vxPersistent&)> equal; // asks the first one
    std::function<Object(const vxPersistent&)> clone;                    // null: the class has none
    std::function<void(const vxPersistent&)> checkHandles;               // null: the objects are not counted

    /// Agreed exceptions from the laws.
    const char* defaultsThrow = nullptr; // why comparing two default objects throws vxBadPointer
};

template <class T, class = void>
struct HasClone : std::false_type {};
template <class T>
struct HasClone<T, std::void_t<decltype(std::declval<const T&>().clone())>> : std::true_type {};

/// Describes the class T. What two of its objects have in common is decided by its family (families.h).
template <class T>
Subject subject(const char* name, int levels, std::vector<Object> (*samples)()) {
    Subject result;
    result.name = name;
    result.levels = levels;
    result.samples = samples;
    result.make = &T::make;
    result.copy = [](const vxPersistent& from) { return own(new T(as<T>(from))); };
    result.assign = [](vxPersistent& to, const vxPersistent& from) { dynamic_cast<T&>(to) = as<T>(from); };
    result.equal = [](const vxPersistent& a, const vxPersistent& b) { return areEqual(as<T>(a), b); };
    if constexpr (HasClone<T>::value) {
        result.clone = [](const vxPersistent& from) { return own(as<T>(from).clone().get()); };
    }
    if constexpr (std::is_base_of_v<vxRepBase, T>) {
        result.checkHandles = [](const vxPersistent& sample) { checkHandles<T>(as<T>(sample)); };
    }
    return result;
}

inline Subject exceptThatDefaultsThrow(Subject subject, const char* why) {
    subject.defaultsThrow = why;
    return subject;
}

/// All of them; a class that the library registers and that is missing here fails a test.
const std::vector<Subject>& subjects();

/// Those whose classes derive from Family.
template <class Family>
std::vector<Subject> subjectsOf() {
    std::vector<Subject> family;
    for (const Subject& each : subjects()) {
        const Object made = own(each.make());
        if (dynamic_cast<const Family*>(made.get()) != nullptr) {
            family.push_back(each);
        }
    }
    return family;
}

/// Expects that the objects, both of the subject's class, are equal whichever is asked, or throw as agreed.
void expectEqual(const Subject& subject, const Object& a, const Object& b);

/// The default object of the class, followed by its samples.
std::vector<Object> allObjects(const Subject& subject);

/// Those that have what the member stands for.
template <class Function>
std::vector<Subject> subjectsWith(Function Subject::*member) {
    std::vector<Subject> having;
    for (const Subject& each : subjects()) {
        if (each.*member) {
            having.push_back(each);
        }
    }
    return having;
}

/// The class name as a part of a test's name.
std::string testName(const Subject& subject);

struct TestNameOfParam {
    template <class Info>
    std::string operator()(const Info& info) const {
        return testName(info.param);
    }
};

inline void PrintTo(const Subject& subject, std::ostream* out) {
    *out << subject.name;
}

} // namespace laws

/// Runs the tests of a suite for each class of a family.
#define INSTANTIATE_LAWS(Suite, classes)                                                                     \
    INSTANTIATE_TEST_SUITE_P(For, Suite, testing::ValuesIn(classes), ::laws::TestNameOfParam())

#endif
