#include "tests/rules/bytes.h"
#include "tests/rules/functions.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/feature_score.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <limits>
#include <typeinfo>
#include <vector>

using test::Bytes;
using test::Content;
using test::Function;
using test::handleTo;
using test::load;
using test::oneSided;
using test::payload;
using test::stored;
using test::trapezoid;

namespace {

class DerivedOneSided : public vxClassifierFeatureScoreOneSided {};

} // namespace

TEST(FeatureScoreArchive, AnIgnoreFunctionTakesNoBytes) {
    EXPECT_EQ(payload(stored(vxClassifierFeatureScoreIgnore())), Bytes());
    vxClassifierFeatureScoreIgnore loaded;
    load(Content().sealed(), loaded);
}

TEST(FeatureScoreArchive, AOneSidedFunctionIsItsFiveDoublesInOrder) {
    const Bytes expected = {
        0, 0, 0, 0, 0, 0, 0xf0, 0x3f, // x0: 1
        0, 0, 0, 0, 0, 0, 0x00, 0x40, // x1: 2
        0, 0, 0, 0, 0, 0, 0x08, 0x40, // xc: 3
        0, 0, 0, 0, 0, 0, 0xd0, 0x3f, // y0: 0.25
        0, 0, 0, 0, 0, 0, 0xe0, 0x3f, // y1: 0.5
    };
    EXPECT_EQ(payload(stored(oneSided(1, 2, 3, 0.25, 0.5))), expected);
    vxClassifierFeatureScoreOneSided loaded;
    load(Content().doubles({1, 2, 3, 0.25, 0.5}).sealed(), loaded);
    EXPECT_TRUE(loaded == oneSided(1, 2, 3, 0.25, 0.5));
}

TEST(FeatureScoreArchive, ATwoSidedFunctionIsItsLowThenItsHighPart) {
    const Content content = Content().doubles({0, 1, 2, 0.125, 0.75, 5, 4, 3, 0.25, 0.875});
    EXPECT_EQ(payload(stored(trapezoid())), content.bytes());
    vxClassifierFeatureScoreTwoSided loaded;
    load(content.sealed(), loaded);
    EXPECT_TRUE(loaded == trapezoid());
}

TEST(FeatureScoreArchive, AHandleIsATagAndTheValuesOfItsClass) {
    EXPECT_EQ(payload(stored(test::ignore())), (Bytes{0x32, 0x16, 0, 0}));
    EXPECT_EQ(payload(stored(handleTo(oneSided(1, 2, 3, 0.25, 0.5)))),
              Content().number(33385).doubles({1, 2, 3, 0.25, 0.5}).bytes());
    EXPECT_EQ(payload(stored(handleTo(trapezoid()))),
              Content().number(59820).doubles({0, 1, 2, 0.125, 0.75, 5, 4, 3, 0.25, 0.875}).bytes());
}

TEST(FeatureScoreArchive, AHandleComesBackAsANewObjectOfItsClass) {
    for (const Function& original :
         {test::ignore(), handleTo(oneSided(1, 2, 3, 0.25, 0.5)), handleTo(trapezoid())}) {
        Function loaded;
        load(stored(original), loaded);
        ASSERT_FALSE(loaded.isNull());
        const vxClsFtSc& object = *loaded;
        const vxClsFtSc& expected = *original;
        EXPECT_TRUE(typeid(object) == typeid(expected));
        EXPECT_TRUE(object == expected);
        EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(object), 1);
    }
}

TEST(FeatureScoreArchive, LoadingReplacesTheObjectAndLeavesOtherHandlesToItAlone) {
    const Function old = handleTo(oneSided(1, 2, 3, 0.25, 0.5));
    Function loaded = old;
    load(stored(handleTo(oneSided(4, 5, 6, 0, 1))), loaded);
    EXPECT_TRUE(*old == oneSided(1, 2, 3, 0.25, 0.5));
    EXPECT_TRUE(*loaded == oneSided(4, 5, 6, 0, 1));
}

TEST(FeatureScoreArchive, StoringANullHandleIsABadPointer) {
    EXPECT_ERROR_CLASS(stored(Function()), vxBadPointer);
}

TEST(FeatureScoreArchive, AFunctionOfAnotherClassWritesNothing) {
    EXPECT_EQ(payload(stored(test::constant(0.5))), Bytes());
    EXPECT_EQ(payload(stored(Function(new DerivedOneSided))), Bytes());
}

TEST(FeatureScoreArchive, AnUnknownTagLeavesTheHandleAndReadsNothingMore) {
    const Function old = test::ignore();
    for (const std::uint32_t tag : {0U, 12345U, 5681U, 5683U, 33384U, 33386U, 59819U, 59821U, 0xffffffffU}) {
        const Bytes sealed = Content().number(tag).byte(77).sealed();
        vxLoadingArchive archive(sealed);
        Function held = old;
        unsigned char next = 0;
        archive || held || next;
        archive.finish();
        EXPECT_TRUE(held == old);
        EXPECT_EQ(next, 77);
    }
    Function null;
    load(Content().number(12345).sealed(), null);
    EXPECT_TRUE(null.isNull());
}

TEST(FeatureScoreArchive, AnArchiveThatEndsEarlyLeavesTheHandle) {
    const Function old = test::ignore();
    const Bytes whole = payload(stored(handleTo(trapezoid())));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        Content content;
        for (std::size_t i = 0; i < length; ++i) {
            content.byte(whole[i]);
        }
        Function held = old;
        EXPECT_ERROR_CLASS(load(content.sealed(), held), vxArchive::ShortData);
        EXPECT_TRUE(held == old);
    }
}

TEST(FeatureScoreArchive, LoadingChecksNoValues) {
    const double infinity = std::numeric_limits<double>::infinity();
    Function loaded;
    load(Content().number(33385).doubles({1, infinity, 3, -7, 99}).sealed(), loaded);
    const auto& function = dynamic_cast<const vxClassifierFeatureScoreOneSided&>(*loaded);
    EXPECT_EQ(function.x1(), infinity);
    EXPECT_EQ(function.y0(), -7.0);
    EXPECT_EQ(function.y1(), 99.0);
}

TEST(FeatureScoreArchive, EveryBitOfADoubleComesBack) {
    const double payloadNaN = std::numeric_limits<double>::signaling_NaN();
    const Content content = Content().number(33385).doubles({payloadNaN, -0.0, 5e-324, -payloadNaN, 1e308});
    Function loaded;
    load(content.sealed(), loaded);
    EXPECT_EQ(payload(stored(loaded)), content.bytes());
}

// Handles in general are stored as references to shared objects; handles to functions are not, also where the
// element type is only known to the template that stores vectors.
TEST(FeatureScoreArchive, AVectorOfHandlesHoldsTheTaggedForm) {
    const std::vector<Function> functions = {handleTo(oneSided(1, 2, 3, 0.25, 0.5)), test::ignore()};
    const Content content = Content().vectorHead(2).number(33385).doubles({1, 2, 3, 0.25, 0.5}).number(5682);
    EXPECT_EQ(payload(stored(functions)), content.bytes());
    std::vector<Function> loaded;
    load(content.sealed(), loaded);
    ASSERT_EQ(loaded.size(), 2U);
    EXPECT_TRUE(*loaded[0] == *functions[0]);
    EXPECT_TRUE(*loaded[1] == *functions[1]);
}

TEST(FeatureScoreArchive, AFunctionSharedByTwoHandlesIsWrittenTwiceAndComesBackAsTwo) {
    const Function shared = test::ignore();
    std::vector<Function> loaded;
    const Bytes sealed = stored(std::vector<Function>{shared, shared});
    EXPECT_EQ(payload(sealed), Content().vectorHead(2).number(5682).number(5682).bytes());
    load(sealed, loaded);
    ASSERT_EQ(loaded.size(), 2U);
    EXPECT_FALSE(loaded[0] == loaded[1]);
}
