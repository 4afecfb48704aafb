#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/threads/together.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace {

using test::run;
using test::trained;

TEST(ClassifierKNNThreads, RunOneClassifierAtTheSameTime) {
    const vx_ClassifierKNN classifier =
        trained(test::line({0.0, 1.0, 2.0, 3.0}), vxClassifierTrainParamsKNN(3));
    const vxClassifierResult expected = run(classifier, {1.2});
    std::vector<int> agreed(4, 0);
    test::together(agreed.size(), [&](std::size_t thread) {
        for (int i = 0; i < 200; ++i) {
            agreed[thread] += run(classifier, {1.2}) == expected ? 1 : 0;
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(4, 200));
}

} // namespace
