// Sorts the Iris flowers by three rules that a person wrote, and shows how well they do.

#include "examples/demo/csv_dataset.h"
#include "examples/iris_rules/iris_table.h"
#include "examples/iris_rules/rule_words.h"

#include <array>
#include <cstddef>
#include <exception>
#include <iomanip>
#include <iostream>
#include <stdexcept>

namespace {

/// How many flowers of each species (rows) were taken for which (columns; the last is "undecided").
using Confusion = std::array<std::array<int, iris::numSpecies + 1>, iris::numSpecies>;

void printRules(const vxClassifierRuleTable& table) {
    std::cout << "The rules; the first that fits well enough (more than " << iris::threshold
              << ") decides:\n\n";
    for (const vxClassifierRule& rule : table.rules()) {
        std::cout << "  " << iris::inWords(rule) << '\n';
    }
}

Confusion classify(const vxClassifierRuleTable& table, const demo::CsvDataset& flowers) {
    Confusion confusion{};
    for (const demo::CsvRow& flower : flowers.rows) {
        if (flower.label >= iris::numSpecies || !flower.missing.empty()) {
            throw std::runtime_error("a flower lacks a measurement, or is of an unknown species");
        }
        const long decision = table.classifyHardThreshold(flower.measurements, iris::threshold);
        const long column = decision < 0 ? iris::numSpecies : decision;
        ++confusion[static_cast<std::size_t>(flower.label)][static_cast<std::size_t>(column)];
    }
    return confusion;
}

void printConfusion(const Confusion& confusion) {
    constexpr int width = 12;
    std::cout << "\nTaken for:" << std::setw(width) << iris::speciesNames[0];
    for (std::size_t species = 1; species < iris::numSpecies; ++species) {
        std::cout << std::setw(width) << iris::speciesNames[species];
    }
    std::cout << std::setw(width) << "undecided" << '\n';
    for (std::size_t species = 0; species < iris::numSpecies; ++species) {
        std::cout << std::left << std::setw(10) << iris::speciesNames[species] << std::right;
        for (const int count : confusion[species]) {
            std::cout << std::setw(width) << count;
        }
        std::cout << '\n';
    }
}

void printAccuracy(const Confusion& confusion, std::size_t total) {
    int right = 0;
    for (std::size_t species = 0; species < iris::numSpecies; ++species) {
        right += confusion[species][species];
    }
    std::cout << "\nRight: " << right << " of " << total << " (" << std::fixed << std::setprecision(1)
              << 100.0 * right / static_cast<double>(total) << " %)\n";
}

void run(const char* file) {
    const demo::CsvDataset flowers = demo::readCsvDataset(file);
    const vxClassifierRuleTable table = iris::makeTable();
    printRules(table);
    const Confusion confusion = classify(table, flowers);
    printConfusion(confusion);
    printAccuracy(confusion, flowers.rows.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: iris_rules data/iris.csv\n";
        return 2;
    }
    try {
        run(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "iris_rules: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
