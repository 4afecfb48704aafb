#include "tests/support/vtable_slots.h"

#include <gtest/gtest.h>

namespace {

struct Base {
    virtual ~Base() = default;
    virtual void first() {}
    void plain() {}
    virtual void second(int) {}
    virtual void second(long) {}

protected:
    virtual long third_() const { return 3; }
};

struct Derived : Base {
    void second(int) override {}
    using Base::second;
    virtual void added() {}
};

struct NoDestructor {
    virtual void first() {}
    virtual void second() {}

protected:
    ~NoDestructor() = default;
};

struct Access : Base {
    static std::size_t thirdSlot() { return test::slotOf(&Access::third_); }
};

TEST(VtableSlots, AVirtualDestructorTakesTheTwoEntriesInFront) {
    EXPECT_EQ(test::slotOf(&Base::first), 2U);
}

TEST(VtableSlots, FunctionsAreNumberedInTheOrderOfTheirDeclaration) {
    EXPECT_EQ(test::slotOf(static_cast<void (Base::*)(int)>(&Base::second)), 3U);
    EXPECT_EQ(test::slotOf(static_cast<void (Base::*)(long)>(&Base::second)), 4U);
    EXPECT_EQ(Access::thirdSlot(), 5U);
    EXPECT_EQ(test::slotOf(&NoDestructor::first), 0U);
    EXPECT_EQ(test::slotOf(&NoDestructor::second), 1U);
}

TEST(VtableSlots, AnOverrideKeepsItsSlotAndNewFunctionsFollow) {
    EXPECT_EQ(test::slotOf(static_cast<void (Derived::*)(int)>(&Derived::second)), 3U);
    EXPECT_EQ(test::slotOf(&Derived::added), 6U);
}

TEST(VtableSlots, AFunctionThatIsNotVirtualHasNone) {
    EXPECT_THROW(test::slotOf(&Base::plain), std::invalid_argument);
}

} // namespace
