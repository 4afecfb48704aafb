#include "tests/rules/bytes.h"
#include "tests/rules/functions.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/rule_table.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using test::Content;
using test::Function;
using test::handleTo;
using test::oneSided;
using test::ruleScoring;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::NotTrained;
using Values = std::vector<double>;

namespace {

constexpr const wchar_t* badThreshold = L"hardThreshold < 0 || hardThreshold > 1";
constexpr const wchar_t* untrained = L"the rule table needs to be trained before it can classify";
constexpr const wchar_t* noValues = L"featureVector.featureValues().size() == 0";
constexpr const wchar_t* otherSize =
    L"featureVector.featureValues().size() != rules_[0].scoringMethods().size())";

vxClassifierRuleTable tableOf(const std::vector<vxClassifierRule>& rules) {
    vxClassifierRuleTable table;
    table.train(rules);
    return table;
}

/// Label 10 scores 0.6, label 20 scores 0.9.
vxClassifierRuleTable twoRules() {
    return tableOf({ruleScoring({0.6}, 10), ruleScoring({0.9}, 20)});
}

vxClassifierRuleTable sampleTable() {
    return tableOf(
        {test::rule({handleTo(oneSided(1, 2, 3, 0.25, 0.5))}, 4), test::rule({test::ignore()}, 5)});
}

Content sampleContent() {
    return Content()
        .vectorHead(2)
        .vectorHead(1)
        .number(33385)
        .doubles({1, 2, 3, 0.25, 0.5})
        .number(4)
        .vectorHead(1)
        .number(5682)
        .number(5);
}

} // namespace

TEST(RuleTable, BeginsWithoutRulesAndUntrained) {
    const vxClassifierRuleTable table;
    EXPECT_TRUE(table.rules().empty());
    EXPECT_ERROR(table.classifyHardThreshold(Values{1}, 0.5), NotTrained, untrained);
}

TEST(RuleTable, TrainingCopiesTheRulesInOrder) {
    std::vector<vxClassifierRule> rules = {ruleScoring({0.25, 1}, 3), ruleScoring({0.5, 1}, 2)};
    const vxClassifierRuleTable table = tableOf(rules);
    EXPECT_TRUE(table.rules() == rules);
    rules.pop_back();
    EXPECT_EQ(table.rules().size(), 2U);
}

TEST(RuleTable, TrainingReplacesTheOldRules) {
    vxClassifierRuleTable table = twoRules();
    table.train({ruleScoring({0.5, 0.5}, 1)});
    ASSERT_EQ(table.rules().size(), 1U);
    EXPECT_EQ(table.rules()[0].label(), 1);
}

TEST(RuleTable, TrainingWithNoRulesIsRefusedAndKeepsTheOldOnes) {
    vxClassifierRuleTable table = twoRules();
    EXPECT_ERROR(table.train({}), BadParams, L"rules.size() == 0");
    EXPECT_TRUE(table == twoRules());
}

TEST(RuleTable, TrainingWithRulesOfDifferentWidthIsRefusedAndKeepsTheOldOnes) {
    vxClassifierRuleTable table = twoRules();
    const vxClassifierRule three = ruleScoring({1, 1, 1}, 1);
    const vxClassifierRule two = ruleScoring({1, 1}, 1);
    const wchar_t* message = L"rules[i].scoringMethods().size() != ruleSize";
    EXPECT_ERROR(table.train({three, three, two}), BadParams, message);
    EXPECT_ERROR(table.train({two, three, three}), BadParams, message);
    EXPECT_TRUE(table == twoRules());
}

TEST(RuleTable, TrainingCanTakeATablesOwnRules) {
    vxClassifierRuleTable table = twoRules();
    table.train(table.rules());
    EXPECT_TRUE(table == twoRules());
}

TEST(RuleTable, TrainingAcceptsRulesWithoutFunctionsAndThenFitsNoVector) {
    const vxClassifierRuleTable table = tableOf({vxClassifierRule()});
    EXPECT_ERROR(table.classifyHardThreshold(Values{}, 0.5), BadParams, noValues);
    EXPECT_ERROR(table.classifyHardThreshold(Values{1}, 0.5), BadParams, otherSize);
}

TEST(RuleTable, TheFirstRuleAboveTheThresholdDecides) {
    const vxClassifierRuleTable table = twoRules();
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, 0.5), 10);
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, 0.7), 20);
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, 0.95), -1);
}

TEST(RuleTable, LaterRulesAreNotEvaluated) {
    const Function later = test::constant(1.0);
    const vxClassifierRuleTable table = tableOf({ruleScoring({0.6}, 10), test::rule({later}, 20)});
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, 0.5), 10);
    EXPECT_EQ(dynamic_cast<const test::ConstantScore&>(*later).calls, 0);
}

TEST(RuleTable, AScoreEqualToTheThresholdIsNotEnough) {
    const vxClassifierRuleTable table = twoRules();
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, 0.6), 20);
    EXPECT_EQ(table.classifyHardThreshold(Values{0}, std::nextafter(0.6, 0.0)), 10);
    EXPECT_EQ(tableOf({ruleScoring({1.0}, 1)}).classifyHardThreshold(Values{0}, 1.0), -1);
    EXPECT_EQ(tableOf({test::rule({test::ignore()}, 1)}).classifyHardThreshold(Values{0}, 1.0), -1);
}

TEST(RuleTable, AThresholdOfZeroAcceptsAnyPositiveScoreAndNotZero) {
    EXPECT_EQ(tableOf({ruleScoring({5e-324}, 1)}).classifyHardThreshold(Values{0}, 0.0), 1);
    EXPECT_EQ(tableOf({ruleScoring({0.0}, 1)}).classifyHardThreshold(Values{0}, 0.0), -1);
    EXPECT_EQ(tableOf({ruleScoring({0.0}, 1)}).classifyHardThreshold(Values{0}, -0.0), -1);
}

TEST(RuleTable, TheThresholdIsCheckedBeforeAnythingElse) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {1.0000001, -5e-324, -1.0, infinity, -infinity}) {
        EXPECT_ERROR(vxClassifierRuleTable().classifyHardThreshold(Values{}, bad), BadParams, badThreshold);
        EXPECT_ERROR(twoRules().classifyHardThreshold(Values{1}, bad), BadParams, badThreshold);
    }
}

TEST(RuleTable, ThenTheRulesThenTheEmptyVectorThenItsSize) {
    EXPECT_ERROR(vxClassifierRuleTable().classifyHardThreshold(Values{}, 0.5), NotTrained, untrained);
    EXPECT_ERROR(twoRules().classifyHardThreshold(Values{}, 0.5), BadParams, noValues);
    EXPECT_ERROR(twoRules().classifyHardThreshold(Values{1, 2}, 0.5), BadParams, otherSize);
}

TEST(RuleTable, WhatARuleThrowsPassesThrough) {
    vxClassifierFeatureScoreOneSided broken;
    broken.x1(5);
    EXPECT_ERROR(tableOf({test::rule({handleTo(broken)}, 1)}).classifyHardThreshold(Values{0}, 0.5),
                 BadParams, L"x1 must lie between x0 and xc");
}

TEST(RuleTable, TablesAreEqualWhenTheirRulesAreInOrder) {
    EXPECT_TRUE(twoRules() == twoRules());
    EXPECT_FALSE(twoRules() != twoRules());
    EXPECT_TRUE(vxClassifierRuleTable() == vxClassifierRuleTable());
    const std::vector<vxClassifierRuleTable> others = {
        tableOf({ruleScoring({0.9}, 20), ruleScoring({0.6}, 10)}),
        tableOf({ruleScoring({0.6}, 10)}),
        tableOf({ruleScoring({0.6}, 10), ruleScoring({0.9}, 21)}),
        vxClassifierRuleTable(),
    };
    for (const vxClassifierRuleTable& other : others) {
        EXPECT_FALSE(twoRules() == other);
        EXPECT_FALSE(other == twoRules());
        EXPECT_TRUE(twoRules() != other);
    }
}

TEST(RuleTable, IsCopiedAssignedAndMoved) {
    const vxClassifierRuleTable original = twoRules();
    vxClassifierRuleTable copy = original;
    vxClassifierRuleTable assigned;
    assigned = copy;
    EXPECT_TRUE(assigned == original);
    const vxClassifierRuleTable& same = assigned;
    assigned = same;
    EXPECT_TRUE(assigned == original);
    vxClassifierRuleTable moved = std::move(copy);
    EXPECT_TRUE(moved == original);
    vxClassifierRuleTable moveAssigned;
    moveAssigned = std::move(moved);
    EXPECT_TRUE(moveAssigned == original);
}

TEST(RuleTable, IsStoredAsTheVectorOfItsRules) {
    EXPECT_EQ(test::payload(test::stored(sampleTable())), sampleContent().bytes());
    EXPECT_EQ(test::payload(test::stored(vxClassifierRuleTable())), (test::Bytes{0, 0, 0, 0, 0}));
}

TEST(RuleTable, LoadingReplacesTheRules) {
    vxClassifierRuleTable loaded = twoRules();
    test::load(sampleContent().sealed(), loaded);
    EXPECT_TRUE(loaded == sampleTable());
    EXPECT_EQ(loaded.classifyHardThreshold(Values{0}, 0.5), 5);
}

TEST(RuleTable, AnotherVersionOfTheVectorIsUnknown) {
    vxClassifierRuleTable loaded;
    EXPECT_ERROR_CLASS(test::load(Content().byte(1).number(0).sealed(), loaded), vxArchive::UnknownVersion);
    EXPECT_ERROR_CLASS(test::load(Content().vectorHead(1).byte(1).number(0).number(0).sealed(), loaded),
                       vxArchive::UnknownVersion);
}
