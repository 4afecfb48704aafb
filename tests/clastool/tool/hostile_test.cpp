// What the tool promises when memory runs out.

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_tool.h>

#include "tests/support/failing_allocation.h"
#include "tests/support/fake_technique.h"

#include <gtest/gtest.h>

namespace {

TEST(HostileTool, AnAssignmentThatRunsOutOfMemoryLeavesItEmpty) {
    const vxClassifierDataProviderMemory provider;
    vxClassifierTool source;
    source.train(provider, test::FakeParams(nullptr, 1));
    vxClassifierTool tool;
    const auto retrain = [&] { tool.train(provider, test::FakeParams(nullptr, 2)); };
    retrain();
    const long failures = test::failEachAllocation([&] { tool = source; },
                                                   [&] {
                                                       EXPECT_FALSE(tool.isTrained());
                                                       retrain();
                                                   });
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(tool == source);
}

} // namespace
