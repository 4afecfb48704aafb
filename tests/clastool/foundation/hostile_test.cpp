#include "tests/clastool/foundation/results.h"
#include "tests/support/announcing_data.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

// Values that only a damaged or malicious caller or archive brings, and memory that runs out.

namespace {

using test::Bytes;
using test::CategoryResults;
using test::failEachAllocation;
using test::forgedCategory;
using test::forgedFrequencies;
using test::HandWritten;
using test::labelsOf;
using test::match;
using testing::ElementsAre;
using testing::IsEmpty;
using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

using Memory = vxClassifierDataProviderMemory;
using Pattern = vxPtrHandle_const<vxFeaturePattern>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// Errors.

TEST(HostileError, CopyingRethrowingAndAssigningNeedNoMemory) {
    const std::wstring text(1000, L'x');
    auto* onHeap = new vxClassifierDefs::BadParams(text);
    vxClassifierDefs::BadParams assigned(L"short");
    const vxClassifierDefs::BadParams original(text);
    std::wstring message;
    {
        const test::FailingAllocation failing(1);
        const vxClassifierDefs::BadParams copy(original);
        assigned = copy;
        try {
            onHeap->suicideAndRethrow();
        } catch (const vxClassifierDefs::BadParams& error) {
            EXPECT_STREQ(error.what(), original.what());
        }
    }
    EXPECT_EQ(assigned.message(), text);
}

/// Says when it ends.
class Observed : public BadParams {
public:
    Observed(const std::wstring& message, bool& ended) : BadParams(message), ended_(ended) {}
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;
    ~Observed() override { ended_ = true; }

private:
    bool& ended_;
};

TEST(HostileError, RethrowingWithoutMemoryFreesTheObject) {
    bool ended = false;
    vxException* onHeap = new Observed(L"why", ended);
    {
        const test::FailingAllocation failing(1, test::Failing::forGood);
        try {
            onHeap->suicideAndRethrow();
        } catch (const BadParams& error) {
            EXPECT_STREQ(error.what(), "why");
        }
    }
    EXPECT_TRUE(ended);
}

TEST(HostileError, OneThatFreedItselfIsNotGivenOutByItsArchiveAgain) {
    BadParams original(L"why");
    const Bytes sealed = HandWritten().pointer(&original).pointer(&original).sealed();
    vxLoadingArchive archive(sealed);
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    EXPECT_ERROR(dynamic_cast<vxException&>(*loaded).suicideAndRethrow(), BadParams, L"why");
    EXPECT_ERROR_CLASS(vxPersistent::serializePointer(archive, nullptr, loaded), vxArchive::BadReference);
}

TEST(HostileError, TwoLevelsOfOneAddressAndSizeAreBothArchived) {
    const BadParams error(L"why");
    const vxClassifierDefs::Errors& level = error;
    ASSERT_EQ(static_cast<const void*>(&level), static_cast<const void*>(&error));
    ASSERT_EQ(sizeof(BadParams), sizeof(vxClassifierDefs::Errors)) << "so their marks are the same";
    HandWritten byHand;
    byHand.byte(0).byte(0).byte(0).byte(0).byte(0); // the versions of its levels
    const Bytes sealed = byHand.text(L"why").sealed();
    EXPECT_EQ(test::stored(error), sealed);
    EXPECT_EQ(test::loaded(sealed, BadParams(L"other")).message(), L"why");
}

// Feature patterns.

vxFeaturePattern forgedPattern(const std::vector<double>& measurements, const std::vector<bool>& validity) {
    return test::loaded(HandWritten().byte(0).byte(0).reals(measurements).flags(validity).sealed(),
                        vxFeaturePattern({7.0}, {0}));
}

TEST(HostileFeaturePattern, MissingValidityMarksMeanInvalid) {
    const vxFeaturePattern pattern = forgedPattern({1, 2, 3}, {true});
    EXPECT_EQ(pattern.numMeasurements(), 3);
    EXPECT_EQ(pattern.numInvalid(), 2);
    EXPECT_TRUE(pattern.isValid(0));
    EXPECT_FALSE(pattern.isValid(1));
    EXPECT_FALSE(pattern.isValid(2));
    EXPECT_THAT(pattern.invalidFeatureIndices(), ElementsAre(1, 2));
    EXPECT_EQ(pattern.featureMeasurement(2, false), 3.0);
    EXPECT_ERROR(pattern.featureMeasurement(2, true), BadFeatures,
                 L"The measurement for the specified measurement index is not valid.");
    EXPECT_ERROR(pattern.featureMeasurements(true), BadFeatures,
                 L"Access to full feature vector requires that all features are valid.");
}

TEST(HostileFeaturePattern, WhatLiesBehindTheValidityMarksIsNotTakenForOne) {
    // The marks that were there before leave bits behind the single one that is loaded.
    vxFeaturePattern pattern(std::vector<double>(1000, 7.0), {});
    const Bytes sealed =
        HandWritten().byte(0).byte(0).reals(std::vector<double>(1000, 1.0)).flags({true}).sealed();
    test::load(sealed, pattern);
    EXPECT_EQ(pattern.numInvalid(), 999);
    EXPECT_EQ(pattern.invalidFeatureIndices().size(), 999U);
    EXPECT_FALSE(pattern.isValid(1));
    EXPECT_FALSE(pattern.isValid(999));
}

TEST(HostileFeaturePattern, SurplusValidityMarksCountInEqualityAndStoringOnly) {
    const vxFeaturePattern pattern = forgedPattern({1}, {true, false, true});
    EXPECT_EQ(pattern.numMeasurements(), 1);
    EXPECT_EQ(pattern.numInvalid(), 0);
    EXPECT_FALSE(pattern.isValid(2));
    EXPECT_EQ(pattern.featureMeasurement(2, false), 0.0);
    EXPECT_THAT(pattern.featureMeasurements(true), ElementsAre(1));
    EXPECT_THAT(pattern.invalidFeatureIndices(), IsEmpty());
    EXPECT_NE(pattern, vxFeaturePattern({1}, {}));
    EXPECT_EQ(pattern, forgedPattern({1}, {true, false, true}));
    EXPECT_EQ(test::stored(pattern),
              HandWritten().byte(0).byte(0).reals({1}).flags({true, false, true}).sealed());
}

TEST(HostileFeaturePattern, HugeIndicesAreNotCutToThirtyTwoBits) {
    for (const long index :
         {2147483647L, 2147483648L, 4294967296L, 4294967297L, std::numeric_limits<long>::max()}) {
        EXPECT_ERROR(vxFeaturePattern({1, 2}, {index}), BadIndex,
                     L"Feature measurement indices must be < number of features");
        EXPECT_FALSE(vxFeaturePattern({1, 2}, {}).isValid(index));
        EXPECT_EQ(vxFeaturePattern({1, 2}, {}).featureMeasurement(index, false), 0.0);
    }
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {-4294967296L}), BadIndex,
                 L"Feature measurement indices must be >= 0");
}

TEST(HostileFeaturePattern, AnAssignmentThatRunsOutOfMemoryChangesNothing) {
    const vxFeaturePattern original(std::vector<double>(100, 1.0), {3});
    const vxFeaturePattern before({5, 6}, {0});
    vxFeaturePattern assigned(before);
    EXPECT_GT(failEachAllocation([&] { assigned = original; }, [&] { EXPECT_EQ(assigned, before); }), 0);
    EXPECT_EQ(assigned, original);
}

TEST(HostileFeaturePattern, ALoadThatRunsOutOfMemoryLeavesAllAsItWasOrTheNewMeasurementsWithTheOldMarks) {
    std::vector<bool> manyMarks(70, true);
    manyMarks[66] = false;
    const std::vector<std::vector<bool>> someMarks{
        {true, true}, {true, false}, {}, {true, true, true}, manyMarks};
    for (const std::vector<bool>& oldMarks : someMarks) {
        const vxFeaturePattern old = forgedPattern({5, 6}, oldMarks);
        for (const std::vector<bool>& newMarks : someMarks) {
            const std::vector<double> measurements(newMarks.size() == 2 ? 2 : 70, 1.0);
            const vxFeaturePattern fresh = forgedPattern(measurements, newMarks);
            const vxFeaturePattern half = forgedPattern(measurements, oldMarks);
            const bool isInOneStep = newMarks.size() == 2;
            const Bytes sealed = test::stored(fresh);
            vxFeaturePattern pattern(old);
            const auto check = [&] {
                EXPECT_TRUE(pattern == old || (!isInOneStep && pattern == half));
                pattern = old;
            };
            EXPECT_GT(failEachAllocation([&] { test::load(sealed, pattern); }, check), 0);
            EXPECT_EQ(pattern, fresh);
        }
    }
}

// Frequencies and costs.

TEST(HostileFrequencies, RowsThatAreNotCompleteDoNotCount) {
    const vxClassifierFrequencies moreLabels = forgedFrequencies(1.0, {1, 2, 3}, {10.0});
    EXPECT_EQ(moreLabels.categoryFrequency(1), 10.0);
    EXPECT_EQ(moreLabels.categoryFrequency(2), 1.0);
    EXPECT_EQ(moreLabels.freqOverrideIndex_(3), -1);
    const vxClassifierFrequencies moreValues = forgedFrequencies(1.0, {1}, {10.0, 20.0});
    EXPECT_EQ(moreValues.categoryFrequency(1), 10.0);
    EXPECT_EQ(forgedFrequencies(1.0, {1}, {}).categoryFrequency(1), 1.0);
    EXPECT_EQ(forgedFrequencies(1.0, {}, {10.0}).categoryFrequency(1), 1.0);
    EXPECT_NE(moreLabels, moreValues);
    EXPECT_EQ(moreValues, forgedFrequencies(1.0, {1}, {10.0, 20.0}));
}

TEST(HostileFrequencies, ANewOverrideDropsRowsThatAreNotComplete) {
    vxClassifierFrequencies moreLabels = forgedFrequencies(1.0, {1, 2, 3}, {10.0});
    moreLabels.categoryFrequencyOverride(2, 90.0);
    EXPECT_EQ(moreLabels, forgedFrequencies(1.0, {1, 2}, {10.0, 90.0}));
    vxClassifierFrequencies moreValues = forgedFrequencies(1.0, {1}, {10.0, 20.0, 30.0});
    moreValues.categoryFrequencyOverride(2, 90.0);
    EXPECT_EQ(moreValues, forgedFrequencies(1.0, {1, 2}, {10.0, 90.0}));
    vxClassifierFrequencies cleared = forgedFrequencies(1.0, {1}, {10.0, 20.0, 30.0});
    cleared.clearFrequencyOverrides();
    EXPECT_EQ(cleared, vxClassifierFrequencies(1.0));
}

TEST(HostileFrequencies, AnOverrideOrAssignmentThatRunsOutOfMemoryChangesNothing) {
    vxClassifierFrequencies frequencies = forgedFrequencies(1.0, {1, 2, 3}, {10.0});
    const vxClassifierFrequencies before(frequencies);
    EXPECT_GT(failEachAllocation([&] { frequencies.categoryFrequencyOverride(7, 2.0); },
                                 [&] { EXPECT_EQ(frequencies, before); }),
              0);
    EXPECT_EQ(frequencies.categoryFrequency(7), 2.0);
    vxClassifierFrequencies assigned(5.0);
    EXPECT_GT(failEachAllocation([&] { assigned = frequencies; },
                                 [&] { EXPECT_EQ(assigned, vxClassifierFrequencies(5.0)); }),
              0);
    EXPECT_EQ(assigned, frequencies);
}

TEST(HostileFrequencies, LoadedFrequenciesThatNoSetterTakesGiveTheNamedErrorsOrPass) {
    const CategoryResults matches{match(1, 0.5), match(2, 0.5)};
    const vxClassifierCosts costs(1.0);
    EXPECT_ERROR(vxClassifierResult(matches, forgedFrequencies(0.0), costs, 0.0), BadParams,
                 L"At least one of the category frequencies must be > 0.");
    EXPECT_ERROR(vxClassifierResult(matches, forgedFrequencies(1.0, {2}, {-0.25}), costs, 0.0), BadParams,
                 L"Scores must be >= 0.0 and <= 1.0");
    const vxClassifierResult fromNegative(matches, forgedFrequencies(-1.0), costs, 0.0);
    EXPECT_THAT(labelsOf(fromNegative), ElementsAre(1, 2)) << "only a sum of exactly 0 is refused";
    EXPECT_EQ(fromNegative.categoryResults()[0].classScore(), 0.5);
    const vxClassifierResult result(matches, forgedFrequencies(1.0, {2}, {nan}), costs, 0.0);
    EXPECT_THAT(labelsOf(result), ElementsAre(1, 2));
    EXPECT_TRUE(std::isnan(result.categoryResults()[0].classScore()));
}

vxClassifierCosts forgedCostTable(const std::vector<long>& trueLabels,
                                  const std::vector<long>& assignedLabels, const std::vector<double>& costs) {
    HandWritten byHand;
    byHand.byte(0).real(1.0).numbers(trueLabels).numbers(assignedLabels).reals(costs);
    return test::loaded(byHand.sealed(), vxClassifierCosts(1.0));
}

TEST(HostileCosts, RowsThatAreNotCompleteDoNotCount) {
    for (const vxClassifierCosts& costs :
         {forgedCostTable({1, 3}, {2, 4}, {10.0}), forgedCostTable({1, 3}, {2}, {10.0, 20.0}),
          forgedCostTable({1}, {2, 4}, {10.0, 20.0}), forgedCostTable({1, 3, 5}, {2, 4}, {10.0})}) {
        EXPECT_EQ(costs.misclassificationCost(1, 2), 10.0);
        EXPECT_EQ(costs.misclassificationCost(3, 4), 1.0);
        EXPECT_EQ(costs.misclOverrideIndex_(3, 4), -1);
        EXPECT_EQ(costs, vxClassifierCosts(costs));
    }
    for (const vxClassifierCosts& costs : {forgedCostTable({}, {2}, {10.0}), forgedCostTable({1}, {}, {10.0}),
                                           forgedCostTable({1}, {2}, {})}) {
        EXPECT_EQ(costs.misclassificationCost(1, 2), 1.0);
    }
    EXPECT_NE(forgedCostTable({1, 3}, {2, 4}, {10.0}), forgedCostTable({1}, {2}, {10.0}));
}

TEST(HostileCosts, ANewOverrideDropsRowsThatAreNotComplete) {
    for (vxClassifierCosts costs :
         {forgedCostTable({1, 3}, {2, 4}, {10.0}), forgedCostTable({1, 3}, {2}, {10.0, 20.0}),
          forgedCostTable({1}, {2, 4, 6}, {10.0, 20.0})}) {
        costs.misclassificationCostOverride(3, 4, 90.0);
        EXPECT_EQ(costs, forgedCostTable({1, 3}, {2, 4}, {10.0, 90.0}));
        costs.clearMisclassificationOverrides();
        EXPECT_EQ(costs, vxClassifierCosts(1.0));
    }
}

TEST(HostileCosts, AnOverrideOrAssignmentThatRunsOutOfMemoryChangesNothing) {
    vxClassifierCosts costs = forgedCostTable({1, 3}, {2}, {10.0, 20.0});
    const vxClassifierCosts before(costs);
    EXPECT_GT(failEachAllocation([&] { costs.misclassificationCostOverride(7, 8, 2.0); },
                                 [&] { EXPECT_EQ(costs, before); }),
              0);
    EXPECT_EQ(costs.misclassificationCost(7, 8), 2.0);
    vxClassifierCosts assigned(5.0);
    EXPECT_GT(
        failEachAllocation([&] { assigned = costs; }, [&] { EXPECT_EQ(assigned, vxClassifierCosts(5.0)); }),
        0);
    EXPECT_EQ(assigned, costs);
}

// Results.

TEST(HostileResult, NotANumbersAmongCostsAndFrequenciesLoseNoEntry) {
    vxClassifierFrequencies frequencies(1.0);
    vxClassifierCosts costs(1.0);
    for (long label = 0; label < 100; label += 7) {
        costs.misclassificationCostOverride(label + 1, label, nan);
        costs.misclassificationCostOverride(label, label + 1, infinity);
    }
    CategoryResults matches;
    for (long label = 0; label < 100; ++label) {
        matches.push_back(match(label, static_cast<double>(label % 10 + 1) / 10.0));
    }
    for (const double frequency : {1.0, infinity, nan}) {
        frequencies.categoryFrequencyOverride(3, frequency);
        std::vector<long> labels = labelsOf(vxClassifierResult(matches, frequencies, costs, 0.0));
        std::sort(labels.begin(), labels.end());
        EXPECT_EQ(labels.size(), 100U);
        EXPECT_EQ(std::unique(labels.begin(), labels.end()), labels.end());
    }
}

TEST(HostileResult, ANotANumberAmongTheMatchScoresNeedsNoArchiveAndPasses) {
    for (const long size : {1, 2, 33, 100, 1000}) {
        CategoryResults matches;
        for (long label = 0; label < size; ++label) {
            matches.push_back(match(label, label == size / 2 ? nan : 0.5));
        }
        const vxClassifierResult result(matches, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), 0.0);
        EXPECT_EQ(result.categoryResults().size(), static_cast<std::size_t>(size));
        EXPECT_EQ(labelsOf(result).front(), 0) << "nothing is less than a NaN, so the order stays";
        EXPECT_EQ(labelsOf(result).back(), size - 1);
    }
}

TEST(HostileResult, HundredsOfThousandsOfLabelsAreFoundToBeUniqueWithoutComparingEachPair) {
    CategoryResults entries;
    for (long label = 0; label < 400000; ++label) {
        entries.emplace_back(label, 0.5, 0.5, static_cast<double>(label % 1000));
    }
    EXPECT_EQ(vxClassifierResult(entries, 0.0).categoryResults().size(), 400000U);
    entries.emplace_back(50000, 0.5, 0.5, 0.0);
    EXPECT_ERROR(vxClassifierResult(entries, 0.0), BadParams,
                 L"The category labels of the match results must be unique.");
}

TEST(HostileResult, LoadedEntriesOfAnyKindAreComparedCopiedAndStored) {
    const std::vector<CategoryResults> cases{
        {}, {forgedCategory(1, nan, 2.0, -1.0), forgedCategory(1, -5.0, nan, infinity)}};
    for (const CategoryResults& entries : cases) {
        HandWritten byHand;
        byHand.byte(0).byte(0).count(entries.size());
        for (const vxClassifierCategoryResult& entry : entries) {
            byHand.byte(0).number(entry.categoryLabel()).real(entry.matchScore());
            byHand.real(entry.classScore()).real(entry.expectedCost());
        }
        const Bytes sealed = byHand.real(-infinity).sealed();
        const vxClassifierResult result = test::loaded(sealed, vxClassifierResult());
        const vxClassifierResult copy(result);
        EXPECT_EQ(copy == result, entries.empty());
        EXPECT_EQ(labelsOf(copy).size(), entries.size());
        EXPECT_EQ(test::stored(copy), sealed);
    }
}

TEST(HostileResult, ACountBeyondTheDataIsRefusedBeforeMemoryIsTaken) {
    for (const unsigned long count : {2UL, 4294967295UL}) {
        HandWritten byHand;
        byHand.byte(0).byte(0).count(count).byte(0).number(3).real(0.25).real(0.5).real(1.0);
        vxClassifierResult into({{7, 0.5, 1.0, 2.0}}, 1.0);
        EXPECT_ERROR_CLASS(test::load(byHand.sealed(), into), vxArchive::TooLarge);
        EXPECT_THAT(labelsOf(into), ElementsAre(7));
    }
}

TEST(HostileResult, RunningOutOfMemoryLeavesNoResultAndTheOldOneAsItWas) {
    CategoryResults matches;
    for (long label = 0; label < 40; ++label) {
        matches.push_back(match(label, 0.5));
    }
    const vxClassifierFrequencies frequencies(1.0);
    const vxClassifierCosts costs(1.0);
    const vxClassifierResult before({{7, 0.5, 1.0, 2.0}}, 1.0);
    vxClassifierResult result(before);
    EXPECT_GT(failEachAllocation([&] { result = vxClassifierResult(matches, frequencies, costs, 0.0); },
                                 [&] { EXPECT_EQ(result, before); }),
              0);
    EXPECT_EQ(result.categoryResults().size(), 40U);
    const vxClassifierResult decided(result);
    vxClassifierResult assigned(before);
    EXPECT_GT(failEachAllocation([&] { assigned = decided; }, [&] { EXPECT_EQ(assigned, before); }), 0);
    EXPECT_EQ(assigned, decided);
}

// Data providers.

Pattern pattern(const std::vector<double>& measurements) {
    return Pattern(new vxFeaturePattern(measurements, {}));
}

Memory forgedProvider(const std::vector<Pattern>& patterns, const std::vector<long>& labels) {
    HandWritten byHand;
    byHand.byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(patterns.size());
    for (const Pattern& each : patterns) {
        byHand.pointer(each.get());
    }
    return test::loaded(byHand.numbers(labels).sealed(), Memory());
}

TEST(HostileProvider, OnlyCompletePairsCount) {
    constexpr const wchar_t* badPattern = L"Feature pattern index must be >=0 and < number of patterns.";
    constexpr const wchar_t* badLabel = L"Category label index must be >=0 and < number of patterns.";
    const Memory fewLabels = forgedProvider({pattern({1}), pattern({2})}, {5});
    EXPECT_EQ(fewLabels.numPatterns(), 1);
    EXPECT_EQ(fewLabels.categoryLabel(0), 5);
    EXPECT_ERROR(fewLabels.categoryLabel(1), BadIndex, badLabel);
    EXPECT_ERROR(fewLabels.featurePattern(1), BadIndex, badPattern);
    const Memory fewPatterns = forgedProvider({pattern({1})}, {5, 6});
    EXPECT_EQ(fewPatterns.numPatterns(), 1);
    EXPECT_ERROR(fewPatterns.categoryLabel(1), BadIndex, badLabel);
    const Memory noLabels = forgedProvider({pattern({1})}, {});
    EXPECT_EQ(noLabels.numPatterns(), 0);
    EXPECT_EQ(noLabels.numMeasurements(), 0);
    EXPECT_TRUE(fewPatterns != forgedProvider({pattern({1})}, {5}));
    EXPECT_TRUE(fewPatterns == forgedProvider({pattern({1})}, {5, 6}));
}

TEST(HostileProvider, AddingDropsWhatIsNoPair) {
    for (Memory memory : {forgedProvider({pattern({1}), pattern({2}), nullptr}, {5}),
                          forgedProvider({pattern({1})}, {5, 6})}) {
        memory.addData(pattern({3}), 7);
        EXPECT_EQ(memory.numPatterns(), 2);
        EXPECT_EQ(memory.categoryLabel(0), 5);
        EXPECT_EQ(memory.categoryLabel(1), 7);
        EXPECT_EQ(memory.featurePattern(1)->featureMeasurement(0, true), 3.0);
    }
}

TEST(HostileProvider, NullAndUnequalPatternsAreMetWhereTheyAreUsed) {
    const Memory memory = forgedProvider({pattern({1, 2}), nullptr, pattern({1})}, {0, 0, 0});
    EXPECT_EQ(memory.numMeasurements(), 2);
    EXPECT_TRUE(memory.featurePattern(1).isNull());
    EXPECT_ERROR_CLASS(memory.featurePattern(1)->numMeasurements(), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(memory == memory), vxBadPointer);
    EXPECT_EQ(memory.featurePattern(2)->numMeasurements(), 1);
    EXPECT_EQ(test::stored(test::loaded(test::stored(memory), Memory())), test::stored(memory));
    EXPECT_ERROR_CLASS(forgedProvider({nullptr}, {0}).numMeasurements(), vxBadPointer);
}

TEST(HostileProvider, NeverReadsBeyondItsDataWhateverADerivedClassCounts) {
    for (const long count : {-1L, 1000L, std::numeric_limits<long>::max()}) {
        const test::AnnouncingData more(count);
        EXPECT_EQ(more.numMeasurements(), 0);
        EXPECT_ERROR_CLASS(more.featurePattern(0), BadIndex);
        EXPECT_ERROR_CLASS(more.categoryLabel(999), BadIndex);
    }
}

TEST(HostileProvider, CountsBeyondTheDataAreRefused) {
    Memory into;
    HandWritten byHand;
    byHand.byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(4294967295UL);
    EXPECT_ERROR_CLASS(test::load(byHand.sealed(), into), vxArchive::TooLarge);
}

TEST(HostileProvider, RunningOutOfMemoryChangesNothing) {
    Memory memory;
    memory.setName(std::wstring(100, L'n'));
    memory.setDescription(std::wstring(100, L'd'));
    memory.addData(pattern({1}), 0);
    Memory before(memory);
    const auto unchanged = [&] { EXPECT_TRUE(memory == before); };
    const Pattern another = pattern({2});
    EXPECT_GT(failEachAllocation([&] { memory.addData(another, 1); }, unchanged), 0);
    EXPECT_EQ(memory.numPatterns(), 2);

    before = memory;
    const std::vector<Pattern> patterns{another, another, another};
    const std::vector<long> labels{1, 2, 3};
    EXPECT_GT(failEachAllocation([&] { memory.data(patterns, labels); }, unchanged), 0);
    EXPECT_EQ(memory.numPatterns(), 3);

    before = Memory();
    before.setName(L"other");
    const Memory full(memory);
    memory = before;
    EXPECT_GT(failEachAllocation([&] { memory = full; }, unchanged), 0);
    EXPECT_TRUE(memory == full);
}

} // namespace
