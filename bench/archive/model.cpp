#include "bench/archive/model.h"

#include <algorithm>
#include <limits>

namespace bench::archive {

Predicate::~Predicate() = default;
RangePredicate::~RangePredicate() = default;
Tree::~Tree() = default;
Leaf::~Leaf() = default;
Node::~Node() = default;

// A tree whose leaves are single rows has one node less than twice as many.
Source::Source(std::size_t numRows, std::size_t numNodes)
    : rows(bellRows(numRows, 16, 14)), tree(numNodes / 2, std::numeric_limits<std::size_t>::max()) {}

Patterns patternsOf(const Source& source) {
    Patterns made;
    for (std::size_t i = 0; i < source.rows.count; ++i) {
        auto pattern = std::make_shared<Pattern>();
        pattern->measurements = source.rows.vector(i);
        pattern->validity.assign(source.rows.size, true);
        made.patterns.push_back(std::move(pattern));
        made.labels.push_back(static_cast<std::int32_t>(i) % numLabels);
    }
    return made;
}

std::shared_ptr<Tree> treeOf(const Source& source) {
    const std::vector<GrownNode>& nodes = source.tree.nodes();
    std::vector<std::shared_ptr<Tree>> made(nodes.size());
    for (std::size_t i = nodes.size(); i-- > 0;) { // children first
        const GrownNode& grown = nodes[i];
        if (grown.isLeaf) {
            const long second = (grown.label + 1) % GrownTree::numCategories;
            auto leaf = std::make_shared<Leaf>();
            leaf->entries = {{static_cast<std::int32_t>(grown.label), 0.75, 0.75, 0.25},
                             {static_cast<std::int32_t>(second), 0.25, 0.25, 0.75}};
            made[i] = std::move(leaf);
            continue;
        }
        auto predicate = std::make_shared<RangePredicate>();
        predicate->lower = -std::numeric_limits<double>::infinity();
        predicate->upper = grown.threshold;
        predicate->indices = {static_cast<std::int32_t>(grown.measurement)};
        auto node = std::make_shared<Node>();
        node->predicate = std::move(predicate);
        node->trueTree = std::move(made[grown.children[0]]);
        node->falseTree = std::move(made[grown.children[1]]);
        made[i] = std::move(node);
    }
    return made.front();
}

bool areEqual(const Patterns& a, const Patterns& b) {
    return a.labels == b.labels && std::equal(a.patterns.begin(), a.patterns.end(), b.patterns.begin(),
                                              b.patterns.end(), [](const auto& x, const auto& y) {
                                                  return x->measurements == y->measurements &&
                                                         x->validity == y->validity;
                                              });
}

namespace {

bool areEqual(const Leaf& a, const Leaf& b) {
    return std::equal(a.entries.begin(), a.entries.end(), b.entries.begin(), b.entries.end(),
                      [](const Entry& x, const Entry& y) {
                          return x.label == y.label && x.match == y.match && x.posterior == y.posterior &&
                                 x.cost == y.cost;
                      });
}

bool areEqual(const Node& a, const Node& b) {
    const auto* x = dynamic_cast<const RangePredicate*>(a.predicate.get());
    const auto* y = dynamic_cast<const RangePredicate*>(b.predicate.get());
    return x != nullptr && y != nullptr && x->lower == y->lower && x->upper == y->upper &&
           x->indices == y->indices && areEqual(a.trueTree.get(), b.trueTree.get()) &&
           areEqual(a.falseTree.get(), b.falseTree.get());
}

} // namespace

/// Nests as deep as the trees.
bool areEqual(const Tree* a, const Tree* b) {
    if (const auto* leaf = dynamic_cast<const Leaf*>(a)) {
        const auto* other = dynamic_cast<const Leaf*>(b);
        return other != nullptr && areEqual(*leaf, *other);
    }
    const auto* node = dynamic_cast<const Node*>(a);
    const auto* other = dynamic_cast<const Node*>(b);
    return node != nullptr && other != nullptr && areEqual(*node, *other);
}

} // namespace bench::archive
