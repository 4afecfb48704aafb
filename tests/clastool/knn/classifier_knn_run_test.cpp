#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/expect_error.h"
#include "tests/support/slow_neighbors.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

using Params = vxClassifierTrainParamsKNN;
using test::labels;
using test::line;
using test::pattern;
using test::run;
using test::trained;
using Labels = std::vector<long>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

constexpr const wchar_t* unsuitable =
    L"K-nearest neighbor classification does not support invalid measurements";

/// Parameters whose metric looks distances up.
Params lookingUp(long k, const std::vector<double>& distances) {
    return Params(k, test::ScriptedMetric(test::lookUp(distances)), vxClassifierCosts(1.0));
}

/// The labels of the neighbours at the given distances, where each pattern has its own index for a label.
Labels neighbours(long k, const std::vector<double>& distances) {
    Labels found = labels(run(trained(test::indexed(distances.size()), lookingUp(k, distances)), {0.0}));
    std::sort(found.begin(), found.end());
    return found;
}

vxClassifierDataProviderMemory labelled(const std::vector<long>& patternLabels) {
    vxClassifierDataProviderMemory data;
    for (std::size_t i = 0; i < patternLabels.size(); ++i) {
        data.addData(pattern({static_cast<double>(i)}), patternLabels[i]);
    }
    return data;
}

TEST(ClassifierKNNRun, LetsTheNearestVote) {
    const vx_ClassifierKNN classifier = trained(labelled({5, 5, 2, 2, 2}), Params(3));
    const vxClassifierResult result = run(classifier, {0.0}); // 5, 5, 2
    const vxClassifierResult expected({{2, 1.0 / 3.0, 0.0, 0.0}, {5, 2.0 / 3.0, 0.0, 0.0}},
                                      vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), 0.0);
    EXPECT_EQ(result, expected);
    EXPECT_EQ(labels(result), (Labels{5, 2}));
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 2.0 / 3.0);
    EXPECT_EQ(result.matchScoreFactorLog(), 0.0);
}

TEST(ClassifierKNNRun, ListsCategoriesOfEqualCostByAscendingLabel) {
    const vx_ClassifierKNN classifier = trained(labelled({9, 3, 6}), Params(3));
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{3, 6, 9}));
}

TEST(ClassifierKNNRun, ListsOnlyCategoriesAmongTheNeighbours) {
    const vx_ClassifierKNN classifier = trained(labelled({0, 1, 2, 3}), Params(1));
    const vxClassifierResult result = run(classifier, {2.2});
    ASSERT_EQ(labels(result), Labels{2});
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 1.0);
    EXPECT_EQ(result.categoryResults()[0].classScore(), 1.0);
    EXPECT_EQ(result.categoryResults()[0].expectedCost(), 0.0);
}

TEST(ClassifierKNNRun, DividesByTheNumberOfNeighboursAndNotByK) {
    const vx_ClassifierKNN classifier = trained(labelled({7, 7, 7, 8}), Params(100));
    const vxClassifierResult result = run(classifier, {0.0});
    ASSERT_EQ(labels(result), (Labels{7, 8}));
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 0.75);
    EXPECT_EQ(result.categoryResults()[1].matchScore(), 0.25);
}

TEST(ClassifierKNNRun, DoesNotWeighVotesByDistance) {
    const vx_ClassifierKNN classifier = trained(labelled({1, 2, 2}), lookingUp(3, {0.0, 1e9, 1e9}));
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{2, 1}));
}

TEST(ClassifierKNNRun, UsesTheCostsOfItsParameters) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(8, 7, 10.0); // taking an 8 for a 7
    const vx_ClassifierKNN classifier =
        trained(labelled({7, 7, 7, 8}), Params(4, vxPatternDistanceMetricNorm(2.0), costs));
    const vxClassifierResult result = run(classifier, {0.0});
    ASSERT_EQ(labels(result), (Labels{8, 7}));
    EXPECT_EQ(result.categoryResults()[0].expectedCost(), 0.75);
    EXPECT_EQ(result.categoryResults()[1].expectedCost(), 2.5);
}

TEST(ClassifierKNNRun, UsesTheMetricOfItsParameters) {
    vxClassifierDataProviderMemory data;
    data.addData(pattern({3.0, 3.0}), 0); // Manhattan 6, Euclidean 4.24
    data.addData(pattern({0.0, 5.0}), 1); // both 5
    const vxClassifierCosts costs(1.0);
    const auto by = [&](double order) {
        return labels(run(trained(data, Params(1, vxPatternDistanceMetricNorm(order), costs)), {0.0, 0.0}));
    };
    EXPECT_EQ(by(1.0), Labels{1});
    EXPECT_EQ(by(2.0), Labels{0});
}

TEST(ClassifierKNNRun, DropsThePatternThatOnlyTiesTheLastNeighbour) {
    EXPECT_EQ(neighbours(2, {1.0, 1.0, 1.0}), (Labels{0, 1}));
    // The later of the two equals stands first, so the earlier is the one that goes.
    EXPECT_EQ(neighbours(2, {1.0, 1.0, 0.0}), (Labels{1, 2}));
}

TEST(ClassifierKNNRun, AgreesWithTheSlowSearchForEveryPatternOfTies) {
    for (int code = 0; code < 243; ++code) {
        std::vector<double> distances;
        for (int rest = code, i = 0; i < 5; ++i, rest /= 3) {
            distances.push_back(rest % 3);
        }
        for (long k = 1; k <= 6; ++k) {
            Labels expected = test::slowNeighbors(distances, k).indices;
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(neighbours(k, distances), expected) << ::testing::PrintToString(distances) << k;
        }
    }
}

TEST(ClassifierKNNRun, PutsNaNBehindEverything) {
    EXPECT_EQ(neighbours(1, {notANumber, 5.0}), Labels{1});
    EXPECT_EQ(neighbours(1, {5.0, notANumber}), Labels{0});
    EXPECT_EQ(neighbours(2, {notANumber, infinity, notANumber, 1.0}), (Labels{1, 3}));
    EXPECT_EQ(neighbours(2, {notANumber, notANumber, notANumber}), (Labels{0, 1}));
    EXPECT_EQ(neighbours(9, {notANumber, 1.0, notANumber}), (Labels{0, 1, 2}));
}

TEST(ClassifierKNNRun, TakesPatternsWithoutMeasurements) {
    vxClassifierDataProviderMemory data;
    data.addData(pattern({}), 4);
    data.addData(pattern({}), 5);
    EXPECT_EQ(labels(run(trained(data, Params(1)), {})), Labels{4});
}

TEST(ClassifierKNNRun, RefusesAnInvalidMeasurement) {
    const vx_ClassifierKNN classifier = trained(line({0.0}), Params(1));
    vxClassifierResult result;
    EXPECT_ERROR(classifier.run(*pattern({0.0}, {0}), result), vxClassifierDefs::BadFeatures, unsuitable);
}

TEST(ClassifierKNNRun, RefusesAnotherNumberOfMeasurementsWithTheSameMessage) {
    const vx_ClassifierKNN classifier = trained(line({0.0}), Params(1));
    EXPECT_ERROR(run(classifier, {}), vxClassifierDefs::BadFeatures, unsuitable);
    EXPECT_ERROR(run(classifier, {0.0, 1.0}), vxClassifierDefs::BadFeatures, unsuitable);
}

TEST(ClassifierKNNRun, ChecksTheStoreBeforeThePattern) {
    const vx_ClassifierKNN classifier = trained(vxClassifierDataProviderMemory(), Params(1));
    vxClassifierResult result;
    EXPECT_ERROR(classifier.run(*pattern({0.0}, {0}), result), vxClassifierDefs::InsufficientTrainData,
                 L"No valid data was provided for training.");
}

TEST(ClassifierKNNRun, PassesOnWhatTheMetricThrowsAndKeepsTheResult) {
    const auto script = std::make_shared<test::MetricScript>();
    script->distance = [&](const vxFeaturePattern&, const vxFeaturePattern&) -> double {
        throw std::runtime_error("no distance");
    };
    const vx_ClassifierKNN classifier =
        trained(line({0.0, 1.0}), Params(1, test::ScriptedMetric(script), vxClassifierCosts(1.0)));
    const vxClassifierResult before({{3, 1.0, 1.0, 0.5}}, 2.0);
    vxClassifierResult result = before;
    EXPECT_THROW(classifier.run(*pattern({0.0}), result), std::runtime_error);
    EXPECT_EQ(result, before);
}

/// Reports a failure from the n-th poll on.
struct Polls {
    long made = 0;
    long allowed = std::numeric_limits<long>::max();

    static long check(void* context) {
        Polls& polls = *static_cast<Polls*>(context);
        return ++polls.made > polls.allowed ? vxStatus::failure(77, 3) : 0;
    }
};

TEST(ClassifierKNNRun, PollsOncePerStoredPatternAndOncePerCategory) {
    const vx_ClassifierKNN classifier = trained(labelled({0, 0, 0, 1, 1}), Params(5));
    Polls polls;
    const vxAttentionScope scope(&Polls::check, &polls);
    run(classifier, {0.0});
    EXPECT_EQ(polls.made, 5 + 2);
}

TEST(ClassifierKNNRun, CanBeInterruptedAtEveryPoll) {
    const vx_ClassifierKNN classifier = trained(labelled({0, 0, 0, 1, 1}), Params(5));
    const vxClassifierResult before({{3, 1.0, 1.0, 0.5}}, 2.0);
    for (long allowed = 0; allowed < 7; ++allowed) {
        Polls polls;
        polls.allowed = allowed;
        vxClassifierResult result = before;
        {
            const vxAttentionScope scope(&Polls::check, &polls);
            EXPECT_ERROR_CLASS(classifier.run(*pattern({0.0}), result), vxStatusFailure);
        }
        EXPECT_EQ(polls.made, allowed + 1);
        EXPECT_EQ(result, before);
        EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{0, 1})) << "the classifier is as it was";
    }
}

TEST(ClassifierKNNRun, WeighsTheCategoriesByFrequenciesOfExactlyOne) {
    // Any other common frequency rounds differently for some of these numbers of votes.
    for (long votes = 1; votes < 40; ++votes) {
        vxClassifierDataProviderMemory data;
        const long k = 41;
        for (long i = 0; i < k; ++i) {
            data.addData(pattern({static_cast<double>(i)}), i < votes ? 0 : i % 3);
        }
        std::vector<double> counts(3, 0.0);
        for (long i = 0; i < k; ++i) {
            ++counts[static_cast<std::size_t>(data.categoryLabel(i))];
        }
        std::vector<vxClassifierCategoryResult> matches;
        for (long label = 0; label < 3; ++label) {
            const double count = counts[static_cast<std::size_t>(label)];
            if (count > 0.0) {
                matches.emplace_back(label, count / static_cast<double>(k), 0.0, 0.0);
            }
        }
        const vxClassifierResult expected(matches, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), 0.0);
        EXPECT_EQ(run(trained(data, Params(k)), {0.0}), expected) << votes;
    }
}

} // namespace
