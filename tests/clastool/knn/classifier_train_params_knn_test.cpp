#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

#include <limits>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>

namespace {

using Params = vxClassifierTrainParamsKNN;
using Norm = vxPatternDistanceMetricNorm;
using test::OpenParams;
using test::ScriptedMetric;
using test::slotOf;

constexpr const wchar_t* badK = L"K must be >= 1";
constexpr long lowestLong = std::numeric_limits<long>::min();

/// The order of the norm that the parameters hold, or 0 if they hold no norm.
double orderOf(const Params& params) {
    const auto* norm = dynamic_cast<const Norm*>(params.distanceMetric().get());
    return norm == nullptr ? 0.0 : norm->order();
}

vxClassifierCosts someCosts() {
    vxClassifierCosts costs(2.0);
    costs.misclassificationCostOverride(3, 4, 5.0);
    return costs;
}

/// A record of parameters written by hand; one level of it may claim to be newer.
template <class Handle>
test::Bytes record(long k, Handle metric, vxClassifierCosts costs, int newerLevel = -1) {
    return test::archiveOf([&](vxArchive& archive) {
        test::putLevels(archive, 3, newerLevel); // own, base, root
        archive || k || metric || costs;
    });
}

Params loaded(const test::Bytes& sealed) {
    Params params(7);
    test::load(sealed, params);
    return params;
}

TEST(ClassifierTrainParamsKNN, KeepsTheVirtualFunctionsInThePublishedOrder) {
    EXPECT_EQ(slotOf(&Params::clone), 0u);
    EXPECT_EQ(slotOf(&OpenParams::isEqual_), 1u);
    EXPECT_EQ(slotOf(&OpenParams::isSameTechnique_), 2u);
    EXPECT_EQ(slotOf(&OpenParams::newClassifier_), 3u);
}

TEST(ClassifierTrainParamsKNN, HaveAEuclideanMetricAndCostsOfOneByDefault) {
    const Params params(3);
    EXPECT_EQ(params.k(), 3);
    EXPECT_EQ(orderOf(params), 2.0);
    EXPECT_TRUE(params.misclassificationCosts() == vxClassifierCosts(1.0));
    EXPECT_TRUE(params.throwIfNotReady());
}

TEST(ClassifierTrainParamsKNN, TakeKAMetricAndCosts) {
    const Params params(4, Norm(3.0), someCosts());
    EXPECT_EQ(params.k(), 4);
    EXPECT_EQ(orderOf(params), 3.0);
    EXPECT_TRUE(params.misclassificationCosts() == someCosts());
}

TEST(ClassifierTrainParamsKNN, AreMadeForOneNeighbour) {
    const vxPtrHandle<Params> made(dynamic_cast<Params*>(Params::make()));
    EXPECT_EQ(made->k(), 1);
    EXPECT_EQ(orderOf(*made), 2.0);
    EXPECT_TRUE(made->misclassificationCosts() == vxClassifierCosts(1.0));
}

TEST(ClassifierTrainParamsKNN, RefuseAKBelowOne) {
    for (const long k : {0L, -1L, lowestLong}) {
        EXPECT_ERROR(Params{k}, vxClassifierDefs::BadParams, badK);
        EXPECT_ERROR(Params(k, Norm(2.0), someCosts()), vxClassifierDefs::BadParams, badK);
        Params params(5);
        EXPECT_ERROR(params.k(k), vxClassifierDefs::BadParams, badK);
        EXPECT_EQ(params.k(), 5) << "a refused K must not be kept";
    }
}

TEST(ClassifierTrainParamsKNN, CheckKBeforeTheyCloneTheMetric) {
    const auto script = std::make_shared<test::MetricScript>();
    EXPECT_ERROR(Params(0, ScriptedMetric(script), someCosts()), vxClassifierDefs::BadParams, badK);
    EXPECT_EQ(script->clones, 0);
}

TEST(ClassifierTrainParamsKNN, TakeAnyKFromOneUp) {
    Params params(1);
    params.k(2147483647);
    EXPECT_EQ(params.k(), 2147483647);
    params.k(1);
    EXPECT_EQ(params.k(), 1);
}

TEST(ClassifierTrainParamsKNN, HoldACloneOfTheMetric) {
    Norm norm(3.0);
    Params params(1, norm, someCosts());
    EXPECT_NE(params.distanceMetric().get(), &norm);
    norm.order(4.0);
    EXPECT_EQ(orderOf(params), 3.0);
    params.distanceMetric(norm);
    norm.order(5.0);
    EXPECT_EQ(orderOf(params), 4.0);
}

TEST(ClassifierTrainParamsKNN, ShareTheMetricWithWhoeverAsks) {
    Params params(1);
    const auto handle = params.distanceMetric();
    EXPECT_EQ(handle.get(), params.distanceMetric().get());
    params.distanceMetric(Norm(3.0));
    EXPECT_EQ(dynamic_cast<const Norm&>(*handle).order(), 2.0) << "what was handed out stays as it was";
}

TEST(ClassifierTrainParamsKNN, TakeTheirOwnMetricAndCostsAgain) {
    Params params(1, Norm(3.0), someCosts());
    params.distanceMetric(*params.distanceMetric());
    params.misclassificationCosts(params.misclassificationCosts());
    EXPECT_EQ(orderOf(params), 3.0);
    EXPECT_TRUE(params.misclassificationCosts() == someCosts());
}

TEST(ClassifierTrainParamsKNN, TakeOtherCosts) {
    Params params(1);
    vxClassifierCosts costs = someCosts();
    params.misclassificationCosts(costs);
    costs.clearMisclassificationOverrides();
    EXPECT_TRUE(params.misclassificationCosts() == someCosts());
}

/// A metric that cannot be cloned.
struct Uncopied : ScriptedMetric {
    vxPtrHandle<vxPatternDistanceMetric> clone() const override { throw std::runtime_error("no clone"); }
};

TEST(ClassifierTrainParamsKNN, KeepTheirMetricWhenAnotherCannotBeCloned) {
    Params params(1, Norm(3.0), someCosts());
    EXPECT_THROW(params.distanceMetric(Uncopied()), std::runtime_error);
    EXPECT_EQ(orderOf(params), 3.0);
}

TEST(ClassifierTrainParamsKNN, ShareTheMetricWithTheirCopies) {
    Params params(4, Norm(3.0), someCosts());
    params.throwIfNotReady(false);
    const Params copy(params);
    Params assigned(1);
    assigned.throwIfNotReady(false);
    assigned = params;
    for (const Params* other : {&copy, static_cast<const Params*>(&assigned)}) {
        EXPECT_EQ(other->k(), 4);
        EXPECT_EQ(other->distanceMetric().get(), params.distanceMetric().get());
        EXPECT_TRUE(other->misclassificationCosts() == someCosts());
    }
    EXPECT_TRUE(copy.throwIfNotReady()) << "a copy has the default";
    EXPECT_FALSE(assigned.throwIfNotReady()) << "an assigned object keeps its own";
}

TEST(ClassifierTrainParamsKNN, SurviveAssignmentToThemselves) {
    Params params(4, Norm(3.0), someCosts());
    const Params& alias = params;
    params = alias;
    EXPECT_TRUE(params == Params(4, Norm(3.0), someCosts()));
}

TEST(ClassifierTrainParamsKNN, CloneThemselves) {
    const Params params(4, Norm(3.0), someCosts());
    const vxPtrHandle<vxClassifierTrainParams> clone = params.clone();
    EXPECT_NE(static_cast<const vxClassifierTrainParams*>(clone.get()), &params);
    EXPECT_TRUE(params == *clone);
    EXPECT_EQ(dynamic_cast<const Params&>(*clone).distanceMetric().get(), params.distanceMetric().get());
}

TEST(ClassifierTrainParamsKNN, AreEqualByKMetricAndCosts) {
    const Params params(4, Norm(3.0), someCosts());
    EXPECT_TRUE(params == Params(4, Norm(3.0), someCosts()));
    EXPECT_FALSE(params != Params(4, Norm(3.0), someCosts()));
    EXPECT_FALSE(params == Params(5, Norm(3.0), someCosts()));
    EXPECT_FALSE(params == Params(4, Norm(2.0), someCosts()));
    EXPECT_FALSE(params == Params(4, Norm(3.0), vxClassifierCosts(2.0)));
    EXPECT_TRUE(params != Params(4, Norm(3.0), vxClassifierCosts(2.0)));
}

TEST(ClassifierTrainParamsKNN, DifferFromParametersOfAnotherTechnique) {
    EXPECT_FALSE(Params(4) == test::FakeParams());
    EXPECT_TRUE(Params(4) != test::FakeParams());
}

TEST(ClassifierTrainParamsKNN, CompareThroughTheVirtualFunction) {
    struct Contrary : OpenParams {
        using OpenParams::OpenParams;
        bool isEqual_(const vxClassifierTrainParams&) const override { return false; }
    };
    const Contrary contrary(4);
    const Params& asParams = contrary;
    EXPECT_FALSE(asParams == Params(4));
    EXPECT_TRUE(asParams != Params(4));
    EXPECT_TRUE(Params(4) == asParams);
}

TEST(ClassifierTrainParamsKNN, AskTheirOwnMetricAboutTheOther) {
    const auto own = std::make_shared<test::MetricScript>();
    const auto others = std::make_shared<test::MetricScript>();
    const Params params(4, ScriptedMetric(own), someCosts());
    const Params other(4, ScriptedMetric(others), someCosts());
    EXPECT_TRUE(params == other);
    EXPECT_EQ(own->asking, params.distanceMetric().get());
    EXPECT_EQ(own->about, other.distanceMetric().get());
    EXPECT_EQ(others->asking, nullptr);
    own->equivalent = false;
    EXPECT_FALSE(params == other);
    EXPECT_TRUE(other == params) << "the other metric has another opinion";
}

TEST(ClassifierTrainParamsKNN, CompareKBeforeTheMetric) {
    const auto script = std::make_shared<test::MetricScript>();
    EXPECT_FALSE(Params(4, ScriptedMetric(script), someCosts()) == Params(5));
    EXPECT_EQ(script->asking, nullptr);
}

TEST(ClassifierTrainParamsKNN, ThrowWhereANullMetricIsToBeCompared) {
    const vxPtrHandle<vxPatternDistanceMetric> none;
    const Params null = loaded(record(4, none, vxClassifierCosts(1.0)));
    ASSERT_TRUE(null.distanceMetric().isNull());
    EXPECT_ERROR_CLASS(static_cast<void>(null == Params(4)), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(Params(4) == null), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(null == null), vxBadPointer);
    EXPECT_FALSE(null == Params(5)) << "K settles it";
    const Params otherCosts(4, Norm(2.0), vxClassifierCosts(3.0));
    EXPECT_ERROR_CLASS(static_cast<void>(null == otherCosts), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(otherCosts == null), vxBadPointer);
}

TEST(ClassifierTrainParamsKNN, BelongToTheTechniqueWhateverTheirValues) {
    const OpenParams params(4);
    const OpenParams others(9, Norm(1.0), someCosts());
    EXPECT_TRUE(params.isSameTechnique_(others));
    EXPECT_TRUE(others.isSameTechnique_(Params(4))) << "asked of a derived class about the class itself";
    EXPECT_FALSE(params.isSameTechnique_(test::FakeParams()));
}

TEST(ClassifierTrainParamsKNN, MakeAnUntrainedClassifierOfTheirTechnique) {
    const vxPtrHandle<vx_Classifier> made(OpenParams(4).newClassifier_());
    const vx_Classifier& classifier = *made;
    EXPECT_TRUE(typeid(classifier) == typeid(vx_ClassifierKNN));
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierTrainParamsKNN, AreStoredAsTheirLevelsKMetricAndCosts) {
    const vxPtrHandle<vxPatternDistanceMetric> norm = Norm(3.0).clone();
    EXPECT_EQ(test::stored(Params(4, *norm, someCosts())), record(4, norm, someCosts()));
}

TEST(ClassifierTrainParamsKNN, AreLoadedAsTheyWereStored) {
    const Params params(4, Norm(3.0), someCosts());
    EXPECT_TRUE(loaded(test::stored(params)) == params);
}

TEST(ClassifierTrainParamsKNN, AreLoadedThroughAPointer) {
    Params params(4, Norm(3.0), someCosts());
    params.throwIfNotReady(false);
    const test::Bytes sealed = test::storedPointer(&params);
    vxPtrHandle<vxClassifierTrainParams> handle;
    test::load(sealed, handle);
    ASSERT_FALSE(handle.isNull());
    EXPECT_TRUE(params == *handle);
    EXPECT_TRUE(handle->throwIfNotReady()) << "the flag is not archived";
}

TEST(ClassifierTrainParamsKNN, RefuseToLoadAnotherVersionOfAnyLevel) {
    for (int level = 0; level < 3; ++level) {
        EXPECT_UNKNOWN_VERSION(loaded(record(4, Norm(3.0).clone(), someCosts(), level)), nullptr, 0);
    }
}

TEST(ClassifierTrainParamsKNN, HaveNoMetricAfterLoadingAnObjectOfAnotherClass) {
    const Params params = loaded(record(4, test::pattern({1.0}), someCosts()));
    EXPECT_EQ(params.k(), 4);
    EXPECT_TRUE(params.distanceMetric().isNull());
    EXPECT_TRUE(params.misclassificationCosts() == someCosts());
}

TEST(ClassifierTrainParamsKNN, DoNotCheckALoadedK) {
    const Params params = loaded(record(-5, Norm(3.0).clone(), someCosts()));
    EXPECT_EQ(params.k(), -5);
}

TEST(ClassifierTrainParamsKNN, MayBeDerivedFrom) {
    EXPECT_FALSE(std::is_final_v<Params>);
    EXPECT_FALSE(std::is_final_v<Norm>);
    EXPECT_FALSE(std::is_final_v<vx_ClassifierKNN>);
}

} // namespace
