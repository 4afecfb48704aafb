#include <vxclassifier/classifier_result.h>

#include "tests/clastool/foundation/results.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

// The result as a value, and the constructor that takes scores and costs from its caller.

namespace {

using test::CategoryResults;
using test::forgedCategory;
using test::labelsOf;
using testing::ElementsAre;
using testing::IsEmpty;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr const wchar_t* negativeLabel = L"Category labels must be >= 0";
constexpr const wchar_t* badScore = L"Scores must be >= 0.0 and <= 1.0";
constexpr const wchar_t* negativeCost = L"Costs must be >= 0.0";
constexpr const wchar_t* notUnique = L"The category labels of the match results must be unique.";
constexpr const wchar_t* noScore = L"At least one of the classification scores must be > 0.";

TEST(ClassifierResult, IsEmptyByDefault) {
    const vxClassifierResult result;
    EXPECT_THAT(result.categoryResults(), IsEmpty());
    EXPECT_EQ(result.matchScoreFactorLog(), 0.0);
}

TEST(ClassifierResult, KeepsTheFactor) {
    EXPECT_EQ(vxClassifierResult({{1, 0.5, 1.0, 0.0}}, -12.5).matchScoreFactorLog(), -12.5);
}

TEST(ClassifierResult, EqualityComparesEntriesOrderAndFactor) {
    const vxClassifierResult result({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}}, 3.0);
    EXPECT_TRUE(result == vxClassifierResult({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}}, 3.0));
    EXPECT_FALSE(result != vxClassifierResult({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}}, 3.0));
    EXPECT_TRUE(result != vxClassifierResult({{2, 0.5, 0.5, 1.0}, {1, 0.5, 0.5, 1.0}}, 3.0));
    EXPECT_TRUE(result != vxClassifierResult({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}}, 3.5));
    EXPECT_TRUE(result != vxClassifierResult({{1, 0.5, 1.0, 1.0}}, 3.0));
    EXPECT_TRUE(result != vxClassifierResult());
    EXPECT_TRUE(vxClassifierResult() == vxClassifierResult());
}

TEST(ClassifierResult, OneWithANotANumberIsUnequalToItself) {
    const vxClassifierResult byFactor({{1, 0.5, 1.0, 0.0}}, nan);
    EXPECT_FALSE(byFactor == byFactor);
    const vxClassifierResult byEntry({{1, nan, 1.0, 0.0}}, 0.0);
    EXPECT_FALSE(byEntry == byEntry);
    EXPECT_TRUE(byEntry != byEntry);
}

TEST(ClassifierResult, ACopyIsEqualAndIndependent) {
    vxClassifierResult original({{1, 0.5, 1.0, 0.0}}, 2.0);
    const vxClassifierResult copy(original);
    vxClassifierResult assigned;
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(assigned, copy);
    original = vxClassifierResult();
    EXPECT_EQ(labelsOf(copy), std::vector<long>{1});
    EXPECT_EQ(assigned, copy);
}

TEST(ClassifierResultOfScores, DividesTheClassScoresByTheirSum) {
    const vxClassifierResult result({{1, 0.7, 0.3, 1.0}, {2, 0.2, 0.3, 2.0}}, 0.0);
    EXPECT_EQ(result.categoryResults()[0], vxClassifierCategoryResult(1, 0.7, 0.5, 1.0));
    EXPECT_EQ(result.categoryResults()[1], vxClassifierCategoryResult(2, 0.2, 0.5, 2.0));
}

TEST(ClassifierResultOfScores, OrdersByTheGivenCostAndKeepsEqualOnesInOrder) {
    const vxClassifierResult result(
        {{5, 0.5, 0.1, 2.0}, {3, 0.5, 0.1, 1.0}, {9, 0.5, 0.1, 2.0}, {1, 0.5, 0.1, 0.0}, {4, 0.5, 0.1, 1.0}},
        0.0);
    EXPECT_THAT(labelsOf(result), ElementsAre(1, 3, 4, 5, 9));
}

TEST(ClassifierResultOfScores, NeedsAClassScore) {
    EXPECT_ERROR(vxClassifierResult(CategoryResults{}, 0.0), BadParams, noScore);
    EXPECT_ERROR(vxClassifierResult({{1, 0.5, 0.0, 1.0}, {2, 0.5, 0.0, 1.0}}, 0.0), BadParams, noScore);
    EXPECT_ERROR(
        vxClassifierResult({forgedCategory(1, 0.5, 0.5, 1.0), forgedCategory(2, 0.5, -0.5, 1.0)}, 0.0),
        BadParams, noScore);
}

TEST(ClassifierResultOfScores, RefusesALabelThatOccursTwice) {
    EXPECT_ERROR(vxClassifierResult({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}, {1, 0.5, 0.5, 1.0}}, 0.0),
                 BadParams, notUnique);
}

TEST(ClassifierResultOfScores, ChecksForEqualLabelsBeforeAnythingElse) {
    const CategoryResults twice{forgedCategory(-1, 2.0, 0.0, -1.0), forgedCategory(-1, 2.0, 0.0, -1.0)};
    EXPECT_ERROR(vxClassifierResult(twice, 0.0), BadParams, notUnique);
}

TEST(ClassifierResultOfScores, ChecksTheSumBeforeTheEntries) {
    EXPECT_ERROR(vxClassifierResult({forgedCategory(-1, 2.0, 0.0, -1.0)}, 0.0), BadParams, noScore);
}

TEST(ClassifierResultOfScores, ChecksLabelThenScoresThenCostOfAnEntry) {
    EXPECT_ERROR(vxClassifierResult({forgedCategory(-1, 2.0, 1.0, -1.0)}, 0.0), BadLabel, negativeLabel);
    EXPECT_ERROR(vxClassifierResult({forgedCategory(0, 2.0, 1.0, -1.0)}, 0.0), BadParams, badScore);
    EXPECT_ERROR(vxClassifierResult({forgedCategory(0, -0.5, 1.0, -1.0)}, 0.0), BadParams, badScore);
    EXPECT_ERROR(vxClassifierResult({forgedCategory(0, 0.5, 1.0, -1.0)}, 0.0), BadParams, negativeCost);
}

TEST(ClassifierResultOfScores, ChecksTheEntriesInTheirNewOrder) {
    // The second entry becomes the first one, and its score is bad; the label of the other one comes later.
    EXPECT_ERROR(
        vxClassifierResult({forgedCategory(-1, 0.5, 0.5, 5.0), forgedCategory(1, 2.0, 0.5, 1.0)}, 0.0),
        BadParams, badScore);
    EXPECT_ERROR(
        vxClassifierResult({forgedCategory(1, 2.0, 0.5, 1.0), forgedCategory(2, 0.5, 0.5, -1.0)}, 0.0),
        BadParams, negativeCost);
}

TEST(ClassifierResultOfScores, ChecksClassScoresAfterTheDivision) {
    // 2 / (2 - 1) and -1 / (2 - 1) lie outside, -1 / (-1 - 1) does not.
    EXPECT_ERROR(
        vxClassifierResult({forgedCategory(1, 0.5, 2.0, 1.0), forgedCategory(2, 0.5, -1.0, 2.0)}, 0.0),
        BadParams, badScore);
    EXPECT_ERROR(
        vxClassifierResult({forgedCategory(1, 0.5, -1.0, 1.0), forgedCategory(2, 0.5, 2.0, 2.0)}, 0.0),
        BadParams, badScore);
    const vxClassifierResult result({forgedCategory(1, 0.5, -1.0, 1.0), forgedCategory(2, 0.5, -1.0, 2.0)},
                                    0.0);
    EXPECT_EQ(result.categoryResults()[0].classScore(), 0.5);
    const vxClassifierResult large({forgedCategory(1, 0.5, 30.0, 1.0), forgedCategory(2, 0.5, 10.0, 2.0)},
                                   0.0);
    EXPECT_EQ(large.categoryResults()[0].classScore(), 0.75);
}

TEST(ClassifierResultOfScores, NotANumberPassesAndLosesNoEntry) {
    CategoryResults entries;
    for (long label = 0; label < 100; ++label) {
        entries.emplace_back(label, 0.5, 0.5, label % 3 == 0 ? nan : static_cast<double>(label % 7));
    }
    std::vector<long> labels = labelsOf(vxClassifierResult(entries, 0.0));
    std::sort(labels.begin(), labels.end());
    EXPECT_EQ(labels.size(), 100U);
    EXPECT_EQ(labels.front(), 0);
    EXPECT_EQ(labels.back(), 99);
    EXPECT_EQ(std::unique(labels.begin(), labels.end()), labels.end());

    const vxClassifierResult oneScore({{1, nan, nan, 2.0}, {2, 0.5, 0.5, 1.0}}, 0.0);
    EXPECT_THAT(labelsOf(oneScore), ElementsAre(2, 1));
    EXPECT_TRUE(std::isnan(oneScore.categoryResults()[0].classScore()));
    EXPECT_EQ(oneScore.categoryResults()[0].matchScore(), 0.5);
}

TEST(ClassifierResultOfScores, AFailureOfOneInputLeavesTheInputAlone) {
    const CategoryResults entries{forgedCategory(2, 0.5, 0.5, 3.0), forgedCategory(1, 0.5, 0.5, 1.0)};
    const CategoryResults before = entries;
    const vxClassifierResult result(entries, 0.0);
    EXPECT_EQ(entries, before);
    EXPECT_THAT(labelsOf(result), ElementsAre(1, 2));
}

long countCalls(void* calls) {
    ++*static_cast<int*>(calls);
    return vsys_attention_cancelled;
}

TEST(ClassifierResultOfScores, MakesNoInterruptionCheck) {
    int calls = 0;
    const vxAttentionScope scope(&countCalls, &calls);
    const vxClassifierResult result({{1, 0.5, 0.5, 1.0}, {2, 0.5, 0.5, 1.0}}, 0.0);
    EXPECT_EQ(result.categoryResults().size(), 2U);
    EXPECT_EQ(calls, 0);
}

/// What the constructor is defined as, step by step.
CategoryResults expectedEntries(CategoryResults entries) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const vxClassifierCategoryResult& a, const vxClassifierCategoryResult& b) {
                         return a.expectedCost() < b.expectedCost();
                     });
    double sum = 0.0;
    for (const vxClassifierCategoryResult& entry : entries) {
        sum += entry.classScore();
    }
    CategoryResults normalised;
    for (const vxClassifierCategoryResult& entry : entries) {
        normalised.emplace_back(entry.categoryLabel(), entry.matchScore(), entry.classScore() / sum,
                                entry.expectedCost());
    }
    return normalised;
}

TEST(ClassifierResultOfScores, GivesTheBitsOfTheDefinition) {
    for (const long size : {1, 2, 33, 100, 1000}) {
        std::mt19937 random(static_cast<unsigned>(size));
        const auto unit = [&random] { return static_cast<double>(random()) / 4294967295.0; };
        CategoryResults entries;
        for (long i = 0; i < size; ++i) {
            // Few different costs, so that many entries are equally cheap.
            entries.emplace_back(i, unit(), unit(), static_cast<double>(random() % 17));
        }
        std::shuffle(entries.begin(), entries.end(), random);
        EXPECT_EQ(vxClassifierResult(entries, 0.0).categoryResults(), expectedEntries(entries)) << size;
    }
}

} // namespace
