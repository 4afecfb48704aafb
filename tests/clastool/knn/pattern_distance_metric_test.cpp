#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

#include <type_traits>

namespace {

using test::ScriptedMetric;
using test::slotOf;

/// A metric that leaves everything that may be left to the base.
class PlainMetric : public vxPatternDistanceMetric {
public:
    double distance(const vxFeaturePattern&, const vxFeaturePattern&) const override { return 0.0; }
    vxPtrHandle<vxPatternDistanceMetric> clone() const override {
        return vxPtrHandle<vxPatternDistanceMetric>(new PlainMetric(*this));
    }
};

TEST(PatternDistanceMetric, DeclaresItsVirtualFunctionsInThePublishedOrder) {
    EXPECT_EQ(slotOf(&vxPatternDistanceMetric::distance), 0u);
    EXPECT_EQ(slotOf(&vxPatternDistanceMetric::clone), 1u);
    EXPECT_EQ(slotOf(&vxPatternDistanceMetric::isEquivalent), 2u);
    EXPECT_EQ(slotOf(&vxPatternDistanceMetricNorm::distance), 0u);
    EXPECT_EQ(slotOf(&vxPatternDistanceMetricNorm::clone), 1u);
    EXPECT_EQ(slotOf(&vxPatternDistanceMetricNorm::isEquivalent), 2u);
}

template <class Base>
struct DerivesVirtually {
    // Only a virtual base can be shared by two paths and still be reached without ambiguity.
    struct Other : virtual Base {};
    struct Both : PlainMetric, Other {};
    static constexpr bool value = std::is_convertible_v<Both*, Base*>;
};

TEST(PatternDistanceMetric, HasVirtualBases) {
    EXPECT_TRUE(DerivesVirtually<vxPersistent>::value);
    EXPECT_TRUE(DerivesVirtually<vxRepBase>::value);
}

TEST(PatternDistanceMetric, IsAbstract) {
    EXPECT_TRUE(std::is_abstract_v<vxPatternDistanceMetric>);
    EXPECT_TRUE(std::has_virtual_destructor_v<vxPatternDistanceMetric>);
}

TEST(PatternDistanceMetric, TakesAnyOtherForEquivalentUnlessOverridden) {
    const PlainMetric plain;
    EXPECT_TRUE(plain.isEquivalent(plain));
    EXPECT_TRUE(plain.isEquivalent(vxPatternDistanceMetricNorm(3.0)));
    EXPECT_TRUE(plain.isEquivalent(ScriptedMetric()));
}

TEST(PatternDistanceMetric, StoresItsVersionAndTheRootAndNothingElse) {
    const test::Bytes byHand = test::archiveOf([](vxArchive& archive) {
        test::putVersion(archive); // this level
        test::putVersion(archive); // the root
    });
    EXPECT_EQ(test::stored(PlainMetric()), byHand);
}

TEST(PatternDistanceMetric, RefusesToLoadAnotherVersion) {
    const test::Bytes newer = test::archiveOf([](vxArchive& archive) {
        test::putVersion(archive, 1);
        test::putVersion(archive);
    });
    PlainMetric metric;
    EXPECT_UNKNOWN_VERSION(test::load(newer, metric), nullptr, 0);
}

} // namespace
