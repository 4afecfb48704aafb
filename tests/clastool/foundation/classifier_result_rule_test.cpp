#include "tests/clastool/foundation/results.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

// The decision rule: the constructor that computes posteriors and expected costs.

namespace {

using test::CategoryResults;
using test::forgedCategory;
using test::forgedCosts;
using test::forgedFrequencies;
using test::labelsOf;
using test::match;
using testing::ElementsAre;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr const wchar_t* negativeLabel = L"Category labels must be >= 0";
constexpr const wchar_t* badScore = L"Scores must be >= 0.0 and <= 1.0";
constexpr const wchar_t* negativeCost = L"Costs must be >= 0.0";
constexpr const wchar_t* notUnique = L"The category labels of the match results must be unique.";
constexpr const wchar_t* noFrequency = L"At least one of the category frequencies must be > 0.";
constexpr const wchar_t* noScore = L"At least one of the resulting classification scores must be > 0.";

const vxClassifierFrequencies equalFrequencies(1.0);
const vxClassifierCosts equalCosts(1.0);

vxClassifierResult decide(const CategoryResults& matches,
                          const vxClassifierFrequencies& frequencies = equalFrequencies,
                          const vxClassifierCosts& costs = equalCosts) {
    return vxClassifierResult(matches, frequencies, costs, 0.0);
}

TEST(DecisionRule, GivesPosteriorsAndPutsTheLeastCostFirst) {
    const vxClassifierResult result = decide({match(3, 0.2), match(4, 0.8)});
    EXPECT_THAT(labelsOf(result), ElementsAre(4, 3));
    const auto& best = result.categoryResults()[0];
    EXPECT_EQ(best.matchScore(), 0.8);
    EXPECT_DOUBLE_EQ(best.classScore(), 0.8);
    EXPECT_DOUBLE_EQ(best.expectedCost(), 0.2);
    const auto& other = result.categoryResults()[1];
    EXPECT_EQ(other.matchScore(), 0.2);
    EXPECT_DOUBLE_EQ(other.classScore(), 0.2);
    EXPECT_DOUBLE_EQ(other.expectedCost(), 0.8);
}

TEST(DecisionRule, ACostOverrideWeighsTheWrongAssignmentItStandsFor) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(4, 3, 10.0);
    const vxClassifierResult result = decide({match(4, 0.8), match(3, 0.2)}, equalFrequencies, costs);
    EXPECT_THAT(labelsOf(result), ElementsAre(4, 3));
    EXPECT_DOUBLE_EQ(result.categoryResults()[0].expectedCost(), 0.2);
    EXPECT_DOUBLE_EQ(result.categoryResults()[1].expectedCost(), 8.0);
}

TEST(DecisionRule, ACheapMistakeLowersTheExpectedCost) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(3, 4, 0.1);
    const vxClassifierResult result = decide({match(4, 0.8), match(3, 0.2)}, equalFrequencies, costs);
    EXPECT_DOUBLE_EQ(result.categoryResults()[0].expectedCost(), 0.02);
    EXPECT_DOUBLE_EQ(result.categoryResults()[1].expectedCost(), 0.8);
}

TEST(DecisionRule, CostsCanTurnTheDecision) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(3, 4, 100.0);
    const vxClassifierResult result = decide({match(4, 0.8), match(3, 0.2)}, equalFrequencies, costs);
    EXPECT_THAT(labelsOf(result), ElementsAre(3, 4));
    EXPECT_DOUBLE_EQ(result.categoryResults()[0].classScore(), 0.2);
}

TEST(DecisionRule, FrequenciesWeighTheMatchScores) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(3, 9.0);
    const vxClassifierResult result = decide({match(4, 0.5), match(3, 0.5)}, frequencies);
    EXPECT_THAT(labelsOf(result), ElementsAre(3, 4));
    EXPECT_DOUBLE_EQ(result.categoryResults()[0].classScore(), 0.9);
}

TEST(DecisionRule, OneCategoryIsCertainAndCostsNothing) {
    const vxClassifierResult result = decide({match(5, 0.001)});
    ASSERT_EQ(result.categoryResults().size(), 1U);
    EXPECT_EQ(result.categoryResults()[0], vxClassifierCategoryResult(5, 0.001, 1.0, 0.0));
}

TEST(DecisionRule, IgnoresTheClassScoresAndCostsOfTheInput) {
    const vxClassifierResult plain = decide({match(4, 0.8), match(3, 0.2)});
    EXPECT_EQ(decide({{4, 0.8, 0.1, 7.0}, {3, 0.2, 1.0, 9.0}}), plain);
    EXPECT_EQ(decide({forgedCategory(4, 0.8, -7.0, -3.0), forgedCategory(3, 0.2, nan, nan)}), plain);
}

TEST(DecisionRule, KeepsTheFactor) {
    EXPECT_EQ(vxClassifierResult({match(1, 1.0)}, equalFrequencies, equalCosts, -33.0).matchScoreFactorLog(),
              -33.0);
}

TEST(DecisionRule, EqualCostsKeepTheOrderOfTheInput) {
    CategoryResults matches;
    for (const long label : {9, 2, 7, 1, 8, 3}) {
        matches.push_back(match(label, 0.5));
    }
    EXPECT_THAT(labelsOf(decide(matches)), ElementsAre(9, 2, 7, 1, 8, 3));
    EXPECT_THAT(labelsOf(decide(matches, equalFrequencies, vxClassifierCosts(0.0))),
                ElementsAre(9, 2, 7, 1, 8, 3));
}

TEST(DecisionRule, NeedsACategory) {
    EXPECT_ERROR(decide({}), BadParams, noFrequency);
}

TEST(DecisionRule, NeedsAFrequency) {
    EXPECT_ERROR(decide({match(1, 0.5), match(2, 0.5)}, forgedFrequencies(0.0)), BadParams, noFrequency);
    EXPECT_ERROR(decide({match(1, 0.5), match(2, 0.5)}, forgedFrequencies(3.0, {1}, {-3.0})), BadParams,
                 noFrequency);
}

TEST(DecisionRule, NeedsAMatchScore) {
    EXPECT_ERROR(decide({match(1, 0.0), match(2, 0.0)}), BadParams, noScore);
}

TEST(DecisionRule, RefusesALabelThatOccursTwiceBeforeAnythingElse) {
    EXPECT_ERROR(decide({match(1, 0.5), match(2, 0.5), match(1, 0.5)}), BadParams, notUnique);
    EXPECT_ERROR(decide({forgedCategory(-1, 2.0, 0.0, 0.0), forgedCategory(-1, 0.0, 0.0, 0.0)},
                        forgedFrequencies(0.0)),
                 BadParams, notUnique);
}

TEST(DecisionRule, ChecksTheLabelsBeforeTheFrequenciesAndScores) {
    EXPECT_ERROR(
        decide({forgedCategory(1, 2.0, 0.0, 0.0), forgedCategory(-1, 0.0, 0.0, 0.0)}, forgedFrequencies(0.0)),
        BadLabel, negativeLabel);
}

TEST(DecisionRule, ChecksTheFrequenciesBeforeTheMatchScores) {
    EXPECT_ERROR(decide({forgedCategory(1, 0.0, 0.0, 0.0)}, forgedFrequencies(0.0)), BadParams, noFrequency);
}

TEST(DecisionRule, ChecksTheSumOfTheScoresBeforeTheirRange) {
    EXPECT_ERROR(decide({forgedCategory(1, -2.0, 0.0, 0.0), forgedCategory(2, 2.0, 0.0, 0.0)}), BadParams,
                 noScore);
}

TEST(DecisionRule, RefusesMatchScoresOutsideOfTheRange) {
    EXPECT_ERROR(decide({forgedCategory(1, 1.5, 0.0, 0.0), match(2, 0.5)}), BadParams, badScore);
    EXPECT_ERROR(decide({match(2, 0.5), forgedCategory(1, -0.25, 0.0, 0.0)}), BadParams, badScore);
}

TEST(DecisionRule, RefusesPosteriorsOutsideOfTheRange) {
    // Priors 3 and -1: posteriors 1.5 and -0.5.
    EXPECT_ERROR(decide({match(1, 0.5), match(2, 0.5)}, forgedFrequencies(3.0, {2}, {-1.0})), BadParams,
                 badScore);
    EXPECT_ERROR(decide({match(2, 0.5), match(1, 0.5)}, forgedFrequencies(3.0, {2}, {-1.0})), BadParams,
                 badScore);
}

TEST(DecisionRule, RefusesANegativeExpectedCostAfterTheScoresOfTheSameEntry) {
    EXPECT_ERROR(decide({match(1, 0.5), match(2, 0.5)}, equalFrequencies, forgedCosts(-1.0)), BadParams,
                 negativeCost);
    EXPECT_ERROR(
        decide({forgedCategory(1, 1.5, 0.0, 0.0), match(2, 0.5)}, equalFrequencies, forgedCosts(-1.0)),
        BadParams, badScore);
    EXPECT_ERROR(
        decide({match(2, 0.5), forgedCategory(1, 1.5, 0.0, 0.0)}, equalFrequencies, forgedCosts(-1.0)),
        BadParams, negativeCost)
        << "the first entry is checked completely before the second one";
}

TEST(DecisionRule, ANegativeDefaultCostHurtsNobodyWhereItIsNotUsed) {
    EXPECT_EQ(decide({match(1, 0.5)}, equalFrequencies, forgedCosts(-1.0)).categoryResults()[0],
              vxClassifierCategoryResult(1, 0.5, 1.0, 0.0));
}

TEST(DecisionRule, ANotANumberAmongTheMatchScoresPassesAndKeepsTheOrder) {
    const vxClassifierResult result = decide({match(1, 0.1), match(2, nan), match(3, 0.9)});
    EXPECT_THAT(labelsOf(result), ElementsAre(1, 2, 3));
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
        EXPECT_TRUE(std::isnan(category.classScore()));
        EXPECT_TRUE(std::isnan(category.expectedCost()));
    }
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 0.1);
}

// The interruption check.

struct Checks {
    int calls = 0;
    int failAt = 0; // 0: never
    long status = vsys_attention_cancelled;
};

long check(void* context) {
    auto& checks = *static_cast<Checks*>(context);
    ++checks.calls;
    return checks.calls == checks.failAt ? checks.status : vxStatus::success;
}

TEST(DecisionRuleInterruption, IsCheckedOnceForEachCategory) {
    for (const long size : {1, 2, 33}) {
        CategoryResults matches;
        for (long label = 0; label < size; ++label) {
            matches.push_back(match(label, 0.5));
        }
        Checks checks;
        const vxAttentionScope scope(&check, &checks);
        decide(matches);
        EXPECT_EQ(checks.calls, size);
    }
}

TEST(DecisionRuleInterruption, EndsTheRuleAtTheStepThatFails) {
    const CategoryResults matches{match(1, 0.5), match(2, 0.5), match(3, 0.5)};
    vxClassifierResult result({{1, 0.5, 1.0, 3.0}}, 9.0);
    const vxClassifierResult before(result);
    for (int step = 1; step <= 3; ++step) {
        Checks checks;
        checks.failAt = step;
        const vxAttentionScope scope(&check, &checks);
        EXPECT_ERROR_CLASS(result = decide(matches), vxInterrupted);
        EXPECT_EQ(checks.calls, step);
        EXPECT_EQ(result, before);
    }
    Checks checks;
    checks.failAt = 4;
    const vxAttentionScope scope(&check, &checks);
    EXPECT_EQ(decide(matches).categoryResults().size(), 3U);
}

TEST(DecisionRuleInterruption, IsNoErrorOfTheClassifierFamily) {
    for (const long status : {vsys_attention_cancelled, static_cast<long>(0x80000000UL)}) {
        Checks checks;
        checks.failAt = 1;
        checks.status = status;
        const vxAttentionScope scope(&check, &checks);
        try {
            decide({match(1, 0.5)});
            ADD_FAILURE() << "nothing was thrown";
        } catch (const vxClassifierDefs::Errors&) {
            ADD_FAILURE() << "an error of the classifiers was thrown";
        } catch (const vxException& error) {
            EXPECT_FALSE(error.message().empty());
        }
    }
}

TEST(DecisionRuleInterruption, AnyStatusThatIsNoFailureGoesOn) {
    Checks checks;
    checks.failAt = 1;
    checks.status = 1;
    const vxAttentionScope scope(&check, &checks);
    EXPECT_EQ(decide({match(1, 0.5), match(2, 0.5)}).categoryResults().size(), 2U);
}

TEST(DecisionRuleInterruption, IsNotCheckedBeforeLabelsAndFrequenciesAre) {
    Checks checks;
    checks.failAt = 1;
    const vxAttentionScope scope(&check, &checks);
    EXPECT_ERROR(decide({}), BadParams, noFrequency);
    EXPECT_ERROR(decide({match(1, 0.5), match(1, 0.5)}), BadParams, notUnique);
    EXPECT_ERROR(decide({forgedCategory(-1, 0.5, 0.0, 0.0)}), BadLabel, negativeLabel);
    EXPECT_ERROR(decide({match(1, 0.5)}, forgedFrequencies(0.0)), BadParams, noFrequency);
    EXPECT_EQ(checks.calls, 0);
}

TEST(DecisionRuleInterruption, IsCheckedBeforeTheScoresAre) {
    Checks checks;
    const vxAttentionScope scope(&check, &checks);
    EXPECT_ERROR(decide({match(1, 0.0), match(2, 0.0)}), BadParams, noScore);
    EXPECT_EQ(checks.calls, 2);
}

// The bits.

/// The rule as it is defined, in its order of operations.
CategoryResults expectedEntries(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
                                const vxClassifierCosts& costs) {
    const std::size_t n = matches.size();
    std::vector<double> prior(n);
    double sumPrior = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        prior[i] = frequencies.categoryFrequency(matches[i].categoryLabel());
        sumPrior += prior[i];
    }
    std::vector<double> post(n);
    double sumPost = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double weighted = matches[i].matchScore() * prior[i];
        post[i] = weighted / sumPrior;
        sumPost += post[i];
    }
    CategoryResults entries;
    for (std::size_t i = 0; i < n; ++i) {
        double risk = 0.0;
        for (std::size_t j = 0; j < n; ++j) {
            if (j == i) {
                continue;
            }
            const double cost =
                costs.misclassificationCost(matches[j].categoryLabel(), matches[i].categoryLabel());
            const double weighted = cost * post[j];
            risk += weighted;
        }
        entries.emplace_back(matches[i].categoryLabel(), matches[i].matchScore(), post[i] / sumPost,
                             risk / sumPost);
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const vxClassifierCategoryResult& a, const vxClassifierCategoryResult& b) {
                         return a.expectedCost() < b.expectedCost();
                     });
    return entries;
}

std::uint64_t bitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

void expectSameBits(const CategoryResults& actual, const CategoryResults& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_EQ(actual[i].categoryLabel(), expected[i].categoryLabel()) << i;
        EXPECT_EQ(bitsOf(actual[i].matchScore()), bitsOf(expected[i].matchScore())) << i;
        EXPECT_EQ(bitsOf(actual[i].classScore()), bitsOf(expected[i].classScore())) << i;
        EXPECT_EQ(bitsOf(actual[i].expectedCost()), bitsOf(expected[i].expectedCost())) << i;
    }
}

/// Random matches, frequencies and costs. With `levels`, all numbers are multiples of 1 / levels, so that
/// many expected costs are equal.
struct RandomCase {
    RandomCase(long size, unsigned seed, unsigned levels) {
        std::mt19937 random(seed);
        const auto unit = [&] {
            return levels == 0 ? static_cast<double>(random()) / 4294967295.0
                               : static_cast<double>(random() % (levels + 1)) / levels;
        };
        for (long label = 0; label < size; ++label) {
            matches.push_back(match(label * 3, label == 0 ? 1.0 : unit()));
        }
        std::shuffle(matches.begin(), matches.end(), random);
        const auto anyLabel = [&] { return static_cast<long>(random() % static_cast<unsigned>(size)) * 3; };
        for (long i = 0; i < std::min(size, 20L); ++i) {
            frequencies.categoryFrequencyOverride(anyLabel(), unit() + 0.25);
            const long trueLabel = anyLabel();
            costs.misclassificationCostOverride(trueLabel, trueLabel + 3, unit() * 4.0);
        }
    }

    CategoryResults matches;
    vxClassifierFrequencies frequencies{0.75};
    vxClassifierCosts costs{1.5};
};

TEST(DecisionRuleBits, AreThoseOfTheDefinition) {
    for (const long size : {1, 2, 3, 10, 33, 100}) {
        for (unsigned seed = 0; seed < 20; ++seed) {
            SCOPED_TRACE(testing::Message() << size << " categories, seed " << seed);
            const RandomCase random(size, seed, 0);
            expectSameBits(decide(random.matches, random.frequencies, random.costs).categoryResults(),
                           expectedEntries(random.matches, random.frequencies, random.costs));
        }
    }
}

TEST(DecisionRuleBits, AreThoseOfTheDefinitionAmongManyTies) {
    for (const long size : {2, 3, 10, 33, 100}) {
        for (unsigned seed = 0; seed < 20; ++seed) {
            SCOPED_TRACE(testing::Message() << size << " categories, seed " << seed);
            const RandomCase random(size, seed, 2);
            expectSameBits(decide(random.matches, random.frequencies, random.costs).categoryResults(),
                           expectedEntries(random.matches, random.frequencies, random.costs));
        }
    }
}

TEST(DecisionRuleBits, AreThoseOfTheDefinitionForAThousandCategories) {
    for (const unsigned levels : {0U, 4U}) {
        const RandomCase random(1000, 1, levels);
        expectSameBits(decide(random.matches, random.frequencies, random.costs).categoryResults(),
                       expectedEntries(random.matches, random.frequencies, random.costs));
    }
}

TEST(DecisionRuleBits, MultiplyBeforeTheyDivide) {
    // 0.1 * 3 / 10 and 0.1 * (3 / 10) differ in the last bit.
    vxClassifierFrequencies frequencies(7.0);
    frequencies.categoryFrequencyOverride(1, 3.0);
    const CategoryResults matches{match(1, 0.1), match(2, 1.0)};
    const volatile double product = 0.1 * 3.0;
    const volatile double quotient = 3.0 / 10.0;
    ASSERT_NE(product / 10.0, 0.1 * quotient);
    expectSameBits(decide(matches, frequencies).categoryResults(),
                   expectedEntries(matches, frequencies, equalCosts));
}

TEST(DecisionRuleBits, HoldAtTheEdgesOfTheNumbers) {
    const double tiny = std::numeric_limits<double>::denorm_min();
    const double huge = std::numeric_limits<double>::max();
    for (const double frequency : {tiny, 1e-300, 1.0, 1e300}) {
        vxClassifierFrequencies frequencies(frequency);
        frequencies.categoryFrequencyOverride(1, 1.0);
        for (const double cost : {0.0, tiny, huge}) {
            const CategoryResults matches{match(1, 1.0), match(2, 0.25), match(3, 1e-10)};
            const vxClassifierCosts costs(cost);
            expectSameBits(decide(matches, frequencies, costs).categoryResults(),
                           expectedEntries(matches, frequencies, costs));
        }
    }
}

} // namespace
