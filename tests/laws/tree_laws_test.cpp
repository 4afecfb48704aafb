#include "tests/laws/subject.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class TreeLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<long> labelsOf(const vxPersistent& tree) {
        return as<vxDecisionTree>(tree).categoryLabels();
    }
};
INSTANTIATE_LAWS(TreeLaws, laws::subjectsOf<vxDecisionTree>());

TEST_P(TreeLaws, ListsALabelOnce) {
    for (const Object& object : GetParam().samples()) {
        std::vector<long> labels = labelsOf(*object);
        EXPECT_FALSE(labels.empty());
        std::sort(labels.begin(), labels.end());
        EXPECT_EQ(std::adjacent_find(labels.begin(), labels.end()), labels.end());
    }
}

TEST_P(TreeLaws, ACopyACloneAndALoadedOneListTheSameLabels) {
    for (const Object& object : GetParam().samples()) {
        const std::vector<long> labels = labelsOf(*object);
        EXPECT_EQ(labelsOf(*GetParam().copy(*object)), labels);
        EXPECT_EQ(labelsOf(*GetParam().clone(*object)), labels);
        EXPECT_EQ(labelsOf(*laws::reloaded(*object)), labels);
    }
}

} // namespace
