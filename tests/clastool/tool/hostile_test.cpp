// What the tool promises when memory runs out, and for archives and callers that are out of the ordinary.

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/range_predicate.h>

#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/fake_technique.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

using test::Bytes;
using test::FakeParams;
using test::HookLog;

const vxClassifierDataProviderMemory provider;

/// A tool whose classifier the log knows.
struct LoggedTool {
    LoggedTool() { tool.train(provider, FakeParams(&log, 1)); }
    HookLog log; // outlives everything that writes to it
    vxClassifierTool tool;
};

TEST(HostileTool, AnAssignmentThatRunsOutOfMemoryLeavesItEmpty) {
    vxClassifierTool source;
    source.train(provider, FakeParams(nullptr, 1));
    vxClassifierTool tool;
    const auto retrain = [&] { tool.train(provider, FakeParams(nullptr, 2)); };
    retrain();
    const long failures = test::failEachAllocation([&] { tool = source; },
                                                   [&] {
                                                       EXPECT_FALSE(tool.isTrained());
                                                       retrain();
                                                   });
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(tool == source);
}

/// A leaf that writes down when it is cloned and when it ends.
class Watched : public vxDecisionTreeLeaf {
public:
    explicit Watched(std::vector<std::string>& events)
        : vxDecisionTreeLeaf(vxClassifierResult()), events_(events) {}
    Watched(const Watched&) = default;
    Watched& operator=(const Watched&) = delete;
    ~Watched() override { events_.emplace_back("end"); }

    vxPtrHandle<vxDecisionTree> clone() const override {
        events_.emplace_back("clone");
        return vxPtrHandle<vxDecisionTree>(new Watched(*this));
    }

private:
    std::vector<std::string>& events_;
};

TEST(HostileTool, ATrainingMayBeGivenTheTreeThatOnlyTheToolHolds) {
    std::vector<std::string> events;
    const Watched tree(events);
    const std::vector<std::string> cloneFirst{"clone", "end"};
    vxClassifierTool tool;
    tool.train(tree);
    events.clear();
    const vxDecisionTree& whole = *tool.decisionTree();
    tool.train(whole);
    EXPECT_EQ(events, cloneFirst);

    tool.train(vxDecisionTreeNode(vxRangePredicate(), tree, vxDecisionTreeLeaf(vxClassifierResult())));
    events.clear();
    const vxDecisionTree& part = *dynamic_cast<const vxDecisionTreeNode&>(*tool.decisionTree()).trueTree();
    tool.train(part);
    EXPECT_EQ(events, cloneFirst);
}

TEST(HostileTool, ATrainingMayBeGivenTheParametersThatOnlyTheToolHolds) {
    LoggedTool logged;
    HookLog& log = logged.log;
    vxClassifierTool& tool = logged.tool;
    log.clear();
    const vxClassifierTrainParams& own = *tool.trainParams();
    tool.train(provider, own);
    EXPECT_TRUE(log.only("train_").paramsAlive);
}

TEST(HostileTool, WhateverTheChoiceOfATechniqueThrowsIsReplaced) {
    LoggedTool logged;
    HookLog& log = logged.log;
    vxClassifierTool& tool = logged.tool;
    const std::vector<std::function<void()>> failures{[] { throw 42; }, [] { throw std::bad_alloc(); }};
    for (const auto& failure : failures) {
        log.failure = failure;
        log.fail("newClassifier_");
        EXPECT_ERROR_CLASS(tool.train(provider, FakeParams(&log)), vxClassifierDefs::NotImplemented);
        EXPECT_FALSE(tool.isTrained());
    }
}

TEST(HostileTool, ACancellationPassesTheChoiceOfATechnique) {
    HookLog log;
    log.failure = [] { pthread_exit(nullptr); };
    log.fail("newClassifier_");
    vxClassifierTool tool;
    bool wentOn = false;
    std::thread cancelled([&] {
        try {
            tool.train(provider, FakeParams(&log));
        } catch (const vxClassifierDefs::NotImplemented&) {
            wentOn = true;
        }
        wentOn = true;
    });
    cancelled.join();
    EXPECT_FALSE(wentOn);
}

TEST(HostileTool, ADamagedArchiveIsRefusedBeforeTheToolIsTouched) {
    LoggedTool logged;
    vxClassifierTool& tool = logged.tool;
    const Bytes stored = test::stored(tool);
    for (std::size_t i = 0; i < stored.size(); ++i) {
        Bytes damaged = stored;
        damaged[i] ^= 1U;
        EXPECT_THROW(test::load(damaged, tool), vxArchive::Errors) << i;
        EXPECT_EQ(test::stored(tool), stored) << i;
    }
}

TEST(HostileTool, AForgedArchiveEmptiesTheToolWhichCanBeTrainedAgain) {
    LoggedTool logged;
    HookLog& log = logged.log;
    vxClassifierTool& tool = logged.tool;
    const Bytes content = test::payload(test::stored(tool));
    for (std::size_t size = 1; size < content.size(); ++size) {
        const Bytes part(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_THROW(test::load(test::Payload().append(part).sealed(), tool), vxArchive::Errors) << size;
        EXPECT_FALSE(tool.isTrained()) << size;
        EXPECT_TRUE(log.alive.empty()) << size;
        tool.train(provider, FakeParams(&log, 1));
        EXPECT_TRUE(tool.isTrained());
    }
}

} // namespace
