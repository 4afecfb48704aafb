#include <vxclassifier/platform/interlocked.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

std::atomic<long> living{0};

class Item : public vxRepBase {
public:
    Item() { ++living; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() override {
        value = 0; // a reader that still holds a share would race with this
        --living;
    }

    int value = 7;
    vxPtrHandle<Item> next;
};

constexpr int threads = 8;

template <class Work>
void onAllThreads(Work work) {
    std::vector<std::thread> all;
    for (int i = 0; i < threads; ++i) {
        all.emplace_back(work);
    }
    for (std::thread& each : all) {
        each.join();
    }
}

TEST(PtrHandleThreads, CopiesAndReleasesKeepTheCount) {
    const vxPtrHandle<Item> shared(new Item);
    onAllThreads([&shared] {
        for (int round = 0; round < 20000; ++round) {
            vxPtrHandle<Item> copy = shared;
            vxPtrHandle_const<Item> reading = copy;
            copy.reset();
            ASSERT_EQ(reading->value, 7);
        }
    });
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*shared), 1);
    EXPECT_EQ(living.load(), 1);
}

TEST(PtrHandleThreads, WhoeverComesLastDeletesTheObjectOnce) {
    for (int round = 0; round < 200; ++round) {
        vxPtrHandle<Item> shared(new Item);
        shared->next = vxPtrHandle<Item>(new Item);
        std::vector<std::thread> all;
        for (int i = 0; i < threads; ++i) {
            all.emplace_back([own = shared]() mutable {
                EXPECT_EQ(own->next->value, 7);
                own.reset();
            });
        }
        shared.reset();
        for (std::thread& each : all) {
            each.join();
        }
        ASSERT_EQ(living.load(), 0);
    }
}

TEST(PtrHandleThreads, EachThreadTakesDownAChainOfItsOwn) {
    onAllThreads([] {
        vxPtrHandle<Item> chain;
        for (int i = 0; i < 10000; ++i) {
            vxPtrHandle<Item> next(new Item);
            next->next = std::move(chain);
            chain = std::move(next);
        }
    });
    EXPECT_EQ(living.load(), 0);
}

TEST(Interlocked, CountsUpAndDownAndReturnsTheNewValue) {
    std::atomic<std::intptr_t> value{0};
    EXPECT_EQ(vfInterlockedIncrement(value), 1);
    EXPECT_EQ(vfInterlockedIncrement(value), 2);
    EXPECT_EQ(vfInterlockedDecrement(value), 1);
    EXPECT_EQ(vfInterlockedDecrement(value), 0);
    onAllThreads([&value] {
        for (int round = 0; round < 10000; ++round) {
            vfInterlockedIncrement(value);
        }
    });
    EXPECT_EQ(value.load(), 10000 * threads);
}

} // namespace
