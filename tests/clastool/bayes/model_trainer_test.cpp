#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

// A training streams its patterns into new models. They end up with what adapt would have taught them.

namespace {

using test::dataOf;
using test::OpenBayesian;
using test::paramsOf;
using test::patternOf;

using Types = vxClassifierDistributionTypes;

/// Joint, single and binomial sets, some members out of order.
Types mixedTypes() {
    Types types(Types::eMultivariateNormal);
    for (const long label : {0L, 64L, 7L}) {
        types.setDependent(label, {1, 2});
        types.setDependent(label, {5, 3});
        types.distributionTypeOverride(label, 4, Types::eBinomial);
    }
    types.setDependent(7, {0, 6});
    return types;
}

vxFeaturePattern maxima() {
    return patternOf({0.0, 0.0, 0.0, 0.0, 20.0});
}

/// Some measurements are missing, some are not finite; a label in four is unknown.
vxClassifierDataProviderMemory someData(int number) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    vxClassifierDataProviderMemory data;
    for (int i = 0; i < number; ++i) {
        std::vector<double> values(7);
        for (double& value : values) {
            value = uniform(random);
        }
        values[4] = std::floor(10.0 + 9.0 * values[4]);
        std::vector<long> invalid;
        if (i % 5 == 3) {
            invalid.push_back(i % 7);
        }
        if (i % 11 == 5) {
            values[static_cast<std::size_t>(i) % 4] = std::numeric_limits<double>::infinity();
        }
        const long labels[] = {0, 64, 7, -1};
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, invalid)),
                     labels[(i / 3) % 4]);
    }
    return data;
}

/// What the training of one label is: a model that adapts to its patterns one by one.
vx_CategoryModelBayesian adapted(long label, const vxClassifierDataProvider& data) {
    using Sets = std::vector<std::vector<long>>;
    const auto normal = Types::eMultivariateNormal;
    const bool isSeven = label == 7;
    const Sets sets = isSeven ? Sets{{0, 6}, {1, 2}, {5, 3}, {4}} : Sets{{0}, {1, 2}, {5, 3}, {4}, {6}};
    std::vector<Types::DistributionType> types = {normal, normal, normal, Types::eBinomial};
    types.resize(sets.size(), normal);
    vx_CategoryModelBayesian model(label, sets, types, maxima());
    for (long i = 0; i < data.numPatterns(); ++i) {
        if (data.categoryLabel(i) == label) {
            model.adapt(*data.featurePattern(i));
        }
    }
    return model;
}

TEST(ModelTrainer, LeavesModelsThatHaveAdaptedToEachPattern) {
    // Few enough that the statistics take in patterns one by one.
    const vxClassifierDataProviderMemory data = someData(450);
    OpenBayesian classifier;
    classifier.train(data, paramsOf(mixedTypes(), maxima()));
    std::vector<vxPtrHandle<vx_CategoryModel>> models;
    for (const long label : {0L, 64L, 7L}) {
        models.emplace_back(new vx_CategoryModelBayesian(adapted(label, data)));
    }
    std::mt19937 random(4);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (int i = 0; i < 50; ++i) {
        const vxFeaturePattern x = patternOf({uniform(random), uniform(random), uniform(random),
                                              uniform(random), 9.0, uniform(random), uniform(random)});
        const double scores[] = {models[0]->matchScore(x), models[1]->matchScore(x),
                                 models[2]->matchScore(x)};
        const double best = std::max({scores[0], scores[1], scores[2]});
        vxClassifierResult result;
        classifier.run(x, result);
        EXPECT_EQ(result.matchScoreFactorLog(), 0.0 - best);
        ASSERT_EQ(result.categoryResults().size(), 3U);
        for (const vxClassifierCategoryResult& category : result.categoryResults()) {
            const std::size_t model = category.categoryLabel() == 0    ? 0
                                      : category.categoryLabel() == 64 ? 1
                                                                       : 2;
            EXPECT_EQ(category.matchScore(), std::exp((0.0 - best) + scores[model]));
        }
    }
}

TEST(ModelTrainer, LeavesNearlyThatForManyPatterns) {
    const vxClassifierDataProviderMemory data = someData(9000);
    OpenBayesian classifier;
    classifier.train(data, paramsOf(mixedTypes(), maxima()));
    const vxFeaturePattern x = patternOf({0.5, 0.25, 0.75, 0.125, 9.0, -0.5, 0.5});
    const double expected = adapted(0, data).matchScore(x);
    vxClassifierResult result;
    classifier.run(x, result);
    double actual = 0.0;
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
        if (category.categoryLabel() == 0) {
            actual = std::log(category.matchScore()) - result.matchScoreFactorLog();
        }
    }
    EXPECT_NEAR(actual, expected, 1e-12);
}

TEST(ModelTrainer, TakesWhatASetNamesPastTheEndOfAPatternAsMissing) {
    Types types = test::normalTypes();
    types.setDependent(1, {1, 2});
    const std::vector<test::Sample> samples = {{{1.0, 8.0}, 1}, {{3.0, 6.0}, 1}, {{2.0, 9.0}, 1}};
    const std::vector<Types::DistributionType> normal(2, Types::eMultivariateNormal);
    const vxPtrHandle<vx_CategoryModelBayesian> expected(
        new vx_CategoryModelBayesian(1, {{0}, {1, 2}}, normal, patternOf({})));
    for (const test::Sample& sample : samples) {
        expected->adapt(patternOf(sample.first));
    }
    OpenBayesian classifier;
    classifier.train_(dataOf(samples), paramsOf(types));
    EXPECT_EQ(classifier, test::classifierOf({1}, {expected}));
}

TEST(ModelTrainer, LeavesWhatCameBeforeAFailure) {
    vxClassifierDataProviderMemory data = someData(450);
    // The joint set takes the pattern, the binomial refuses it.
    const vxFeaturePattern refused = patternOf({0.5, 0.5, 0.5, 0.5, 21.0, 0.5, 0.5});
    data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(refused)), 64);
    data.addData(data.featurePattern(0), 0);
    OpenBayesian failed;
    EXPECT_ERROR(failed.train_(data, paramsOf(mixedTypes(), maxima())), vxClassifierDefs::BadParams,
                 L"Train data measurement cannot exceed its maximum value when using binomial distribution");
    vxClassifierDataProviderMemory before = someData(450);
    vx_CategoryModelBayesian half = adapted(64, before);
    EXPECT_THROW(half.adapt(refused), vxClassifierDefs::BadParams);

    OpenBayesian expected;
    expected.train_(before, paramsOf(mixedTypes(), maxima()));
    EXPECT_NE(failed, expected);
    OpenBayesian loadedHalf =
        test::classifierOf({0, 64, 7},
                           {vxPtrHandle<vx_CategoryModel>(new vx_CategoryModelBayesian(adapted(0, before))),
                            vxPtrHandle<vx_CategoryModel>(new vx_CategoryModelBayesian(half)),
                            vxPtrHandle<vx_CategoryModel>(new vx_CategoryModelBayesian(adapted(7, before)))},
                           nullptr);
    EXPECT_EQ(failed, loadedHalf);
}

} // namespace
