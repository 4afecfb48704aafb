#include "tests/laws/query_patterns.h"
#include "tests/laws/subject.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

namespace {

using laws::as;
using laws::Object;
using laws::queryPatterns;
using laws::Subject;

class MetricLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<Object> objects() { return laws::allObjects(GetParam()); }

    static std::vector<double> distancesOf(const vxPersistent& metric) {
        std::vector<double> distances;
        for (const vxFeaturePattern& p1 : queryPatterns()) {
            for (const vxFeaturePattern& p2 : queryPatterns()) {
                distances.push_back(as<vxPatternDistanceMetric>(metric).distance(p1, p2));
            }
        }
        return distances;
    }
};
INSTANTIATE_LAWS(MetricLaws, laws::subjectsOf<vxPatternDistanceMetric>());

TEST_P(MetricLaws, APatternIsZeroFromItselfAndFartherFromEveryOther) {
    for (const Object& object : objects()) {
        for (const vxFeaturePattern& p1 : queryPatterns()) {
            for (const vxFeaturePattern& p2 : queryPatterns()) {
                const double distance = as<vxPatternDistanceMetric>(*object).distance(p1, p2);
                EXPECT_TRUE(p1 == p2 ? distance == 0.0 : distance > 0.0) << distance;
            }
        }
    }
}

TEST_P(MetricLaws, TheDistanceIsTheSameBothWays) {
    for (const Object& object : objects()) {
        const auto& metric = as<vxPatternDistanceMetric>(*object);
        for (const vxFeaturePattern& p1 : queryPatterns()) {
            for (const vxFeaturePattern& p2 : queryPatterns()) {
                EXPECT_EQ(metric.distance(p1, p2), metric.distance(p2, p1));
            }
        }
    }
}

TEST_P(MetricLaws, PatternsOfDifferentSizesHaveNoDistance) {
    const vxFeaturePattern small({1.0}, {});
    const vxFeaturePattern large({1.0, 2.0}, {});
    for (const Object& object : objects()) {
        const auto& metric = as<vxPatternDistanceMetric>(*object);
        EXPECT_THROW(metric.distance(small, large), vxClassifierDefs::BadFeatures);
        EXPECT_THROW(metric.distance(large, small), vxClassifierDefs::BadFeatures);
    }
}

TEST_P(MetricLaws, ACopyACloneAndALoadedOneMeasureTheSame) {
    for (const Object& object : objects()) {
        const std::vector<double> distances = distancesOf(*object);
        EXPECT_EQ(distancesOf(*GetParam().copy(*object)), distances);
        EXPECT_EQ(distancesOf(*GetParam().clone(*object)), distances);
        EXPECT_EQ(distancesOf(*laws::reloaded(*object)), distances);
    }
}

} // namespace
