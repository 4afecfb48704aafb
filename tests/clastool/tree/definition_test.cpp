#include "tests/clastool/tree/tree_oracle.h"
#include "tests/clastool/tree/trees.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>

// Comparisons and lists of labels of many small random trees against their definitions. The trees share
// subtrees, have null parts, NaNs and repeated labels, and hold classes that compare as only a caller would.

namespace {

using test::Predicate;
using test::Tree;

/// Equal to one whose value is near. So being equal to the same one says nothing of two of them.
struct NearPredicate : vxPredicateFunction {
    explicit NearPredicate(int value) : value_(value) {}
    bool outcome(const vxFeaturePattern&) const override { return true; }
    vxPtrHandle<vxPredicateFunction> clone() const override { return Predicate(new NearPredicate(*this)); }
    bool isEqual(const vxPredicateFunction& other) const override {
        const auto* near = dynamic_cast<const NearPredicate*>(&other);
        return near != nullptr && std::abs(value_ - near->value_) <= 1;
    }

private:
    int value_;
};

struct NearTree : vxDecisionTree {
    explicit NearTree(int value) : value_(value) {}
    std::vector<long> categoryLabels() const override { return {value_, value_ + 1, value_}; }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new NearTree(*this)); }
    bool isEqual(const vxDecisionTree& other) const override {
        const auto* near = dynamic_cast<const NearTree*>(&other);
        return near == nullptr || std::abs(value_ - near->value_) <= 1;
    }

private:
    int value_;
};

struct FailingTree : vxDecisionTree {
    std::vector<long> categoryLabels() const override { throw std::logic_error("no labels"); }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new FailingTree(*this)); }
    bool isEqual(const vxDecisionTree&) const override { throw std::logic_error("no comparison"); }
};

/// A node that has labels of its own and is equal to all leaves.
struct OddNode : vxDecisionTreeNode {
    using vxDecisionTreeNode::vxDecisionTreeNode;
    std::vector<long> categoryLabels() const override { return {2, 2, 9}; }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OddNode(*this)); }
    bool isEqual(const vxDecisionTree& other) const override {
        return dynamic_cast<const vxDecisionTreeLeaf*>(&other) != nullptr;
    }
};

template <class Node>
Tree nodeOf(const Predicate& predicate, const Tree& trueTree, const Tree& falseTree) {
    return Tree(
        new Node(test::GivenPredicate(predicate), test::GivenTree(trueTree), test::GivenTree(falseTree)));
}

/// A set of trees that are built from each other.
class Forest {
public:
    /// With `foreign`, classes of callers are among them; with `broken`, null parts.
    Forest(std::mt19937& random, bool foreign, bool broken)
        : random_(random), foreign_(foreign), broken_(broken) {
        addLeaves();
        for (int i = 0; i < 9; ++i) {
            trees_.push_back(newNode());
        }
    }

    const std::vector<Tree>& trees() const { return trees_; }

private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    void addLeaves() {
        trees_.push_back(test::leaf({1, 2}));
        trees_.push_back(test::leaf({1, 2}));
        trees_.push_back(test::leaf({2, 3}));
        if (below(3) == 0) {
            trees_.push_back(Tree(new vxDecisionTreeLeaf(test::resultOf({4}, test::nan))));
            trees_.push_back(Tree(new vxDecisionTreeLeaf(test::archivedResultOf({5, 5, 1}))));
        }
        if (foreign_) {
            trees_.push_back(Tree(new NearTree(below(3))));
            trees_.push_back(Tree(new NearTree(below(3))));
            if (below(4) == 0) {
                trees_.push_back(Tree(new FailingTree));
            }
        }
    }

    Predicate newPredicate() {
        if (broken_ && below(30) == 0) {
            return nullptr;
        }
        if (foreign_ && below(3) == 0) {
            return Predicate(new NearPredicate(below(3)));
        }
        return below(6) == 0 ? Predicate(new vxRangePredicate) : test::always();
    }

    Tree anyTree() {
        if (broken_ && below(30) == 0) {
            return nullptr;
        }
        return trees_[static_cast<std::size_t>(below(static_cast<int>(trees_.size())))];
    }

    Tree newNode() {
        const Predicate predicate = newPredicate();
        const Tree trueTree = anyTree();
        const Tree falseTree = below(2) == 0 ? trueTree : anyTree();
        if (foreign_ && below(5) == 0) {
            return nodeOf<test::PlainNode>(predicate, trueTree, falseTree);
        }
        if (foreign_ && below(12) == 0) {
            return nodeOf<OddNode>(predicate, trueTree, falseTree);
        }
        return nodeOf<vxDecisionTreeNode>(predicate, trueTree, falseTree);
    }

    std::mt19937& random_;
    bool foreign_;
    bool broken_;
    std::vector<Tree> trees_;
};

/// An answer or the class of the exception that was thrown in its place.
template <class Value>
struct Outcome {
    Value value{};
    std::string thrown;

    bool operator==(const Outcome& other) const { return value == other.value && thrown == other.thrown; }
};

template <class Action>
auto outcomeOf(Action action) {
    Outcome<decltype(action())> outcome;
    try {
        outcome.value = action();
    } catch (const std::exception& error) {
        outcome.thrown = typeid(error).name();
    }
    return outcome;
}

struct Kind {
    const char* name;
    bool foreign;
    bool broken;
};

std::ostream& operator<<(std::ostream& out, const Kind& kind) {
    return out << kind.name;
}

class Definition : public testing::TestWithParam<Kind> {
protected:
    template <class Check>
    void forEachForest(Check check) {
        constexpr unsigned seed = 20240611;
        std::mt19937 random(seed);
        for (int i = 0; i < 400 && !HasFailure(); ++i) {
            SCOPED_TRACE("forest " + std::to_string(i) + " of seed " + std::to_string(seed));
            check(Forest(random, GetParam().foreign, GetParam().broken).trees());
        }
    }
};

TEST_P(Definition, OfEqualityHoldsForEveryPair) {
    std::size_t equal = 0;
    std::size_t unequal = 0;
    std::size_t thrown = 0;
    forEachForest([&](const std::vector<Tree>& trees) {
        for (const Tree& a : trees) {
            for (const Tree& b : trees) {
                const auto expected = outcomeOf([&] { return test::equalByDefinition(*a, *b); });
                EXPECT_TRUE(outcomeOf([&] { return a->isEqual(*b); }) == expected);
                ++(!expected.thrown.empty() ? thrown : expected.value ? equal : unequal);
            }
        }
    });
    EXPECT_GT(equal, 1000U);
    EXPECT_GT(unequal, 1000U);
    EXPECT_EQ(thrown > 100, GetParam().foreign || GetParam().broken);
}

TEST_P(Definition, OfLabelsHoldsForEveryTree) {
    std::size_t listed = 0;
    std::size_t thrown = 0;
    forEachForest([&](const std::vector<Tree>& trees) {
        for (const Tree& tree : trees) {
            const auto expected = outcomeOf([&] { return test::labelsByDefinition(*tree); });
            EXPECT_TRUE(outcomeOf([&] { return tree->categoryLabels(); }) == expected);
            ++(expected.thrown.empty() ? listed : thrown);
        }
    });
    EXPECT_GT(listed, 1000U);
    EXPECT_EQ(thrown > 100, GetParam().foreign || GetParam().broken);
}

INSTANTIATE_TEST_SUITE_P(Trees, Definition,
                         testing::Values(Kind{"OwnClasses", false, false}, Kind{"NullParts", false, true},
                                         Kind{"CallersClasses", true, false},
                                         Kind{"CallersClassesAndNullParts", true, true}),
                         [](const auto& kind) { return kind.param.name; });

} // namespace
