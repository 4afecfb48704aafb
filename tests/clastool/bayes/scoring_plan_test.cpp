#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

// Models score complete patterns by a short way. It has the bits of the long one: select the measurements of
// each set, ask its density, add up.

namespace {

using test::patternOf;

using Sets = std::vector<std::vector<long>>;
using Densities = std::vector<vxPtrHandle<vx_ProbabilityDensityFunction>>;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// All NaNs count as one: which of two a sum passes on is the compiler's choice.
std::uint64_t bitsOf(double value) {
    const double canonical = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
    std::uint64_t bits = 0;
    std::memcpy(&bits, &canonical, sizeof bits);
    return bits;
}

vxFeaturePattern selected(const vxFeaturePattern& pattern, const std::vector<long>& set) {
    std::vector<double> values;
    std::vector<long> invalid;
    for (const long index : set) {
        if (!pattern.isValid(index)) {
            invalid.push_back(static_cast<long>(values.size()));
        }
        values.push_back(pattern.isValid(index) ? pattern.featureMeasurement(index, true) : 0.0);
    }
    return patternOf(values, invalid);
}

/// Sets, their densities, and a model with the same ones.
class Case {
public:
    explicit Case(unsigned seed) : random_(seed) {}

    double number() { return std::uniform_real_distribution<double>(-2.0, 2.0)(random_); }
    std::size_t below(std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
    }

    void addNormal(const std::vector<long>& set, std::size_t numSamples) {
        const vxPtrHandle<vx_PDFMultivariateNormal> density(new vx_PDFMultivariateNormal);
        for (std::size_t sample = 0; sample < numSamples; ++sample) {
            std::vector<double> values(set.size());
            for (double& value : values) {
                value = number();
            }
            density->updateWithData({patternOf(values)});
        }
        sets_.push_back(set);
        densities_.emplace_back(density);
    }

    void addBinomial(long index) {
        const vxPtrHandle<vx_PDFBinomial> density(new vx_PDFBinomial(patternOf({1e6})));
        density->updateWithData({patternOf({2e5}), patternOf({4e5}), patternOf({6e5})});
        sets_.push_back({index});
        densities_.emplace_back(density);
    }

    vxPtrHandle<vx_CategoryModel> model() const {
        std::vector<vxPersistent*> pointers;
        for (const auto& density : densities_) {
            pointers.push_back(density.get());
        }
        return test::modelOf(4, 1, sets_, pointers);
    }

    double expected(const vxFeaturePattern& pattern) const {
        double sum = 0.0;
        for (std::size_t i = 0; i < sets_.size(); ++i) {
            sum += densities_[i]->logValue(selected(pattern, sets_[i]));
        }
        return sum;
    }

private:
    std::mt19937 random_;
    Sets sets_;
    Densities densities_;
};

/// Any mixture of single and joint sets, in any order of indices, of 12 measurements.
Case normals(unsigned seed) {
    Case one(seed);
    const std::size_t number = one.below(24);
    for (std::size_t i = 0; i < number; ++i) {
        const long first = static_cast<long>(one.below(12));
        switch (one.below(4)) {
        case 0:
            one.addNormal({first, (first + 5) % 12, (first + 3) % 12}, 2 + one.below(9));
            break;
        case 1:
            one.addNormal({first % 10, first % 10 + 1, first % 10 + 2}, 2 + one.below(9));
            break;
        default:
            one.addNormal({first}, 1 + one.below(9)); // one sample is a constant
        }
    }
    return one;
}

Case mixture(unsigned seed) {
    Case one = normals(seed);
    one.addBinomial(static_cast<long>(one.below(12)));
    one.addNormal({3}, 4);
    return one;
}

vxFeaturePattern randomPattern(Case& one) {
    std::vector<double> values(12);
    for (double& value : values) {
        value = one.number();
    }
    return patternOf(values);
}

TEST(ScoringPlan, HasTheBitsOfTheSumOfLogValues) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        Case one = mixture(seed);
        const vxPtrHandle<vx_CategoryModel> model = one.model();
        for (int i = 0; i < 10; ++i) {
            const vxFeaturePattern pattern = randomPattern(one);
            EXPECT_EQ(bitsOf(model->matchScore(pattern)), bitsOf(one.expected(pattern))) << seed;
        }
    }
}

TEST(ScoringPlan, HasTheBitsOfOddValuesToo) {
    const double denormal = std::numeric_limits<double>::denorm_min();
    for (unsigned seed = 0; seed < 60; ++seed) {
        Case one = normals(seed);
        const vxPtrHandle<vx_CategoryModel> model = one.model();
        for (const double odd :
             {std::nan("1"), -std::nan("2"), -infinity, -1e300, -1e141, -1e134, denormal, -0.0}) {
            std::vector<double> values = randomPattern(one).featureMeasurements(true);
            values[one.below(12)] = odd;
            values[one.below(12)] = odd;
            const vxFeaturePattern pattern = patternOf(values);
            EXPECT_EQ(bitsOf(model->matchScore(pattern)), bitsOf(one.expected(pattern)))
                << seed << ' ' << odd;
        }
    }
}

TEST(ScoringPlan, IsLeftForPatternsThatAreNotComplete) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        Case one = mixture(seed);
        const vxPtrHandle<vx_CategoryModel> model = one.model();
        const std::vector<double> values = randomPattern(one).featureMeasurements(true);
        for (std::size_t length = 0; length <= values.size(); ++length) {
            const auto end = values.begin() + static_cast<std::ptrdiff_t>(length);
            const vxFeaturePattern tooShort = patternOf({values.begin(), end});
            EXPECT_EQ(bitsOf(model->matchScore(tooShort)), bitsOf(one.expected(tooShort)));
            if (length > 0) {
                const vxFeaturePattern invalid = patternOf(values, {static_cast<long>(length - 1)});
                EXPECT_EQ(bitsOf(model->matchScore(invalid)), bitsOf(one.expected(invalid)));
            }
        }
    }
}

TEST(ScoringPlan, OfManySinglesHasTheBitsOfAllOfThem) {
    for (const long number : {1L, 7L, 8L, 9L, 63L, 64L, 65L, 200L}) {
        Case one(static_cast<unsigned>(number));
        std::vector<double> values;
        for (long i = 0; i < number; ++i) {
            one.addNormal({i}, 5);
            values.push_back(one.number());
        }
        const vxFeaturePattern pattern = patternOf(values);
        EXPECT_EQ(bitsOf(one.model()->matchScore(pattern)), bitsOf(one.expected(pattern))) << number;
    }
}

TEST(ScoringPlan, OfWhatAnArchiveBroughtMeetsItsFailuresInTurn) {
    const long largest = std::numeric_limits<std::int32_t>::max();
    Case far(1);
    far.addNormal({0}, 4);
    far.addNormal({largest}, 4);
    EXPECT_EQ(far.model()->matchScore(patternOf({1.0})), far.expected(patternOf({1.0})));

    Case negative(2);
    negative.addNormal({0}, 4);
    negative.addNormal({-1}, 4);
    EXPECT_ERROR(negative.model()->matchScore(patternOf({1.0})), vxClassifierDefs::BadIndex,
                 L"Feature measurement indices must be >= 0");

    const vxPtrHandle<vx_PDFMultivariateNormal> ofOne(new vx_PDFMultivariateNormal);
    ofOne->updateWithData({patternOf({1.0}), patternOf({2.0})});
    const vxPtrHandle<vx_CategoryModel> mismatched = test::modelOf(4, 1, {{0, 1}}, {ofOne.get()});
    EXPECT_ERROR_CLASS(mismatched->matchScore(patternOf({1.0, 2.0})), vxStatusFailure);

    const vxPtrHandle<vx_CategoryModel> ofNothing = test::modelOf(4, 1, {{}}, {ofOne.get()});
    EXPECT_ERROR_CLASS(ofOne->logValue(patternOf({})), vxStatusFailure);
    EXPECT_ERROR_CLASS(ofNothing->matchScore(patternOf({1.0})), vxStatusFailure);
}

/// No pattern has a measurement there, and one more than that index is no number.
TEST(ScoringPlan, LeavesTheLargestIndexOfAllToTheModel) {
    const std::vector<vxClassifierDistributionTypes::DistributionType> types(
        2, vxClassifierDistributionTypes::eMultivariateNormal);
    vx_CategoryModelBayesian model(1, {{0}, {std::numeric_limits<long>::max()}}, types, patternOf({}));
    for (const double x : {1.0, 2.0, 4.0}) {
        model.adapt(patternOf({x}));
    }
    EXPECT_ERROR_CLASS(model.matchScore(patternOf({3.0})), vxClassifierDefs::InsufficientTrainData);
}

class DerivedNormal : public vx_PDFMultivariateNormal {
public:
    double logValue(const vxFeaturePattern&) const override { return 12.5; }
    static vxPersistent* make() { return new DerivedNormal; }
};

const vx_Instantiator derivedNormalExemplar(typeid(DerivedNormal), &DerivedNormal::make);

TEST(ScoringPlan, IsNotUsedForDerivedDensities) {
    const vxPtrHandle<DerivedNormal> derived(new DerivedNormal);
    derived->updateWithData({patternOf({1.0}), patternOf({2.0})});
    const vxPtrHandle<vx_CategoryModel> model = test::modelOf(4, 1, {{0}}, {derived.get()});
    EXPECT_EQ(model->matchScore(patternOf({1.0})), 12.5);
}

using Types = std::vector<vxClassifierDistributionTypes::DistributionType>;

TEST(ScoringPlan, KnowsWhatTheModelLearntLast) {
    const Types types(3, vxClassifierDistributionTypes::eMultivariateNormal);
    vx_CategoryModelBayesian model(1, {{0}, {1, 2}, {3}}, types, patternOf({}));
    vx_PDFMultivariateNormal first;
    vx_PDFMultivariateNormal second;
    vx_PDFMultivariateNormal third;
    Case numbers(4);
    for (int i = 0; i < 20; ++i) {
        const vx_CategoryModelBayesian copy(model);
        const vxFeaturePattern x =
            patternOf({numbers.number(), numbers.number(), numbers.number(), numbers.number()});
        model.adapt(x);
        first.updateWithData({selected(x, {0})});
        second.updateWithData({selected(x, {1, 2})});
        third.updateWithData({selected(x, {3})});
        const double expected = 0.0 + first.logValue(selected(x, {0})) +
                                second.logValue(selected(x, {1, 2})) + third.logValue(selected(x, {3}));
        EXPECT_EQ(bitsOf(model.matchScore(x)), bitsOf(expected));
        EXPECT_EQ(bitsOf(copy.matchScore(x)), bitsOf(expected)) << "copies share the densities";
    }
    vx_CategoryModelBayesian assigned;
    assigned = model;
    assigned.adapt(patternOf({1.0, 2.0, 3.0, 4.0}));
    const vxFeaturePattern x = patternOf({0.5, 0.25, 0.125, 1.0});
    EXPECT_EQ(bitsOf(assigned.matchScore(x)), bitsOf(model.matchScore(x)));
}

TEST(ScoringPlan, KnowsWhatAFailedTrainingHasLeft) {
    Types types(2, vxClassifierDistributionTypes::eMultivariateNormal);
    types.push_back(vxClassifierDistributionTypes::eBinomial);
    vx_CategoryModelBayesian model(1, {{0}, {1}, {2}}, types, patternOf({0.0, 0.0, 5.0}));
    vx_PDFMultivariateNormal first;
    for (const double x : {1.0, 2.0, 4.0}) {
        model.adapt(patternOf({x, 2.0 * x, x}));
        first.updateWithData({patternOf({x})});
    }
    EXPECT_THROW(model.adapt(patternOf({9.0, 1.0, 6.0})), vxClassifierDefs::BadParams);
    const vxFeaturePattern onlyFirst = patternOf({3.0, 0.0, 0.0}, {1, 2});
    const double before = first.logValue(patternOf({3.0}));
    first.updateWithData({patternOf({9.0})});
    EXPECT_NE(before, first.logValue(patternOf({3.0})));
    EXPECT_EQ(model.matchScore(onlyFirst), first.logValue(patternOf({3.0})));
    // Complete patterns see it too: the difference of two is that of the first two densities.
    EXPECT_NE(model.matchScore(patternOf({3.0, 4.0, 2.0})), model.matchScore(patternOf({9.0, 4.0, 2.0})));
}

} // namespace
