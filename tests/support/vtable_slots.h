#ifndef TESTS_SUPPORT_VTABLE_SLOTS_H
#define TESTS_SUPPORT_VTABLE_SLOTS_H

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#if !defined(__GXX_ABI_VERSION)
#error "the layout of pointers to members that is read here is that of the Itanium C++ ABI"
#endif

namespace test {

/// The place of a virtual member function in the virtual table of the class that the pointer belongs to,
/// counted from 0. Throws std::invalid_argument for a function that is not virtual.
///
/// Compiled callers reach a virtual function by this number, so the order in which a class declares its
/// virtual functions is part of its published face; slotOf lets a test say what that order is.
///
/// How it works: the ABI stores a pointer to a member function as two words, "pointer" and "adjustment". For
/// a virtual function the first word holds the byte offset into the virtual table, and one bit tells it from
/// an ordinary address: the lowest bit of the first word (so offset + 1 is stored), or, on ARM, the lowest
/// bit of the second word. The offset divided by the size of an entry is the slot.
///
/// How to use it:
///  - A virtual destructor takes two entries (one to destroy, one to delete as well). Where the destructor is
///    the first virtual function and therefore has entries 0 and 1, the second virtual function of a list
///    that counts from 1 has slot 2, the third slot 3, and so on: EXPECT_EQ(slotOf(&X::reInit), 3u).
///  - A protected function is named through a derived class: `struct Access : X { static std::size_t slot() {
///    return slotOf(&Access::hook_); } };`
///  - `&Derived::f` has the type of the class that declares f last, and the slot is that of this class's own
///    table. It is the same slot in every class below it, as long as only first, non-virtual bases lie
///    between; behind a virtual or a second base the derived class has a slot of its own only if it overrides
///    f.
///  - An overloaded function needs a static_cast to say which one is meant.
template <class Member>
std::size_t slotOf(Member member) {
    static_assert(std::is_member_function_pointer_v<Member>, "slots belong to member functions");
    std::ptrdiff_t words[2];
    static_assert(sizeof words == sizeof member, "a pointer to a member function has two words");
    std::memcpy(words, &member, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
    const bool isVirtual = (words[1] & 1) != 0;
    const std::ptrdiff_t offset = words[0];
#else
    const bool isVirtual = (words[0] & 1) != 0;
    const std::ptrdiff_t offset = words[0] - 1;
#endif
    if (!isVirtual) {
        throw std::invalid_argument("a function that is not virtual has no slot");
    }
    return static_cast<std::size_t>(offset) / sizeof(void*);
}

} // namespace test

#endif
