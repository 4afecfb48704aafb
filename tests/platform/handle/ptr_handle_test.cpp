#include "tests/support/expect_error.h"
#include "tests/support/small_stack.h"

#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

/// A shared object that can own others of its kind.
class Item : public vxRepBase {
public:
    Item() { ++living; }
    Item(const Item& source) : vxRepBase(source), next(source.next), other(source.other) { ++living; }
    Item& operator=(const Item&) = default;
    ~Item() override {
        --living;
        if (order != nullptr) {
            order->push_back(this);
        }
    }

    vxPtrHandle<Item> next;
    vxPtrHandle<Item> other;
    std::vector<const Item*>* order = nullptr;

    static long living;
};
long Item::living = 0;

class Special : public Item {};

using Handle = vxPtrHandle<Item>;
using ConstHandle = vxPtrHandle_const<Item>;

long countOf(const Item* item) {
    return vx_PtrHandleBase_RepAccessor::count(*item);
}

/// What holds for both kinds of handle.
template <class H>
class PtrHandle : public ::testing::Test {
protected:
    PtrHandle() : before_(Item::living) {}
    ~PtrHandle() override { EXPECT_EQ(Item::living, before_) << "an object leaked or was freed twice"; }

private:
    long before_;
};

using Kinds = ::testing::Types<Handle, ConstHandle>;
struct KindName {
    template <class H>
    static std::string GetName(int) {
        return std::is_same_v<H, Handle> ? "vxPtrHandle" : "vxPtrHandle_const";
    }
};
TYPED_TEST_SUITE(PtrHandle, Kinds, KindName);

TYPED_TEST(PtrHandle, IsNullAtFirst) {
    const TypeParam handle;
    EXPECT_TRUE(handle.isNull());
    EXPECT_FALSE(handle);
    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_TRUE(handle == nullptr);
    const TypeParam fromNull = nullptr;
    EXPECT_EQ(handle, fromNull);
}

TYPED_TEST(PtrHandle, TakesAShareOfARawPointer) {
    auto* item = new Item;
    EXPECT_EQ(countOf(item), 0);
    const TypeParam first(item);
    EXPECT_EQ(countOf(item), 1);
    {
        const TypeParam second(item);
        EXPECT_EQ(countOf(item), 2);
        EXPECT_EQ(first, second);
    }
    EXPECT_EQ(countOf(item), 1);
    EXPECT_FALSE(first.isNull());
    EXPECT_TRUE(first != nullptr);
    EXPECT_EQ(first.get(), item);
    EXPECT_EQ(first.operator->(), item);
    EXPECT_EQ(&*first, item);
}

TYPED_TEST(PtrHandle, ACopyTakesAShareAndAMoveTakesNone) {
    auto* item = new Item;
    TypeParam first(item);
    TypeParam copy(first);
    EXPECT_EQ(countOf(item), 2);
    TypeParam moved(std::move(first));
    EXPECT_EQ(countOf(item), 2);
    EXPECT_TRUE(first.isNull()); // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
    EXPECT_EQ(moved.get(), item);
    EXPECT_EQ(copy.get(), item);
}

TYPED_TEST(PtrHandle, AssignmentGivesUpOneObjectAndTakesAnother) {
    auto* one = new Item;
    auto* two = new Item;
    TypeParam target(one);
    const TypeParam keepsOne(one);
    TypeParam source(two);
    target = source;
    EXPECT_EQ(countOf(one), 1);
    EXPECT_EQ(countOf(two), 2);
    target = keepsOne;
    target = std::move(source);
    EXPECT_EQ(countOf(one), 1);
    EXPECT_EQ(countOf(two), 1);
    EXPECT_TRUE(source.isNull()); // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
    target = TypeParam();
    EXPECT_TRUE(target.isNull());
}

TYPED_TEST(PtrHandle, AssigningTheObjectAlreadyHeldChangesNothing) {
    auto* item = new Item;
    TypeParam handle(item);
    const TypeParam& same = handle;
    handle = same;
    EXPECT_EQ(countOf(item), 1);
    handle = std::move(const_cast<TypeParam&>(same));
    EXPECT_EQ(countOf(item), 1);
    const TypeParam other(item);
    handle = other;
    EXPECT_EQ(countOf(item), 2);
    handle.reset(item);
    EXPECT_EQ(countOf(item), 2);
}

TYPED_TEST(PtrHandle, ResetTakesAnotherObjectOrNone) {
    auto* one = new Item;
    auto* two = new Item;
    TypeParam handle(one);
    const TypeParam keepsOne(one);
    handle.reset(two);
    EXPECT_EQ(countOf(one), 1);
    EXPECT_EQ(countOf(two), 1);
    handle.reset();
    EXPECT_TRUE(handle.isNull());
    handle.reset();
    EXPECT_TRUE(handle.isNull());
}

TYPED_TEST(PtrHandle, TheLastShareDeletesTheObject) {
    const long before = Item::living;
    TypeParam first(new Item);
    TypeParam second = first;
    first.reset();
    EXPECT_EQ(Item::living, before + 1);
    second.reset();
    EXPECT_EQ(Item::living, before);
}

TYPED_TEST(PtrHandle, GoingThroughNullIsABadPointer) {
    constexpr wchar_t message[] = L"A null pointer was used where an object is needed.";
    const TypeParam handle;
    EXPECT_ERROR(handle->next.isNull(), vxBadPointer, message);
    EXPECT_ERROR(static_cast<void>(*handle), vxBadPointer, message);
}

TYPED_TEST(PtrHandle, AHandleToADerivedClassGivesOneToItsBase) {
    auto* item = new Special;
    const vxPtrHandle<Special> special(item);
    const TypeParam base(special);
    EXPECT_EQ(countOf(item), 2);
    TypeParam assigned;
    assigned = special;
    EXPECT_EQ(countOf(item), 3);
}

TYPED_TEST(PtrHandle, EqualMeansTheSameObject) {
    const TypeParam one(new Item);
    const TypeParam same(one);
    const TypeParam two(new Item);
    EXPECT_TRUE(one == same);
    EXPECT_FALSE(one != same);
    EXPECT_FALSE(one == two);
    EXPECT_TRUE(one != two);
}

TEST(PtrHandles, GoFromWritingToReadingAndNotBack) {
    static_assert(std::is_convertible_v<Handle, ConstHandle>);
    static_assert(!std::is_constructible_v<Handle, ConstHandle>);
    static_assert(!std::is_constructible_v<vxPtrHandle<Special>, Handle>);
    static_assert(!std::is_convertible_v<Item*, Handle>, "taking a share is written out");
    static_assert(std::is_same_v<decltype(*std::declval<ConstHandle>()), const Item&>);
    static_assert(std::is_nothrow_move_constructible_v<Handle> && std::is_nothrow_move_assignable_v<Handle>);
    static_assert(std::is_nothrow_copy_constructible_v<Handle> && std::is_nothrow_copy_assignable_v<Handle>);
    static_assert(sizeof(Handle) == sizeof(void*));
    auto* item = new Item;
    const Handle writing(item);
    const ConstHandle reading = writing;
    EXPECT_EQ(countOf(item), 2);
    const vxPtrHandle_const<Special> special(new Special);
    const ConstHandle base = special;
    EXPECT_EQ(base.get(), special.get());
}

TEST(PtrHandles, AssigningAPartOfTheObjectHeldKeepsThatPart) {
    const long before = Item::living;
    Handle handle(new Item);
    handle->next = Handle(new Item);
    handle->next->next = Handle(new Item);
    const Item* second = handle->next.get();
    const Item* third = handle->next->next.get();
    handle = handle->next;
    EXPECT_EQ(handle.get(), second);
    handle = std::move(handle->next);
    EXPECT_EQ(handle.get(), third);
    EXPECT_EQ(Item::living, before + 1);
    handle.reset(handle->next.get());
    EXPECT_TRUE(handle.isNull());
    EXPECT_EQ(Item::living, before);
}

TEST(PtrHandles, CopyingAnObjectCopiesNoCount) {
    const Handle original(new Item);
    const Handle second = original;
    const Handle copy(new Item(*original));
    EXPECT_EQ(countOf(copy.get()), 1);
    *copy = *original;
    EXPECT_EQ(countOf(copy.get()), 1);
    EXPECT_EQ(countOf(original.get()), 2);
    const Item onTheStack;
    EXPECT_EQ(countOf(&onTheStack), 0);
}

TEST(PtrHandles, AnOrdinaryStructureGoesInTheOrderOfItsOwners) {
    std::vector<const Item*> order;
    Handle top(new Item);
    top->next = Handle(new Item);
    top->other = Handle(new Item);
    const std::vector<const Item*> expected = {top.get(), top->other.get(), top->next.get()};
    top->order = top->next->order = top->other->order = &order;
    top.reset();
    EXPECT_EQ(order, expected);
}

TEST(PtrHandles, AnObjectOnTheStackIsNeverDeleted) {
    const long before = Item::living;
    {
        Item item;
        // The stack keeps a share of its own, as an object that no handle owns must while handles point to
        // it.
        vx_PtrHandleBase_RepAccessor::share(item);
        Handle(&item).reset();
        EXPECT_EQ(Item::living, before + 1);
        EXPECT_EQ(countOf(&item), 1);
    }
    EXPECT_EQ(Item::living, before);
}

TEST(PtrHandles, AChainOfAnyLengthGoesOnASmallStack) {
    const long before = Item::living;
    test::runOnSmallStack([] {
        Handle chain;
        for (long i = 0; i < test::longChain; ++i) {
            Handle next(new Item);
            next->next = std::move(chain);
            chain = std::move(next);
        }
        chain.reset();
    });
    EXPECT_EQ(Item::living, before);
}

TEST(PtrHandles, ADeepTreeWithSideBranchesGoesOnASmallStack) {
    const long before = Item::living;
    test::runOnSmallStack([] {
        Handle tree;
        for (long i = 0; i < test::longChain / 10; ++i) {
            Handle next(new Item);
            (i % 2 == 0 ? next->next : next->other) = std::move(tree);
            Handle& side = i % 2 == 0 ? next->other : next->next;
            side = Handle(new Item);
            side->next = Handle(new Item);
            tree = std::move(next);
        }
    });
    EXPECT_EQ(Item::living, before);
}

} // namespace
