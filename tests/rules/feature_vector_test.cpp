#include "tests/rules/bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/feature_vector.h>

#include <gtest/gtest.h>

#include <vector>

using test::Content;
using Values = std::vector<double>;

TEST(FeatureVector, HoldsACopyOfTheValues) {
    Values values = {1, 2, 3};
    const vxClassifierFeatureVector vector(values);
    values[0] = 7;
    EXPECT_EQ(vector.featureValues(), (Values{1, 2, 3}));
}

TEST(FeatureVector, MayBeEmpty) {
    EXPECT_TRUE(vxClassifierFeatureVector(Values()).featureValues().empty());
}

TEST(FeatureVector, IsCopiedAndAssigned) {
    const vxClassifierFeatureVector original(Values{1, 2});
    const vxClassifierFeatureVector copy = original;
    vxClassifierFeatureVector assigned(Values{5});
    assigned = original;
    EXPECT_EQ(copy.featureValues(), (Values{1, 2}));
    EXPECT_EQ(assigned.featureValues(), (Values{1, 2}));
}

TEST(FeatureVector, IsStoredAsAVectorOfDoubles) {
    const test::Bytes expected = {
        0,                            // version
        2, 0, 0, 0,                   // count
        0, 0, 0, 0, 0, 0, 0xf0, 0x3f, // 1
        0, 0, 0, 0, 0, 0, 0x04, 0xc0, // -2.5
    };
    EXPECT_EQ(test::payload(test::stored(vxClassifierFeatureVector(Values{1, -2.5}))), expected);
    EXPECT_EQ(test::payload(test::stored(vxClassifierFeatureVector(Values()))), (test::Bytes{0, 0, 0, 0, 0}));
}

TEST(FeatureVector, LoadingReplacesTheValues) {
    vxClassifierFeatureVector loaded(Values{9, 9, 9});
    test::load(Content().vectorHead(2).doubles({1, -2.5}).sealed(), loaded);
    EXPECT_EQ(loaded.featureValues(), (Values{1, -2.5}));
}

TEST(FeatureVector, AnotherVersionIsUnknown) {
    vxClassifierFeatureVector loaded(Values{});
    EXPECT_ERROR_CLASS(test::load(Content().byte(1).number(0).sealed(), loaded), vxArchive::UnknownVersion);
}
