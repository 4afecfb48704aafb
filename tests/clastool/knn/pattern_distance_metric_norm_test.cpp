#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/clastool/knn/loaded_objects.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/slow_neighbors.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

#include <limits>
#include <random>
#include <vector>

namespace {

using test::bits;
using test::pattern;
using test::slowNorm;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

constexpr const wchar_t* badOrder = L"Order of norm distance must be > 0";
constexpr const wchar_t* differentLengths =
    L"Pattern distance function requires the number of measurementsin the two patterns to be equal";
constexpr const wchar_t* notAllValid = L"Access to full feature vector requires that all features are valid.";

double distance(double order, const std::vector<double>& a, const std::vector<double>& b) {
    return vxPatternDistanceMetricNorm(order).distance(*pattern(a), *pattern(b));
}

TEST(PatternDistanceMetricNorm, KeepsTheOrderThatItIsGiven) {
    EXPECT_EQ(vxPatternDistanceMetricNorm(0.5).order(), 0.5);
    vxPatternDistanceMetricNorm norm(1.0);
    norm.order(3.5);
    EXPECT_EQ(norm.order(), 3.5);
    norm.order(infinity);
    EXPECT_EQ(norm.order(), infinity);
}

TEST(PatternDistanceMetricNorm, IsMadeEuclidean) {
    const vxPtrHandle<vxPatternDistanceMetricNorm> made(
        dynamic_cast<vxPatternDistanceMetricNorm*>(vxPatternDistanceMetricNorm::make()));
    EXPECT_EQ(made->order(), 2.0);
}

TEST(PatternDistanceMetricNorm, RefusesAnOrderThatIsNotAboveZero) {
    for (const double order : {0.0, -0.0, -1.0, -infinity, notANumber}) {
        EXPECT_ERROR(vxPatternDistanceMetricNorm{order}, vxClassifierDefs::BadParams, badOrder);
        vxPatternDistanceMetricNorm norm(3.0);
        EXPECT_ERROR(norm.order(order), vxClassifierDefs::BadParams, badOrder);
        EXPECT_EQ(norm.order(), 3.0) << "a refused order must not be kept";
    }
}

TEST(PatternDistanceMetricNorm, CopiesTheOrder) {
    const vxPatternDistanceMetricNorm norm(4.0);
    const vxPatternDistanceMetricNorm copy(norm);
    vxPatternDistanceMetricNorm assigned(1.0);
    assigned = norm;
    EXPECT_EQ(copy.order(), 4.0);
    EXPECT_EQ(assigned.order(), 4.0);
}

TEST(PatternDistanceMetricNorm, ClonesItself) {
    const vxPatternDistanceMetricNorm norm(4.0);
    const vxPtrHandle<vxPatternDistanceMetric> clone = norm.clone();
    const auto* copy = dynamic_cast<const vxPatternDistanceMetricNorm*>(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, &norm);
    EXPECT_EQ(copy->order(), 4.0);
}

TEST(PatternDistanceMetricNorm, IsEquivalentToANormOfTheSameOrderOnly) {
    const vxPatternDistanceMetricNorm norm(2.0);
    EXPECT_TRUE(norm.isEquivalent(vxPatternDistanceMetricNorm(2.0)));
    EXPECT_FALSE(norm.isEquivalent(vxPatternDistanceMetricNorm(2.0000001)));
    EXPECT_FALSE(norm.isEquivalent(vxPatternDistanceMetricNorm(1.9999999)));
    EXPECT_FALSE(norm.isEquivalent(test::ScriptedMetric()));
}

TEST(PatternDistanceMetricNorm, IsEquivalentWhereNeitherOrderIsLessEvenForNaN) {
    EXPECT_TRUE(test::loadedNorm(notANumber).isEquivalent(vxPatternDistanceMetricNorm(2.0)));
    EXPECT_TRUE(vxPatternDistanceMetricNorm(2.0).isEquivalent(test::loadedNorm(notANumber)));
    EXPECT_TRUE(vxPatternDistanceMetricNorm(infinity).isEquivalent(vxPatternDistanceMetricNorm(infinity)));
}

/// A norm of the caller's own that says no to everything.
class Contrary : public vxPatternDistanceMetricNorm {
public:
    Contrary() : vxPatternDistanceMetricNorm(2.0) {}
    bool isEquivalent(const vxPatternDistanceMetric&) const override { return false; }
};

TEST(PatternDistanceMetricNorm, ComparesThroughTheVirtualFunction) {
    const vxPatternDistanceMetricNorm norm(2.0);
    EXPECT_TRUE(norm == vxPatternDistanceMetricNorm(2.0));
    EXPECT_FALSE(norm != vxPatternDistanceMetricNorm(2.0));
    EXPECT_FALSE(norm == vxPatternDistanceMetricNorm(3.0));
    EXPECT_TRUE(norm != vxPatternDistanceMetricNorm(3.0));
    const Contrary contrary;
    const vxPatternDistanceMetricNorm& asNorm = contrary;
    EXPECT_FALSE(asNorm == norm);
    EXPECT_TRUE(asNorm != norm);
    EXPECT_TRUE(norm == asNorm);
}

TEST(PatternDistanceMetricNorm, MeasuresWellKnownDistances) {
    EXPECT_EQ(distance(1.0, {1.0, -2.0}, {4.0, 2.0}), 7.0);
    EXPECT_EQ(distance(2.0, {1.0, -2.0}, {4.0, 2.0}), 5.0);
    EXPECT_EQ(distance(0.5, {0.0, 0.0}, {4.0, 9.0}), 25.0);
    EXPECT_EQ(distance(2.0, {3.0}, {3.0}), 0.0);
    EXPECT_EQ(distance(2.0, {}, {}), 0.0);
}

TEST(PatternDistanceMetricNorm, RefusesPatternsOfDifferentLength) {
    const vxPatternDistanceMetricNorm norm(2.0);
    const auto three = pattern({1.0, 2.0, 3.0});
    const auto four = pattern({1.0, 2.0, 3.0, 4.0});
    EXPECT_ERROR(norm.distance(*three, *four), vxClassifierDefs::BadFeatures, differentLengths);
    EXPECT_ERROR(norm.distance(*four, *three), vxClassifierDefs::BadFeatures, differentLengths);
    EXPECT_ERROR(norm.distance(*pattern({}), *three), vxClassifierDefs::BadFeatures, differentLengths);
}

TEST(PatternDistanceMetricNorm, ComparesTheLengthsBeforeAnythingElse) {
    const vxPatternDistanceMetricNorm norm(2.0);
    EXPECT_ERROR(norm.distance(*pattern({1.0, 2.0}, {0, 1}), *pattern({1.0}, {0})),
                 vxClassifierDefs::BadFeatures, differentLengths);
}

TEST(PatternDistanceMetricNorm, CountsInvalidMeasurementsAsPartOfTheLength) {
    const vxPatternDistanceMetricNorm norm(2.0);
    EXPECT_ERROR(norm.distance(*pattern({1.0, 2.0}, {1}), *pattern({1.0})), vxClassifierDefs::BadFeatures,
                 differentLengths);
}

TEST(PatternDistanceMetricNorm, RefusesAnInvalidMeasurementOnEitherSide) {
    const vxPatternDistanceMetricNorm norm(2.0);
    const auto valid = pattern({1.0, 2.0});
    const auto invalid = pattern({1.0, 2.0}, {1});
    EXPECT_ERROR(norm.distance(*invalid, *valid), vxClassifierDefs::BadFeatures, notAllValid);
    EXPECT_ERROR(norm.distance(*valid, *invalid), vxClassifierDefs::BadFeatures, notAllValid);
}

const std::vector<double>& someOrders() {
    static const std::vector<double> orders{1.0, 2.0, 0.5, 3.0, 4.0, 1.5, 2.0000001, 1e-3, 50.0, 1e300};
    return orders;
}

class RandomPatterns {
public:
    std::vector<double> next(std::size_t count) {
        std::vector<double> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(static_cast<double>(engine_()) / 1e9 - 9e9);
        }
        return values;
    }

private:
    std::mt19937_64 engine_{20240607};
};

TEST(PatternDistanceMetricNorm, GivesEveryBitOfThePlainFormula) {
    RandomPatterns random;
    for (const double order : someOrders()) {
        const vxPatternDistanceMetricNorm norm(order);
        for (std::size_t i = 0; i < 3000; ++i) {
            const std::vector<double> a = random.next(1 + i % 5);
            const std::vector<double> b = random.next(1 + i % 5);
            ASSERT_EQ(bits(norm.distance(*pattern(a), *pattern(b))), bits(slowNorm(a, b, order)))
                << "order " << order << ", case " << i;
        }
    }
}

TEST(PatternDistanceMetricNorm, RaisesToPowersEvenWhereAProductWouldBeNearer) {
    // Found by search with the GNU library's pow: the sum of products has another root than the sum of
    // powers.
    const std::vector<std::vector<double>> rareCases{{0x1.1a1f0ba64fc8cp+0, 0x1.bd3adc922661ap+0},
                                                     {0x1.0de236d88bfccp+0, 0x1.3849c40af1197p+0},
                                                     {0x1.655a0729d264ep+0, 0x1.81a1ee830f48p+0},
                                                     {0x1.d82ef0183959bp+0, 0x1.c1badf923d53ep+0}};
    for (const std::vector<double>& measurements : rareCases) {
        EXPECT_EQ(bits(distance(2.0, measurements, {0.0, 0.0})),
                  bits(slowNorm(measurements, {0.0, 0.0}, 2.0)));
    }
}

TEST(PatternDistanceMetricNorm, SumsInTheOrderOfTheMeasurements) {
    // 1 is lost beside 1e16 but two of them are not.
    EXPECT_EQ(distance(1.0, {1e16, 1.0, 1.0}, {0.0, 0.0, 0.0}), 1e16);
    EXPECT_EQ(distance(1.0, {1.0, 1.0, 1e16}, {0.0, 0.0, 0.0}), 1e16 + 2.0);
}

TEST(PatternDistanceMetricNorm, OverflowsAndUnderflowsLikeThePlainFormula) {
    EXPECT_EQ(distance(2.0, {1e200}, {0.0}), infinity);
    EXPECT_EQ(distance(2.0, {1e-200}, {0.0}), 0.0);
    EXPECT_EQ(distance(infinity, {2.0, 3.0}, {0.0, 0.0}), 1.0) << "there is no maximum norm";
}

TEST(PatternDistanceMetricNorm, StoresTheVersionsOfItsLevelsAndTheOrder) {
    const test::Bytes byHand = test::archiveOf([](vxArchive& archive) {
        test::putVersion(archive); // norm
        test::putVersion(archive); // metric
        test::putVersion(archive); // root
        test::put(archive, 2.5);
    });
    EXPECT_EQ(test::stored(vxPatternDistanceMetricNorm(2.5)), byHand);
}

TEST(PatternDistanceMetricNorm, IsLoadedAsItWasStored) {
    vxPatternDistanceMetricNorm norm(1.0);
    test::load(test::stored(vxPatternDistanceMetricNorm(2.5)), norm);
    EXPECT_EQ(norm.order(), 2.5);
    EXPECT_EQ(bits(test::loadedNorm(-0.0).order()), bits(-0.0)) << "what is loaded is not checked";
}

TEST(PatternDistanceMetricNorm, RefusesToLoadAnotherVersionOfAnyLevel) {
    for (int level = 0; level < 3; ++level) {
        const test::Bytes newer = test::archiveOf([&](vxArchive& archive) {
            test::putLevels(archive, 3, level);
            test::put(archive, 2.5);
        });
        vxPatternDistanceMetricNorm norm(1.0);
        EXPECT_UNKNOWN_VERSION(test::load(newer, norm), nullptr, 0);
        EXPECT_EQ(norm.order(), 1.0);
    }
}

TEST(PatternDistanceMetricNorm, IsStoredOnceWhenItIsShared) {
    vxPtrHandle<vxPatternDistanceMetric> first = vxPatternDistanceMetricNorm(2.5).clone();
    vxPtrHandle_const<vxPatternDistanceMetric> second = first;
    const test::Bytes sealed = test::archiveOf([&](vxArchive& archive) { archive || first || second; });
    first.reset();
    second.reset();
    vxLoadingArchive archive(sealed);
    archive || first || second;
    archive.finish();
    ASSERT_FALSE(first.isNull());
    EXPECT_EQ(first.get(), second.get());
    EXPECT_TRUE(vxPatternDistanceMetricNorm(2.5).isEquivalent(*first));
}

} // namespace
