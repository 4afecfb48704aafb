// Decides every pattern of a file by a Bayesian tool trained on the other folds, and prints one label for
// each. scripts/cross_validate compares them with what other programs decide on the same folds.

#include "examples/demo/csv_dataset.h"

#include <vxclassifier/vxclassifier.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <fstream>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Sets = std::vector<std::vector<long>>;

struct Options {
    std::string file;
    std::string folds;
    std::vector<std::string> sets;
    bool joint = false;
    bool impute = false;
};

std::vector<long> readFolds(const std::string& file, std::size_t count) {
    std::ifstream source(file);
    std::vector<long> folds;
    for (long fold = 0; source >> fold;) {
        folds.push_back(fold);
    }
    if (folds.size() != count) {
        throw std::runtime_error(file + ": one number is needed for each pattern");
    }
    return folds;
}

/// "0-2,5" gives 0, 1, 2, 5.
std::vector<long> parseSet(const std::string& text) {
    std::vector<long> indices;
    for (const std::string& part : CLI::detail::split(text, ',')) {
        const std::size_t dash = part.find('-');
        const long first = std::stol(part.substr(0, dash));
        const long last = dash == std::string::npos ? first : std::stol(part.substr(dash + 1));
        for (long index = first; index <= last; ++index) {
            indices.push_back(index);
        }
    }
    return indices;
}

Sets dependencySets(const Options& options, std::size_t measurements) {
    Sets sets;
    if (options.joint) {
        sets.emplace_back();
        for (std::size_t i = 0; i < measurements; ++i) {
            sets.back().push_back(static_cast<long>(i));
        }
    }
    for (const std::string& set : options.sets) {
        sets.push_back(parseSet(set));
    }
    return sets;
}

/// The parameters for categories that are as frequent as in the training part, which is what the others
/// assume too.
vxClassifierTrainParamsBayesian parametersFor(const vxClassifierDataProviderMemory& training,
                                              const Sets& sets) {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    vxClassifierFrequencies frequencies(1.0);
    std::multiset<long> labels;
    for (long i = 0; i < training.numPatterns(); ++i) {
        labels.insert(training.categoryLabel(i));
    }
    for (const long label : std::set<long>(labels.begin(), labels.end())) {
        frequencies.categoryFrequencyOverride(label, static_cast<double>(labels.count(label)));
        for (const std::vector<long>& set : sets) {
            types.setDependent(label, set);
        }
    }
    return vxClassifierTrainParamsBayesian(types, frequencies, vxClassifierCosts(1.0),
                                           vxFeaturePattern({}, {}));
}

/// The means of the measurements that are there, over the patterns of the other folds.
std::vector<double> trainingMeans(const demo::CsvDataset& dataset, const std::vector<long>& folds,
                                  long fold) {
    std::vector<double> sums(dataset.measurementNames.size(), 0.0);
    std::vector<double> counts(sums.size(), 0.0);
    for (std::size_t i = 0; i < dataset.rows.size(); ++i) {
        const demo::CsvRow& row = dataset.rows[i];
        for (std::size_t m = 0; m < sums.size() && folds[i] != fold; ++m) {
            const bool missing =
                std::binary_search(row.missing.begin(), row.missing.end(), static_cast<long>(m));
            sums[m] += missing ? 0.0 : row.measurements[m];
            counts[m] += missing ? 0.0 : 1.0;
        }
    }
    for (std::size_t m = 0; m < sums.size(); ++m) {
        sums[m] /= std::max(counts[m], 1.0);
    }
    return sums;
}

vxFeaturePattern patternOf(const demo::CsvRow& row, const std::vector<double>* means) {
    if (means == nullptr) {
        return vxFeaturePattern(row.measurements, row.missing);
    }
    std::vector<double> filled = row.measurements;
    for (const long index : row.missing) {
        filled[static_cast<std::size_t>(index)] = (*means)[static_cast<std::size_t>(index)];
    }
    return vxFeaturePattern(filled, {});
}

/// Decides the patterns of one fold.
void decideFold(const demo::CsvDataset& dataset, const std::vector<long>& folds, long fold,
                const Options& options, std::vector<long>& decisions) {
    const std::vector<double> means = trainingMeans(dataset, folds, fold);
    const std::vector<double>* imputed = options.impute ? &means : nullptr;
    vxClassifierDataProviderMemory training;
    for (std::size_t i = 0; i < dataset.rows.size(); ++i) {
        if (folds[i] != fold) {
            training.addData(vxPtrHandle_const<vxFeaturePattern>(
                                 new vxFeaturePattern(patternOf(dataset.rows[i], imputed))),
                             dataset.rows[i].label);
        }
    }
    vxClassifierTool tool;
    tool.train(training, parametersFor(training, dependencySets(options, dataset.measurementNames.size())));
    vxClassifierResult result;
    for (std::size_t i = 0; i < dataset.rows.size(); ++i) {
        if (folds[i] == fold) {
            tool.run(patternOf(dataset.rows[i], imputed), result);
            decisions[i] = result.categoryResults().front().categoryLabel();
        }
    }
}

void crossValidate(const Options& options) {
    const demo::CsvDataset dataset = demo::readCsvDataset(options.file);
    const std::vector<long> folds = readFolds(options.folds, dataset.rows.size());
    std::vector<long> decisions(dataset.rows.size(), -1);
    for (const long fold : std::set<long>(folds.begin(), folds.end())) {
        decideFold(dataset, folds, fold, options, decisions);
    }
    for (const long decision : decisions) {
        std::cout << decision << '\n';
    }
}

Options parse(int argc, char** argv, CLI::App& app) {
    Options options;
    app.add_option("file", options.file, "Labelled measurements (data/README.md)")->required();
    app.add_option("--folds", options.folds, "A file with the number of each pattern's fold")->required();
    app.add_option("--set", options.sets,
                   "Measurements that depend on each other, such as 0-3,7; repeat for more");
    app.add_flag("--joint", options.joint, "All measurements depend on each other");
    app.add_flag("--impute", options.impute, "Put means in the place of missing measurements");
    app.parse(argc, argv);
    return options;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what is left outside the try can only run out of memory.
int main(int argc, char** argv) {
    CLI::App app(
        "Decides each fold of a file of labelled measurements by a Bayesian tool trained on the others.");
    try {
        crossValidate(parse(argc, argv, app));
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << "cross_validation: " << error.what() << '\n';
        return 1;
    }
}
