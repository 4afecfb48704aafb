#include <vxclassifier/category_model_bayesian.h>

#include "tests/clastool/bayes/fake_density.h"
#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Indices = std::vector<long>;
using Sets = std::vector<Indices>;
using Types = vxClassifierDistributionTypes;
using TypeList = std::vector<Types::DistributionType>;
using test::Bytes;
using test::FakeDensity;
using test::Record;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;

constexpr Types::DistributionType normal = Types::eMultivariateNormal;
constexpr Types::DistributionType binomial = Types::eBinomial;

const vxFeaturePattern noMaxima({}, {});
const wchar_t* const trainedAboveMaximum =
    L"Train data measurement cannot exceed its maximum value when using binomial distribution";

vxFeaturePattern pattern(const std::vector<double>& values, const Indices& invalid = {}) {
    return vxFeaturePattern(values, invalid);
}

struct OpenModel : vx_CategoryModelBayesian {
    using vx_CategoryModelBayesian::serialize_;
};

TEST(CategoryModelBayesian, AnEmptyModelScores0) {
    const vx_CategoryModelBayesian model;
    EXPECT_EQ(model.categoryLabel(), 0);
    EXPECT_EQ(model.numMeasurements(), 0);
    EXPECT_EQ(model.matchScore(pattern({1.0, 2.0})), 0.0);
    const vx_CategoryModelBayesian labelled(7, {}, {}, noMaxima);
    EXPECT_EQ(labelled.categoryLabel(), 7);
    EXPECT_EQ(labelled.numMeasurements(), 0);
    EXPECT_EQ(labelled.matchScore(pattern({})), 0.0);
}

TEST(CategoryModelBayesian, TheNumberOfMeasurementsCountsEveryEntryOfEverySet) {
    EXPECT_EQ(vx_CategoryModelBayesian(3, {{4, 1, 1}, {0}, {}}, {normal, binomial, normal}, noMaxima)
                  .numMeasurements(),
              4);
}

TEST(CategoryModelBayesian, ATypeThatIsNotThereIsRefused) {
    const auto construct = [](Types::DistributionType type) {
        vx_CategoryModelBayesian(3, {{0}, {1}}, {normal, type}, noMaxima);
    };
    EXPECT_ERROR(construct(Types::ePoisson), NotImplemented, L"Poisson distribution is not implemented");
    EXPECT_ERROR(construct(Types::eUniform), NotImplemented, L"Uniform distribution is not implemented");
    for (const int unknown : {4, 77, -1, -2147483647}) {
        EXPECT_ERROR(construct(static_cast<Types::DistributionType>(unknown)), BadParams,
                     L"Unknown distribution type");
    }
}

TEST(CategoryModelBayesian, TheFirstUnsupportedSetIsTheOneReported) {
    EXPECT_ERROR(vx_CategoryModelBayesian(3, {{0}, {1}}, {Types::eUniform, Types::ePoisson}, noMaxima),
                 NotImplemented, L"Uniform distribution is not implemented");
}

TEST(CategoryModelBayesian, EachSetGetsTheDensityOfItsType) {
    const vx_CategoryModelBayesian model(3, {{0}, {1, 2}}, {binomial, normal}, pattern({8.0}));
    const vxPtrHandle<vx_ProbabilityDensityFunction> first(new vx_PDFBinomial(pattern({8.0})));
    const vxPtrHandle<vx_ProbabilityDensityFunction> second(new vx_PDFMultivariateNormal);
    EXPECT_EQ(test::stored(model), test::recordOf([&](Record& record) {
                  record.versions({0, 0, 0}).number(3).number(3).sets({{0}, {1, 2}});
                  record.pointers({first.get(), second.get()});
              }));
}

/// The maximum of the only density of a model.
double maximumOf(const Indices& set, const vxFeaturePattern& maxima) {
    vx_CategoryModelBayesian model(3, {set}, {binomial}, maxima);
    for (const double maximum : {1.0, 2.0, 3.0, 4.0, 5.0}) {
        const vxPtrHandle<vx_ProbabilityDensityFunction> expected(new vx_PDFBinomial(pattern({maximum})));
        vx_CategoryModelBayesian other;
        test::fillModel(other, 3, static_cast<long>(set.size()), {set}, {expected.get()});
        if (model == other) {
            return maximum;
        }
    }
    return 0.0;
}

TEST(CategoryModelBayesian, TheMaximumOfABinomialIsThatOfItsFirstIndex) {
    const vxFeaturePattern maxima = pattern({5.0, 2.0, 3.0}, {2});
    EXPECT_EQ(maximumOf({0}, maxima), 5.0);
    EXPECT_EQ(maximumOf({1}, maxima), 2.0);
    EXPECT_EQ(maximumOf({1, 0}, maxima), 2.0);
    EXPECT_EQ(maximumOf({1, 2}, maxima), 2.0);
}

TEST(CategoryModelBayesian, AMissingMaximumIs1) {
    const vxFeaturePattern maxima = pattern({5.0, 2.0, 3.0}, {2});
    EXPECT_EQ(maximumOf({2}, maxima), 1.0);
    EXPECT_EQ(maximumOf({3}, maxima), 1.0);
    EXPECT_EQ(maximumOf({2, 0}, maxima), 1.0);
    EXPECT_EQ(maximumOf({0}, noMaxima), 1.0);
    EXPECT_EQ(maximumOf({}, maxima), 1.0);
    vx_CategoryModelBayesian model(3, {{2}}, {binomial}, maxima);
    EXPECT_ERROR(model.adapt(pattern({0.0, 0.0, 1.5})), BadParams, trainedAboveMaximum);
    EXPECT_NO_THROW(model.adapt(pattern({0.0, 0.0, 1.0})));
}

TEST(CategoryModelBayesian, ANegativeIndexOfABinomialIsRefusedAtOnce) {
    EXPECT_ERROR(vx_CategoryModelBayesian(3, {{-1}}, {binomial}, pattern({1.0})), BadIndex,
                 L"Feature measurement indices must be >= 0");
    EXPECT_NO_THROW(vx_CategoryModelBayesian(3, {{-1}}, {normal}, pattern({1.0})));
}

TEST(CategoryModelBayesian, AJointBinomialIsBuiltButNotTrained) {
    vx_CategoryModelBayesian model(3, {{0, 1}}, {binomial}, noMaxima);
    EXPECT_ERROR(model.adapt(pattern({0.5, 0.5})), NotImplemented,
                 L"Multivariate Binomial Distributions are not implemented");
}

/// A model whose densities a test can look into.
struct Watched {
    explicit Watched(long label, const Sets& sets) {
        std::vector<vxPtrHandle<FakeDensity>> stand;
        std::vector<vxPersistent*> pointers;
        for (std::size_t i = 0; i < sets.size(); ++i) {
            stand.emplace_back(new FakeDensity);
            pointers.push_back(stand.back().get());
        }
        const Bytes sealed = test::recordOf([&](Record& record) {
            record.versions({0, 0, 0}).number(label).number(0).sets(sets).pointers(pointers);
            record.pointers(pointers);
        });
        vxLoadingArchive archive(sealed);
        archive || model;
        archive || densities;
    }

    vx_CategoryModelBayesian model;
    std::vector<vxPtrHandle<FakeDensity>> densities; // the model's own
};

TEST(CategoryModelBayesian, EveryDensityLearnsItsSelectionAsOnePattern) {
    Watched watched(3, {{2, 0}, {1, 5, 1}});
    watched.model.adapt(pattern({10.0, 11.0, 12.0}, {0}), nullptr, 0);
    using Learnt = std::vector<std::vector<vxFeaturePattern>>;
    EXPECT_EQ(watched.densities[0]->learnt, (Learnt{{pattern({12.0, 0.0}, {1})}}));
    EXPECT_EQ(watched.densities[1]->learnt, (Learnt{{pattern({11.0, 0.0, 11.0}, {1})}}));
}

TEST(CategoryModelBayesian, ADensityThatFailsToLearnLeavesTheOnesBeforeItAhead) {
    Watched watched(3, {{0}, {1}, {2}});
    watched.densities[1]->failure = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(watched.model.adapt(pattern({1, 2, 3})), std::runtime_error);
    EXPECT_EQ(watched.densities[0]->learnt.size(), 1U);
    EXPECT_EQ(watched.densities[2]->learnt.size(), 0U);
    watched.densities[1]->failure = [] { throw InsufficientTrainData(L"raw"); };
    EXPECT_ERROR(watched.model.adapt(pattern({1, 2, 3})), InsufficientTrainData, L"raw");
}

TEST(CategoryModelBayesian, TheScoreIsTheSumOfTheLogValuesInTheOrderOfTheSets) {
    Watched watched(3, {{0}, {2, 1}, {0}});
    watched.densities[0]->answer = 1e16;
    watched.densities[1]->answer = 1.0;
    watched.densities[2]->answer = -1e16;
    EXPECT_EQ(watched.model.matchScore(pattern({1, 2, 3})), (0.0 + 1e16 + 1.0) + -1e16);
    EXPECT_EQ(watched.densities[0]->asked, (std::vector<vxFeaturePattern>{pattern({1})}));
    EXPECT_EQ(watched.densities[1]->asked, (std::vector<vxFeaturePattern>{pattern({3, 2})}));
}

TEST(CategoryModelBayesian, InvalidAndMissingMeasurementsReachTheDensityAsInvalid) {
    Watched watched(3, {{0, 1, 2}});
    watched.model.matchScore(pattern({1, 2}, {0}));
    EXPECT_EQ(watched.densities[0]->asked, (std::vector<vxFeaturePattern>{pattern({0, 2, 0}, {0, 2})}));
}

TEST(CategoryModelBayesian, ADensityWithoutEnoughDataIsReportedWithTheLabel) {
    Watched watched(-12, {{0}, {1}});
    watched.densities[1]->failure = [] { throw InsufficientTrainData(L"too little"); };
    EXPECT_ERROR(watched.model.matchScore(pattern({1, 2})), InsufficientTrainData,
                 L"too little for category -12");
    watched.densities[1]->failure = [] { throw InsufficientTrainData(L""); };
    EXPECT_ERROR(watched.model.matchScore(pattern({1, 2})), InsufficientTrainData, L" for category -12");
}

TEST(CategoryModelBayesian, OtherFailuresOfADensityPassUnchanged) {
    Watched watched(3, {{0}});
    watched.densities[0]->failure = [] { throw BadParams(L"bad"); };
    EXPECT_ERROR(watched.model.matchScore(pattern({1})), BadParams, L"bad");
}

TEST(CategoryModelBayesian, AnUntrainedModelFailsWithTheMessageOfItsFirstDensity) {
    const vx_CategoryModelBayesian normals(42, {{0}}, {normal}, noMaxima);
    EXPECT_ERROR(normals.matchScore(pattern({1})), InsufficientTrainData,
                 L"No valid data has been used to train the distribution for category 42");
    const vx_CategoryModelBayesian counts(7, {{0}, {1}}, {binomial, normal}, noMaxima);
    EXPECT_ERROR(counts.matchScore(pattern({1, 2})), InsufficientTrainData,
                 L"Insufficient data has been used to train the distribution for category 7");
}

/// The library's densities are asked by a shorter way; it must lead to the same answers.
TEST(CategoryModelBayesian, TheLibrarysDensitiesAnswerAsIfTheyWereGivenTheSelection) {
    const vxFeaturePattern maxima = pattern({0, 0, 0, 10});
    const std::vector<vxFeaturePattern> data{pattern({1, 8, 2, 3}), pattern({3, 6, 9, 4}),
                                             pattern({5, 10, 4, 8}), pattern({2, 9, 7, 5}),
                                             pattern({3, 1, 1, 9})};
    vx_CategoryModelBayesian model(3, {{2, 0}, {3}, {1}}, {normal, binomial, normal}, maxima);
    vx_PDFMultivariateNormal joint;
    vx_PDFBinomial count(pattern({10}));
    vx_PDFMultivariateNormal single;
    for (const vxFeaturePattern& sample : data) {
        model.adapt(sample);
        const std::vector<double>& x = sample.featureMeasurements(true);
        joint.updateWithData({pattern({x[2], x[0]})});
        count.updateWithData({pattern({x[3]})});
        single.updateWithData({pattern({x[1]})});
    }
    EXPECT_EQ(model.matchScore(pattern({2, 7, 3, 6})), 0.0 + joint.logValue(pattern({3, 2})) +
                                                           count.logValue(pattern({6})) +
                                                           single.logValue(pattern({7})));
    EXPECT_EQ(model.matchScore(pattern({2, 7, 3, 6}, {0, 3})),
              0.0 + joint.logValue(pattern({3, 0}, {1})) + 0.0 + single.logValue(pattern({7})));
    EXPECT_EQ(model.matchScore(pattern({2})),
              0.0 + joint.logValue(pattern({0, 2}, {0})) + 0.0 + single.logValue(pattern({0}, {0})));
    EXPECT_ERROR(model.matchScore(pattern({2, 7, 3, 11})), BadParams,
                 L"Feature measurement must be <= specified maximum value");
}

TEST(CategoryModelBayesian, EqualityTakesTheBasePartAndTheDensitiesButNotTheSets) {
    const vxPtrHandle<FakeDensity> a(new FakeDensity(1.0));
    const vxPtrHandle<FakeDensity> b(new FakeDensity(2.0));
    const auto model = [](long label, long number, const Sets& sets, const std::vector<vxPersistent*>& pdfs) {
        vx_CategoryModelBayesian filled;
        test::fillModel(filled, label, number, sets, pdfs);
        return filled;
    };
    const vx_CategoryModelBayesian reference = model(1, 2, {{0}, {1}}, {a.get(), b.get()});
    EXPECT_EQ(reference, model(1, 2, {{0}, {1}}, {a.get(), b.get()}));
    EXPECT_EQ(reference, model(1, 2, {{5, 6}}, {a.get(), b.get()}));
    EXPECT_NE(reference, model(2, 2, {{0}, {1}}, {a.get(), b.get()}));
    EXPECT_NE(reference, model(1, 3, {{0}, {1}}, {a.get(), b.get()}));
    EXPECT_NE(reference, model(1, 2, {{0}, {1}}, {b.get(), a.get()}));
    EXPECT_NE(reference, model(1, 2, {{0}, {1}}, {a.get()}));
    EXPECT_NE(reference, model(1, 2, {{0}, {1}}, {a.get(), b.get(), b.get()}));
    EXPECT_FALSE(reference == model(1, 2, {{0}, {1}}, {a.get()}));
}

TEST(CategoryModelBayesian, CopiesShareTheirDensities) {
    vx_CategoryModelBayesian model(3, {{0}}, {normal}, noMaxima);
    const vx_CategoryModelBayesian copy(model);
    vx_CategoryModelBayesian assigned;
    assigned = model;
    model.adapt(pattern({1.0}));
    model.adapt(pattern({2.0}));
    EXPECT_EQ(copy, model);
    EXPECT_EQ(assigned, model);
    EXPECT_EQ(copy.matchScore(pattern({1.5})), model.matchScore(pattern({1.5})));
    EXPECT_EQ(assigned.matchScore(pattern({1.5})), model.matchScore(pattern({1.5})));
}

TEST(CategoryModelBayesian, ARoundTripGivesAnEqualModel) {
    vx_CategoryModelBayesian model(3, {{1, 0}, {2}}, {normal, binomial}, pattern({0, 0, 9}));
    for (const double x : {1.0, 2.0, 4.0}) {
        model.adapt(pattern({x, x * x, 2 * x}));
    }
    vx_CategoryModelBayesian loaded;
    test::load(test::stored(model), loaded);
    EXPECT_EQ(loaded, model);
    EXPECT_EQ(loaded.matchScore(pattern({1, 2, 3})), model.matchScore(pattern({1, 2, 3})));
    EXPECT_EQ(test::stored(loaded), test::stored(model));
}

TEST(CategoryModelBayesian, AStoredPointerBringsTheClassBack) {
    const vxPtrHandle<vx_CategoryModel> model(new vx_CategoryModelBayesian(3, {{1}}, {normal}, noMaxima));
    const Bytes sealed = test::storedPointer(model.get());
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vx_CategoryModelBayesian> loaded;
    archive || loaded;
    EXPECT_EQ(*loaded, vx_CategoryModelBayesian(3, {{1}}, {normal}, noMaxima));
}

TEST(CategoryModelBayesian, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 3; ++level) {
        const Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 3; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            record.number(5).number(6).sets({}).pointers({});
        });
        vx_CategoryModelBayesian into;
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
    }
    OpenModel model;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(model.serialize_(archive, 1), nullptr, 0); });
}

TEST(ProbabilityDensityFunction, AssigningLeavesTheSharesOfBoth) {
    const vxPtrHandle<FakeDensity> a(new FakeDensity(1.0));
    const vxPtrHandle<FakeDensity> b(new FakeDensity(2.0));
    const vxPtrHandle<FakeDensity> second = b;
    *a = *b;
    EXPECT_EQ(a->answer, 2.0);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*a), 1);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*b), 2);
}

} // namespace
