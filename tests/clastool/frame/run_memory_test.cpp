#include "tests/support/failing_allocation.h"
#include "tests/support/fake_technique.h"

#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

// What a run does with the memory of results.

namespace {

using Run = std::function<void(const vxFeaturePattern&, vxClassifierResult&)>;

/// Trained from the start; a run does what the test says.
class Technique : public test::FakeClassifier {
public:
    explicit Technique(Run run) : run_hook(std::move(run)) { trainManual(1); }

    void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override {
        run_hook(pattern, result);
    }

    Run run_hook;

private:
    // Without a log there is nothing to record, and the names of the hooks would take memory.
    void recordRunInputs_(vxDiagObject*, unsigned long, const vxFeaturePattern&) const override {}
    void recordRunDetails_(vxDiagObject*, unsigned long) const override {}
    void recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                           const vxClassifierResult&) const override {}
};

vxClassifierResult resultOf(long numCategories, double factorLog = 0.0) {
    std::vector<vxClassifierCategoryResult> entries;
    for (long label = 0; label < numCategories; ++label) {
        entries.emplace_back(label, 0.5, 0.5, static_cast<double>(label));
    }
    return vxClassifierResult(entries, factorLog);
}

const vxFeaturePattern& anyPattern() {
    static const vxFeaturePattern pattern({1.0}, {});
    return pattern;
}

TEST(RunMemory, RunsWithTheSameNumberOfCategoriesAllocateNothing) {
    const vxClassifierResult given = resultOf(10, 3.0);
    const Technique technique([&](const vxFeaturePattern&, vxClassifierResult& result) { result = given; });
    vxClassifierResult result;
    technique.run(anyPattern(), result);
    technique.run(anyPattern(), result);
    {
        const test::FailingAllocation failing(1);
        for (int i = 0; i < 100; ++i) {
            technique.run(anyPattern(), result);
        }
    }
    EXPECT_EQ(result, given);
}

TEST(RunMemory, EveryRunBeginsWithAnEmptyResultThatIsNotTheCallers) {
    vxClassifierResult result = resultOf(3, 1.0);
    long fill = 5;
    const Technique technique([&](const vxFeaturePattern&, vxClassifierResult& fresh) {
        EXPECT_EQ(fresh, vxClassifierResult());
        EXPECT_NE(&fresh, &result);
        EXPECT_EQ(result, resultOf(fill == 5 ? 3 : fill + 1, 1.0)) << "the caller's stays until the end";
        fresh = resultOf(fill, 1.0);
    });
    for (; fill > 1; --fill) {
        technique.run(anyPattern(), result);
        EXPECT_EQ(result, resultOf(fill, 1.0));
    }
}

TEST(RunMemory, WhatAFailedRunHasBuiltIsNotSeenByAnyone) {
    bool fails = true;
    const Technique technique([&](const vxFeaturePattern&, vxClassifierResult& fresh) {
        EXPECT_EQ(fresh, vxClassifierResult());
        fresh = resultOf(4, 2.0);
        if (fails) {
            throw std::runtime_error("no result");
        }
    });
    vxClassifierResult result = resultOf(2, 1.0);
    EXPECT_THROW(technique.run(anyPattern(), result), std::runtime_error);
    EXPECT_EQ(result, resultOf(2, 1.0));
    fails = false;
    technique.run(anyPattern(), result);
    EXPECT_EQ(result, resultOf(4, 2.0));
}

TEST(RunMemory, ARunWithinARunHasAResultOfItsOwn) {
    const Technique inner(
        [](const vxFeaturePattern&, vxClassifierResult& fresh) { fresh = resultOf(2, 1.0); });
    const Technique outer([&](const vxFeaturePattern& pattern, vxClassifierResult& fresh) {
        fresh = resultOf(7, 7.0);
        vxClassifierResult nested;
        inner.run(pattern, nested);
        EXPECT_EQ(nested, resultOf(2, 1.0));
        EXPECT_EQ(fresh, resultOf(7, 7.0));
        inner.run(pattern, fresh);
        EXPECT_EQ(fresh, resultOf(2, 1.0)) << "a run may also fill the result that it got";
    });
    vxClassifierResult result;
    for (int i = 0; i < 3; ++i) {
        outer.run(anyPattern(), result);
        EXPECT_EQ(result, resultOf(2, 1.0));
    }
}

TEST(RunMemory, AnyNumberOfCategoriesComesThrough) {
    long numCategories = 0;
    const Technique technique([&](const vxFeaturePattern&, vxClassifierResult& fresh) {
        EXPECT_EQ(fresh, vxClassifierResult());
        fresh = resultOf(numCategories);
    });
    vxClassifierResult result;
    for (const long next : {1L, 100L, 2L, 256L, 257L, 5000L, 3L, 1L}) {
        numCategories = next;
        technique.run(anyPattern(), result);
        EXPECT_EQ(result, resultOf(next));
    }
}

TEST(RunMemory, ARunThatCannotHaveAnyChangesNothing) {
    const vxClassifierResult before = resultOf(2, 1.0);
    vxClassifierResult result(before);
    const Technique technique(
        [](const vxFeaturePattern&, vxClassifierResult& fresh) { fresh = resultOf(20); });
    EXPECT_GT(test::failEachAllocation([&] { technique.run(anyPattern(), result); },
                                       [&] { EXPECT_EQ(result, before); }),
              0);
    EXPECT_EQ(result, resultOf(20));
}

/// Runs a classifier when its thread has ended, after what the library keeps for the thread is gone.
struct RunsAtTheEnd {
    ~RunsAtTheEnd() {
        const Technique technique(
            [](const vxFeaturePattern&, vxClassifierResult& fresh) { fresh = resultOf(3, 1.0); });
        for (int i = 0; i < 2; ++i) {
            vxClassifierResult result;
            technique.run(anyPattern(), result);
            numRight += result == resultOf(3, 1.0) ? 1 : 0;
        }
    }
    static int numRight;
};
int RunsAtTheEnd::numRight = 0;

TEST(RunMemory, AThreadMayRunToItsVeryEnd) {
    std::thread([] {
        thread_local RunsAtTheEnd last; // made before the first run, so destroyed after what that one keeps
        static_cast<void>(last);
        const Technique technique(
            [](const vxFeaturePattern&, vxClassifierResult& fresh) { fresh = resultOf(3, 1.0); });
        vxClassifierResult result;
        technique.run(anyPattern(), result);
        EXPECT_EQ(result, resultOf(3, 1.0));
    }).join();
    EXPECT_EQ(RunsAtTheEnd::numRight, 2);
}

} // namespace
