#include "tests/rules/functions.h"
#include "tests/support/archives.h"

#include <vxclassifier/feature_score.h>
#include <vxclassifier/platform/random.h>
#include <vxclassifier/rule.h>
#include <vxclassifier/rule_table.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using test::Function;
using test::handleTo;
using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;

namespace {

constexpr int functionsPerProperty = 2000;
constexpr double epsilon = std::numeric_limits<double>::epsilon();

// The random values are multiples of small powers of two. Every operation on a ramp except its division is
// exact for them, and a single rounding keeps order and bounds; so the properties hold without tolerance.
constexpr double xStep = 0.125;
constexpr double yStep = 0.0625;
constexpr double step = 0.03125;

class Random {
public:
    double multipleOf(double unit, double low, double high) {
        return unit * std::floor(uniform_.next(low / unit, high / unit + 1));
    }
    double score() { return multipleOf(yStep, 0, 1); }
    double between(double low, double high) { return uniform_.next(low, high); }

    OneSided oneSidedWithin(double low, double high) {
        double x[3] = {multipleOf(xStep, low, high), multipleOf(xStep, low, high),
                       multipleOf(xStep, low, high)};
        std::sort(x, x + 3);
        if (between(0, 1) < 0.5) {
            std::swap(x[0], x[2]);
        }
        return test::oneSided(x[0], x[1], x[2], score(), score());
    }

    TwoSided twoSided() {
        const OneSided low = oneSidedWithin(-4, 0);
        const OneSided high = oneSidedWithin(0, 4);
        TwoSided function;
        function.init(low.x0(), low.x1(), low.xc(), high.x0(), high.x1(), high.xc(), low.y0(), low.y1(),
                      high.y0(), high.y1());
        return function;
    }

    Function any() {
        const double choice = between(0, 3);
        if (choice < 1) {
            return test::ignore();
        }
        return choice < 2 ? handleTo(oneSidedWithin(-4, 4)) : handleTo(twoSided());
    }

private:
    vxRandomUniform uniform_{1};
};

/// Calls `check(function)` for many functions, the shapes of equal x values among them.
template <class Check>
void forManyOneSided(Check check) {
    Random random;
    for (int i = 0; i < functionsPerProperty; ++i) {
        check(random.oneSidedWithin(-4, 4));
    }
    check(test::oneSided(1, 1, 1, 0.25, 0.75));
    check(test::oneSided(1, 1, 2, 0.25, 0.75));
    check(test::oneSided(1, 1, 0, 0.25, 0.75));
}

/// Whether the cut-off, where the score may jump, lies between two neighbouring values.
bool cutsBetween(const OneSided& function, double left, double right) {
    return left <= function.xc() && function.xc() <= right;
}

double steepness(const OneSided& function) {
    return std::fabs(function.y1() - function.y0()) / std::fabs(function.x1() - function.x0());
}

/// Everything about a function that its archive shows.
test::Bytes bytesOf(const Function& function) {
    return test::payload(test::stored(function));
}

} // namespace

TEST(ScoreProperties, AOneSidedScoreLiesBetweenTheTwoLevelsOrIsZero) {
    forManyOneSided([](const OneSided& function) {
        const auto [low, high] = std::minmax({function.y0(), function.y1()});
        for (double x = -5; x <= 5; x += step) {
            const double score = function.score(x);
            const bool beyond = function.x0() <= function.x1() && function.x1() <= function.xc()
                                    ? x > function.xc()
                                    : x < function.xc();
            ASSERT_TRUE(beyond ? score == 0.0 : score >= low && score <= high) << score << " at " << x;
        }
    });
}

TEST(ScoreProperties, EveryScoreLiesWithinZeroToOneOrIsTheMark) {
    Random random;
    for (int i = 0; i < functionsPerProperty; ++i) {
        const Function function = random.any();
        for (double x = -5; x <= 5; x += step) {
            const double score = function->score(x);
            ASSERT_TRUE(score == -1.0 || (score >= 0.0 && score <= 1.0)) << score << " at " << x;
        }
    }
}

TEST(ScoreProperties, ScoresOfArbitraryDoublesLeaveTheRangeByRoundingOnly) {
    Random random;
    for (int i = 0; i < functionsPerProperty; ++i) {
        const double x0 = random.between(-100, 100);
        const double x1 = random.between(-100, 100);
        const OneSided function = test::oneSided(x0, x1, x1, random.between(0, 1), random.between(0, 1));
        const double slack = 1e-15 * std::max(std::fabs(x0), std::fabs(x1)) / std::fabs(x1 - x0);
        const auto [low, high] = std::minmax({function.y0(), function.y1()});
        for (int j = 1; j < 20; ++j) {
            const double x = x0 + (x1 - x0) * j / 20;
            const double score = function.score(x);
            ASSERT_GE(score, low - slack);
            ASSERT_LE(score, high + slack);
            const double exact = function.y0() + (function.y1() - function.y0()) * ((x - x0) / (x1 - x0));
            ASSERT_NEAR(score, exact, slack + 4 * epsilon);
        }
    }
}

TEST(ScoreProperties, RampsAreMonotone) {
    forManyOneSided([](const OneSided& function) {
        const double left = std::min(function.x0(), function.x1());
        const double right = std::max(function.x0(), function.x1());
        const bool up = (function.y1() >= function.y0()) == (function.x1() >= function.x0());
        for (double x = left; x < right; x += step) {
            const double here = function.score(x);
            const double next = function.score(x + step);
            ASSERT_TRUE(up ? here <= next : here >= next) << "between " << x << " and " << x + step;
        }
    });
}

TEST(ScoreProperties, AOneSidedScoreJumpsOnlyAtItsCutOff) {
    forManyOneSided([](const OneSided& function) {
        if (function.x0() == function.x1()) {
            return; // no ramp: a step by intention
        }
        const double most = steepness(function) * step * (1 + 4 * epsilon) + 2 * epsilon;
        for (double x = -5; x < 5; x += step) {
            if (!cutsBetween(function, x, x + step)) {
                ASSERT_LE(std::fabs(function.score(x + step) - function.score(x)), most) << "after " << x;
            }
        }
    });
}

TEST(ScoreProperties, ATwoSidedScoreIsThatOfOneOfItsParts) {
    Random random;
    for (int i = 0; i < functionsPerProperty; ++i) {
        const TwoSided function = random.twoSided();
        const double boundary = std::min({function.x0h(), function.x1h(), function.xch()});
        for (double x = -5; x <= 5; x += step) {
            const OneSided& part = x < boundary ? function.Low() : function.High();
            ASSERT_EQ(function.score(x), part.score(x)) << "at " << x;
        }
    }
}

// The product and the root are rounded: by half a unit for each multiplication (divided by their number in
// the root), by the exponent's rounding times the logarithm, and by the power function's last unit.
TEST(ScoreProperties, ARuleScoreLiesBetweenItsSmallestAndLargestUsedScore) {
    Random random;
    for (int i = 0; i < functionsPerProperty; ++i) {
        const int n = static_cast<int>(random.multipleOf(1, 1, 8));
        std::vector<double> scores;
        std::vector<double> used;
        double logProduct = 0;
        for (int j = 0; j < n; ++j) {
            const bool isUsed = random.between(0, 1) < 0.75;
            scores.push_back(isUsed ? random.between(0.001, 1) : -1.0);
            if (isUsed) {
                used.push_back(scores.back());
                logProduct += std::log(scores.back());
            }
        }
        const double score = test::ruleScoring(scores, 0).score(std::vector<double>(scores.size(), 0.0));
        if (used.empty()) {
            ASSERT_EQ(score, 1.0);
            continue;
        }
        const double slack = epsilon * (2 + std::fabs(logProduct) / static_cast<double>(used.size()));
        ASSERT_GE(score, *std::min_element(used.begin(), used.end()) * (1 - slack));
        ASSERT_LE(score, *std::max_element(used.begin(), used.end()) * (1 + slack));
        ASSERT_LE(score, 1.0);
    }
}

TEST(ScoreProperties, AFunctionAndItsArchiveAreInterchangeable) {
    Random random;
    std::vector<Function> originals;
    std::vector<Function> loaded;
    for (int i = 0; i < 100; ++i) {
        originals.push_back(random.any());
        Function copy;
        test::load(test::stored(originals.back()), copy);
        ASSERT_EQ(bytesOf(copy), bytesOf(originals.back()));
        loaded.push_back(copy);
    }
    for (std::size_t i = 0; i < originals.size(); ++i) {
        for (std::size_t j = 0; j < originals.size(); ++j) {
            const bool equal = *originals[i] == *originals[j];
            ASSERT_EQ(*loaded[i] == *loaded[j], equal);
            ASSERT_EQ(*originals[i] == *loaded[j], equal);
            ASSERT_EQ(bytesOf(originals[i]) == bytesOf(originals[j]), equal);
        }
    }
}

TEST(ScoreProperties, ATableAndItsArchiveAreInterchangeable) {
    Random random;
    for (int i = 0; i < 100; ++i) {
        std::vector<vxClassifierRule> rules;
        for (long label = 0; label < 4; ++label) {
            rules.push_back(test::rule({random.any(), random.any(), random.any()}, label));
        }
        vxClassifierRuleTable table;
        table.train(rules);
        vxClassifierRuleTable loaded;
        test::load(test::stored(table), loaded);
        ASSERT_TRUE(loaded == table);
        ASSERT_EQ(test::stored(loaded), test::stored(table));
        for (int j = 0; j < 20; ++j) {
            const std::vector<double> values = {random.between(-5, 5), random.between(-5, 5),
                                                random.between(-5, 5)};
            ASSERT_EQ(loaded.classifyHardThreshold(values, 0.3), table.classifyHardThreshold(values, 0.3));
        }
    }
}
