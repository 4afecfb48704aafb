#include "tests/failures/faults.h"
#include "tests/laws/subject.h"
#include "tests/support/archives.h"

// Every class that archives can hold: copies, assignments, comparisons and archives without memory.

namespace {

using namespace failures;
using laws::Object;
using laws::Subject;

/// The class at hand, and the object of it. Scenarios have no arguments, since they are made anew for each
/// step.
const Subject* subject = nullptr;
Object sample;
Object other; // unequal to the sample

struct CopyObject {
    Object copy;
    void attempt() { copy = subject->copy(*sample); }
    void expectDone() const { EXPECT_TRUE(subject->equal(*copy, *sample)); }
    void expectFailed() const { EXPECT_EQ(copy, nullptr); }
};

struct CloneObject {
    Object copy;
    void attempt() { copy = subject->clone(*sample); }
    void expectDone() const { EXPECT_TRUE(subject->equal(*copy, *sample)); }
    void expectFailed() const { EXPECT_EQ(copy, nullptr); }
};

/// All or nothing: half of one object on top of half of another would still work, but wrongly.
struct AssignObject {
    Object assigned = subject->copy(*other);
    test::Bytes before = test::storedPointer(assigned.get());
    void attempt() { subject->assign(*assigned, *sample); }
    void expectDone() const { EXPECT_TRUE(subject->equal(*assigned, *sample)); }
    void expectFailed() const { EXPECT_EQ(test::storedPointer(assigned.get()), before); }
};

struct CompareObjects {
    Object copy = subject->copy(*sample);
    bool equal = false;
    void attempt() { equal = subject->equal(*sample, *copy); }
    void expectDone() const { EXPECT_TRUE(equal); }
    void expectFailed() const { EXPECT_FALSE(equal); }
};

struct StoreObject {
    test::Bytes bytes;
    void attempt() { bytes = test::storedPointer(sample.get()); }
    void expectDone() const { EXPECT_EQ(bytes, test::storedPointer(sample.get())); }
    void expectFailed() const {
        EXPECT_TRUE(bytes.empty());
        EXPECT_FALSE(sample->isTracked_()) << "no archive is left that could rely on it";
    }
};

struct LoadObject {
    test::Bytes bytes = test::storedPointer(sample.get());
    Object loaded;
    void attempt() { loaded = laws::loadPointer(bytes); }
    void expectDone() const { EXPECT_TRUE(subject->equal(*loaded, *sample)); }
    void expectFailed() const { EXPECT_EQ(loaded, nullptr); }
};

/// Into an object that is in use: it may be half filled afterwards, but can be loaded again, assigned and
/// destroyed.
struct LoadIntoObject {
    Object object = subject->copy(*other);
    test::Bytes bytes = test::stored(*sample);
    void attempt() { test::load(bytes, *object); }
    void expectDone() const { EXPECT_TRUE(subject->equal(*object, *sample)); }
    void expectFailed() const {
        EXPECT_FALSE(object->isTracked_());
        const Object assigned = subject->copy(*object);
        subject->assign(*assigned, *sample);
        EXPECT_TRUE(subject->equal(*assigned, *sample));
    }
};

class FailingClass : public ::testing::TestWithParam<Subject> {
protected:
    FailingClass() {
        subject = &GetParam();
        const std::vector<Object> samples = subject->samples();
        sample = samples.back();
        other = samples.front();
    }
    ~FailingClass() override {
        sample.reset();
        other.reset();
    }
    FailingClass(const FailingClass&) = delete;
    FailingClass& operator=(const FailingClass&) = delete;

    /// Some of these operations need no memory.
    template <class Scenario>
    static void failEachAllocation() {
        for (const Fault& fault : allocationFaults()) {
            failEachStep<Scenario>(fault);
        }
    }
};

TEST_P(FailingClass, CopiesWithoutMemoryKeepTheOriginal) {
    failEachAllocation<CopyObject>();
    if (subject->clone != nullptr) {
        failEachStepOf<CloneObject>(allocationFaults());
    }
}

TEST_P(FailingClass, AssignmentsWithoutMemoryChangeNothing) {
    failEachAllocation<AssignObject>();
}

TEST_P(FailingClass, ComparisonsWithoutMemoryGiveNoAnswer) {
    failEachAllocation<CompareObjects>();
}

TEST_P(FailingClass, StoringWithoutMemoryLeavesTheObjectUntracked) {
    failEachStepOf<StoreObject>(allocationFaults());
}

TEST_P(FailingClass, LoadingWithoutMemoryGivesNothing) {
    failEachStepOf<LoadObject>(allocationFaults());
}

TEST_P(FailingClass, LoadingIntoAnObjectWithoutMemoryLeavesItUsable) {
    failEachStepOf<LoadIntoObject>(allocationFaults());
}

INSTANTIATE_LAWS(FailingClass, laws::subjects());

} // namespace
