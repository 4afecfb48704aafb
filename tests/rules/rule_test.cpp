#include "tests/rules/bytes.h"
#include "tests/rules/functions.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/rule.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

using test::constant;
using test::Content;
using test::Function;
using test::handleTo;
using test::oneSided;
using test::ruleScoring;
using vxClassifierDefs::BadParams;
using Values = std::vector<double>;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double scoreOf(const std::vector<double>& scores) {
    return ruleScoring(scores, 1).score(Values(scores.size(), 0.0));
}

vxClassifierRule sampleRule() {
    return test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.5)), test::ignore()}, 4);
}

Content sampleContent() {
    return Content().vectorHead(2).number(33385).doubles({1, 2, 3, 0.25, 0.5}).number(5682).number(4);
}

} // namespace

TEST(Rule, BeginsWithoutFunctionsAndWithLabelZero) {
    const vxClassifierRule rule;
    EXPECT_TRUE(rule.scoringMethods().empty());
    EXPECT_EQ(rule.label(), 0);
}

TEST(Rule, InitStoresTheFunctionsInOrderAndTheLabel) {
    std::vector<Function> functions = {constant(0.25), test::ignore(), constant(0.5)};
    vxClassifierRule rule;
    const std::vector<Function> before = functions;
    rule.init(functions, 7);
    EXPECT_EQ(functions, before);
    EXPECT_EQ(rule.scoringMethods(), functions);
    EXPECT_EQ(rule.label(), 7);
    functions.clear();
    EXPECT_EQ(rule.scoringMethods().size(), 3U);
}

TEST(Rule, InitReplacesWhatWasThere) {
    vxClassifierRule rule = ruleScoring({0.25, 0.5}, 3);
    std::vector<Function> one = {constant(0.75)};
    rule.init(one, 0);
    EXPECT_EQ(rule.scoringMethods().size(), 1U);
    EXPECT_EQ(rule.label(), 0);
}

TEST(Rule, InitRefusesANegativeLabelFirstAndNoFunctionsSecond) {
    vxClassifierRule rule = ruleScoring({0.25, 0.5}, 3);
    std::vector<Function> none;
    std::vector<Function> one = {constant(1)};
    EXPECT_ERROR(rule.init(none, -1), BadParams, L"label < 0");
    EXPECT_ERROR(rule.init(one, -1), BadParams, L"label < 0");
    EXPECT_ERROR(rule.init(none, 0), BadParams, L"scoringMethods.size() == 0");
    EXPECT_EQ(rule.scoringMethods().size(), 2U);
    EXPECT_EQ(rule.label(), 3);
}

TEST(Rule, InitHasThePublishedSignature) {
    using Init = void (vxClassifierRule::*)(std::vector<vxPtrHandle<vxClsFtSc>>&, long);
    static_assert(std::is_same_v<decltype(&vxClassifierRule::init), Init>);
}

TEST(Rule, CopiesShareTheFunctions) {
    const vxClassifierRule original = ruleScoring({0.25}, 3);
    const vxClassifierRule copy = original;
    vxClassifierRule assigned;
    assigned = original;
    EXPECT_EQ(copy.scoringMethods(), original.scoringMethods());
    EXPECT_EQ(assigned.scoringMethods(), original.scoringMethods());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*original.scoringMethods()[0]), 3);
    EXPECT_EQ(assigned.label(), 3);
}

TEST(Rule, TheScoreIsTheGeometricMeanOfTheScores) {
    EXPECT_EQ(scoreOf({0.25, 1.0}), 0.5);
    EXPECT_EQ(scoreOf({0.3}), 0.3);
    EXPECT_EQ(scoreOf({1e-200, 1e-100}), std::pow(1e-200 * 1e-100, 0.5));
    EXPECT_EQ(scoreOf({0.7, 0.9, 0.2}), std::pow(0.7 * 0.9 * 0.2, 1.0 / 3.0));
}

TEST(Rule, EachFunctionScoresTheValueAtItsPlace) {
    const vxClassifierRule rule =
        test::rule({handleTo(oneSided(0, 1, 9, 0, 1)), handleTo(oneSided(0, 4, 9, 0, 1))}, 0);
    EXPECT_EQ(rule.score(Values{1, 1}), 0.5);
    EXPECT_EQ(rule.score(Values{0.25, 4}), 0.5);
}

TEST(Rule, IgnoredFeaturesDoNotCount) {
    EXPECT_EQ(scoreOf({0.25, -1.0, 1.0}), 0.5);
    EXPECT_EQ(scoreOf({-1.0, 0.3, -1.0}), 0.3);
}

TEST(Rule, ANaNScoreDoesNotCountEither) {
    EXPECT_EQ(scoreOf({0.25, notANumber, 1.0}), 0.5);
    EXPECT_EQ(scoreOf({notANumber}), 1.0);
}

TEST(Rule, ARuleThatIgnoresEverythingFitsEverything) {
    EXPECT_EQ(scoreOf({-1.0}), 1.0);
    EXPECT_EQ(scoreOf({-1.0, -1.0, -1.0}), 1.0);
}

TEST(Rule, AScoreOfZeroMakesTheRuleScoreZero) {
    EXPECT_EQ(scoreOf({0.0}), 0.0);
    EXPECT_EQ(scoreOf({0.5, 0.0, 1.0}), 0.0);
}

TEST(Rule, ANegativeProductIsReturnedAsItIs) {
    EXPECT_EQ(scoreOf({-0.25, 0.5}), -0.125);
    EXPECT_EQ(scoreOf({-0.25, -0.5}), std::pow(0.125, 0.5));
    EXPECT_TRUE(std::signbit(scoreOf({-0.0, 0.5})));
}

TEST(Rule, OnlyExactlyMinusOneIsTheMark) {
    EXPECT_EQ(scoreOf({std::nextafter(-1.0, 0.0), 0.5}), std::nextafter(-1.0, 0.0) * 0.5);
    EXPECT_EQ(scoreOf({std::nextafter(-1.0, -2.0), 0.5}), std::nextafter(-1.0, -2.0) * 0.5);
}

TEST(Rule, ScoringRefusesAnotherNumberOfValues) {
    const vxClassifierRule rule = ruleScoring({0.25, 1.0}, 1);
    EXPECT_ERROR(rule.score(Values{1}), BadParams, L"MismatchedFeatureVectorSize");
    EXPECT_ERROR(rule.score(Values{1, 2, 3}), BadParams, L"MismatchedFeatureVectorSize");
    EXPECT_ERROR(rule.score(Values{}), BadParams, L"MismatchedFeatureVectorSize");
    EXPECT_ERROR(vxClassifierRule().score(Values{1}), BadParams, L"MismatchedFeatureVectorSize");
}

TEST(Rule, ScoringNothingWithAnEmptyRuleReportsTheEmptyVector) {
    EXPECT_ERROR(vxClassifierRule().score(Values{}), BadParams, L"featureVector.featureValues().size() == 0");
}

TEST(Rule, ANullFunctionIsABadPointerWhenItsTurnComes) {
    const Function first = constant(0.0);
    const vxClassifierRule rule = test::rule({first, Function()}, 1);
    EXPECT_ERROR_CLASS(rule.score(Values{1, 2}), vxBadPointer);
    EXPECT_EQ(dynamic_cast<const test::ConstantScore&>(*first).calls, 1);
}

TEST(Rule, WhatAFunctionThrowsPassesThrough) {
    vxClassifierFeatureScoreOneSided broken;
    broken.x1(5);
    EXPECT_ERROR(test::rule({handleTo(broken)}, 1).score(Values{0}), BadParams,
                 L"x1 must lie between x0 and xc");
    EXPECT_ERROR(test::rule({handleTo(vxClassifierFeatureScoreTwoSided())}, 1).score(Values{0}), BadParams,
                 L"Bad x values");
}

TEST(Rule, RulesAreEqualWhenTheirFunctionsHaveEqualValuesAndTheLabelsMatch) {
    EXPECT_TRUE(sampleRule() == sampleRule());
    EXPECT_FALSE(sampleRule() != sampleRule());
    EXPECT_TRUE(vxClassifierRule() == vxClassifierRule());
    const std::vector<vxClassifierRule> others = {
        test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.75)), test::ignore()}, 4),
        test::rule({test::ignore(), handleTo(oneSided(1, 2, 3, 0.25, 0.5))}, 4),
        test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.5))}, 4),
        test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.5)), test::ignore(), test::ignore()}, 4),
        test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.5)), test::ignore()}, 5),
        vxClassifierRule(),
    };
    for (const vxClassifierRule& other : others) {
        EXPECT_FALSE(sampleRule() == other);
        EXPECT_FALSE(other == sampleRule());
        EXPECT_TRUE(sampleRule() != other);
    }
}

TEST(Rule, ComparingMeetsANullFunctionAsABadPointer) {
    const vxClassifierRule withNull = test::rule({Function()}, 1);
    const vxClassifierRule without = ruleScoring({0.5}, 1);
    EXPECT_ERROR_CLASS(static_cast<void>(withNull == without), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(without == withNull), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(withNull == withNull), vxBadPointer);
}

TEST(Rule, RulesOfDifferentLengthAreUnequalBeforeAnyFunctionIsLookedAt) {
    EXPECT_FALSE(test::rule({Function()}, 1) == test::rule({Function(), Function()}, 1));
}

TEST(Rule, IsStoredAsTheVectorOfItsFunctionsAndItsLabel) {
    EXPECT_EQ(test::payload(test::stored(sampleRule())), sampleContent().bytes());
    EXPECT_EQ(test::payload(test::stored(vxClassifierRule())), (test::Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Rule, LoadingReplacesFunctionsAndLabel) {
    vxClassifierRule loaded = ruleScoring({0.25, 0.5, 0.75}, 9);
    test::load(sampleContent().sealed(), loaded);
    EXPECT_TRUE(loaded == sampleRule());
}

TEST(Rule, AnotherVersionOfTheVectorIsUnknown) {
    vxClassifierRule loaded;
    EXPECT_ERROR_CLASS(test::load(Content().byte(1).number(0).number(0).sealed(), loaded),
                       vxArchive::UnknownVersion);
}

TEST(Rule, ARuleWithANullFunctionCannotBeStored) {
    EXPECT_ERROR_CLASS(test::stored(test::rule({Function()}, 1)), vxBadPointer);
}

TEST(Rule, ALabelBeyond32BitsCannotBeStored) {
    if constexpr (sizeof(long) > 4) {
        const vxClassifierRule rule = ruleScoring({0.5}, std::numeric_limits<long>::max());
        EXPECT_ERROR_CLASS(test::stored(rule), vxArchive::NotRepresentable);
    }
}
