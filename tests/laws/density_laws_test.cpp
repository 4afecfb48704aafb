#include "tests/laws/subject.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class DensityLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<double> logValuesOf(const vxPersistent& density) {
        std::vector<double> values;
        for (const double x : {0.0, 1.0, 2.5, 4.0, 7.0, 10.0}) {
            values.push_back(as<vx_ProbabilityDensityFunction>(density).logValue(vxFeaturePattern({x}, {})));
        }
        return values;
    }
};
INSTANTIATE_LAWS(DensityLaws, laws::subjectsOf<vx_ProbabilityDensityFunction>());

TEST_P(DensityLaws, UntrainedItHasNoValue) {
    const Object made = laws::own(GetParam().make());
    EXPECT_THROW(as<vx_ProbabilityDensityFunction>(*made).logValue(vxFeaturePattern({1.0}, {})),
                 vxClassifierDefs::InsufficientTrainData);
}

TEST_P(DensityLaws, ClearedItIsUntrained) {
    for (const Object& object : GetParam().samples()) {
        dynamic_cast<vx_ProbabilityDensityFunction&>(*object).clear();
        EXPECT_THROW(logValuesOf(*object), vxClassifierDefs::InsufficientTrainData);
    }
}

TEST_P(DensityLaws, TheSamplesGiveDifferentValues) {
    const std::vector<Object> samples = GetParam().samples();
    EXPECT_NE(logValuesOf(*samples[0]), logValuesOf(*samples[1])) << "or the other laws would see nothing";
}

TEST_P(DensityLaws, ACopyAndALoadedOneGiveTheSameValues) {
    for (const Object& object : GetParam().samples()) {
        const std::vector<double> values = logValuesOf(*object);
        EXPECT_EQ(logValuesOf(*GetParam().copy(*object)), values);
        EXPECT_EQ(logValuesOf(*laws::reloaded(*object)), values);
    }
}

TEST_P(DensityLaws, ClearingACopyLeavesTheOriginalTrained) {
    for (const Object& object : GetParam().samples()) {
        const std::vector<double> values = logValuesOf(*object);
        dynamic_cast<vx_ProbabilityDensityFunction&>(*GetParam().copy(*object)).clear();
        EXPECT_EQ(logValuesOf(*object), values);
    }
}

} // namespace
