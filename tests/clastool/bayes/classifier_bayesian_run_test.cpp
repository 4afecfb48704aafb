#include <vxclassifier/classifier_bayesian.h>

#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace {

using Types = vxClassifierDistributionTypes;
using test::classifierOf;
using test::classifierScoring;
using test::dataOf;
using test::FakeDensity;
using test::modelOf;
using test::normalTypes;
using test::OpenBayesian;
using test::outcomeOf;
using test::paramsOf;
using test::patternOf;
using test::resultOf;
using test::twoCategories;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using Models = std::vector<vxPtrHandle<vx_CategoryModel>>;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// The definition, written down once more.
vxClassifierResult expectedResult(const std::vector<double>& s, const std::vector<long>& labels,
                                  const vxClassifierTrainParamsBayesian& params) {
    double best = -HUGE_VAL;
    for (const double value : s) {
        if (!(best >= value)) {
            best = value;
        }
    }
    const double factorLog = std::log(1.0) - best;
    std::vector<vxClassifierCategoryResult> matches;
    for (std::size_t i = 0; i < s.size(); ++i) {
        matches.push_back(vxClassifierCategoryResult(labels[i], std::exp(factorLog + s[i]), 0.0, 0.0));
    }
    return vxClassifierResult(matches, params.categoryFrequencies(), params.misclassificationCosts(),
                              factorLog);
}

/// One more than the largest index is no number.
TEST(ClassifierBayesianRun, TheLargestIndexOfAllIsOnlyOnePastThePattern) {
    const auto withDependent = [](long index) {
        Types types = normalTypes();
        types.setDependent(5, {1, index});
        OpenBayesian classifier;
        classifier.train(dataOf(twoCategories()), paramsOf(types));
        return classifier;
    };
    const auto ofRun = [&](long index) {
        const OpenBayesian classifier = withDependent(index);
        return outcomeOf([&] { resultOf(classifier, patternOf({2.0, 7.0})); });
    };
    const auto ofTrial = [&](long index) {
        const OpenBayesian classifier = withDependent(index);
        return outcomeOf([&] { classifier.checkRunnable_(); });
    };
    EXPECT_NE(ofRun(2), L"");
    EXPECT_EQ(ofRun(std::numeric_limits<long>::max()), ofRun(2));
    EXPECT_NE(ofTrial(2), L"");
    EXPECT_EQ(ofTrial(std::numeric_limits<long>::max()), ofTrial(2));
}

TEST(ClassifierBayesianRun, TheResultIsTheDefinitionToTheLastBit) {
    vxClassifierFrequencies frequencies(2.0);
    frequencies.categoryFrequencyOverride(1, 0.125);
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(0, 1, 7.0);
    const vxClassifierTrainParamsBayesian params = paramsOf(normalTypes(), patternOf({}), frequencies, costs);
    const std::vector<std::vector<double>> scores{{-1000.0, -1001.0},
                                                  {-3.5, -3.5},
                                                  {-1.0},
                                                  {12.25},
                                                  {0.0, -0.0, 1e-300},
                                                  {-1e300, -1e280, -5.0},
                                                  {700.0, -745.0, 3.0, 699.5},
                                                  {1.0, 2.0, 3.0, 4.0, 5.0},
                                                  {-0.1, -infinity}};
    for (const std::vector<double>& s : scores) {
        std::vector<long> labels;
        for (std::size_t i = 0; i < s.size(); ++i) {
            labels.push_back(static_cast<long>(i));
        }
        EXPECT_EQ(resultOf(classifierScoring(s, params.clone()), patternOf({1})),
                  expectedResult(s, labels, params));
    }
}

/// NaN and infinity reach the decision rule as they come; what it says of them is its own affair.
TEST(ClassifierBayesianRun, NumbersThatAreNoneFollowTheDefinitionToo) {
    const vxClassifierTrainParamsBayesian params = paramsOf(normalTypes());
    for (const std::vector<double>& s : std::vector<std::vector<double>>{{notANumber},
                                                                         {-infinity},
                                                                         {-infinity, -infinity},
                                                                         {infinity, 1.0},
                                                                         {notANumber, -2.0},
                                                                         {-2.0, notANumber},
                                                                         {5.0, notANumber, 1.0},
                                                                         {1.0, notANumber, 5.0}}) {
        const std::vector<long> labels{0, 1, 2};
        std::vector<double> expected;
        std::vector<double> actual;
        const auto numbersOf = [](const vxClassifierResult& result) {
            std::vector<double> numbers{result.matchScoreFactorLog()};
            for (const vxClassifierCategoryResult& category : result.categoryResults()) {
                numbers.insert(numbers.end(),
                               {static_cast<double>(category.categoryLabel()), category.matchScore(),
                                category.classScore(), category.expectedCost()});
            }
            for (double& number : numbers) {
                number = std::isnan(number) ? 123456.0 : number; // so that they can be compared
            }
            return numbers;
        };
        const std::wstring expectedError =
            outcomeOf([&] { expected = numbersOf(expectedResult(s, labels, params)); });
        const std::wstring actualError = outcomeOf(
            [&] { actual = numbersOf(resultOf(classifierScoring(s, params.clone()), patternOf({1}))); });
        EXPECT_EQ(actualError, expectedError);
        EXPECT_EQ(actual, expected);
    }
}

TEST(ClassifierBayesianRun, SmallLikelihoodsDoNotUnderflow) {
    const vxClassifierResult result = resultOf(classifierScoring({-1000.0, -1001.0}), patternOf({1}));
    EXPECT_EQ(result.matchScoreFactorLog(), 1000.0);
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 1.0);
    EXPECT_EQ(result.categoryResults()[1].matchScore(), std::exp(-1.0));
}

TEST(ClassifierBayesianRun, OneCategoryAlwaysMatches) {
    const vxClassifierResult result = resultOf(classifierScoring({-12.5}), patternOf({1}));
    EXPECT_EQ(result.matchScoreFactorLog(), 12.5);
    EXPECT_EQ(result.categoryResults()[0], vxClassifierCategoryResult(0, 1.0, 1.0, 0.0));
}

TEST(ClassifierBayesianRun, TheFactorOfALikelihoodOf1HasNoSign) {
    EXPECT_FALSE(std::signbit(resultOf(classifierScoring({0.0}), patternOf({1})).matchScoreFactorLog()));
}

TEST(ClassifierBayesianRun, EqualCategoriesKeepTheOrderOfTheirFirstOccurrence) {
    OpenBayesian classifier;
    classifier.train(dataOf({{{1}, 9}, {{1}, 4}, {{2}, 6}, {{2}, 4}, {{1}, 6}, {{2}, 9}}),
                     paramsOf(normalTypes()));
    const vxClassifierResult result = resultOf(classifier, patternOf({1.5}));
    std::vector<long> labels;
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
        labels.push_back(category.categoryLabel());
    }
    EXPECT_EQ(labels, (std::vector<long>{9, 4, 6}));
}

TEST(ClassifierBayesianRun, LikelihoodsComeFromTheDensitiesOfEachCategory) {
    Types types = normalTypes();
    types.setDependent(5, {1, 0});
    types.distributionTypeOverride(2, 1, Types::eBinomial);
    const vxClassifierTrainParamsBayesian params = paramsOf(types, patternOf({0, 10}));
    vxClassifierTool tool;
    tool.train(dataOf(twoCategories()), params);

    vx_PDFMultivariateNormal joint;
    vx_PDFMultivariateNormal single;
    vx_PDFBinomial count(patternOf({10}));
    for (const auto& [x, label] : twoCategories()) {
        if (label == 5) {
            joint.updateWithData({patternOf({x[1], x[0]})});
        } else {
            single.updateWithData({patternOf({x[0]})});
            count.updateWithData({patternOf({x[1]})});
        }
    }
    for (const std::vector<double>& x : std::vector<std::vector<double>>{{4, 7}, {8, 4}, {11, 1}}) {
        const std::vector<double> s{0.0 + joint.logValue(patternOf({x[1], x[0]})),
                                    0.0 + single.logValue(patternOf({x[0]})) +
                                        count.logValue(patternOf({x[1]}))};
        vxClassifierResult result;
        tool.run(patternOf(x), result);
        EXPECT_EQ(result, expectedResult(s, {5, 2}, params));
    }
}

TEST(ClassifierBayesianRun, LabelsComeFromTheModels) {
    const OpenBayesian classifier = classifierOf({1, 2, 3}, {modelOf(8, 0, {}, {}), modelOf(7, 0, {}, {})},
                                                 paramsOf(normalTypes()).clone().get());
    const vxClassifierResult result = resultOf(classifier, patternOf({}));
    ASSERT_EQ(result.categoryResults().size(), 2U);
    EXPECT_EQ(result.categoryResults()[0].categoryLabel(), 8);
    EXPECT_EQ(result.categoryResults()[1].categoryLabel(), 7);
}

TEST(ClassifierBayesianRun, TheModelsAreAskedBeforeTheParameters) {
    const vxPtrHandle<vx_CategoryModel> untrained(
        new vx_CategoryModelBayesian(4, {{0}}, {Types::eMultivariateNormal}, patternOf({})));
    EXPECT_ERROR(resultOf(classifierOf({4}, {untrained}), patternOf({1})), InsufficientTrainData,
                 L"No valid data has been used to train the distribution for category 4");
    EXPECT_ERROR_CLASS(resultOf(classifierOf({4}, {modelOf(4, 0, {}, {})}), patternOf({1})), vxBadPointer);
}

TEST(ClassifierBayesianRun, AValueAboveTheMaximumOfABinomialIsRefused) {
    OpenBayesian classifier;
    classifier.train(dataOf({{{1}, 3}, {{5}, 3}}), paramsOf(Types(Types::eBinomial), patternOf({9})));
    EXPECT_ERROR(resultOf(classifier, patternOf({9.5})), BadParams,
                 L"Feature measurement must be <= specified maximum value");
    EXPECT_NO_THROW(resultOf(classifier, patternOf({9.0})));
}

TEST(ClassifierBayesianRun, AFailedRunLeavesTheCallersResult) {
    OpenBayesian classifier;
    classifier.train(dataOf({{{1}, 3}, {{5}, 3}}), paramsOf(Types(Types::eBinomial), patternOf({9})));
    vxClassifierResult result = resultOf(classifier, patternOf({2}));
    const vxClassifierResult before = result;
    EXPECT_ERROR_CLASS(classifier.run(patternOf({9.5}), result), BadParams);
    EXPECT_EQ(result, before);
}

struct Polls {
    long made = 0;
    long failAt = 0; // 0: never
};

long countPoll(void* context) {
    auto& polls = *static_cast<Polls*>(context);
    ++polls.made;
    return polls.made == polls.failAt ? vsys_attention_cancelled : 0;
}

TEST(ClassifierBayesianRun, ChecksForInterruptionOncePerModelAndOnceMore) {
    // Without parameters the run ends before the decision rule, which makes checks of its own.
    const OpenBayesian classifier =
        classifierOf({}, {modelOf(8, 0, {}, {}), modelOf(7, 0, {}, {}), modelOf(6, 0, {}, {})});
    Polls polls;
    const vxAttentionScope scope(&countPoll, &polls);
    EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({})), vxBadPointer);
    EXPECT_EQ(polls.made, 3 + 1);
    polls.made = 0;
    resultOf(classifierScoring({-1.0, -2.0}), patternOf({1}));
    EXPECT_EQ(polls.made, 2 + 1 + 2);
}

/// What a run gives to its last bit, or the message of what it throws. All NaNs count as one.
std::wstring exactOutcomeOf(const vx_Classifier& classifier, const vxFeaturePattern& pattern) {
    std::wostringstream text;
    const auto add = [&](double value) {
        text << std::hexfloat << (std::isnan(value) ? std::fabs(notANumber) : value) << L' ';
    };
    text << outcomeOf([&] {
        const vxClassifierResult result = resultOf(classifier, pattern);
        for (const vxClassifierCategoryResult& category : result.categoryResults()) {
            text << category.categoryLabel() << L": ";
            add(category.matchScore());
            add(category.classScore());
            add(category.expectedCost());
        }
        add(result.matchScoreFactorLog());
    });
    return text.str();
}

/// So many categories of independent measurements; the category `joint` has two that depend on each other.
OpenBayesian independentCategories(long number, std::size_t size, long joint) {
    Types types = normalTypes();
    if (size > 1) {
        types.setDependent(joint, {0, 1});
    }
    std::vector<test::Sample> samples;
    std::mt19937 random(static_cast<unsigned>(size));
    for (long sample = 0; sample < 4 * number; ++sample) {
        std::vector<double> values(size);
        for (double& value : values) {
            value = std::uniform_real_distribution<double>(-2.0, 2.0)(random);
        }
        samples.emplace_back(values, sample % number);
    }
    OpenBayesian classifier;
    classifier.train(dataOf(samples), paramsOf(types));
    return classifier;
}

TEST(ClassifierBayesianRun, GivesTheSameBitsWithAndWithoutACheckInstalled) {
    // Without a check the models may be asked side by side.
    const std::size_t sizes[] = {1, 2, 7, 8, 9, 64, 65};
    for (const std::size_t size : sizes) {
        for (long number = 1; number <= 5; ++number) {
            const OpenBayesian classifier = independentCategories(number, size, 3);
            for (const double last : {0.3, -7.0, 1e10, 1e150, 1e300, infinity, notANumber}) {
                std::vector<double> values(size, 0.7);
                values.back() = last;
                const std::wstring without = exactOutcomeOf(classifier, patternOf(values));
                Polls polls;
                const vxAttentionScope scope(&countPoll, &polls);
                ASSERT_EQ(without, exactOutcomeOf(classifier, patternOf(values)))
                    << size << ' ' << number << ' ' << last;
                ASSERT_GT(polls.made, number);
            }
        }
    }
}

TEST(ClassifierBayesianRun, EachCheckCanEndIt) {
    const OpenBayesian classifier = classifierScoring({-1.0, -2.0, -3.0});
    Polls polls;
    const vxAttentionScope scope(&countPoll, &polls);
    vxClassifierResult result;
    for (long step = 1; step <= 3 + 1 + 3; ++step) {
        polls = Polls{0, step};
        EXPECT_ERROR_CLASS(classifier.run(patternOf({1}), result), vxInterrupted);
        EXPECT_EQ(polls.made, step);
        EXPECT_EQ(result, vxClassifierResult());
    }
}

TEST(ClassifierBayesianRun, TheCheckComesBeforeTheModel) {
    const Models models{modelOf(8, 1, {{0}}, {nullptr})};
    Polls polls{0, 1};
    const vxAttentionScope scope(&countPoll, &polls);
    EXPECT_ERROR_CLASS(resultOf(classifierOf({8}, models), patternOf({1})), vxInterrupted);
}

/// Counts, over all densities of its class, what they are asked.
class AskedDensity : public FakeDensity {
public:
    static vxPersistent* make() { return new AskedDensity; }
    double logValue(const vxFeaturePattern& pattern) const override {
        log().push_back(pattern);
        return answer;
    }
    static std::vector<vxFeaturePattern>& log() {
        static std::vector<vxFeaturePattern> all;
        return all;
    }
};
const vx_Instantiator askedDensityExemplar(typeid(AskedDensity), &AskedDensity::make);

/// What the trial run of a classifier with these two models asks.
std::vector<vxFeaturePattern> askedByTrial(long k, const std::vector<long>& firstSet,
                                           const std::vector<long>& secondSet) {
    const vxPtrHandle<AskedDensity> density(new AskedDensity);
    const OpenBayesian classifier = classifierOf(
        {1, 2}, {modelOf(1, k, {firstSet}, {density.get()}), modelOf(2, 50, {secondSet}, {density.get()})},
        paramsOf(normalTypes()).clone().get());
    AskedDensity::log().clear();
    classifier.checkRunnable_();
    return AskedDensity::log();
}

using Asked = std::vector<vxFeaturePattern>;

TEST(ClassifierBayesianRun, TheTrialIsMadeOnZeros) {
    EXPECT_EQ(askedByTrial(3, {0, 2}, {1}), (Asked{patternOf({0, 0}), patternOf({0})}));
}

TEST(ClassifierBayesianRun, TheTrialHasAsManyZerosAsTheFirstModelHasMeasurements) {
    EXPECT_EQ(askedByTrial(3, {0, 5}, {3}), (Asked{patternOf({0, 0}, {1}), patternOf({0}, {0})}));
    EXPECT_EQ(askedByTrial(4, {0, 5}, {3}), (Asked{patternOf({0, 0}, {1}), patternOf({0})}));
    EXPECT_EQ(askedByTrial(1, {0, 1}, {0}), (Asked{patternOf({0, 0}, {1}), patternOf({0})}));
}

TEST(ClassifierBayesianRun, WithoutMeasurementsTheTrialHasNoZeros) {
    const Asked none{patternOf({0}, {0}), patternOf({0}, {0})};
    EXPECT_EQ(askedByTrial(0, {0}, {1}), none);
    EXPECT_EQ(askedByTrial(-7, {0}, {1}), none);
}

TEST(ClassifierBayesianRun, ZerosThatNoModelLooksAtAreNotBuilt) {
    EXPECT_EQ(askedByTrial(2147483647, {0}, {7}), (Asked{patternOf({0}), patternOf({0})}));
}

TEST(ClassifierBayesianRun, TheTrialFailsAsARunWould) {
    OpenBayesian classifier;
    classifier.train(dataOf({{{1}, 3}, {{2}, 3}, {{4}, 6}, {{4}, 6}}),
                     paramsOf(Types(Types::eBinomial), patternOf({9})));
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData,
                 L"Insufficient data has been used to train the distribution for category 6");
    Polls polls{0, 1};
    const vxAttentionScope scope(&countPoll, &polls);
    EXPECT_ERROR_CLASS(classifierScoring({-1.0}).checkRunnable_(), vxInterrupted);
}

TEST(ClassifierBayesianRun, ATrainedClassifierPassesTheTrial) {
    OpenBayesian classifier;
    classifier.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_NO_THROW(classifier.checkRunnable_());
    classifier.train(dataOf({{{4.0, 4.0}, 0}}), paramsOf(normalTypes())); // one sample, constant data
    EXPECT_NO_THROW(classifier.checkRunnable_());
}

} // namespace
