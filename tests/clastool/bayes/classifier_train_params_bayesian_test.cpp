#include <vxclassifier/classifier_train_params_bayesian.h>

#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_bayesian.h>
#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/classifier_train_params_knn.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

using Types = vxClassifierDistributionTypes;
using test::Bytes;
using test::Record;

struct Params : vxClassifierTrainParamsBayesian {
    using vxClassifierTrainParamsBayesian::isEqual_;
    using vxClassifierTrainParamsBayesian::isSameTechnique_;
    using vxClassifierTrainParamsBayesian::newClassifier_;
    using vxClassifierTrainParamsBayesian::serialize_;
    using vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian;

    Params(const Params& other) : vxPersistent(), vxRepBase(), vxClassifierTrainParamsBayesian(other) {}
    Params& operator=(const Params&) = default;

    static std::size_t isEqualSlot() { return test::slotOf(&Params::isEqual_); }
    static std::size_t isSameTechniqueSlot() { return test::slotOf(&Params::isSameTechnique_); }
    static std::size_t newClassifierSlot() { return test::slotOf(&Params::newClassifier_); }
};

Types someTypes() {
    Types types(Types::eBinomial);
    types.distributionTypeOverride(1, 2, Types::eMultivariateNormal);
    types.setDependent(0, {3, 4});
    return types;
}

vxClassifierFrequencies someFrequencies() {
    vxClassifierFrequencies frequencies(2.0);
    frequencies.categoryFrequencyOverride(5, 0.5);
    return frequencies;
}

vxClassifierCosts someCosts() {
    vxClassifierCosts costs(3.0);
    costs.misclassificationCostOverride(6, 7, 0.25);
    return costs;
}

Params someParams() {
    return Params(someTypes(), someFrequencies(), someCosts(), vxFeaturePattern({10.0, 20.0}, {1}));
}

void writeSomeValues(Record& record) {
    record.versions({0}).number(1).numbers({1}).numbers({2}).numbers({0}).numbers({0}).sets({{3, 4}});
    record.versions({0}).real(3.0).numbers({6}).numbers({7}).reals({0.25});
    record.versions({0}).real(2.0).numbers({5}).reals({0.5});
    record.versions({0, 0}).reals({10.0, 20.0}).flags({true, false});
}

std::unique_ptr<vxPersistent> made() {
    return std::unique_ptr<vxPersistent>(vxClassifierTrainParamsBayesian::make());
}

TEST(ClassifierTrainParamsBayesian, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(test::slotOf(&vxClassifierTrainParamsBayesian::clone), 0U);
    EXPECT_EQ(Params::isEqualSlot(), 1U);
    EXPECT_EQ(Params::isSameTechniqueSlot(), 2U);
    EXPECT_EQ(Params::newClassifierSlot(), 3U);
}

TEST(ClassifierTrainParamsBayesian, TheConstructorCopiesItsFourValues) {
    const Params params = someParams();
    EXPECT_EQ(params.distributionTypes(), someTypes());
    EXPECT_EQ(params.categoryFrequencies(), someFrequencies());
    EXPECT_EQ(params.misclassificationCosts(), someCosts());
    EXPECT_EQ(params.maxMeasurementValues(), vxFeaturePattern({10.0, 20.0}, {1}));
    EXPECT_TRUE(params.throwIfNotReady());
}

TEST(ClassifierTrainParamsBayesian, NothingIsCheckedBeforeTraining) {
    const Params params(Types(static_cast<Types::DistributionType>(77)), vxClassifierFrequencies(1.0),
                        vxClassifierCosts(1.0), vxFeaturePattern({-1.0}, {}));
    EXPECT_EQ(params.distributionTypes().defaultDistributionType(), 77);
}

TEST(ClassifierTrainParamsBayesian, EachSetterReplacesItsOwnMember) {
    Params params(Types(Types::eMultivariateNormal), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                  vxFeaturePattern({}, {}));
    params.distributionTypes(someTypes());
    params.categoryFrequencies(someFrequencies());
    params.misclassificationCosts(someCosts());
    params.maxMeasurementValues(vxFeaturePattern({10.0, 20.0}, {1}));
    EXPECT_EQ(params, someParams());
}

TEST(ClassifierTrainParamsBayesian, AnArchiveThatKnowsTheOldPatternIsToldOfItsChange) {
    Params params = someParams();
    auto* inside = const_cast<vxFeaturePattern*>(&params.maxMeasurementValues());
    const Bytes sealed = test::recordOf([&](Record& record) {
        record.pointer(inside);
        params.maxMeasurementValues(vxFeaturePattern({7.0}, {}));
        record.pointer(inside);
    });
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vxFeaturePattern> before;
    vxPtrHandle<vxFeaturePattern> after;
    archive || before;
    archive || after;
    EXPECT_EQ(*before, vxFeaturePattern({10.0, 20.0}, {1}));
    EXPECT_EQ(*after, vxFeaturePattern({7.0}, {}));
}

TEST(ClassifierTrainParamsBayesian, ASetterTakesItsOwnMember) {
    Params params = someParams();
    params.maxMeasurementValues(params.maxMeasurementValues());
    params.distributionTypes(params.distributionTypes());
    EXPECT_EQ(params, someParams());
}

TEST(ClassifierTrainParamsBayesian, ACopyAndAnAssignedOneAreEqual) {
    const Params params = someParams();
    EXPECT_EQ(Params(params), params);
    Params assigned(Types(Types::eMultivariateNormal), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                    vxFeaturePattern({}, {}));
    assigned.throwIfNotReady(false);
    assigned = params;
    EXPECT_EQ(assigned, params);
    EXPECT_FALSE(assigned.throwIfNotReady());
    assigned.throwIfNotReady(false);
    EXPECT_TRUE(Params(assigned).throwIfNotReady());
}

TEST(ClassifierTrainParamsBayesian, ACloneIsANewEqualObject) {
    const Params params = someParams();
    const vxPtrHandle<vxClassifierTrainParams> clone = params.clone();
    EXPECT_NE(clone.get(), &params);
    const vxClassifierTrainParams& object = *clone;
    EXPECT_TRUE(typeid(object) == typeid(vxClassifierTrainParamsBayesian));
    EXPECT_TRUE(params.isEqual_(*clone));
}

TEST(ClassifierTrainParamsBayesian, EqualityTakesAllFourMembers) {
    const Params params = someParams();
    Params other = someParams();
    other.distributionTypes(Types(Types::eBinomial));
    EXPECT_NE(params, other);
    other = params;
    other.categoryFrequencies(vxClassifierFrequencies(2.0));
    EXPECT_NE(params, other);
    other = params;
    other.misclassificationCosts(vxClassifierCosts(3.0));
    EXPECT_NE(params, other);
    other = params;
    other.maxMeasurementValues(vxFeaturePattern({10.0, 20.0}, {}));
    EXPECT_NE(params, other);
    EXPECT_FALSE(params == other);
    EXPECT_FALSE(params.isEqual_(other));
}

TEST(ClassifierTrainParamsBayesian, EqualityLeavesTheFlagOut) {
    Params other = someParams();
    other.throwIfNotReady(false);
    EXPECT_EQ(someParams(), other);
}

TEST(ClassifierTrainParamsBayesian, TheOrderOfTheOverridesCounts) {
    Types first(Types::eMultivariateNormal);
    first.distributionTypeOverride(0, 0, Types::eBinomial);
    first.distributionTypeOverride(0, 1, Types::eBinomial);
    Types second(Types::eMultivariateNormal);
    second.distributionTypeOverride(0, 1, Types::eBinomial);
    second.distributionTypeOverride(0, 0, Types::eBinomial);
    Params params = someParams();
    Params other = someParams();
    params.distributionTypes(first);
    other.distributionTypes(second);
    EXPECT_NE(params, other);
}

TEST(ClassifierTrainParamsBayesian, OtherTechniquesAreUnequalAndNotTheSame) {
    const Params params = someParams();
    const test::FakeParams fake;
    EXPECT_FALSE(params.isEqual_(fake));
    EXPECT_FALSE(params == fake);
    EXPECT_TRUE(params != fake);
    EXPECT_FALSE(params.isSameTechnique_(fake));
    const vxClassifierTrainParamsKNN knn(3);
    EXPECT_FALSE(params == knn);
    EXPECT_FALSE(params.isSameTechnique_(knn));
}

TEST(ClassifierTrainParamsBayesian, TheTechniqueIsTheClassWhateverTheValues) {
    const Params other(Types(Types::eUniform), vxClassifierFrequencies(9.0), vxClassifierCosts(9.0),
                       vxFeaturePattern({}, {}));
    EXPECT_TRUE(someParams().isSameTechnique_(other));
    EXPECT_TRUE(someParams().isSameTechnique_(vxClassifierTrainParamsBayesian(other)));
}

TEST(ClassifierTrainParamsBayesian, TheNewClassifierIsUntrainedAndBayesian) {
    const std::unique_ptr<vx_Classifier> classifier(someParams().newClassifier_());
    const vx_Classifier& object = *classifier;
    EXPECT_TRUE(typeid(object) == typeid(vx_ClassifierBayesian));
    EXPECT_FALSE(classifier->isTrained());
    EXPECT_TRUE(classifier->isEquivalent(vx_ClassifierBayesian()));
}

TEST(ClassifierTrainParamsBayesian, MakeGivesTheDefaults) {
    const Params defaults(Types(Types::eMultivariateNormal), vxClassifierFrequencies(1.0),
                          vxClassifierCosts(1.0), vxFeaturePattern({}, {}));
    const std::unique_ptr<vxPersistent> object = made();
    const auto* params = dynamic_cast<const vxClassifierTrainParamsBayesian*>(object.get());
    ASSERT_NE(params, nullptr);
    EXPECT_EQ(*params, defaults);
}

TEST(ClassifierTrainParamsBayesian, CostsAreArchivedBeforeFrequencies) {
    const Bytes byHand = test::recordOf([](Record& record) {
        record.versions({0, 0, 0}); // the class, its base, the root
        writeSomeValues(record);
    });
    EXPECT_EQ(test::stored(vxClassifierTrainParamsBayesian(someParams())), byHand);
    vxClassifierTrainParamsBayesian loaded(Types(Types::eUniform), vxClassifierFrequencies(9.0),
                                           vxClassifierCosts(9.0), vxFeaturePattern({}, {}));
    test::load(byHand, loaded);
    EXPECT_EQ(loaded, someParams());
}

TEST(ClassifierTrainParamsBayesian, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 3; ++level) {
        const Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 3; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            writeSomeValues(record);
        });
        vxClassifierTrainParamsBayesian into(someParams());
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
    }
}

TEST(ClassifierTrainParamsBayesian, TheBodyChecksTheVersionItself) {
    Params params = someParams();
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(params.serialize_(archive, 1), nullptr, 0); });
}

TEST(ClassifierTrainParamsBayesian, AStoredPointerBringsAnEqualObjectBack) {
    const vxPtrHandle<vxClassifierTrainParams> params = someParams().clone();
    const Bytes sealed = test::storedPointer(params.get());
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vxClassifierTrainParams> loaded;
    archive || loaded;
    EXPECT_TRUE(someParams().isEqual_(*loaded));
    EXPECT_TRUE(loaded->throwIfNotReady());
}

} // namespace
