#include "clss/clastool/tree/equal_trees.h"

#include "tests/clastool/tree/trees.h"

#include <gtest/gtest.h>

namespace {

class EqualTrees : public testing::Test {
protected:
    detail::EqualTrees equal;
    vxDecisionTreeLeaf a{vxClassifierResult()};
    vxDecisionTreeLeaf b{vxClassifierResult()};
    vxDecisionTreeLeaf c{vxClassifierResult()};
    vxDecisionTreeLeaf d{vxClassifierResult()};
    vxDecisionTreeLeaf e{vxClassifierResult()};
};

TEST_F(EqualTrees, NothingIsKnownAtFirst) {
    EXPECT_FALSE(equal.areKnown(a, b));
    EXPECT_FALSE(equal.areKnown(a, a));
}

TEST_F(EqualTrees, ClassesOfEqualTreesGrowTogether) {
    equal.addTransitive(a, b);
    equal.addTransitive(c, d);
    EXPECT_TRUE(equal.areKnown(a, b));
    EXPECT_TRUE(equal.areKnown(b, a));
    EXPECT_FALSE(equal.areKnown(a, d));
    equal.addTransitive(b, c);
    EXPECT_TRUE(equal.areKnown(a, d));
    EXPECT_TRUE(equal.areKnown(d, b));
    EXPECT_FALSE(equal.areKnown(a, e));
    equal.addTransitive(a, d); // known already
    EXPECT_TRUE(equal.areKnown(c, b));
}

TEST_F(EqualTrees, APairStandsForItselfOnly) {
    equal.addPair(a, b);
    equal.addPair(b, c);
    EXPECT_TRUE(equal.areKnown(a, b));
    EXPECT_TRUE(equal.areKnown(b, c));
    EXPECT_FALSE(equal.areKnown(b, a));
    EXPECT_FALSE(equal.areKnown(a, c));
    EXPECT_FALSE(equal.areKnown(b, b));
}

TEST_F(EqualTrees, APairJoinsNoClasses) {
    equal.addTransitive(a, b);
    equal.addPair(b, c);
    EXPECT_FALSE(equal.areKnown(a, c));
    EXPECT_TRUE(equal.areKnown(b, c));
}

} // namespace
