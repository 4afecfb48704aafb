#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_score.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/rule_table.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

// The short cuts of the score functions and of the search for the first rule that fits, against what is
// published step by step.

namespace {

using OneSided = vxClassifierFeatureScoreOneSided;
using TwoSided = vxClassifierFeatureScoreTwoSided;
using vxClassifierDefs::BadParams;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

void requireOrder(double x0, double x1, double xc) {
    const bool aboveBoth = x1 > x0 && x1 > xc;
    const bool belowBoth = !(x1 >= x0) && !(x1 >= xc);
    if (aboveBoth || belowBoth) {
        throw BadParams(L"x1 must lie between x0 and xc");
    }
}

double plainScore(const OneSided& f, double x) {
    requireOrder(f.x0(), f.x1(), f.xc());
    const double line = (f.x1() * f.y0() - f.x0() * f.y1() - (f.y0() - f.y1()) * x) / (f.x1() - f.x0());
    if (!(f.x0() > f.x1()) && !(f.x1() > f.xc())) {
        return x > f.xc() ? 0.0 : (x >= f.x1() ? f.y1() : (x <= f.x0() ? f.y0() : line));
    }
    return !(x >= f.xc()) ? 0.0 : (x <= f.x1() ? f.y1() : (x >= f.x0() ? f.y0() : line));
}

double plainScore(const TwoSided& f, double x) {
    requireOrder(f.x0(), f.x1(), f.xc());
    requireOrder(f.x0h(), f.x1h(), f.xch());
    const double lowest = std::min(f.x0h(), f.xch());
    if (f.x0() > lowest || f.x1() > lowest || f.xc() > lowest) {
        throw BadParams(L"Bad x values");
    }
    return plainScore(x >= lowest ? f.High() : f.Low(), x);
}

std::string textOf(double value) {
    std::uint64_t bits = 1; // no double that is written otherwise; one NaN is as good as another
    if (!std::isnan(value)) {
        std::memcpy(&bits, &value, sizeof bits);
    }
    return std::to_string(bits);
}

/// What an operation gives, or the class and text of what it throws.
template <class Operation>
std::string outcomeOf(Operation operation) {
    try {
        return operation();
    } catch (const vxClassifierDefs::Errors& error) {
        return std::string(typeid(error).name()) + error.what();
    } catch (const vxBadPointer&) {
        return "bad pointer";
    }
}

/// Random functions: made by init, by setters or by an archive, with more or fewer strange numbers.
class Maker {
public:
    explicit Maker(unsigned seed) : random(seed), strangeness_(seed % 4) {}

    double number() {
        const double strange[] = {nan, infinity, -infinity, -0.0, 0.0, 1e308, 0.5, 2.0};
        return random() % 60 < strangeness_ ? strange[random() % 8] : static_cast<double>(random() % 9) / 8.0;
    }

    OneSided oneSided() {
        double x[] = {number(), number(), number()};
        if (random() % 50 >= strangeness_) {
            random() % 2 == 0 ? std::sort(x, x + 3) : std::sort(x, x + 3, std::greater<>());
        }
        OneSided made;
        if (random() % 2 == 0) {
            return test::loaded(
                test::HandWritten().real(x[0]).real(x[1]).real(x[2]).real(number()).real(number()).sealed(),
                made);
        }
        setX(made, x);
        setY(made);
        return made;
    }

    TwoSided twoSided() {
        double x[] = {number(), number(), number(), number(), number(), number()};
        if (random() % 50 >= strangeness_) {
            std::sort(x, x + 6);
        }
        TwoSided made;
        if (random() % 2 == 0) {
            test::HandWritten byHand;
            for (const int part : {0, 3}) {
                byHand.real(x[part]).real(x[part + 1]).real(x[part + 2]).real(number()).real(number());
            }
            return test::loaded(byHand.sealed(), made);
        }
        setX(made, x);
        made.x0h(x[3]);
        made.x1h(x[4]);
        made.xch(x[5]);
        setY(made);
        return made;
    }

    std::mt19937 random;

private:
    template <class Function>
    static void setX(Function& function, const double* x) {
        function.x0(x[0]);
        function.x1(x[1]);
        function.xc(x[2]);
    }

    template <class Function>
    void setY(Function& function) {
        function.y0(static_cast<double>(random() % 5) / 4.0);
        function.y1(static_cast<double>(random() % 5) / 4.0);
    }

    unsigned strangeness_; // 0: ordinary numbers only
};

template <class Function>
void expectPlainScores(const Function& function, Maker& maker, unsigned seed) {
    for (int i = 0; i < 8; ++i) {
        const double x = maker.number() + (i == 0 ? 0.0 : static_cast<double>(maker.random() % 7) / 64.0);
        ASSERT_EQ(outcomeOf([&] { return textOf(function.score(x)); }),
                  outcomeOf([&] { return textOf(plainScore(function, x)); }))
            << "seed " << seed << ", x = " << x;
    }
}

TEST(ScoreShortCuts, GiveThePublishedBitsAndErrorsHoweverAFunctionWasMade) {
    for (unsigned seed = 0; seed < 1500; ++seed) {
        Maker maker(seed);
        expectPlainScores(maker.oneSided(), maker, seed);
        expectPlainScores(maker.twoSided(), maker, seed);
    }
}

TEST(ScoreShortCuts, FollowEverySetterAndAnInit) {
    OneSided one;
    one.x1(5.0);
    EXPECT_THROW(one.score(0.5), BadParams);
    one.xc(6.0);
    EXPECT_EQ(one.score(5.5), 0.0) << "y1 of the initial state";
    one.x0(7.0);
    EXPECT_THROW(one.score(5.5), BadParams);
    one.xc(4.0);
    EXPECT_EQ(one.score(8.0), 1.0) << "y0, now that it falls from 7 to 5";
    one.x1(9.0);
    EXPECT_THROW(one.score(5.5), BadParams);
    one.init(0.0, 1.0, 2.0, 0.25, 0.75);
    EXPECT_EQ(one.score(-1.0), 0.25);

    TwoSided two;
    EXPECT_THROW(two.score(0.5), BadParams) << "the initial parts overlap";
    two.init(0, 1, 2, 5, 4, 3, 0.0, 1.0, 0.0, 1.0);
    EXPECT_EQ(two.score(3.5), 1.0);
    two.xc(3.5);
    EXPECT_THROW(two.score(3.5), BadParams);
    two.xch(3.5);
    EXPECT_EQ(two.score(3.5), 1.0);
    const TwoSided copy(two);
    TwoSided assigned;
    assigned = two;
    two.x1h(6.0);
    EXPECT_THROW(two.score(3.5), BadParams);
    EXPECT_EQ(copy.score(3.5), 1.0);
    EXPECT_EQ(assigned.score(3.5), 1.0);
}

TEST(ScoreShortCuts, FollowALoadThatEndsEarly) {
    // Three values of five: the x values are new, and out of order.
    OneSided one;
    test::HandWritten byHand;
    byHand.real(0.0).real(9.0).real(1.0);
    EXPECT_THROW(test::load(byHand.sealed(), one), vxArchive::Errors);
    EXPECT_EQ(one.x1(), 9.0);
    EXPECT_THROW(one.score(0.5), BadParams);

    TwoSided two;
    two.init(0, 1, 2, 5, 4, 3, 0.0, 1.0, 0.0, 1.0);
    test::HandWritten lowPartOnly;
    lowPartOnly.real(0.0).real(1.0).real(8.0).real(0.0).real(1.0).real(5.0);
    EXPECT_THROW(test::load(lowPartOnly.sealed(), two), vxArchive::Errors);
    EXPECT_EQ(two.xc(), 8.0);
    EXPECT_THROW(two.score(0.5), BadParams);
}

/// A caller's function: counts its calls.
class Counting : public vxClsFtSc {
public:
    Counting(double given, long* calls) : given_(given), calls_(calls) {}
    double score(double) const override {
        ++*calls_;
        return given_;
    }
    vxClsFtSc* clone() const override { return new Counting(*this); }
    bool operator==(const vxClsFtSc&) const override { return false; }

private:
    double given_;
    long* calls_;
};

/// A caller's function of a derived class.
class Always : public OneSided {
public:
    double score(double) const override { return 0.75; }
};

vxPtrHandle<vxClsFtSc> anyFunction(Maker& maker, long& calls) {
    const auto choice = maker.random() % 40;
    if (choice == 0) {
        return nullptr;
    }
    if (choice < 4) {
        return vxPtrHandle<vxClsFtSc>(new Counting(maker.number(), &calls));
    }
    if (choice < 6) {
        return vxPtrHandle<vxClsFtSc>(new Always);
    }
    if (choice < 10) {
        return vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreIgnore);
    }
    return choice < 25 ? vxPtrHandle<vxClsFtSc>(new OneSided(maker.oneSided()))
                       : vxPtrHandle<vxClsFtSc>(new TwoSided(maker.twoSided()));
}

vxClassifierRuleTable anyTable(Maker& maker, std::size_t numFeatures, long& calls) {
    std::vector<vxClassifierRule> rules(1 + maker.random() % 12);
    long label = 0;
    for (vxClassifierRule& rule : rules) {
        std::vector<vxPtrHandle<vxClsFtSc>> functions;
        while (functions.size() < numFeatures) {
            functions.push_back(anyFunction(maker, calls));
        }
        rule.init(functions, label++);
    }
    vxClassifierRuleTable table;
    table.train(rules);
    return table;
}

long firstAbove(const vxClassifierRuleTable& table, const vxClassifierFeatureVector& values,
                double threshold) {
    for (const vxClassifierRule& rule : table.rules()) {
        if (rule.score(values) > threshold) {
            return rule.label();
        }
    }
    return -1;
}

TEST(RuleSearch, FindsTheRuleAndMakesTheCallsAndErrorsOfAskingEachRuleForItsScore) {
    long numFound = 0;
    long numErrors = 0;
    for (unsigned seed = 0; seed < 1500; ++seed) {
        Maker maker(seed);
        const std::size_t numFeatures = 1 + maker.random() % 6;
        long calls = 0;
        const vxClassifierRuleTable table = anyTable(maker, numFeatures, calls);
        for (const double threshold : {0.0, 0.25, 0.5, 0.9, 1.0}) {
            std::vector<double> values(numFeatures);
            std::generate(values.begin(), values.end(), [&] { return maker.number(); });
            calls = 0;
            const std::string expected =
                outcomeOf([&] { return std::to_string(firstAbove(table, values, threshold)); });
            const long expectedCalls = calls;
            calls = 0;
            ASSERT_EQ(
                outcomeOf([&] { return std::to_string(table.classifyHardThreshold(values, threshold)); }),
                expected)
                << "seed " << seed;
            ASSERT_EQ(calls, expectedCalls) << "seed " << seed;
            numFound += expected[0] >= '0' && expected[0] <= '9' && expected.size() < 4 ? 1 : 0;
            numErrors += expected.size() > 4 ? 1 : 0;
        }
    }
    EXPECT_GT(numFound, 700) << "all outcomes must have been met";
    EXPECT_GT(numErrors, 300);
}

} // namespace
