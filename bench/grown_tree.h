#ifndef BENCH_GROWN_TREE_H
#define BENCH_GROWN_TREE_H

#include "bench/data.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace bench {

/// A decision tree as plain numbers: every contender is built from it.
struct GrownNode {
    bool isLeaf;
    std::size_t measurement; // of a node: which one is compared
    double threshold;        // a measurement up to the threshold goes to the first child
    std::size_t children[2]; // places further back in the tree
    long label;              // of a leaf
    std::size_t depth;
};

/// Splits random rows at random quantiles, as training on data of many shapes would, until single rows are
/// left or the depth is reached. All numbers are single precision, so that every contender compares alike.
class GrownTree {
public:
    static constexpr std::size_t numMeasurements = 8;
    static constexpr long numCategories = 4;

    GrownTree(std::size_t numRows, std::size_t maxDepth)
        : rows_(asSingle(bellRows(numRows, numMeasurements, 9))), maxDepth_(maxDepth), generator_(10) {
        std::vector<std::size_t> all(numRows);
        for (std::size_t i = 0; i < numRows; ++i) {
            all[i] = i;
        }
        grow(all.data(), all.data() + numRows, 0);
    }

    const std::vector<GrownNode>& nodes() const noexcept { return nodes_; }

    static Rows queries(std::size_t count) { return asSingle(bellRows(count, numMeasurements, 11)); }

    long decide(const double* row) const noexcept {
        const GrownNode* node = nodes_.data();
        while (!node->isLeaf) {
            node = &nodes_[node->children[row[node->measurement] <= node->threshold ? 0 : 1]];
        }
        return node->label;
    }

private:
    static Rows asSingle(Rows rows) {
        for (double& value : rows.values) {
            value = static_cast<double>(static_cast<float>(value));
        }
        return rows;
    }

    /// Nests as deep as the tree.
    std::size_t grow(std::size_t* begin, std::size_t* end, std::size_t depth) {
        const std::size_t place = nodes_.size();
        const auto count = static_cast<std::size_t>(end - begin);
        if (depth == maxDepth_ || count < 2) {
            const long label = static_cast<long>(generator_.below(static_cast<std::size_t>(numCategories)));
            nodes_.push_back({true, 0, 0.0, {0, 0}, label, depth});
            return place;
        }
        const std::size_t measurement = generator_.below(numMeasurements);
        const double quantile = 0.2 + 0.6 * generator_.uniform();
        const auto numLow =
            std::max<std::size_t>(1, static_cast<std::size_t>(quantile * static_cast<double>(count)));
        std::size_t* last = begin + (numLow - 1);
        const auto value = [&](std::size_t row) { return rows_.row(row)[measurement]; };
        std::nth_element(begin, last, end, [&](std::size_t a, std::size_t b) { return value(a) < value(b); });
        nodes_.push_back({false, measurement, value(*last), {0, 0}, -1, depth});
        const std::size_t low = grow(begin, last + 1, depth + 1);
        const std::size_t high = grow(last + 1, end, depth + 1);
        nodes_[place].children[0] = low;
        nodes_[place].children[1] = high;
        return place;
    }

    Rows rows_;
    std::size_t maxDepth_;
    Generator generator_;
    std::vector<GrownNode> nodes_; // the root first, parents before their children
};

} // namespace bench

#endif
