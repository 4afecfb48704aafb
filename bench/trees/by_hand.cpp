#include "bench/trees/trees.h"

#include <utility>

namespace bench::trees {

namespace {

struct Entry {
    long label;
    double match;
    double posterior;
    double cost;
};

struct Node {
    std::size_t measurement = 0;
    double threshold = 0.0;
    std::unique_ptr<Node> low; // null in a leaf
    std::unique_ptr<Node> high;
    std::vector<Entry> result;
};

/// Nests as deep as the tree.
std::unique_ptr<Node> nodeFor(const GrownTree& tree, std::size_t place) {
    const GrownNode& grown = tree.nodes()[place];
    auto node = std::make_unique<Node>();
    if (grown.isLeaf) {
        const long second = (grown.label + 1) % GrownTree::numCategories;
        node->result = {{grown.label, 0.75, 0.75, 0.25}, {second, 0.25, 0.25, 0.75}};
        return node;
    }
    node->measurement = grown.measurement;
    node->threshold = grown.threshold;
    node->low = nodeFor(tree, grown.children[0]);
    node->high = nodeFor(tree, grown.children[1]);
    return node;
}

/// The walk over nodes on the heap, and a copy of the leaf's result into one that is used again.
class Walk : public Decider {
public:
    explicit Walk(SharedWorkload workload)
        : workload_(std::move(workload)), root_(nodeFor(workload_->tree, 0)) {}

    void run(std::size_t turn) override {
        const double* row = workload_->query(turn);
        const Node* node = root_.get();
        while (node->low != nullptr) {
            node = row[node->measurement] <= node->threshold ? node->low.get() : node->high.get();
        }
        result_ = node->result;
    }

    long decide(std::size_t query) override {
        run(query);
        return result_.front().label;
    }

private:
    SharedWorkload workload_;
    std::unique_ptr<Node> root_;
    std::vector<Entry> result_;
};

} // namespace

Contender byHand() {
    return {Role::floor, "walk and copy",
            [](const SharedWorkload& workload) { return std::make_unique<Walk>(workload); }};
}

} // namespace bench::trees
