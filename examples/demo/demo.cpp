// Trains on one part of a file of measurements, decides the rest, and shows what a user of the library gets
// to see.

#include "examples/demo/csv_dataset.h"
#include "examples/demo/evaluation.h"
#include "examples/demo/iris_tree.h"
#include "examples/demo/labelled_split.h"
#include "examples/demo/standardizer.h"
#include "examples/demo/tree_grower.h"

#include <vxclassifier/vxclassifier.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Options {
    std::vector<std::string> files;
    std::string store = "demo-tool.vxc";
    long neighbours = 5;
    double missCost = 5.0;
    int treeDepth = 7;
};

/// Taking an object of the first category for another one costs more than any other mistake: think of a fault
/// overlooked.
vxClassifierCosts unequalCosts(const demo::CsvDataset& dataset, double missCost) {
    std::set<long> labels;
    for (const demo::CsvRow& row : dataset.rows) {
        labels.insert(row.label);
    }
    vxClassifierCosts costs(1.0);
    for (auto assigned = std::next(labels.begin()); assigned != labels.end(); ++assigned) {
        costs.misclassificationCostOverride(*labels.begin(), *assigned, missCost);
    }
    return costs;
}

/// Shows a few decisions: the first pattern of the part that was not trained with, one from its middle and
/// its last.
void showDecisions(const demo::Evaluation& evaluation, const std::vector<demo::LabelledPattern>& patterns) {
    for (const std::size_t i : std::set<std::size_t>{0, patterns.size() / 2, patterns.size() - 1}) {
        std::cout << "    pattern " << i << ", really of category " << patterns[i].label << ":\n";
        demo::printResult(std::cout, evaluation.results()[i]);
    }
}

void showTotals(const demo::Evaluation& evaluation, const vxClassifierCosts& costs) {
    evaluation.printConfusion(std::cout);
    std::cout << std::fixed << std::setprecision(1) << "    accuracy " << 100.0 * evaluation.accuracy()
              << " %, cost of all mistakes " << evaluation.totalCost(costs) << '\n';
}

/// Loads what was stored, as another program would.
void load(const std::vector<unsigned char>& bytes, vxClassifierTool& tool) {
    vxLoadingArchive archive(bytes);
    archive || tool;
    archive.finish();
}

/// A nearest-neighbour tool votes with one neighbour until it has its own parameters again.
void wakeUp(vxClassifierTool& tool) {
    try {
        tool.retrain(*tool.trainParams());
    } catch (const vxClassifierDefs::BadMethod&) {
        // A tree has no parameters, and needs none.
    }
}

/// Stores the tool in a file, loads it into another one, and checks that both are equal and decide alike.
void storeAndLoad(vxClassifierTool& tool, const demo::Evaluation& evaluation,
                  const std::vector<demo::LabelledPattern>& patterns, const std::string& file) {
    vxStoringArchive archive;
    archive || tool;
    archive.finish();
    vfReplaceFile(file, archive.bytes());

    vxClassifierTool loaded;
    load(vfReadFile(file), loaded);
    const bool equal = loaded == tool;
    wakeUp(loaded);
    const bool alike = demo::Evaluation(loaded, patterns).results() == evaluation.results();
    std::cout << "    stored in " << file << " (" << archive.bytes().size()
              << " bytes) and loaded: " << (equal ? "equal" : "NOT EQUAL") << ", decides "
              << (alike ? "alike" : "DIFFERENTLY") << "\n\n";
    if (!equal || !alike) {
        throw std::runtime_error("the loaded tool is not the stored one");
    }
}

void report(const std::string& technique, vxClassifierTool& tool,
            const std::vector<demo::LabelledPattern>& testing, const vxClassifierCosts& costs,
            const std::string& store) {
    const demo::Evaluation evaluation(tool, testing);
    std::cout << "  " << technique << '\n';
    showDecisions(evaluation, testing);
    showTotals(evaluation, costs);
    storeAndLoad(tool, evaluation, testing, store);
}

void demonstrateNeighbours(const demo::LabelledSplit& split, const vxClassifierCosts& costs,
                           const Options& options) {
    const demo::LabelledSplit complete = demo::withoutMissing(split);
    if (complete.training.empty() || complete.testing.empty()) {
        std::cout << "  nearest neighbours: left out, since too few patterns have all their measurements\n\n";
        return;
    }
    const demo::Standardizer standardizer(complete.training);
    vxClassifierTool tool;
    tool.train(demo::providerOf(standardizer.apply(complete.training)),
               vxClassifierTrainParamsKNN(options.neighbours, vxPatternDistanceMetricNorm(2.0), costs));
    const std::string title = std::to_string(options.neighbours) + " nearest neighbours, " +
                              std::to_string(complete.training.size()) + " stored patterns";
    report(title, tool, standardizer.apply(complete.testing), costs, options.store);
}

/// Each measurement has a normal distribution of its own in each category; missing ones are left out.
void demonstrateBayes(const demo::LabelledSplit& split, const vxClassifierCosts& costs,
                      const Options& options) {
    const vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    vxClassifierTool tool;
    try {
        tool.train(demo::providerOf(split.training),
                   vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0), costs,
                                                   vxFeaturePattern({}, {})));
    } catch (const vxClassifierDefs::InsufficientTrainData& error) {
        std::cout << "  Bayes: left out: " << error.what() << "\n\n";
        return;
    }
    report("Bayes, independent measurements", tool, split.testing, costs, options.store);
}

void demonstrateTree(const demo::LabelledSplit& split, const demo::CsvDataset& dataset,
                     const vxClassifierCosts& costs, const Options& options) {
    const bool isIris =
        dataset.measurementNames ==
        std::vector<std::string>{"sepal_length_cm", "sepal_width_cm", "petal_length_cm", "petal_width_cm"};
    vxClassifierTool tool;
    tool.train(isIris ? *demo::irisTree(costs) : *demo::growTree(split.training, costs, options.treeDepth));
    report(isIris ? "decision tree, drawn up by hand" : "decision tree, built by the demo", tool,
           split.testing, costs, options.store);
}

void demonstrate(const std::string& file, const Options& options) {
    const demo::CsvDataset dataset = demo::readCsvDataset(file);
    const demo::LabelledSplit split = demo::splitDataset(dataset);
    if (split.testing.empty()) {
        throw std::runtime_error(file +
                                 ": at least three patterns are needed, two to train with and one to decide");
    }
    const vxClassifierCosts costs = unequalCosts(dataset, options.missCost);
    std::cout << file << ": " << dataset.measurementNames.size() << " measurements, " << split.training.size()
              << " patterns to train with, " << split.testing.size() << " to decide\n\n";
    demonstrateNeighbours(split, costs, options);
    demonstrateBayes(split, costs, options);
    demonstrateTree(split, dataset, costs, options);
}

Options parse(int argc, char** argv, CLI::App& app) {
    Options options;
    app.add_option("files", options.files, "Files of labelled measurements (see data/README.md)")->required();
    app.add_option("--store", options.store, "Where the trained tool is stored")->capture_default_str();
    app.add_option("-k,--neighbours", options.neighbours, "How many neighbours vote")->capture_default_str();
    app.add_option("--miss-cost", options.missCost,
                   "Cost of taking the first category for another; others cost 1")
        ->capture_default_str()
        ->check(CLI::Range(0.0, std::numeric_limits<double>::max()));
    app.add_option("--tree-depth", options.treeDepth, "Depth of a tree that the demo builds")
        ->capture_default_str()
        ->check(CLI::Range(0, 20));
    app.parse(argc, argv);
    return options;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what is left outside the try can only run out of memory.
int main(int argc, char** argv) {
    CLI::App app("Trains vxclassifier on two thirds of each file and decides the rest.");
    try {
        const Options options = parse(argc, argv, app);
        for (const std::string& file : options.files) {
            demonstrate(file, options);
        }
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << "demo: " << error.what() << '\n';
        return 1;
    }
}
