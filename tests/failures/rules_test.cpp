#include "tests/failures/callers.h"
#include "tests/support/archives.h"

#include <vxclassifier/rule_table.h>

#include <memory>
#include <optional>

namespace {

using namespace failures;

using Function = vxPtrHandle<vxClsFtSc>;

std::vector<vxClassifierRule> rulesOf(long numRules, std::vector<Function> functions) {
    std::vector<vxClassifierRule> rules(static_cast<std::size_t>(numRules));
    for (long label = 0; label < numRules; ++label) {
        rules[static_cast<std::size_t>(label)].init(functions, label);
    }
    return rules;
}

std::vector<Function> libraryFunctions() {
    return {Function(new vxClassifierFeatureScoreIgnore), Function(new vxClassifierFeatureScoreOneSided),
            Function(new vxClassifierFeatureScoreTwoSided)};
}

std::vector<Function> callersFunctions() {
    return {Function(new CallerScore), Function(new CallerScore)};
}

vxClassifierRuleTable tableOf(const std::vector<vxClassifierRule>& rules) {
    vxClassifierRuleTable table;
    table.train(rules);
    return table;
}

struct ChangeTable {
    vxClassifierRuleTable before = tableOf(rulesOf(1, libraryFunctions()));
    vxClassifierRuleTable larger = tableOf(rulesOf(5, libraryFunctions()));
    vxClassifierRuleTable table = before;
    void expectDone() const { EXPECT_TRUE(table == larger); }
    void expectFailed() const { EXPECT_TRUE(table == before); }
};

struct TrainTable : ChangeTable {
    void attempt() { table.train(larger.rules()); }
};

struct AssignTable : ChangeTable {
    void attempt() { table = larger; }
};

TEST(FailingRuleTable, IsTrainedAndAssignedAltogetherOrNotAtAll) {
    failEachStepOf<TrainTable>(allocationFaults());
    failEachStepOf<AssignTable>(allocationFaults());
}

struct CopyTable : ChangeTable {
    std::optional<vxClassifierRuleTable> copy;
    void attempt() { copy.emplace(larger); }
    void expectDone() const { EXPECT_TRUE(*copy == larger); }
    void expectFailed() const { EXPECT_FALSE(copy.has_value()); }
};

struct StoreTable : ChangeTable {
    test::Bytes bytes;
    void attempt() { bytes = test::stored(larger); }
    void expectDone() const { EXPECT_EQ(bytes, test::stored(larger)); }
    void expectFailed() const { EXPECT_TRUE(bytes.empty()); }
};

/// A table that was not loaded completely keeps whole rules, the last of them perhaps with less functions.
struct LoadTable : ChangeTable {
    test::Bytes bytes = test::stored(larger);
    void attempt() { test::load(bytes, table); }
    void expectFailed() {
        EXPECT_LE(table.rules().size(), larger.rules().size());
        for (const vxClassifierRule& rule : table.rules()) {
            EXPECT_LE(rule.scoringMethods().size(), 3U);
        }
        test::stored(tableOf(larger.rules()));
    }
};

TEST(FailingRuleTable, IsCopiedStoredAndLoadedOrLeftUsable) {
    failEachStepOf<CopyTable>(allocationFaults());
    failEachStepOf<StoreTable>(allocationFaults());
    failEachStepOf<LoadTable>(allocationFaults());
}

struct InitRule {
    vxClassifierRule before = rulesOf(1, libraryFunctions()).front();
    vxClassifierRule rule = before;
    std::vector<Function> many = std::vector<Function>(20, libraryFunctions()[1]);
    void attempt() { rule.init(many, 4); }
    void expectDone() const {
        EXPECT_EQ(rule.label(), 4);
        EXPECT_EQ(rule.scoringMethods(), many);
    }
    void expectFailed() const { EXPECT_TRUE(rule == before); }
};

TEST(FailingRule, IsMadeAltogetherOrNotAtAll) {
    failEachStepOf<InitRule>(allocationFaults());
}

template <class FunctionClass>
struct CloneFunction {
    FunctionClass function;
    std::unique_ptr<vxClsFtSc> clone;
    void attempt() { clone.reset(function.clone()); }
    void expectDone() const { EXPECT_TRUE(*clone == function); }
    void expectFailed() const { EXPECT_EQ(clone, nullptr); }
};

/// The handle keeps what it holds until the new function is complete.
struct LoadFunction {
    Function before = libraryFunctions()[1];
    Function handle = before;
    test::Bytes bytes = test::stored(libraryFunctions()[2]);
    void attempt() { test::load(bytes, handle); }
    void expectDone() const { EXPECT_TRUE(*handle == *libraryFunctions()[2]); }
    void expectFailed() const { EXPECT_EQ(handle, before); }
};

TEST(FailingScoreFunction, IsClonedAndLoadedOrNothingChanges) {
    failEachStepOf<CloneFunction<vxClassifierFeatureScoreIgnore>>(allocationFaults());
    failEachStepOf<CloneFunction<vxClassifierFeatureScoreOneSided>>(allocationFaults());
    failEachStepOf<CloneFunction<vxClassifierFeatureScoreTwoSided>>(allocationFaults());
    failEachStepOf<LoadFunction>(allocationFaults());
}

struct Classify {
    vxClassifierRuleTable table = tableOf(rulesOf(3, callersFunctions()));
    vxClassifierFeatureVector query{{0.25, 0.5}};
    long label = -7;
    void attempt() { label = table.classifyHardThreshold(query, 0.25); }
    void expectDone() const { EXPECT_EQ(label, 0); }
    void expectFailed() const { EXPECT_EQ(label, -7); }
};

struct CompareTables {
    vxClassifierRuleTable table = tableOf(rulesOf(3, callersFunctions()));
    vxClassifierRuleTable equalOne = tableOf(rulesOf(3, callersFunctions()));
    bool equal = false;
    void attempt() { equal = table == equalOne; }
    void expectDone() const { EXPECT_TRUE(equal); }
    void expectFailed() const { EXPECT_FALSE(equal); }
};

TEST(FailingCallersScoreFunction, GivesNoAnswer) {
    failEachStepOf<Classify>(callFaults());
    failEachStepOf<CompareTables>(callFaults());
}

TEST(FailingRuleTable, ClassifiesWithoutMemory) {
    for (const Fault& fault : allocationFaults()) {
        EXPECT_EQ(failEachStep<Classify>(fault), 0) << "a decision takes none";
    }
}

} // namespace
