#include "fuzz/uses.h"

#include "tests/laws/families.h"
#include "tests/support/archives.h"

#include <cmath>
#include <limits>
#include <memory>

namespace fuzz {

namespace {

using Types = vxClassifierDistributionTypes;

const std::vector<vxFeaturePattern>& queries() {
    static const std::vector<vxFeaturePattern> all{
        vxFeaturePattern({}, {}),
        vxFeaturePattern({1.0}, {}),
        vxFeaturePattern({-3.0}, {}),
        vxFeaturePattern({std::nan("")}, {}),
        vxFeaturePattern({1.0}, {0}),
        vxFeaturePattern({0.5, 2.5}, {}),
        vxFeaturePattern({4.0, -1.0}, {1}),
        vxFeaturePattern({std::nan(""), -0.0}, {}),
        vxFeaturePattern({-2.5, 5e-324, 8.0}, {}),
        vxFeaturePattern({3.0, 1.0, 4.0, 1.0, 5.0, 9.0}, {2}),
    };
    return all;
}

/// Patterns whose binomial probabilities are sums of up to 2^31 terms.
const std::vector<vxFeaturePattern>& costlyQueries() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    static const std::vector<vxFeaturePattern> all{
        vxFeaturePattern({-1e300}, {}),
        vxFeaturePattern({-infinity}, {}),
        vxFeaturePattern({std::nan(""), -infinity}, {}),
        vxFeaturePattern({1e300, -1e300, 5e-324}, {}),
        vxFeaturePattern({infinity, 1e9}, {0}),
    };
    return all;
}

const vxFeaturePattern& someQuery(Steps& steps) {
    return steps.pickOf(steps.isPatient() ? costlyQueries() : queries());
}

vxClassifierDataProviderMemory someData() {
    vxClassifierDataProviderMemory data;
    for (const double x : {0.5, 1.0, 2.5, 4.0, 4.5}) {
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, 5.0 - x * x}, {})),
                     x < 2.0 ? 2 : 7);
    }
    return data;
}

vxClassifierTrainParamsBayesian bayesian(Types::DistributionType type) {
    return vxClassifierTrainParamsBayesian(Types(type), vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                                           vxFeaturePattern({10.0, 10.0}, {}));
}

/// Some technique's parameters, for what takes any.
const vxClassifierTrainParams& someParams(Steps& steps) {
    static const std::vector<vxPtrHandle<vxClassifierTrainParams>> all{
        vxClassifierTrainParamsKNN(2).clone(), bayesian(Types::eMultivariateNormal).clone(),
        bayesian(Types::eBinomial).clone()};
    return *steps.pickOf(all);
}

/// Asks `run` about some query twice; the same question must give the same answer.
template <class Runner>
void run(Steps& steps, const Runner& runner) {
    const vxFeaturePattern& query = someQuery(steps);
    vxClassifierResult first;
    if (steps.step([&] {
            vxDiagObject diag;
            runner.run(query, first, &diag, ~0UL);
        })) {
        vxClassifierResult second;
        if (steps.step([&] { runner.run(query, second); })) {
            require(test::stored(first) == test::stored(second), "a second run gives another result");
        }
    }
}

/// Asks `run` about each query.
template <class Runner>
void runAll(Steps& steps, const Runner& runner) {
    for (const vxFeaturePattern& query : queries()) {
        vxClassifierResult result;
        steps.step([&] { runner.run(query, result); });
    }
    run(steps, runner);
}

void trainTool(Steps& steps, const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) {
    vxClassifierTool tool;
    if (steps.step([&] { tool.train(data, params); })) {
        run(steps, tool);
        run(steps, tool);
    } else {
        // An interruption of the trial at the end keeps what was learnt.
        require(!tool.isTrained() || steps.isTimeUp(), "a training that failed leaves a trained tool");
    }
}

void use(Steps& steps, const vxClassifierDataProvider& data) {
    steps.step([&] { static_cast<void>(data.name() + data.description()); });
    steps.step([&] { data.numMeasurements(); });
    const long count = data.numPatterns();
    for (const long index : {-2147483648L, -1L, 0L, 1L, count - 1, count, 2147483647L}) {
        steps.step([&] { data.categoryLabel(index); });
        steps.step([&] { data.featurePattern(index); });
    }
    trainTool(steps, data, someParams(steps));
    steps.step([&] { use(steps, *data.featurePattern(count - 1)); });
}

void use(Steps& steps, const vxClassifierTrainParams& params) {
    trainTool(steps, someData(), params);
    steps.step([&] { laws::ParamsAccess::newClassifier(params); });
    const vxClassifierTrainParams& other = someParams(steps);
    steps.step([&] { laws::ParamsAccess::isSameTechnique(params, other); });
    steps.step([&] { laws::ParamsAccess::isEqual(params, other); });
    vxClassifierTool tool;
    steps.step([&] { tool.train(someData(), other); });
    if (steps.step([&] { tool.retrain(params); })) {
        run(steps, tool);
    }
}

/// All the ways to change a classifier; `changed` is the caller's own.
void change(Steps& steps, vx_Classifier& changed) {
    const vxClassifierTrainParams& params = someParams(steps);
    steps.step([&] { changed.retrain(params); });
    run(steps, changed);
    steps.step([&] { changed.retrain(*changed.trainParams()); });
    steps.step([&] { changed.train(someData(), *changed.trainParams()); });
    steps.step([&] { changed.trainStart(*changed.trainParams()); });
    steps.step([&] { changed.trainIncremental(queries()[3], 2); });
    steps.step([&] { changed.trainIncremental(queries()[3], -1); });
    run(steps, changed);
    if (steps.step([&] { changed.untrain(); })) {
        require(!changed.isTrained(), "an untrained classifier is trained");
    }
}

void use(Steps& steps, const vx_Classifier& classifier) {
    classifier.isTrained();
    steps.step([&] { use(steps, *classifier.trainParams()); });
    runAll(steps, classifier);
    if (const auto* ofTree = dynamic_cast<const vx_ClassifierDecisionTree*>(&classifier)) {
        steps.step([&] { ofTree->decisionTree()->categoryLabels(); });
    }
    steps.step([&] { change(steps, *classifier.clone()); });
}

void use(Steps& steps, const vxPatternDistanceMetric& metric) {
    const vxFeaturePattern& from = someQuery(steps);
    for (const vxFeaturePattern& to : queries()) {
        steps.step([&] { metric.distance(from, to); });
    }
    steps.step([&] { metric.distance(from, from); });
    trainTool(steps, someData(), vxClassifierTrainParamsKNN(3, metric, vxClassifierCosts(1.0)));
}

void use(Steps& steps, const vxPredicateFunction& predicate) {
    for (const vxFeaturePattern& query : queries()) {
        steps.step([&] { predicate.outcome(query); });
    }
    steps.step([&] { predicate.outcome(steps.pickOf(costlyQueries())); });
}

void use(Steps& steps, const vxDecisionTree& tree) {
    steps.step([&] { tree.categoryLabels(); });
    steps.step([&] { tree.numCategories(); });
    if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&tree)) {
        use(steps, leaf->classifierResult());
    }
    if (const auto* node = dynamic_cast<const vxDecisionTreeNode*>(&tree)) {
        steps.step([&] { use(steps, *node->predicateFunction()); });
        steps.step([&] {
            vxDecisionTreeNode changed(*node);
            changed.trueTree(*node->falseTree());
            changed.falseTree(tree);
            changed.isEqual(tree);
        });
    }
    vxClassifierTool tool;
    steps.step([&] { tool.train(tree); });
    runAll(steps, tool);
}

void use(Steps& steps, const vx_ProbabilityDensityFunction& density) {
    for (const vxFeaturePattern& query : queries()) {
        steps.step([&] { density.logValue(query); });
    }
    steps.step([&] { density.logValue(someQuery(steps)); });
    const laws::Object own = laws::reloaded(density);
    auto& changed = dynamic_cast<vx_ProbabilityDensityFunction&>(*own);
    for (int i = 0; i < 3; ++i) {
        const vxFeaturePattern& query = someQuery(steps);
        const vxFeaturePattern& other = someQuery(steps);
        steps.step([&] { changed.updateWithData({query, query}); });
        steps.step([&] { changed.updateWithData({query, other}); });
        steps.step([&] { changed.logValue(other); });
    }
    steps.step([&] { changed.clear(); });
    steps.step([&] { changed.updateWithData({queries()[1]}); });
}

void use(Steps& steps, const vx_CategoryModelBayesian& model) {
    for (const vxFeaturePattern& query : queries()) {
        steps.step([&] {
            vxDiagObject diag;
            model.matchScore(query, &diag, ~0UL);
        });
    }
    // A copy would share its densities.
    const laws::Object own = laws::reloaded(model);
    auto& changed = dynamic_cast<vx_CategoryModelBayesian&>(*own);
    for (int i = 0; i < 3; ++i) {
        const vxFeaturePattern& query = someQuery(steps);
        steps.step([&] { changed.adapt(query); });
        steps.step([&] { changed.matchScore(someQuery(steps)); });
    }
}

void use(Steps& steps, const vxException& error) {
    error.errorNumber();
    steps.step([&] { static_cast<void>(error.message() + L"."); });
    require(error.what() != nullptr, "an error without a text");
    vxPersistent* loaded = nullptr;
    const test::Bytes bytes = test::storedPointer(const_cast<vxException*>(&error));
    vxLoadingArchive archive(bytes);
    vxPersistent::serializePointer(archive, nullptr, loaded);
    std::unique_ptr<vxException> copy(dynamic_cast<vxException*>(loaded));
    archive.finish();
    steps.step([&] { copy.release()->suicideAndRethrow(); });
}

template <class Family>
void useAs(Steps& steps, const vxPersistent& object) {
    if (const auto* member = dynamic_cast<const Family*>(&object)) {
        use(steps, *member);
    }
}

} // namespace

void use(Steps& steps, const vxFeaturePattern& pattern) {
    const long count = pattern.numMeasurements();
    pattern.numInvalid();
    for (const long index : {-2147483648L, -1L, 0L, 1L, count - 1, count, 2147483647L}) {
        steps.step([&] { pattern.isValid(index); });
        steps.step([&] { pattern.featureMeasurement(index, true); });
        steps.step([&] { pattern.featureMeasurement(index, false); });
    }
    steps.step([&] { pattern.featureMeasurements(true); });
    steps.step([&] { pattern.featureMeasurements(false); });
    steps.step([&] {
        const std::vector<long> invalid = pattern.invalidFeatureIndices();
        const vxFeaturePattern again(pattern.featureMeasurements(false), invalid);
        require(again.numInvalid() == pattern.numInvalid(), "a pattern with other invalid measurements");
    });
    vxClassifierDataProviderMemory data = someData();
    steps.step([&] {
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(pattern)), 2);
        vxClassifierTool tool;
        tool.train(data, vxClassifierTrainParamsKNN(2));
        vxClassifierResult result;
        tool.run(pattern, result);
    });
}

void use(Steps& steps, const vxClassifierTool& tool) {
    tool.isTrained();
    runAll(steps, tool);
    steps.step([&] { use(steps, *tool.trainParams()); });
    steps.step([&] { use(steps, *tool.decisionTree()); });
    vxClassifierTool changed;
    if (steps.step([&] { changed = tool; })) {
        steps.step([&] { static_cast<void>(changed == tool); });
        steps.step([&] { changed.retrain(vxClassifierTrainParamsKNN(1)); });
        steps.step([&] { changed.train(*changed.decisionTree()); });
        steps.step([&] { changed.train(someData(), *changed.trainParams()); });
        runAll(steps, changed);
        changed.untrain();
        require(!changed.isTrained(), "an untrained tool is trained");
    }
}

void use(Steps& steps, const vxPersistent& object) {
    useAs<vxException>(steps, object);
    useAs<vxFeaturePattern>(steps, object);
    useAs<vxClassifierDataProvider>(steps, object);
    useAs<vxClassifierTrainParams>(steps, object);
    useAs<vx_Classifier>(steps, object);
    useAs<vxPatternDistanceMetric>(steps, object);
    useAs<vxPredicateFunction>(steps, object);
    useAs<vxDecisionTree>(steps, object);
    useAs<vx_ProbabilityDensityFunction>(steps, object);
    useAs<vx_CategoryModelBayesian>(steps, object);
}

} // namespace fuzz
