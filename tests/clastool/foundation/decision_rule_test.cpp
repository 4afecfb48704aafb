#include "clss/clastool/foundation/decision_rule.h"

#include "clss/clastool/foundation/result_access.h"
#include "clss/clastool/foundation/stable_merge_sort.h"
#include "tests/clastool/foundation/results.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

// The rule with its short cuts against the rule as it is published, with whatever an archive can bring.

namespace {

using test::CategoryResults;
using vxClassifierDefs::BadParams;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

void requireUnique(const CategoryResults& matches) {
    for (std::size_t a = 0; a < matches.size(); ++a) {
        for (std::size_t b = a + 1; b < matches.size(); ++b) {
            if (matches[a].categoryLabel() == matches[b].categoryLabel()) {
                throw BadParams(L"The category labels of the match results must be unique.");
            }
        }
    }
}

double plainRisk(std::size_t assigned, const CategoryResults& matches, const std::vector<double>& posteriors,
                 const vxClassifierCosts& costs) {
    double risk = 0.0;
    for (std::size_t j = 0; j < matches.size(); ++j) {
        if (j != assigned) {
            risk +=
                costs.misclassificationCost(matches[j].categoryLabel(), matches[assigned].categoryLabel()) *
                posteriors[j];
        }
    }
    return risk;
}

/// Step by step, pair by pair, and sorted at the end.
CategoryResults plainRule(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
                          const vxClassifierCosts& costs) {
    requireUnique(matches);
    std::vector<double> posteriors;
    double sumPrior = 0.0;
    for (const vxClassifierCategoryResult& match : matches) {
        posteriors.push_back(frequencies.categoryFrequency(match.categoryLabel()));
        sumPrior += posteriors.back();
    }
    if (matches.empty() || sumPrior == 0.0) {
        throw BadParams(L"At least one of the category frequencies must be > 0.");
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        posteriors[i] = matches[i].matchScore() * posteriors[i] / sumPrior;
        sum += posteriors[i];
    }
    if (sum == 0.0) {
        throw BadParams(L"At least one of the resulting classification scores must be > 0.");
    }
    CategoryResults decided;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        decided.emplace_back(matches[i].categoryLabel(), matches[i].matchScore(), posteriors[i] / sum,
                             plainRisk(i, matches, posteriors, costs) / sum);
    }
    detail::stableMergeSort(decided,
                            [](const auto& a, const auto& b) { return a.expectedCost() < b.expectedCost(); });
    return decided;
}

/// The entries bit by bit (one NaN is as good as another), or the class and text of what is thrown.
template <class Rule>
std::string outcomeOf(Rule rule) {
    std::string text;
    const auto add = [&](double value) {
        std::uint64_t bits = 1; // no double that is written otherwise
        if (!std::isnan(value)) {
            std::memcpy(&bits, &value, sizeof bits);
        }
        text += std::to_string(bits) + ' ';
    };
    try {
        for (const vxClassifierCategoryResult& entry : rule()) {
            text += std::to_string(entry.categoryLabel()) + ": ";
            add(entry.matchScore());
            add(entry.classScore());
            add(entry.expectedCost());
        }
    } catch (const vxClassifierDefs::Errors& error) {
        text = std::string(typeid(error).name()) + error.what();
    }
    return text;
}

void expectPublished(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
                     const vxClassifierCosts& costs) {
    const std::string expected = outcomeOf([&] { return plainRule(matches, frequencies, costs); });
    const std::string outcome =
        outcomeOf([&] { return vxClassifierResult(matches, frequencies, costs, 0.0).categoryResults(); });
    ASSERT_EQ(outcome, expected) << matches[0].categoryLabel() << ' ' << matches[0].matchScore() << ", "
                                 << matches[1].categoryLabel() << ' ' << matches[1].matchScore() << ", "
                                 << frequencies.defaultCategoryFrequency() << ' '
                                 << costs.defaultMisclassificationCost();
}

/// Whatever it is.
vxClassifierCosts forgedCosts(double forEachMistake) {
    test::HandWritten byHand;
    byHand.byte(0).real(forEachMistake).numbers({}).numbers({}).reals({});
    return test::loaded(byHand.sealed(), vxClassifierCosts(1.0));
}

/// A problem of random size, with more or fewer strange numbers in it.
class Problem {
public:
    explicit Problem(unsigned seed)
        : random_(seed), strangeness_(seed % 4), size_(random_() % (seed % 50 == 0 ? 200 : 70)),
          matches(makeMatches()), frequencies(makeFrequencies()), costs(makeCosts()) {}

private:
    double number() {
        const double ordinary = static_cast<double>(random_() % 1000) / 999.0;
        const double strange[] = {0.0, -0.0, 1.0, 0.5, 0.5, nan, infinity, 1e308, 5e-324, -0.25, 2.0};
        return random_() % 40 < strangeness_ ? strange[random_() % 11] : ordinary;
    }

    long label() {
        const bool isBad = strangeness_ == 3 && random_() % 500 == 0;
        return isBad ? -1 : static_cast<long>(random_() % (size_ + 2));
    }

    CategoryResults makeMatches() {
        std::vector<long> labels;
        for (std::size_t i = 0; i < size_; ++i) {
            labels.push_back(static_cast<long>(i));
        }
        if (random_() % 2 == 0) {
            std::shuffle(labels.begin(), labels.end(), random_);
        }
        if (size_ > 0 && random_() % 20 == 0) {
            labels[random_() % size_] = label(); // may occur twice, or be negative
        }
        CategoryResults made;
        for (const long each : labels) {
            made.push_back(test::forgedCategory(each, number(), 0.0, 0.0));
        }
        return made;
    }

    /// Columns that need not be equally long.
    std::size_t rows() { return random_() % 2 == 0 ? 0 : random_() % 30; }

    vxClassifierFrequencies makeFrequencies() {
        std::vector<long> labels;
        std::vector<double> values;
        for (std::size_t k = rows(); k > 0; --k) {
            labels.push_back(label());
        }
        for (std::size_t k = labels.empty() ? 0 : rows(); k > 0; --k) {
            values.push_back(number());
        }
        return test::forgedFrequencies(number(), labels, values);
    }

    vxClassifierCosts makeCosts() {
        std::vector<long> trueLabels;
        std::vector<long> assignedLabels;
        std::vector<double> values;
        for (std::size_t k = rows(); k > 0; --k) {
            trueLabels.push_back(label());
            assignedLabels.push_back(label());
            values.push_back(number());
        }
        if (random_() % 5 == 0 && !values.empty()) {
            trueLabels.pop_back();
        }
        test::HandWritten byHand;
        byHand.byte(0).real(number()).numbers(trueLabels).numbers(assignedLabels).reals(values);
        return test::loaded(byHand.sealed(), vxClassifierCosts(1.0));
    }

    std::mt19937 random_;
    unsigned strangeness_; // 0: ordinary numbers only
    std::size_t size_;

public:
    CategoryResults matches;
    vxClassifierFrequencies frequencies;
    vxClassifierCosts costs;
};

TEST(DecisionRuleShortCuts, GiveThePublishedBitsOrderAndErrors) {
    vxClassifierResult reused;
    long numErrors = 0;
    for (unsigned seed = 0; seed < 2000; ++seed) {
        const Problem problem(seed);
        const auto run = [&](auto rule) { return outcomeOf(rule); };
        const std::string expected =
            run([&] { return plainRule(problem.matches, problem.frequencies, problem.costs); });
        ASSERT_EQ(run([&] {
                      return vxClassifierResult(problem.matches, problem.frequencies, problem.costs, 0.0)
                          .categoryResults();
                  }),
                  expected)
            << "seed " << seed;
        ASSERT_EQ(run([&] {
                      detail::ResultAccess::decide(problem.matches, problem.frequencies, problem.costs, 2.5,
                                                   reused);
                      return reused.categoryResults();
                  }),
                  expected)
            << "seed " << seed << ", into a result that has held others";
        numErrors += expected.find(':') == std::string::npos ? 1 : 0;
    }
    EXPECT_GT(numErrors, 50) << "both outcomes must have been met";
    EXPECT_LT(numErrors, 1000);
}

TEST(DecisionRuleShortCuts, OfAPairGiveThePublishedBitsOrderAndErrors) {
    constexpr double tiny = std::numeric_limits<double>::denorm_min();
    const std::vector<double> scores{0.0, -0.0, tiny, 0.25, 0.5, 1.0, 1.5, -0.5, infinity, nan};
    const std::vector<double> priors{-1.0, 0.0, -0.0, tiny, 0.75, 1e308, infinity, nan};
    const std::vector<double> mistakes{-2.0, -0.0, 0.0, tiny, 3.0, 1e308, infinity, nan};
    for (const double prior : priors) {
        for (const double mistake : mistakes) {
            const vxClassifierFrequencies frequencies = test::forgedFrequencies(prior);
            const vxClassifierCosts costs = forgedCosts(mistake);
            for (const double first : scores) {
                for (const double second : scores) {
                    expectPublished(
                        {test::forgedCategory(6, first, 0.0, 0.0), test::forgedCategory(3, second, 0.0, 0.0)},
                        frequencies, costs);
                }
            }
        }
    }
}

TEST(DecisionRuleShortCuts, OfAPairCheckLabelsBeforeAnythingElse) {
    const vxClassifierFrequencies frequencies(1.0);
    const vxClassifierCosts costs(1.0);
    for (const double first : {0.0, 0.5, 1.5, -0.5, infinity, nan}) {
        for (const double second : {0.0, 0.5, 1.5, -0.5, infinity, nan}) {
            for (const auto& [a, b] :
                 std::vector<std::pair<long, long>>{{-1, 3}, {3, -1}, {-2, -1}, {4, 4}, {-1, -1}}) {
                expectPublished(
                    {test::forgedCategory(a, first, 0.0, 0.0), test::forgedCategory(b, second, 0.0, 0.0)},
                    frequencies, costs);
            }
        }
    }
}

TEST(DecisionRuleShortCuts, LeaveTheFactorAndTheMemoryWhereTheyBelong) {
    const CategoryResults matches{test::match(4, 0.25), test::match(2, 1.0)};
    vxClassifierResult result({{7, 0.5, 1.0, 2.0}, {8, 0.5, 1.0, 3.0}}, 1.0);
    const vxClassifierCategoryResult* const memory = result.categoryResults().data();
    const vxClassifierFrequencies frequencies(1.0);
    const vxClassifierCosts costs(1.0);
    detail::ResultAccess::decide(matches, frequencies, costs, 2.5, result);
    EXPECT_EQ(result, vxClassifierResult(matches, frequencies, costs, 2.5));
    EXPECT_EQ(result.categoryResults().data(), memory);
    detail::ResultAccess::clear(result);
    EXPECT_EQ(result, vxClassifierResult());
    EXPECT_GE(detail::ResultAccess::capacity(result), 2U);
}

TEST(DecisionRuleShortCuts, FindALabelThatOccursTwiceWhereverItStands) {
    for (const std::size_t size : {2U, 3U, 10U, 64U, 65U, 100U}) {
        for (std::size_t first = 0; first < size; first += 7) {
            for (std::size_t second = first + 1; second < size; second += 5) {
                CategoryResults matches;
                for (std::size_t i = 0; i < size; ++i) {
                    matches.push_back(test::match(static_cast<long>(i), 0.5));
                }
                EXPECT_NO_THROW(detail::requireUniqueLabels(matches));
                std::swap(matches.front(), matches.back());
                EXPECT_NO_THROW(detail::requireUniqueLabels(matches));
                matches[second] = matches[first];
                EXPECT_THROW(detail::requireUniqueLabels(matches), BadParams);
            }
        }
    }
}

} // namespace
