#ifndef TESTS_CLASTOOL_TREE_TREES_H
#define TESTS_CLASTOOL_TREE_TREES_H

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/comparison_predicate.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/range_predicate.h>
#include <vxclassifier/validity_predicate.h>

#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <vector>

namespace test {

using Tree = vxPtrHandle<vxDecisionTree>;
using Predicate = vxPtrHandle<vxPredicateFunction>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A result with these labels in this order, which must differ from each other.
inline vxClassifierResult resultOf(const std::vector<long>& labels, double matchScoreFactorLog = 0.0) {
    if (labels.empty()) {
        return vxClassifierResult();
    }
    std::vector<vxClassifierCategoryResult> results;
    for (const long label : labels) {
        results.emplace_back(label, 1.0, 1.0, 0.5);
    }
    return vxClassifierResult(results, matchScoreFactorLog);
}

inline void putBytes(vxArchive& archive, std::initializer_list<unsigned char> bytes) {
    for (unsigned char byte : bytes) {
        archive || byte;
    }
}

inline void putResult(vxArchive& archive, const std::vector<long>& labels, double matchScoreFactorLog) {
    unsigned long count = labels.size();
    putBytes(archive, {0, 0});
    archive || count;
    double score = 1.0;
    for (long label : labels) {
        putBytes(archive, {0});
        archive || label;
        archive || score;
        archive || score;
        archive || score;
    }
    archive || matchScoreFactorLog;
}

/// A result that only an archive can bring: labels may repeat or be negative.
inline vxClassifierResult archivedResultOf(const std::vector<long>& labels) {
    vxStoringArchive storing;
    putResult(storing, labels, 0.0);
    storing.finish();
    vxLoadingArchive loading(storing.bytes());
    vxClassifierResult result;
    loading || result;
    loading.finish();
    return result;
}

inline Tree leaf(const std::vector<long>& labels) {
    return Tree(new vxDecisionTreeLeaf(resultOf(labels)));
}

/// Its clone is the tree that it was given, null included. So a node can be made of any tree without copying
/// it: with one object below two parents, or with a null branch, as archives can bring them.
class GivenTree : public vxDecisionTree {
public:
    explicit GivenTree(Tree tree) : tree_(std::move(tree)) {}
    std::vector<long> categoryLabels() const override { throw std::logic_error("stands for another tree"); }
    vxPtrHandle<vxDecisionTree> clone() const override { return tree_; }

private:
    Tree tree_;
};

/// The same for predicates.
class GivenPredicate : public vxPredicateFunction {
public:
    explicit GivenPredicate(Predicate predicate) : predicate_(std::move(predicate)) {}
    bool outcome(const vxFeaturePattern&) const override {
        throw std::logic_error("stands for another predicate");
    }
    vxPtrHandle<vxPredicateFunction> clone() const override { return predicate_; }

private:
    Predicate predicate_;
};

/// A node that holds these very objects.
inline Tree node(const Predicate& predicate, const Tree& trueTree, const Tree& falseTree) {
    return Tree(new vxDecisionTreeNode(GivenPredicate(predicate), GivenTree(trueTree), GivenTree(falseTree)));
}

/// True for every pattern.
inline Predicate always() {
    return Predicate(new vxValidityPredicate(std::vector<long>()));
}

/// True for patterns with more than `index` measurements, if that one is valid.
inline Predicate has(long index) {
    return Predicate(new vxValidityPredicate(std::vector<long>{index}));
}

inline vxFeaturePattern patternOf(const std::vector<double>& measurements,
                                  const std::vector<long>& invalid = {}) {
    return vxFeaturePattern(measurements, invalid);
}

} // namespace test

#endif
