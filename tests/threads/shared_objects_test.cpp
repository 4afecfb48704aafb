// What several threads may do with one object at the same time. Most of what could go wrong here is seen by
// the thread sanitizer only.

#include "tests/support/archives.h"
#include "tests/threads/together.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

constexpr std::size_t threadCount = 4;
constexpr int rounds = 2000;

class Witness : public vxRepBase {
public:
    explicit Witness(std::atomic<int>& deleted) : deleted_(deleted) {}
    ~Witness() override { ++deleted_; }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    long seen = 7;

private:
    std::atomic<int>& deleted_;
};

TEST(SharedObjects, HandlesMayBeCopiedAndReleasedOnManyThreads) {
    std::atomic<int> deleted{0};
    vxPtrHandle<Witness> first(new Witness(deleted));
    test::together(threadCount, [&first](std::size_t) {
        for (int i = 0; i < rounds; ++i) {
            const vxPtrHandle<Witness> copy = first;
            vxPtrHandle_const<Witness> reader = copy;
            EXPECT_EQ(reader->seen, 7);
        }
    });
    EXPECT_EQ(deleted, 0);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*first), 1);
    first.reset();
    EXPECT_EQ(deleted, 1);
}

TEST(SharedObjects, WhoeverLetsGoLastSeesWhatTheOthersDid) {
    std::atomic<int> deleted{0};
    for (int i = 0; i < rounds / 10; ++i) {
        std::vector<vxPtrHandle<Witness>> handles(threadCount, vxPtrHandle<Witness>(new Witness(deleted)));
        // Only the first thread writes; the object is deleted by any of them.
        test::together(threadCount, [&handles](std::size_t thread) {
            if (thread == 0) {
                handles[thread]->seen = 8;
            }
            handles[thread].reset();
        });
        ASSERT_EQ(deleted, i + 1);
    }
}

TEST(SharedObjects, ManyThreadsStoreOneObjectEachIntoItsOwnArchive) {
    const vxPtrHandle_const<vxFeaturePattern> shared(new vxFeaturePattern({1.0, 2.0, 3.0}, {}));
    const test::Bytes expected = test::stored(shared);
    std::vector<test::Bytes> archives(threadCount);
    test::together(threadCount, [&shared, &archives](std::size_t thread) {
        for (int i = 0; i < rounds / 10; ++i) {
            archives[thread] = test::stored(shared);
        }
    });
    EXPECT_EQ(archives, std::vector<test::Bytes>(threadCount, expected));
}

TEST(SharedObjects, ManyThreadsLoadFromOneArchiveInMemory) {
    const vxPtrHandle_const<vxFeaturePattern> original(new vxFeaturePattern({1.0, 2.0, 3.0}, {}));
    const test::Bytes bytes = test::stored(original);
    test::together(threadCount, [&original, &bytes](std::size_t) {
        for (int i = 0; i < rounds / 10; ++i) {
            vxPtrHandle_const<vxFeaturePattern> loaded;
            test::load(bytes, loaded);
            EXPECT_TRUE(*loaded == *original);
        }
    });
}

} // namespace
