#ifndef TESTS_FAILURES_TECHNIQUES_H
#define TESTS_FAILURES_TECHNIQUES_H

#include "tests/failures/callers.h"

#include <vxclassifier/classifier_tool.h>

#include <string>
#include <type_traits>

// What the operations of a tool are tried on: a technique, with classes of the library or of a caller's. Each
// has
// - train(tool), and trainOtherwise(tool), which leads to an unequal tool;
// - retrain(tool), which changes the parameters only, and whether a failed one may show in the decisions;
// - query(), a pattern to classify;
// - trialOff(): parameters as they are from now on ask for no trial run.
namespace failures {

/// Three categories of three measurements.
vxClassifierDataProviderMemory trainingData();

/// A technique that is chosen by parameters.
template <class Params, class Provider>
class Automatic {
public:
    Automatic(const vxClassifierDataProviderMemory& data, const Params& params, const Params& other)
        : data_(data), params_(params), other_(other) {}

    void train(vxClassifierTool& tool) const { tool.train(data_, params_); }
    void trainOtherwise(vxClassifierTool& tool) const { tool.train(data_, other_); }
    void retrain(vxClassifierTool& tool) const { tool.retrain(other_); }
    vxFeaturePattern query() const { return vxFeaturePattern(*data_.featurePattern(4)); }
    void trialOff() {
        params_.throwIfNotReady(false);
        other_.throwIfNotReady(false);
    }

private:
    Provider data_;
    Params params_;
    Params other_;
};

/// Normal distributions, two of them joint.
struct JointNormal : Automatic<vxClassifierTrainParamsBayesian, vxClassifierDataProviderMemory> {
    static constexpr bool decidesByNewParametersAtOnce = false;
    JointNormal();
};

/// A binomial distribution beside normal ones.
struct Binomial : Automatic<vxClassifierTrainParamsBayesian, vxClassifierDataProviderMemory> {
    static constexpr bool decidesByNewParametersAtOnce = false;
    Binomial();
};

struct Neighbors : Automatic<vxClassifierTrainParamsKNN, vxClassifierDataProviderMemory> {
    static constexpr bool decidesByNewParametersAtOnce = true;
    Neighbors();
};

struct CallersNormal : Automatic<CallerParamsBayesian, CallerProvider> {
    static constexpr bool decidesByNewParametersAtOnce = false;
    CallersNormal();
};

/// With the caller's metric, too.
struct CallersNeighbors : Automatic<CallerParamsKNN, CallerProvider> {
    static constexpr bool decidesByNewParametersAtOnce = true;
    CallersNeighbors();
};

/// Trees, which are made by hand.
class Trees {
public:
    void train(vxClassifierTool& tool) const { tool.train(*tree_); }
    void trainOtherwise(vxClassifierTool& tool) const { tool.train(*other_); }
    vxFeaturePattern query() const { return vxFeaturePattern({1.0, 2.0, 3.0}, {}); }
    void trialOff() {}

protected:
    Trees(const vxDecisionTree& tree, const vxDecisionTree& other)
        : tree_(tree.clone()), other_(other.clone()) {}

private:
    vxPtrHandle_const<vxDecisionTree> tree_;
    vxPtrHandle_const<vxDecisionTree> other_;
};

struct OwnTrees : Trees {
    OwnTrees();
};

/// With the caller's predicates, nodes and leaves.
struct CallersTrees : Trees {
    CallersTrees();
};

/// What the tests of a technique are called by.
struct NameOfTechnique {
    template <class Technique>
    static std::string GetName(int) {
        if (std::is_same_v<Technique, JointNormal>) {
            return "JointNormal";
        }
        if (std::is_same_v<Technique, Binomial>) {
            return "Binomial";
        }
        if (std::is_same_v<Technique, Neighbors>) {
            return "Neighbors";
        }
        if (std::is_same_v<Technique, OwnTrees>) {
            return "Trees";
        }
        if (std::is_same_v<Technique, CallersNormal>) {
            return "CallersNormal";
        }
        return std::is_same_v<Technique, CallersNeighbors> ? "CallersNeighbors" : "CallersTrees";
    }
};

/// Whether both tools are trained and equal. What the tool was made from may be the caller's, so no step may
/// fail at the moment.
::testing::AssertionResult equalAndTrained(const vxClassifierTool& a, const vxClassifierTool& b);

template <class Technique>
vxClassifierTool trained() {
    vxClassifierTool tool;
    Technique().train(tool);
    return tool;
}

template <class Technique>
vxClassifierTool trainedOtherwise() {
    vxClassifierTool tool;
    Technique().trainOtherwise(tool);
    return tool;
}

} // namespace failures

#endif
