#include <vxclassifier/platform/pair.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Pair, HoldsDefaultValuesOrTheGivenOnes) {
    const vxPair<double> empty;
    EXPECT_EQ(empty.first, 0.0);
    EXPECT_EQ(empty.second, 0.0);
    const vxPair<std::string> texts("a", "b");
    EXPECT_EQ(texts.first, "a");
    EXPECT_EQ(texts.second, "b");
}

TEST(Pair, EqualMeansBothEqual) {
    EXPECT_TRUE(vxPair<double>(1, 2) == vxPair<double>(1, 2));
    EXPECT_TRUE(vxPair<double>(1, 2) != vxPair<double>(1, 3));
    EXPECT_TRUE(vxPair<double>(1, 2) != vxPair<double>(0, 2));
    EXPECT_FALSE(vxPair<double>(1, 2) != vxPair<double>(1, 2));
}

} // namespace
