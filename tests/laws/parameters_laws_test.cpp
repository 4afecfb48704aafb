#include "platform/archive/class_registry.h"
#include "tests/laws/subject.h"
#include "tests/support/archives.h"

#include <gtest/gtest.h>

namespace {

using laws::as;
using laws::Object;
using laws::ParamsAccess;
using laws::Subject;

class ParametersLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<Object> objects() { return laws::allObjects(GetParam()); }
    static vxClassifierTrainParams& params(const Object& object) {
        return dynamic_cast<vxClassifierTrainParams&>(*object);
    }
};
INSTANTIATE_LAWS(ParametersLaws, laws::subjectsOf<vxClassifierTrainParams>());

TEST_P(ParametersLaws, ThrowIfNotReadyAtFirstAndInEveryCopy) {
    for (const Object& object : objects()) {
        EXPECT_TRUE(params(object).throwIfNotReady());
        params(object).throwIfNotReady(false);
        EXPECT_FALSE(params(object).throwIfNotReady());
        EXPECT_TRUE(params(GetParam().copy(*object)).throwIfNotReady());
        EXPECT_TRUE(params(GetParam().clone(*object)).throwIfNotReady());
        EXPECT_TRUE(params(laws::reloaded(*object)).throwIfNotReady());
    }
}

TEST_P(ParametersLaws, AssigningKeepsTheFlag) {
    const Object on = GetParam().samples()[0];
    const Object off = GetParam().samples()[1];
    params(off).throwIfNotReady(false);
    GetParam().assign(*off, *on);
    EXPECT_FALSE(params(off).throwIfNotReady());
    GetParam().assign(*on, *off);
    EXPECT_TRUE(params(on).throwIfNotReady());
}

TEST_P(ParametersLaws, TheFlagTakesNoPartInEqualityAndArchives) {
    for (const Object& object : objects()) {
        const Object off = GetParam().copy(*object);
        params(off).throwIfNotReady(false);
        EXPECT_TRUE(GetParam().equal(*object, *off));
        EXPECT_EQ(test::stored(*object), test::stored(*off));
    }
}

TEST_P(ParametersLaws, BelongToOneTechniqueWhateverTheirValues) {
    for (const Object& a : objects()) {
        for (const Object& b : objects()) {
            EXPECT_TRUE(ParamsAccess::isSameTechnique(params(a), params(b)));
        }
    }
}

TEST_P(ParametersLaws, BelongToNoOtherTechnique) {
    struct Foreign : vxClassifierTrainParams {
        vxPtrHandle<vxClassifierTrainParams> clone() const override { return nullptr; }
        bool isSameTechnique_(const vxClassifierTrainParams&) const override { return false; }
        vx_Classifier* newClassifier_() const override { return nullptr; }
    };
    const Object mine = GetParam().samples().front();
    EXPECT_FALSE(ParamsAccess::isSameTechnique(params(mine), Foreign()));
    EXPECT_FALSE(ParamsAccess::isEqual(params(mine), Foreign()));
    for (const Subject& other : laws::subjectsOf<vxClassifierTrainParams>()) {
        if (other.name != GetParam().name) {
            EXPECT_FALSE(ParamsAccess::isSameTechnique(params(mine), params(other.samples().front())));
        }
    }
}

TEST_P(ParametersLaws, MakeAnUntrainedClassifierOfARegisteredClassEachTime) {
    for (const Object& object : objects()) {
        const vxPtrHandle<vx_Classifier> first = ParamsAccess::newClassifier(params(object));
        const vxPtrHandle<vx_Classifier> second = ParamsAccess::newClassifier(params(object));
        ASSERT_FALSE(first.isNull());
        ASSERT_FALSE(second.isNull());
        EXPECT_NE(first, second);
        EXPECT_FALSE(first->isTrained());
        EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*first), 1);
        EXPECT_TRUE(detail::isRegisteredClass(laws::classOf(*first)));
        EXPECT_EQ(laws::classOf(*first), laws::classOf(*second));
    }
}

} // namespace
