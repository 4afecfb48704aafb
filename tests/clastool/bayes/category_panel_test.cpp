#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/expect_error.h"
#include "tests/support/random_numbers.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <typeinfo>
#include <utility>

// A classifier scores complete patterns for all its categories together. With an interruption check installed
// it asks one model after the other; that shows what the results have to be.

namespace {

using test::dataOf;
using test::normalTypes;
using test::OpenBayesian;
using test::paramsOf;
using test::patternOf;
using test::RandomNumbers;
using test::Sample;

using Types = vxClassifierDistributionTypes;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// All numbers of a result, bit by bit but for the kind of a NaN; and the message of a failed run.
std::vector<std::uint64_t> bitsOf(const vxClassifierResult& result) {
    std::vector<double> numbers{result.matchScoreFactorLog()};
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
        numbers.insert(numbers.end(), {static_cast<double>(category.categoryLabel()), category.matchScore(),
                                       category.classScore(), category.expectedCost()});
    }
    std::vector<std::uint64_t> bits(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const double number = std::isnan(numbers[i]) ? std::nan("") : numbers[i];
        std::memcpy(&bits[i], &number, sizeof number);
    }
    return bits;
}

struct Outcome {
    Outcome(const vx_Classifier& classifier, const vxFeaturePattern& pattern)
        : message(test::outcomeOf([&] { bits = bitsOf(test::resultOf(classifier, pattern)); })) {}

    bool operator==(const Outcome& other) const { return message == other.message && bits == other.bits; }

    std::vector<std::uint64_t> bits;
    std::wstring message;
};

Outcome oneByOne(const vx_Classifier& classifier, const vxFeaturePattern& pattern) {
    const vxCancelFlag flag;
    const vxAttentionScope scope(flag);
    return Outcome(classifier, pattern);
}

vxClassifierDataProviderMemory dataFor(std::size_t categories, std::size_t size, unsigned seed) {
    RandomNumbers numbers(seed);
    std::vector<Sample> samples;
    for (std::size_t i = 0; i < 12 * categories; ++i) {
        samples.emplace_back(numbers.row(size), static_cast<long>(i % categories));
    }
    return dataOf(samples);
}

std::vector<long> upTo(std::size_t size) {
    std::vector<long> all(size);
    std::iota(all.begin(), all.end(), 0L);
    return all;
}

Types jointTypes(std::size_t categories, const std::vector<long>& set) {
    Types types = normalTypes();
    for (std::size_t i = 0; i < categories; ++i) {
        types.setDependent(static_cast<long>(i), set);
    }
    return types;
}

/// Patterns of any kind, nearly all of them complete.
void expectOneByOne(const vx_Classifier& classifier, std::size_t size) {
    RandomNumbers numbers(9);
    for (int i = 0; i < 20; ++i) {
        const vxFeaturePattern pattern = patternOf(numbers.row(size + static_cast<std::size_t>(i) % 3));
        EXPECT_EQ(Outcome(classifier, pattern).message, L"");
        EXPECT_TRUE(Outcome(classifier, pattern) == oneByOne(classifier, pattern));
    }
    for (const double odd : {0.0, -0.0, infinity, -infinity, std::nan(""), 1e130, -1e134, 1e150, -1e300}) {
        std::vector<double> values = numbers.row(size);
        values[size / 2] = odd;
        EXPECT_TRUE(Outcome(classifier, patternOf(values)) == oneByOne(classifier, patternOf(values))) << odd;
    }
    const vxFeaturePattern tooShort = patternOf(numbers.row(size - 1));
    EXPECT_TRUE(Outcome(classifier, tooShort) == oneByOne(classifier, tooShort));
    const vxFeaturePattern invalid = patternOf(numbers.row(size), {0});
    EXPECT_TRUE(Outcome(classifier, invalid) == oneByOne(classifier, invalid));
}

TEST(CategoryPanel, HasTheBitsOfOneModelAfterTheOther) {
    std::vector<std::pair<std::size_t, std::size_t>> shapes{{70, 3}, {2, 70}};
    for (const std::size_t categories : {1U, 2U, 4U, 5U, 9U}) {
        for (const std::size_t size : {1U, 3U, 4U, 5U, 9U}) {
            shapes.emplace_back(categories, size);
        }
    }
    for (const auto& [categories, size] : shapes) {
        const vxClassifierDataProviderMemory data = dataFor(categories, size, 1);
        OpenBayesian independent;
        independent.train(data, paramsOf(normalTypes()));
        expectOneByOne(independent, size);
        OpenBayesian joint;
        joint.train(data, paramsOf(jointTypes(categories, upTo(size))));
        expectOneByOne(joint, size);
    }
}

TEST(CategoryPanel, LeavesModelsThatAreNotAlikeToThemselves) {
    const vxClassifierDataProviderMemory data = dataFor(3, 4, 2);
    Types oneIsJoint = normalTypes();
    oneIsJoint.setDependent(1, upTo(4));
    Types lastIsJoint = normalTypes();
    lastIsJoint.setDependent(2, upTo(4));
    const Types onlyOneIsNot = jointTypes(2, upTo(4));
    const Types inParts = jointTypes(3, {1, 3});
    const Types scattered = jointTypes(3, {3, 1, 0, 2});
    for (const Types& types : {oneIsJoint, lastIsJoint, onlyOneIsNot, inParts, scattered}) {
        OpenBayesian classifier;
        classifier.train(data, paramsOf(types));
        expectOneByOne(classifier, 4);
    }
}

/// Only an archive can bring them.
TEST(CategoryPanel, LeavesModelsWithOtherOrdersOfSetsToThemselves) {
    std::vector<vxPtrHandle<vx_CategoryModel>> models;
    RandomNumbers numbers(5);
    for (const std::vector<std::vector<long>>& sets :
         std::vector<std::vector<std::vector<long>>>{{{0}, {1}, {2}}, {{0}, {2}, {1}}, {{0}, {1}}}) {
        const std::vector<Types::DistributionType> normal(sets.size(), Types::eMultivariateNormal);
        const vxPtrHandle<vx_CategoryModelBayesian> model(
            new vx_CategoryModelBayesian(static_cast<long>(models.size()), sets, normal, patternOf({})));
        for (int i = 0; i < 5; ++i) {
            model->adapt(patternOf(numbers.row(3)));
        }
        models.emplace_back(model);
    }
    const vxPtrHandle<vxClassifierTrainParams> params = paramsOf(normalTypes()).clone();
    expectOneByOne(test::classifierOf({0, 1}, {models[0], models[1]}, params.get()), 3);
    expectOneByOne(test::classifierOf({0, 2}, {models[0], models[2]}, params.get()), 3);
    expectOneByOne(test::classifierOf({2, 0}, {models[2], models[0]}, params.get()), 3);
}

/// A model that has made up its mind.
class StubbornModel : public vx_CategoryModelBayesian {
public:
    static vxPersistent* make() { return new StubbornModel; }
    double matchScore(const vxFeaturePattern&, vxDiagObject*, unsigned long) const override { return -7.0; }
};
const vx_Instantiator stubbornExemplar(typeid(StubbornModel), &StubbornModel::make);

TEST(CategoryPanel, LeavesModelsOfDerivedClassesToThemselves) {
    const vxPtrHandle<vx_PDFMultivariateNormal> density(new vx_PDFMultivariateNormal);
    density->updateWithData({patternOf({1.0}), patternOf({2.0})});
    const vxPtrHandle<StubbornModel> model(new StubbornModel);
    test::fillModel(*model, 0, 1, {{0}}, {density.get()});
    const vxPtrHandle<vxClassifierTrainParams> params = paramsOf(normalTypes()).clone();
    const OpenBayesian classifier = test::classifierOf({0}, {model}, params.get());
    EXPECT_EQ(test::resultOf(classifier, patternOf({1.5})).matchScoreFactorLog(), 7.0);
}

TEST(CategoryPanel, LeavesPatternsThatAreTooShortForAnyModelToTheModels) {
    const auto params = paramsOf(normalTypes()).clone();
    for (const bool isLongestFirst : {true, false}) {
        RandomNumbers numbers(6);
        std::vector<vxPtrHandle<vx_CategoryModel>> models;
        for (const std::size_t size : {isLongestFirst ? 9U : 2U, 3U, isLongestFirst ? 2U : 9U}) {
            const vxPtrHandle<vx_CategoryModelBayesian> model(new vx_CategoryModelBayesian(
                static_cast<long>(models.size()), {upTo(size)}, {Types::eMultivariateNormal}, patternOf({})));
            for (int i = 0; i < 20; ++i) {
                model->adapt(patternOf(numbers.row(9)));
            }
            models.emplace_back(model);
        }
        const OpenBayesian classifier = test::classifierOf({0, 1, 2}, models, params.get());
        expectOneByOne(classifier, 9);
        for (const std::size_t size : {0U, 1U, 2U, 3U, 8U}) {
            const vxFeaturePattern pattern = patternOf(numbers.row(size));
            EXPECT_TRUE(Outcome(classifier, pattern) == oneByOne(classifier, pattern)) << size;
        }
    }
}

TEST(CategoryPanel, LeavesConstantMeasurementsToTheModels) {
    std::vector<Sample> samples;
    RandomNumbers numbers(3);
    for (long i = 0; i < 20; ++i) {
        samples.push_back({{numbers.next(), i % 2 == 0 ? 3.0 : numbers.next()}, i % 2});
    }
    for (const Types& types : {normalTypes(), jointTypes(2, {0, 1})}) {
        OpenBayesian classifier;
        classifier.train(dataOf(samples), paramsOf(types));
        expectOneByOne(classifier, 2);
    }
}

TEST(CategoryPanel, KnowsWhatWasLearntLast) {
    for (const Types& types : {normalTypes(), jointTypes(3, upTo(4))}) {
        OpenBayesian classifier;
        classifier.train(dataFor(2, 4, 4), paramsOf(types));
        const OpenBayesian copy(classifier); // shares the models
        RandomNumbers numbers(9);
        const vxFeaturePattern pattern = patternOf(numbers.row(4));
        const Outcome before(classifier, pattern);
        classifier.train_(dataFor(3, 4, 5), paramsOf(types));
        expectOneByOne(classifier, 4);
        expectOneByOne(copy, 4);
        EXPECT_FALSE(Outcome(copy, pattern) == before);
        EXPECT_FALSE(Outcome(classifier, pattern) == Outcome(copy, pattern));
        OpenBayesian assigned;
        assigned.train(dataFor(1, 4, 6), paramsOf(normalTypes()));
        assigned = classifier;
        EXPECT_TRUE(Outcome(assigned, pattern) == Outcome(classifier, pattern));
        classifier.train(dataFor(2, 4, 7), paramsOf(types));
        expectOneByOne(classifier, 4);
        expectOneByOne(assigned, 4);
    }
}

TEST(CategoryPanel, KnowsWhatAFailedTrainingHasLeft) {
    Types types = normalTypes();
    types.distributionTypeOverride(2, 3, Types::eBinomial);
    const auto params = paramsOf(types, patternOf({1.0, 1.0, 1.0, 1.0}));
    OpenBayesian classifier;
    classifier.train(dataFor(2, 4, 4), params);
    RandomNumbers numbers(9);
    const vxFeaturePattern pattern = patternOf(numbers.row(4));
    const Outcome before(classifier, pattern);
    vxClassifierDataProviderMemory data = dataFor(2, 4, 5);
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({0.5, 0.5, 0.5, 2.0}, {})), 2);
    EXPECT_THROW(classifier.train_(data, params), vxClassifierDefs::BadParams);
    EXPECT_TRUE(Outcome(classifier, pattern) == oneByOne(classifier, pattern));
    EXPECT_FALSE(Outcome(classifier, pattern) == before);
}

TEST(CategoryPanel, KnowsWhatATrainingHasLeftThatFailedInANewCategory) {
    for (const Types& types : {normalTypes(), jointTypes(3, upTo(4))}) {
        OpenBayesian classifier;
        classifier.train(dataFor(2, 4, 4), paramsOf(types));
        RandomNumbers numbers(9);
        vxClassifierDataProviderMemory data;
        for (int i = 0; i < 10; ++i) { // the categories that are there learn nothing
            data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(numbers.row(4), {})), 2);
        }
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(numbers.row(4), {})), 3);
        Types noneForLast = types;
        noneForLast.distributionTypeOverride(3, 1, Types::ePoisson);
        EXPECT_THROW(classifier.train_(data, paramsOf(noneForLast)), vxClassifierDefs::NotImplemented);
        expectOneByOne(classifier, 4);
        EXPECT_EQ(test::resultOf(classifier, patternOf(numbers.row(4))).categoryResults().size(), 3U);
    }
}

TEST(CategoryPanel, KnowsWhatAFailedLoadHasLeft) {
    for (const Types& types : {normalTypes(), jointTypes(3, upTo(4))}) {
        const vxPtrHandle<vxClassifierTrainParams> params = paramsOf(types).clone();
        const vxPtrHandle<vx_CategoryModelBayesian> model(
            new vx_CategoryModelBayesian(5, {upTo(4)}, {Types::eMultivariateNormal}, patternOf({})));
        RandomNumbers numbers(9);
        for (int i = 0; i < 10; ++i) {
            model->adapt(patternOf(numbers.row(4)));
        }
        const test::Bytes oneModelTooFew = test::recordOf([&](test::Record& record) {
            record.versions({0, 0, 0}).pointer(params.get()).numbers({5, 6});
            record.versions({0}).number(2).pointer(model.get());
        });
        OpenBayesian classifier;
        classifier.train(dataFor(3, 4, 4), paramsOf(types));
        EXPECT_THROW(test::load(oneModelTooFew, classifier), vxArchive::ShortData);
        expectOneByOne(classifier, 4);
        EXPECT_EQ(test::resultOf(classifier, patternOf(numbers.row(4))).categoryResults().size(), 1U);
    }
}

TEST(CategoryPanel, GoesWithTheModels) {
    OpenBayesian classifier;
    classifier.train(dataFor(3, 4, 4), paramsOf(normalTypes()));
    classifier.untrain_();
    vxClassifierResult result;
    EXPECT_ERROR(classifier.run_(patternOf({0.0, 0.0, 0.0, 0.0}), result), vxClassifierDefs::BadParams,
                 L"At least one of the category frequencies must be > 0.");
}

TEST(CategoryPanel, IsThereForLoadedClassifiersToo) {
    for (const Types& types : {normalTypes(), jointTypes(3, upTo(4))}) {
        OpenBayesian first;
        first.train(dataFor(3, 4, 4), paramsOf(types));
        OpenBayesian second;
        second.train(dataFor(2, 4, 8), paramsOf(types));
        RandomNumbers numbers(9);
        const vxFeaturePattern pattern = patternOf(numbers.row(4));
        const Outcome expected(first, pattern);
        test::load(test::stored(first), second);
        EXPECT_TRUE(Outcome(second, pattern) == expected);
        expectOneByOne(second, 4);
        second.untrain();
        second.train(dataFor(1, 4, 3), paramsOf(types));
        expectOneByOne(second, 4);
    }
}

vxPtrHandle<vx_CategoryModelBayesian> modelFor(const std::vector<std::vector<long>>& sets, unsigned seed) {
    const std::vector<Types::DistributionType> normal(sets.size(), Types::eMultivariateNormal);
    const vxPtrHandle<vx_CategoryModelBayesian> model(
        new vx_CategoryModelBayesian(0, sets, normal, patternOf({})));
    RandomNumbers numbers(seed);
    for (int i = 0; i < 5; ++i) {
        model->adapt(patternOf(numbers.row(2)));
    }
    return model;
}

/// A classifier with one model, which an archive has brought the application, too.
struct Shared {
    explicit Shared(const std::vector<std::vector<long>>& sets) {
        const vxPtrHandle<vx_CategoryModelBayesian> stored = modelFor(sets, 1);
        const vxPtrHandle<vxClassifierTrainParams> params = paramsOf(normalTypes()).clone();
        const test::Bytes bytes = test::recordOf([&](test::Record& record) {
            record.pointer(stored.get());
            record.versions({0, 0, 0}).pointer(params.get()).numbers({0}).pointers({stored.get()});
        });
        vxLoadingArchive archive(bytes);
        archive || model;
        archive || classifier;
        archive.finish();
    }

    void expectTheModelsScore() const {
        EXPECT_EQ(test::resultOf(classifier, patternOf({0.5, 0.25})).matchScoreFactorLog(),
                  0.0 - model->matchScore(patternOf({0.5, 0.25})));
    }

    vxPtrHandle<vx_CategoryModelBayesian> model;
    OpenBayesian classifier;
};

const std::vector<std::vector<std::vector<long>>> singlesAndAPair{{{0}, {1}}, {{0, 1}}};

TEST(CategoryPanel, KnowsWhatTheApplicationDoesToASharedModel) {
    for (const auto& sets : singlesAndAPair) {
        const Shared shared(sets);
        shared.expectTheModelsScore();
        vx_CategoryModelBayesian(*shared.model).adapt(patternOf({-1.0, 1.5})); // a copy shares the densities
        shared.expectTheModelsScore();
        *shared.model = *modelFor(sets, 2);
        shared.expectTheModelsScore();
        shared.model->adapt(patternOf({1.0, 1.5}));
        shared.expectTheModelsScore();
    }
}

TEST(CategoryPanel, KnowsThatASharedModelHasBecomeAnother) {
    for (const auto& sets : singlesAndAPair) {
        const Shared assigned(sets);
        *assigned.model = *modelFor(sets, 2);
        assigned.expectTheModelsScore();
        const Shared reloaded(sets);
        test::load(test::stored(*modelFor(sets, 2)), *reloaded.model);
        reloaded.expectTheModelsScore();
        const Shared adapted(sets);
        adapted.model->adapt(patternOf({1.0, 1.5}));
        adapted.expectTheModelsScore();
        const Shared there(sets);
        const vx_CategoryModelBayesian before(*there.model);
        *there.model = *modelFor(sets, 2);
        *there.model = before; // and back again
        there.expectTheModelsScore();
    }
}

} // namespace
