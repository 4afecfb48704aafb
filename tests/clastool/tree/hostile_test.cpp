#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_decision_tree.h>
#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <utility>

// Values that no constructor would accept, as a forged archive brings them, and classes that a caller may
// hand in.

namespace {

using test::always;
using test::leaf;
using test::patternOf;
using test::Tree;

const wchar_t* const negativeIndex = L"Feature measurement indices must be >= 0";

/// A predicate filled from a record with these fields.
template <class Fields>
void fill(vxPredicateFunction& predicate, Fields fields) {
    test::load(test::archiveOf([&](vxArchive& archive) {
                   test::putBytes(archive, {0, 0, 0});
                   fields(archive);
               }),
               predicate);
}

template <class Value>
auto valueOf(Value value) {
    return [value](vxArchive& archive) mutable { archive || value; };
}

TEST(HostilePredicate, ALoadedNegativeIndexIsRefusedWhenItIsUsed) {
    std::vector<long> indices{0, -4};
    vxValidityPredicate validity;
    fill(validity, valueOf(indices));
    EXPECT_ERROR(validity.outcome(patternOf({1.0})), vxClassifierDefs::BadIndex, negativeIndex);
    EXPECT_FALSE(validity.outcome(patternOf({}))); // fails at the index before

    vxRangePredicate range;
    fill(range, [&](vxArchive& archive) {
        vxRange full = vxRange::FullRange();
        archive || full;
        archive || indices;
    });
    EXPECT_ERROR(range.outcome(patternOf({1.0})), vxClassifierDefs::BadIndex, negativeIndex);
    EXPECT_FALSE(range.outcome(patternOf({})));
}

vxComparisonPredicate loadedComparison(long index1, long index2) {
    vxComparisonPredicate predicate(0, 1);
    fill(predicate, [&](vxArchive& archive) {
        archive || index1;
        archive || index2;
    });
    return predicate;
}

TEST(HostilePredicate, ALoadedComparisonMayHaveNegativeOrEqualIndices) {
    EXPECT_ERROR(loadedComparison(-1, 0).outcome(patternOf({1.0})), vxClassifierDefs::BadIndex,
                 negativeIndex);
    EXPECT_ERROR(loadedComparison(0, -1).outcome(patternOf({1.0})), vxClassifierDefs::BadIndex,
                 negativeIndex);
    EXPECT_FALSE(loadedComparison(7, -1).outcome(patternOf({1.0})));
    EXPECT_FALSE(loadedComparison(0, 0).outcome(patternOf({1.0})));
}

TEST(HostilePredicate, ARangeWithSwappedOrNaNBoundsHoldsNothing) {
    constexpr double most = std::numeric_limits<double>::max();
    for (const vxRange& bounds : {vxRange(2.0, 1.0), vxRange(test::nan, 2.0), vxRange(1.0, test::nan)}) {
        vxRangePredicate range;
        fill(range, [&](vxArchive& archive) {
            vxRange copy = bounds;
            std::vector<long> indices{0};
            archive || copy;
            archive || indices;
        });
        for (const double value : {1.0, 1.5, 2.0, -most, most, test::nan}) {
            EXPECT_FALSE(range.outcome(patternOf({value})));
        }
    }
    EXPECT_FALSE(vxRangePredicate(vxRange(test::nan, 1.0), {0}) ==
                 vxRangePredicate(vxRange(test::nan, 1.0), {0}));
}

TEST(HostileTree, ACountThatTheArchiveCannotHoldIsRefused) {
    const test::Bytes bytes = test::archiveOf([](vxArchive& archive) {
        unsigned long count = 0xffffffffUL;
        test::putBytes(archive, {0, 0, 0, 0});
        archive || count;
    });
    vxValidityPredicate predicate;
    EXPECT_ERROR_CLASS(test::load(bytes, predicate), vxArchive::TooLarge);
    const test::Bytes leafBytes = test::archiveOf([](vxArchive& archive) {
        unsigned long count = 0xffffffffUL;
        test::putBytes(archive, {0, 0, 0, 0, 0});
        archive || count;
    });
    vxDecisionTreeLeaf loaded{vxClassifierResult()};
    EXPECT_ERROR_CLASS(test::load(leafBytes, loaded), vxArchive::TooLarge);
}

/// Runs a tree on an empty pattern.
vxClassifierResult resultOfRunning(const vxDecisionTree& tree) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(tree);
    vxClassifierResult result = test::resultOf({77});
    try {
        classifier.run(patternOf({}), result);
    } catch (...) {
        EXPECT_EQ(result, test::resultOf({77}));
        throw;
    }
    return result;
}

TEST(HostileTree, ANullPredicateOrBranchIsRefusedWhenARunComesToIt) {
    const auto no = test::has(5);
    EXPECT_THROW(resultOfRunning(*test::node(nullptr, leaf({1}), leaf({2}))), vxBadPointer);
    EXPECT_THROW(resultOfRunning(*test::node(always(), nullptr, leaf({2}))), vxBadPointer);
    EXPECT_THROW(resultOfRunning(*test::node(no, leaf({1}), nullptr)), vxBadPointer);
    EXPECT_EQ(resultOfRunning(*test::node(always(), leaf({1}), nullptr)), test::resultOf({1}));
    EXPECT_EQ(resultOfRunning(*test::node(no, nullptr, leaf({2}))), test::resultOf({2}));
}

/// Neither a node nor a leaf.
struct OtherTree : vxDecisionTree {
    std::vector<long> categoryLabels() const override { return {4}; }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OtherTree(*this)); }
};

TEST(HostileTree, ATreeThatIsNeitherNodeNorLeafIsRefusedWhenARunComesToIt) {
    EXPECT_THROW(resultOfRunning(OtherTree()), vxBadPointer);
    EXPECT_THROW(resultOfRunning(*test::node(always(), Tree(new OtherTree), leaf({2}))), vxBadPointer);
    EXPECT_EQ(resultOfRunning(*test::node(always(), leaf({2}), Tree(new OtherTree))), test::resultOf({2}));
}

TEST(HostileTree, ANodeCannotBelongToItself) {
    vxDecisionTreeNode node;
    node.trueTree(node);
    node.falseTree(node);
    EXPECT_EQ(node.numCategories(), 0);
    EXPECT_FALSE(node.isEqual(*node.trueTree()));
}

/// A sealed archive with this content.
test::Bytes sealed(const test::Bytes& content) {
    return test::archiveOf([&](vxArchive& archive) {
        for (unsigned char byte : content) {
            archive || byte;
        }
    });
}

TEST(HostileTree, AnArchiveCannotMakeANodeBelowItself) {
    const Tree tree = test::node(always(), leaf({1}), leaf({2}));
    test::Bytes content = test::payload(test::stored(tree));
    // The node is the last of the four records; it ends with the record numbers of its branches and of its
    // predicate, before the number of the tree itself.
    const std::size_t trueBranch = content.size() - 4 - 3 * 4;
    const std::size_t falseBranch = trueBranch + 4;
    for (const unsigned char number : std::initializer_list<unsigned char>{4, 5, 255}) {
        content[trueBranch] = number;
        const test::Bytes forged = sealed(content);
        Tree loaded;
        EXPECT_ERROR_CLASS(test::load(forged, loaded), vxArchive::BadReference);
    }
    std::swap(content[trueBranch] = 1, content[falseBranch]);
    const test::Bytes valid = sealed(content);
    Tree loaded;
    test::load(valid, loaded);
    EXPECT_TRUE(loaded->isEqual(*test::node(always(), leaf({2}), leaf({1}))));
}

TEST(HostileClassifier, ATrainingMayBeGivenAPartOfTheOwnTree) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*test::node(always(), test::node(always(), leaf({1}), leaf({2})), leaf({3})));
    const auto& top = dynamic_cast<const vxDecisionTreeNode&>(*classifier.decisionTree());
    const vxDecisionTree& part = *top.trueTree();
    classifier.trainManual(part);
    EXPECT_TRUE(classifier.decisionTree()->isEqual(*test::node(always(), leaf({1}), leaf({2}))));
    const vxDecisionTree& whole = *classifier.decisionTree();
    classifier.trainManual(whole);
    EXPECT_TRUE(classifier.decisionTree()->isEqual(*test::node(always(), leaf({1}), leaf({2}))));
}

} // namespace
