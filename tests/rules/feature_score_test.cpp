#include "tests/rules/functions.h"

#include <vxclassifier/feature_score.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <typeinfo>

using test::oneSided;
using test::trapezoid;

namespace {

class DerivedIgnore : public vxClassifierFeatureScoreIgnore {};

long sharesOf(const vxClsFtSc& function) {
    return vx_PtrHandleBase_RepAccessor::count(function);
}

} // namespace

TEST(FeatureScore, TheBaseIsAbstractAndCounted) {
    EXPECT_TRUE(std::is_abstract_v<vxClsFtSc>);
    EXPECT_TRUE((std::is_base_of_v<vxRepBase, vxClsFtSc>));
    EXPECT_TRUE(std::has_virtual_destructor_v<vxClsFtSc>);
}

TEST(FeatureScore, ACopyStartsWithoutSharesAndAnAssignedObjectKeepsItsOwn) {
    vxPtrHandle<vxClassifierFeatureScoreOneSided> shared(new vxClassifierFeatureScoreOneSided);
    const vxPtrHandle<vxClassifierFeatureScoreOneSided> second = shared;
    const vxClassifierFeatureScoreOneSided copy = *shared;
    EXPECT_EQ(sharesOf(*shared), 2);
    EXPECT_EQ(sharesOf(copy), 0);
    *shared = oneSided(0, 1, 2, 0, 1);
    EXPECT_EQ(sharesOf(*shared), 2);
    vxPtrHandle<vxClassifierFeatureScoreIgnore> ignored(new vxClassifierFeatureScoreIgnore);
    *ignored = vxClassifierFeatureScoreIgnore();
    EXPECT_EQ(sharesOf(*ignored), 1);
}

TEST(FeatureScore, ACloneIsANewEqualObjectOfTheSameClassWithoutShares) {
    const vxClassifierFeatureScoreIgnore ignore;
    const vxClassifierFeatureScoreOneSided one = oneSided(0, 1, 2, 0.25, 0.75);
    const vxClassifierFeatureScoreTwoSided two = trapezoid();
    for (const vxClsFtSc* original :
         {static_cast<const vxClsFtSc*>(&ignore), static_cast<const vxClsFtSc*>(&one),
          static_cast<const vxClsFtSc*>(&two)}) {
        const std::unique_ptr<const vxClsFtSc> clone(original->clone());
        const vxClsFtSc& cloned = *clone;
        EXPECT_NE(&cloned, original);
        EXPECT_TRUE(typeid(cloned) == typeid(*original));
        EXPECT_TRUE(cloned == *original);
        EXPECT_EQ(sharesOf(cloned), 0);
    }
}

TEST(FeatureScore, FunctionsOfDifferentClassesAreUnequalBothWays) {
    const vxClassifierFeatureScoreIgnore ignore;
    const vxClassifierFeatureScoreOneSided one;
    const vxClassifierFeatureScoreTwoSided two;
    EXPECT_FALSE(ignore == one);
    EXPECT_FALSE(one == ignore);
    EXPECT_FALSE(one == two);
    EXPECT_FALSE(two == one);
    EXPECT_FALSE(ignore == two);
    EXPECT_FALSE(two == ignore);
    EXPECT_TRUE(ignore != one);
}

TEST(FeatureScoreIgnore, GivesTheMarkForEveryValue) {
    const vxClassifierFeatureScoreIgnore ignore;
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double x : {0.0, -1.0, 1e300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(ignore.score(x), -1.0);
    }
}

TEST(FeatureScoreIgnore, EqualsEveryOtherOfExactlyItsClass) {
    const vxClassifierFeatureScoreIgnore a;
    const vxClassifierFeatureScoreIgnore b;
    const DerivedIgnore derived;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    EXPECT_FALSE(a == derived);
    EXPECT_FALSE(derived == a);
    EXPECT_TRUE(derived == DerivedIgnore());
}
