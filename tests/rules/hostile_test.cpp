#include "tests/rules/bytes.h"
#include "tests/rules/functions.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/rule_table.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using test::Bytes;
using test::Content;
using test::Function;
using vxClassifierDefs::BadParams;
using Values = std::vector<double>;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

vxClassifierRuleTable sampleTable() {
    vxClassifierRuleTable table;
    table.train({test::rule({test::handleTo(test::oneSided(1, 2, 3, 0.25, 0.5)), test::ignore()}, 4),
                 test::rule({test::handleTo(test::trapezoid()), test::ignore()}, 5)});
    return table;
}

Bytes resealed(const Bytes& content) {
    Content copy;
    for (const unsigned char byte : content) {
        copy.byte(byte);
    }
    return copy.sealed();
}

/// Does with a table everything that can be done with one; what it holds may make that throw the library's
/// own exceptions and nothing else.
void use(const vxClassifierRuleTable& table) {
    try {
        static_cast<void>(table.classifyHardThreshold(Values{1.5, 0}, 0.25));
    } catch (const vxException&) {
    }
    try {
        static_cast<void>(table == vxClassifierRuleTable(table));
    } catch (const vxException&) {
    }
    try {
        static_cast<void>(test::stored(table));
    } catch (const vxException&) {
    }
}

enum class Outcome { refused, accepted };

Outcome loadAndUse(const Bytes& content) {
    const Bytes sealed = resealed(content);
    vxLoadingArchive archive(sealed);
    vxClassifierRuleTable table;
    try {
        archive || table;
    } catch (const vxArchive::Errors&) {
        use(table);
        return Outcome::refused;
    }
    use(table);
    return Outcome::accepted;
}

} // namespace

TEST(HostileRules, LoadedXValuesOutOfOrderAreMetWhenScoring) {
    for (const double x1 : {5.0, -5.0, infinity, notANumber}) {
        vxClassifierFeatureScoreOneSided function;
        test::load(Content().doubles({0, x1, 1, 0, 1}).sealed(), function);
        EXPECT_ERROR(function.score(0.5), BadParams, L"x1 must lie between x0 and xc");
    }
    vxClassifierFeatureScoreTwoSided overlapping;
    test::load(Content().doubles({0, 1, 2, 0, 1, 1, 1, 1, 0, 1}).sealed(), overlapping);
    EXPECT_ERROR(overlapping.score(0.5), BadParams, L"Bad x values");
}

TEST(HostileRules, LoadedYValuesOutsideTheRangeOnlyChangeTheNumber) {
    vxClassifierFeatureScoreOneSided function;
    test::load(Content().doubles({0, 1, 2, -3, 99}).sealed(), function);
    EXPECT_EQ(function.score(-1), -3.0);
    EXPECT_EQ(function.score(0.5), 48.0);
    EXPECT_EQ(function.score(1), 99.0);
    const vxClassifierRule rule = test::rule({test::handleTo(function)}, 1);
    EXPECT_EQ(rule.score(Values{-1}), -3.0);
    EXPECT_EQ(rule.score(Values{1}), 99.0);
    test::load(Content().doubles({0, 1, 2, notANumber, infinity}).sealed(), function);
    EXPECT_TRUE(std::isnan(function.score(0)));
    EXPECT_EQ(function.score(1), infinity);
}

TEST(HostileRules, WhatFollowsAnUnknownTagIsMisreadWithinBounds) {
    // The values behind the unknown tag are taken for the next function and for the label.
    vxClassifierRule loaded;
    const Bytes sealed =
        Content().vectorHead(2).number(12345).doubles({1, 2, 3, 0.25, 0.5}).number(4).sealed();
    vxLoadingArchive archive(sealed);
    archive || loaded;
    ASSERT_EQ(loaded.scoringMethods().size(), 2U);
    EXPECT_TRUE(loaded.scoringMethods()[0].isNull());
    EXPECT_TRUE(loaded.scoringMethods()[1].isNull());
    EXPECT_EQ(loaded.label(), 0x3ff00000); // the upper half of the first double
    EXPECT_ERROR_CLASS(archive.finish(), vxArchive::CorruptData);
    EXPECT_ERROR_CLASS(loaded.score(Values{1, 2}), vxBadPointer);
    EXPECT_ERROR_CLASS(test::stored(loaded), vxBadPointer);
}

TEST(HostileRules, EveryChangedByteGivesAnErrorOrAUsableTable) {
    const Bytes whole = test::payload(test::stored(sampleTable()));
    int refused = 0;
    int accepted = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (int change = 1; change < 256; ++change) {
            Bytes changed = whole;
            changed[i] = static_cast<unsigned char>(changed[i] ^ change);
            (loadAndUse(changed) == Outcome::refused ? refused : accepted) += 1;
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(accepted, 0);
}

TEST(HostileRules, EveryShortenedTableIsRefused) {
    Bytes content = test::payload(test::stored(sampleTable()));
    while (!content.empty()) {
        content.pop_back();
        EXPECT_EQ(loadAndUse(content), Outcome::refused) << content.size() << " bytes";
    }
}

TEST(HostileRules, HugeCountsAreRefusedBeforeMemoryIsTaken) {
    for (const std::uint32_t count : {0xffffffffU, 0x7fffffffU, 2U}) {
        const Bytes sealed = Content().vectorHead(count).byte(0).sealed();
        vxClassifierRuleTable table;
        EXPECT_ERROR_CLASS(test::load(sealed, table), vxArchive::TooLarge);
        vxClassifierRule rule;
        EXPECT_ERROR_CLASS(test::load(sealed, rule), vxArchive::TooLarge);
        vxClassifierFeatureVector vector(Values{});
        EXPECT_ERROR_CLASS(test::load(sealed, vector), vxArchive::TooLarge);
    }
}

TEST(HostileRules, CopyingAFunctionThatHandlesShareLeavesTheirCountsAlone) {
    vxPtrHandle<vxClassifierFeatureScoreOneSided> a(new vxClassifierFeatureScoreOneSided);
    vxPtrHandle<vxClassifierFeatureScoreOneSided> b(new vxClassifierFeatureScoreOneSided);
    const vxPtrHandle<vxClassifierFeatureScoreOneSided> secondOfA = a;
    *b = *a;
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*a), 2);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*b), 1);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*Function(a->clone())), 1) << "a clone takes no count over";
    a.reset();
    b.reset();
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*secondOfA), 1);
    EXPECT_EQ(secondOfA->score(2), 0.0);
}

TEST(HostileRules, LoadedRulesOfDifferentWidthAreMetWhenTheirTurnComes) {
    vxClassifierRuleTable table;
    test::load(Content()
                   .vectorHead(2)
                   .vectorHead(1)
                   .number(33385)
                   .doubles({0, 1, 2, 0, 1})
                   .number(4)
                   .vectorHead(2)
                   .number(5682)
                   .number(5682)
                   .number(5)
                   .sealed(),
               table);
    EXPECT_EQ(table.classifyHardThreshold(Values{1}, 0.5), 4);
    EXPECT_ERROR(table.classifyHardThreshold(Values{0}, 0.5), BadParams, L"MismatchedFeatureVectorSize");
}

TEST(HostileRules, ALoadedNullFunctionIsABadPointer) {
    vxClassifierRuleTable table;
    test::load(Content().vectorHead(1).vectorHead(1).number(12345).number(4).sealed(), table);
    EXPECT_ERROR_CLASS(table.classifyHardThreshold(Values{1}, 0.5), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(table == vxClassifierRuleTable(table)), vxBadPointer);
}

TEST(HostileRules, ALoadedNegativeLabelIsOnlyReturned) {
    vxClassifierRuleTable table;
    test::load(Content().vectorHead(1).vectorHead(1).number(5682).number(0x80000000U).sealed(), table);
    EXPECT_EQ(table.classifyHardThreshold(Values{1}, 0.5), -2147483647L - 1);
}

TEST(HostileRules, AThresholdOfNaNIsRefused) {
    EXPECT_ERROR(sampleTable().classifyHardThreshold(Values{1, 2}, notANumber), BadParams,
                 L"hardThreshold < 0 || hardThreshold > 1");
    EXPECT_ERROR(vxClassifierRuleTable().classifyHardThreshold(Values{}, notANumber), BadParams,
                 L"hardThreshold < 0 || hardThreshold > 1");
}

TEST(HostileRules, AssigningAndTrainingATableWithoutMemoryChangesNothing) {
    const vxClassifierRuleTable original = sampleTable();
    const vxClassifierRuleTable before = [] {
        vxClassifierRuleTable table;
        const Function ignored = test::ignore();
        table.train({test::rule({ignored}, 1), test::rule({ignored}, 2), test::rule({ignored}, 3)});
        return table;
    }();
    // Room for more rules than come, so that they could be assigned one by one.
    vxClassifierRuleTable assigned = before;
    const auto expectUnchanged = [&] { EXPECT_EQ(assigned, before); };
    EXPECT_GT(test::failEachAllocation([&] { assigned = original; }, expectUnchanged), 0);
    EXPECT_EQ(assigned, original);
    assigned = before;
    EXPECT_GT(test::failEachAllocation([&] { assigned.train(original.rules()); }, expectUnchanged), 0);
    EXPECT_EQ(assigned, original);
}
