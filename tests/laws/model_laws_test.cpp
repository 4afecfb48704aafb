#include "tests/laws/subject.h"

#include <gtest/gtest.h>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class ModelLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<double> scoresOf(const vxPersistent& model) {
        std::vector<double> scores;
        for (const double x : {0.0, 1.0, 2.5, 4.0, 7.0, 10.0}) {
            scores.push_back(as<vx_CategoryModel>(model).matchScore(vxFeaturePattern({x}, {})));
        }
        return scores;
    }
};
INSTANTIATE_LAWS(ModelLaws, laws::subjectsOf<vx_CategoryModel>());

TEST_P(ModelLaws, TheSamplesScoreDifferently) {
    const std::vector<Object> samples = GetParam().samples();
    EXPECT_NE(scoresOf(*samples[0]), scoresOf(*samples[1])) << "or the other laws would see nothing";
}

TEST_P(ModelLaws, ACopyAndALoadedOneScoreAlikeForTheSameLabel) {
    for (const Object& object : GetParam().samples()) {
        for (const Object& again : {GetParam().copy(*object), laws::reloaded(*object)}) {
            EXPECT_EQ(scoresOf(*again), scoresOf(*object));
            EXPECT_EQ(as<vx_CategoryModel>(*again).categoryLabel(),
                      as<vx_CategoryModel>(*object).categoryLabel());
        }
    }
}

} // namespace
