#include "tests/platform/archive/test_objects.h"
#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using test::Bytes;
using test::exchangePointer;
using test::Note;

/// Refers to shared parts, and holds truth values, whose bits lie close together.
class Whole : public vxPersistent, public vxRepBase {
public:
    static vxPersistent* make() { return new Whole; }
    std::vector<bool> flags;
    std::vector<long> numbers;
    std::vector<vxPtrHandle<Whole>> parts;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        archive || flags;
        archive || numbers;
        archive || parts;
    }

private:
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator Whole::sExemplar(typeid(Whole), &Whole::make);

constexpr int threads = 8;
constexpr int rounds = 50;

void onAllThreads(void (*work)(int thread, vxPersistent&), vxPersistent& shared) {
    std::vector<std::thread> all;
    for (int i = 0; i < threads; ++i) {
        all.emplace_back([work, i, &shared] { work(i, shared); });
    }
    for (std::thread& each : all) {
        each.join();
    }
}

vxPtrHandle<Whole> makeWhole() {
    const vxPtrHandle<Whole> common(new Whole);
    common->flags = {true, false, true};
    vxPtrHandle<Whole> whole(new Whole);
    whole->flags.assign(100, true);
    whole->numbers.assign(100, 7);
    for (int i = 0; i < 20; ++i) {
        vxPtrHandle<Whole> part(new Whole);
        part->parts = {common, common};
        whole->parts.push_back(part);
    }
    return whole;
}

TEST(ArchiveThreads, SeveralThreadsStoreOneObjectAndLoadItBack) {
    const vxPtrHandle<Whole> whole = makeWhole();
    onAllThreads(
        [](int, vxPersistent& shared) {
            const Bytes first = test::storedPointer(&shared);
            for (int round = 0; round < rounds; ++round) {
                ASSERT_EQ(test::storedPointer(&shared), first);
                vxPtrHandle<Whole> loaded;
                test::load(first, loaded);
                ASSERT_EQ(test::stored(loaded), first);
            }
        },
        *whole);
    EXPECT_FALSE(whole->isTracked_());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*whole), 1);
}

TEST(ArchiveThreads, ObjectsReportThemselvesFromAnyThread) {
    Note note(1);
    onAllThreads(
        [](int thread, vxPersistent& shared) {
            for (int round = 0; round < rounds; ++round) {
                vxStoringArchive archive;
                try {
                    exchangePointer(archive, &shared);
                } catch (const vxArchive::BadReference&) {
                    // Thread 0 said in between that it is about to change, and it has no count to keep it.
                    EXPECT_NE(thread, 0);
                    continue;
                }
                Note own(thread);
                exchangePointer(archive, &own);
                if (thread == 0) {
                    shared.mutating_();
                }
            }
        },
        note);
    EXPECT_FALSE(note.isTracked_());
}

TEST(ArchiveThreads, CountedObjectsReportThemselvesFromAnyThread) {
    const vxPtrHandle<Whole> whole = makeWhole();
    onAllThreads(
        [](int thread, vxPersistent& shared) {
            for (int round = 0; round < rounds; ++round) {
                vxStoringArchive archive;
                exchangePointer(archive, &shared);
                if (thread == 0) {
                    shared.mutating_();
                }
                exchangePointer(archive, &shared);
            }
        },
        *whole);
    EXPECT_FALSE(whole->isTracked_());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*whole), 1);
}

} // namespace
