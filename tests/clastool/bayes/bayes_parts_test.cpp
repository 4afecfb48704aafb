#include "clss/clastool/bayes/log_factorials.h"
#include "clss/clastool/bayes/model_layout.h"
#include "clss/clastool/bayes/selection.h"
#include "clss/clastool/bayes/truncated.h"

#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

// The parts of the technique that the library does not publish.

namespace {

using Indices = std::vector<long>;
using Sets = std::vector<Indices>;
using Types = vxClassifierDistributionTypes;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Truncated, GivesTheIntegerPart) {
    EXPECT_EQ(detail::truncated(0.0), 0);
    EXPECT_EQ(detail::truncated(0.999), 0);
    EXPECT_EQ(detail::truncated(-0.999), 0);
    EXPECT_EQ(detail::truncated(7.999), 7);
    EXPECT_EQ(detail::truncated(-7.999), -7);
    EXPECT_EQ(detail::truncated(2147483646.5), 2147483646);
    EXPECT_EQ(detail::truncated(-2147483646.5), -2147483646);
}

TEST(Truncated, IsCutAtTheLargestNumberOfEitherSign) {
    for (const double large : {2147483647.0, 2147483648.0, 2.5e14, 1e300, infinity}) {
        EXPECT_EQ(detail::truncated(large), 2147483647);
        EXPECT_EQ(detail::truncated(-large), -2147483647);
    }
}

TEST(Truncated, OfNaNIs0) {
    EXPECT_EQ(detail::truncated(notANumber), 0);
    EXPECT_EQ(detail::truncated(-notANumber), 0);
}

double logFactorial(std::int64_t number) {
    double sum = 0.0;
    for (std::int64_t i = 2; i <= number; ++i) {
        sum += std::log(static_cast<double>(i));
    }
    return sum;
}

TEST(LogFactorials, AreTheSumsTermByTermToTheLastBit) {
    const std::vector<std::int64_t> numbers{-2147483647, -1, 0, 1, 2, 3, 10, 170, 171, 3000, 4096};
    for (const std::int64_t n : numbers) {
        for (const std::int64_t k : numbers) {
            for (const std::int64_t m : numbers) {
                const detail::LogFactorials logs = detail::logFactorials(n, k, m);
                ASSERT_EQ(logs.ofN, logFactorial(n));
                ASSERT_EQ(logs.ofK, logFactorial(k));
                ASSERT_EQ(logs.ofM, logFactorial(m));
            }
        }
    }
}

TEST(LogFactorials, OfNumbersBelow2Are0) {
    const detail::LogFactorials logs = detail::logFactorials(1, 0, -5);
    EXPECT_EQ(logs.ofN, 0.0);
    EXPECT_EQ(logs.ofK, 0.0);
    EXPECT_EQ(logs.ofM, 0.0);
}

TEST(Consecutive, AreIndicesThatFollowEachOtherFromNoneBelow0) {
    for (const Indices& indices : {Indices{0}, Indices{7}, Indices{0, 1}, Indices{3, 4, 5}}) {
        EXPECT_TRUE(detail::areConsecutive(indices));
    }
    for (const Indices& indices : {Indices{}, Indices{-1}, Indices{-1, 0, 1}, Indices{0, 2}, Indices{4, 3},
                                   Indices{3, 3}, Indices{3, 4, 6}}) {
        EXPECT_FALSE(detail::areConsecutive(indices));
    }
}

struct Polls {
    long made = 0;
    long failAt = 0;
};

long countPoll(void* context) {
    auto& polls = *static_cast<Polls*>(context);
    ++polls.made;
    return polls.made == polls.failAt ? vsys_attention_cancelled : 0;
}

TEST(LogFactorials, CheckForInterruptionEvery2To20Terms) {
    Polls polls;
    const vxAttentionScope scope(&countPoll, &polls);
    detail::logFactorials((1 << 20) - 1, 0, 0);
    EXPECT_EQ(polls.made, 0);
    detail::logFactorials(0, 1 << 20, 0);
    EXPECT_EQ(polls.made, 1);
    polls.made = 0;
    detail::logFactorials(0, 0, (3 << 20) + 17);
    EXPECT_EQ(polls.made, 3);
    polls.made = 0;
    detail::logFactorials(2 << 20, 2 << 20, 2 << 20);
    EXPECT_EQ(polls.made, 2) << "one sum serves all three";
}

TEST(LogFactorials, StopWhereTheCheckFails) {
    Polls polls{0, 2};
    const vxAttentionScope scope(&countPoll, &polls);
    // A number beyond 32 bits, which would take half a minute.
    EXPECT_ERROR_CLASS(detail::logFactorials(4, 4 - 4294967295, 4294967295), vxInterrupted);
    EXPECT_EQ(polls.made, 2);
}

TEST(Selection, TakesValuesInTheGivenOrderAndRepeatsThem) {
    const vxFeaturePattern pattern({10.0, 11.0, 12.0}, {});
    detail::Selection selection(pattern, {2, 0, 2});
    EXPECT_EQ(selection.pattern(), vxFeaturePattern({12.0, 10.0, 12.0}, {}));
    EXPECT_EQ(selection.size(), 3);
    ASSERT_NE(selection.valuesIfValid(), nullptr);
    EXPECT_EQ(selection.valuesIfValid()[1], 10.0);
}

TEST(Selection, MarksWhatIsInvalidOrNotThere) {
    const vxFeaturePattern pattern({10.0, 11.0, 12.0}, {1});
    detail::Selection selection(pattern, {1, 2, 3, 2000000000});
    EXPECT_EQ(selection.pattern(), vxFeaturePattern({0.0, 12.0, 0.0, 0.0}, {0, 2, 3}));
    EXPECT_EQ(selection.valuesIfValid(), nullptr);
    const vmath_FeaturePattern view = selection.view();
    EXPECT_EQ(view.numValues, 4);
    EXPECT_EQ(view.values[1], 12.0);
    EXPECT_EQ(std::vector<std::int32_t>(view.invalidIndices, view.invalidIndices + view.numInvalid),
              (std::vector<std::int32_t>{0, 2, 3}));
}

TEST(Selection, MayBeEmptyOrLarge) {
    EXPECT_EQ(detail::Selection(vxFeaturePattern({1.0}, {}), {}).pattern(), vxFeaturePattern({}, {}));
    Indices indices;
    std::vector<double> values;
    for (long i = 0; i < 1000; ++i) {
        indices.push_back(i);
        values.push_back(static_cast<double>(i));
    }
    EXPECT_EQ(detail::Selection(vxFeaturePattern(values, {500}), indices).pattern().numInvalid(), 1);
}

TEST(Selection, ANegativeIndexIsRefused) {
    EXPECT_ERROR(detail::Selection(vxFeaturePattern({1.0}, {}), {0, -1}), vxClassifierDefs::BadIndex,
                 L"Feature measurement indices must be >= 0");
}

Types dependent(const std::vector<std::pair<long, Indices>>& sets) {
    Types types(Types::eMultivariateNormal);
    for (const auto& [label, indices] : sets) {
        types.setDependent(label, indices);
    }
    return types;
}

Sets setsOf(const Types& types, long label, long numMeasurements) {
    return detail::ModelLayout(types, label, numMeasurements).sets();
}

TEST(ModelLayout, WithoutDependenciesEachMeasurementStandsAlone) {
    EXPECT_EQ(setsOf(dependent({}), 0, 3), (Sets{{0}, {1}, {2}}));
    EXPECT_EQ(setsOf(dependent({}), 0, 0), Sets{});
    EXPECT_EQ(setsOf(dependent({}), 0, -5), Sets{});
}

TEST(ModelLayout, ASetTakesThePlaceOfItsSmallestMember) {
    EXPECT_EQ(setsOf(dependent({{0, {4, 1}}, {0, {3, 0}}}), 0, 5), (Sets{{3, 0}, {4, 1}, {2}}));
}

TEST(ModelLayout, SetsOfOtherLabelsDoNotCount) {
    EXPECT_EQ(setsOf(dependent({{1, {0, 1}}, {2, {1, 2}}}), 2, 3), (Sets{{0}, {1, 2}}));
}

TEST(ModelLayout, ASetIsTakenWholeWithRepeatsAndMembersBeyondTheEnd) {
    EXPECT_EQ(setsOf(dependent({{0, {9, 1}}, {0, {1, 7}}}), 0, 3), (Sets{{0}, {9, 1, 1, 7}, {2}}));
    EXPECT_EQ(setsOf(dependent({{0, {5, 6}}}), 0, 3), (Sets{{0}, {1}, {2}}));
}

TEST(ModelLayout, TheTypeIsThatOfTheMemberMetFirst) {
    Types types(Types::eMultivariateNormal);
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    types.distributionTypeOverride(0, 2, Types::ePoisson);
    types.distributionTypeOverride(0, 4, Types::ePoisson);
    types.setDependent(0, {4, 2});
    const detail::ModelLayout layout(types, 0, 4);
    EXPECT_EQ(layout.sets(), (Sets{{0}, {1}, {4, 2}, {3}}));
    EXPECT_EQ(layout.types(),
              (std::vector<Types::DistributionType>{Types::eMultivariateNormal, Types::eBinomial,
                                                    Types::ePoisson, Types::eMultivariateNormal}));
}

TEST(ModelLayout, ANegativeLabelIsRefusedWhereThereIsAMeasurement) {
    EXPECT_ERROR(setsOf(dependent({}), -2, 1), vxClassifierDefs::BadLabel, L"Cateogory labels must be >= 0");
    EXPECT_EQ(setsOf(dependent({}), -2, 0), Sets{});
}

} // namespace
