// One trained tool of each technique, one metric and one rule table under eight threads. The results are
// those of a single thread, bit for bit; what else could go wrong is seen by the thread sanitizer only.

#include "tests/failures/techniques.h"
#include "tests/support/archives.h"
#include "tests/threads/together.h"

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/rule_table.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

using failures::Binomial;
using failures::JointNormal;
using failures::Neighbors;
using failures::OwnTrees;
using test::Bytes;

constexpr std::size_t threadCount = 8;

/// THREAD_ROUNDS in the environment asks for a longer test.
int rounds() {
    const char* const asked = std::getenv("THREAD_ROUNDS");
    return asked == nullptr ? 300 : std::atoi(asked);
}

std::vector<vxFeaturePattern> queries() {
    std::vector<vxFeaturePattern> patterns;
    for (std::size_t i = 0; i < threadCount; ++i) {
        const double step = 0.75 * static_cast<double>(i);
        patterns.emplace_back(std::vector<double>{1.0 + step, 6.0 - step, 2.0 + step / 3.0},
                              std::vector<long>{});
    }
    return patterns;
}

/// Lets each thread answer for each query in turn, beginning with its own, and expects what a single thread
/// gets.
template <class Answer>
void expectTheSameOnAllThreads(Answer answer) {
    std::vector<Bytes> expected;
    for (std::size_t query = 0; query < threadCount; ++query) {
        expected.push_back(answer(query));
    }
    std::vector<int> agreed(threadCount, 0);
    const int repetitions = rounds();
    test::together(threadCount, [&](std::size_t thread) {
        for (int i = 0; i < repetitions; ++i) {
            const std::size_t query = (thread + static_cast<std::size_t>(i)) % threadCount;
            agreed[thread] += answer(query) == expected[query] ? 1 : 0;
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(threadCount, repetitions));
}

template <class Technique>
class TrainedTool : public ::testing::Test {};
using Techniques = ::testing::Types<JointNormal, Binomial, Neighbors, OwnTrees>;
TYPED_TEST_SUITE(TrainedTool, Techniques, failures::NameOfTechnique);

TYPED_TEST(TrainedTool, IsRunByManyThreads) {
    const vxClassifierTool tool = failures::trained<TypeParam>();
    const std::vector<vxFeaturePattern> patterns = queries();
    expectTheSameOnAllThreads([&](std::size_t query) {
        vxClassifierResult result;
        tool.run(patterns[query], result);
        return test::stored(result);
    });
}

TYPED_TEST(TrainedTool, IsCopiedComparedAndStoredByManyThreads) {
    const vxClassifierTool tool = failures::trained<TypeParam>();
    const Bytes bytes = test::stored(tool);
    std::vector<int> agreed(threadCount, 0);
    const int repetitions = rounds() / 10;
    test::together(threadCount, [&](std::size_t thread) {
        for (int i = 0; i < repetitions; ++i) {
            vxClassifierTool copy = tool; // shares the parts of the other
            vxClassifierTool loaded;
            test::load(test::stored(copy), loaded);
            agreed[thread] += copy == tool && test::stored(loaded) == bytes ? 1 : 0;
            copy.untrain();
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(threadCount, repetitions));
}

TEST(SharedMetric, MeasuresForManyThreads) {
    const vxPtrHandle_const<vxPatternDistanceMetric> metric(new vxPatternDistanceMetricNorm(2.5));
    const std::vector<vxFeaturePattern> patterns = queries();
    expectTheSameOnAllThreads([&](std::size_t query) {
        const vxPtrHandle_const<vxPatternDistanceMetric> share = metric;
        return test::stored(std::vector<double>{share->distance(patterns[query], patterns[3])});
    });
}

TEST(SharedRuleTable, ClassifiesForManyThreads) {
    const vxPtrHandle<vxClsFtSc> function(new vxClassifierFeatureScoreOneSided);
    std::vector<vxPtrHandle<vxClsFtSc>> functions{function, function, function};
    vxClassifierRule rule;
    rule.init(functions, 5);
    vxClassifierRuleTable table;
    table.train({rule});
    expectTheSameOnAllThreads([&](std::size_t query) {
        const double x = 0.125 * static_cast<double>(query);
        const vxClassifierRuleTable copy = table; // shares the functions
        return test::stored(std::vector<long>{copy.classifyHardThreshold(std::vector<double>{x, x, x}, 0.5)});
    });
}

} // namespace
