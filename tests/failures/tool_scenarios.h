#ifndef TESTS_FAILURES_TOOL_SCENARIOS_H
#define TESTS_FAILURES_TOOL_SCENARIOS_H

#include "tests/failures/techniques.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_result.h>

#include <memory>

// The operations of a tool as scenarios (faults.h), for each technique.
namespace failures {

inline vxClassifierResult resultOf(const vxClassifierTool& tool, const vxFeaturePattern& query) {
    vxClassifierResult result;
    tool.run(query, result);
    return result;
}

/// Training with a trial run. Whatever fails, the previous training is lost; the new one holds if it was the
/// trial that failed, as an error that says nothing about the data leaves the tool trained.
template <class Technique>
struct Train {
    Technique technique;
    vxClassifierTool expected = trained<Technique>();
    vxClassifierTool tool = trainedOtherwise<Technique>();

    void attempt() { technique.train(tool); }
    void expectDone() const { EXPECT_TRUE(equalAndTrained(tool, expected)); }
    void expectFailed() const {
        if (tool.isTrained()) {
            EXPECT_TRUE(equalAndTrained(tool, expected));
        }
    }
};

/// Without a trial run.
template <class Technique>
struct TrainWithoutTrial : Train<Technique> {
    TrainWithoutTrial() { this->technique.trialOff(); }
    void expectFailed() const { EXPECT_FALSE(this->tool.isTrained()); }
};

template <class Technique>
struct Retrain {
    Technique technique;
    vxClassifierTool before = trained<Technique>();
    vxClassifierTool expected = retrained();
    vxClassifierTool tool = before;

    void attempt() { technique.retrain(tool); }
    void expectDone() const { EXPECT_TRUE(equalAndTrained(tool, expected)); }
    /// The trial comes after the retraining.
    void expectFailed() const {
        EXPECT_TRUE(equalAndTrained(tool, before) || equalAndTrained(tool, expected));
    }

private:
    static vxClassifierTool retrained() {
        vxClassifierTool tool = trained<Technique>();
        Technique().retrain(tool);
        return tool;
    }
};

/// The technique takes over what it works with before the parameters are cloned, so after a failure of that
/// the nearest neighbours decide by the new parameters already.
template <class Technique>
struct RetrainWithoutTrial : Retrain<Technique> {
    vxClassifierResult byOld = resultOf(this->before, this->technique.query());
    vxClassifierResult byNew = resultOf(this->expected, this->technique.query());

    RetrainWithoutTrial() { this->technique.trialOff(); }
    void expectFailed() const {
        EXPECT_TRUE(equalAndTrained(this->tool, this->before));
        const vxClassifierResult now = resultOf(this->tool, this->technique.query());
        EXPECT_TRUE(now == byOld || (Technique::decidesByNewParametersAtOnce && now == byNew));
    }
};

/// The caller's result has something in it beforehand.
template <class Technique>
struct Run {
    vxClassifierTool tool = trained<Technique>();
    vxFeaturePattern query = Technique().query();
    vxClassifierResult before{{{77, 0.25, 0.5, 4.0}, {78, 0.5, 0.5, 5.0}}, 9.0};
    vxClassifierResult expected = resultOf(tool, query);
    vxClassifierResult result = before;

    void attempt() { tool.run(query, result); }
    void expectDone() const { EXPECT_EQ(result, expected); }
    void expectFailed() const { EXPECT_EQ(result, before); }
};

template <class Technique>
struct Store {
    vxClassifierTool tool = trained<Technique>();
    test::Bytes expected = test::stored(tool);
    test::Bytes bytes;

    void attempt() { bytes = test::stored(tool); }
    void expectDone() const { EXPECT_EQ(bytes, expected); }
    void expectFailed() const {
        EXPECT_TRUE(bytes.empty());
        EXPECT_TRUE(equalAndTrained(tool, trained<Technique>()));
    }
};

/// Into a tool that is in use, which has lost what it held if it is not what it was.
template <class Technique>
struct Load {
    vxClassifierTool original = trained<Technique>();
    vxClassifierTool other = trainedOtherwise<Technique>();
    vxFeaturePattern query = Technique().query();
    test::Bytes bytes = test::stored(original);
    vxClassifierTool tool = other;

    void attempt() { test::load(bytes, tool); }
    void expectDone() const { EXPECT_TRUE(equalAndTrained(tool, original)); }
    void expectFailed() const {
        if (tool.isTrained()) {
            // The archive's own end can fail too.
            EXPECT_TRUE(equalAndTrained(tool, other) || equalAndTrained(tool, original));
        }
    }
};

template <class Technique>
struct Copy {
    vxClassifierTool tool = trained<Technique>();
    std::unique_ptr<vxClassifierTool> copy;

    void attempt() { copy = std::make_unique<vxClassifierTool>(tool); }
    void expectDone() const { EXPECT_TRUE(equalAndTrained(*copy, tool)); }
    void expectFailed() const {
        EXPECT_EQ(copy, nullptr);
        EXPECT_TRUE(equalAndTrained(tool, trained<Technique>()));
    }
};

template <class Technique>
struct Assign {
    vxClassifierTool tool = trained<Technique>();
    vxClassifierTool assigned = trainedOtherwise<Technique>();

    void attempt() { assigned = tool; }
    void expectDone() const { EXPECT_TRUE(equalAndTrained(assigned, tool)); }
    void expectFailed() const {
        EXPECT_FALSE(assigned.isTrained());
        EXPECT_TRUE(equalAndTrained(tool, trained<Technique>()));
    }
};

template <class Technique>
struct Compare {
    vxClassifierTool a = trained<Technique>();
    vxClassifierTool b = trained<Technique>();
    bool equal = false;

    void attempt() { equal = a == b; }
    void expectDone() const { EXPECT_TRUE(equal); }
    void expectFailed() const { EXPECT_FALSE(equal); }
};

} // namespace failures

#endif
