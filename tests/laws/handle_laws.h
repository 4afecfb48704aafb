#ifndef TESTS_LAWS_HANDLE_LAWS_H
#define TESTS_LAWS_HANDLE_LAWS_H

#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gtest/gtest.h>

#include <utility>

namespace laws {

/// Both kinds of handles keep their laws for the class T; `sample` is copied.
template <class T>
void checkHandles(const T& sample) {
    const auto count = [](const T& object) { return vx_PtrHandleBase_RepAccessor::count(object); };

    vxPtrHandle<T> handle;
    EXPECT_TRUE(handle.isNull());
    EXPECT_THROW(static_cast<void>(*handle), vxBadPointer);
    EXPECT_THROW(static_cast<void>(vxPtrHandle_const<T>().operator->()), vxBadPointer);

    T* object = new T(sample);
    EXPECT_EQ(count(*object), 0) << "a copied object has no shares yet";
    handle = vxPtrHandle<T>(object);
    EXPECT_EQ(count(*object), 1);
    EXPECT_EQ(handle.get(), object);
    EXPECT_EQ(&*handle, object);

    {
        const vxPtrHandle<T> second(handle);
        const vxPtrHandle_const<T> readOnly(handle);
        EXPECT_EQ(count(*object), 3);
        EXPECT_EQ(readOnly.get(), object);
        const vxPtrHandle<vxRepBase> asBase(handle);
        EXPECT_EQ(count(*object), 4);
    }
    EXPECT_EQ(count(*object), 1) << "handles that end give their shares back";

    vxPtrHandle<T>& self = handle;
    handle = self;
    handle.reset(object);
    EXPECT_EQ(count(*object), 1) << "assigning the object already held changes nothing";

    vxPtrHandle<T> moved(std::move(handle));
    EXPECT_EQ(count(*object), 1);

    const vxPtrHandle<T> other(new T(sample));
    const vxPtrHandle<T> keeper(moved);
    moved = other;
    EXPECT_EQ(count(*object), 1) << "the old object lost one share";
    EXPECT_EQ(count(*other), 2);
    EXPECT_NE(moved, keeper) << "handles compare objects, not values";
}

} // namespace laws

#endif
