#include "clss/clastool/tree/flat_tree.h"

#include "clss/clastool/tree/tree_walk.h"
#include "tests/clastool/tree/tree_oracle.h"
#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"

#include <vxclassifier/classifier_decision_tree.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/exception.h>

#include <gtest/gtest.h>

#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// The walk over the flat form of a tree and the one over its objects, against the definition.

namespace {

using detail::FlatTree;
using test::node;
using test::Predicate;
using test::Tree;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// What a walk did, up to its end.
struct Walk {
    const vxDecisionTree* leaf = nullptr; // null if it ended otherwise
    std::string error;
    long checks = 0; // the interruption checks made
    long asked = 0;  // callers' predicates asked

    bool operator==(const Walk& other) const {
        return leaf == other.leaf && error == other.error && checks == other.checks && asked == other.asked;
    }
};

/// The walk that is under way, for callers' predicates.
Walk* current = nullptr;

/// A caller's predicate: counts, and sometimes throws.
class Asked : public vxPredicateFunction {
public:
    explicit Asked(double limit) : limit_(limit) {}
    bool outcome(const vxFeaturePattern& pattern) const override {
        ++current->asked;
        if (pattern.numMeasurements() == 5 && limit_ < 0.0) {
            throw std::runtime_error("asked in vain");
        }
        return pattern.featureMeasurement(0, false) < limit_;
    }
    vxPtrHandle<vxPredicateFunction> clone() const override { return Predicate(new Asked(*this)); }

private:
    double limit_;
};

/// A caller's leaf, node, and something that is neither.
struct OtherLeaf : vxDecisionTreeLeaf {
    using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OtherLeaf(*this)); }
};
struct Neither : vxDecisionTree {
    std::vector<long> categoryLabels() const override { return {}; }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new Neither); }
};

/// Stops the walk after some checks.
struct Interruption {
    long left;
    Walk* walk;
    static long check(void* context) {
        auto* self = static_cast<Interruption*>(context);
        ++self->walk->checks;
        return self->left-- > 0 ? 0 : vsys_attention_cancelled;
    }
};

/// Word for word by its definition.
const vxDecisionTreeLeaf& walkByDefinition(const vxDecisionTree* tree, const vxFeaturePattern& pattern) {
    for (;;) {
        if (tree == nullptr) {
            throw vxBadPointer();
        }
        if (const long status = vsys_attention_check(); status != 0) {
            throw vxInterrupted();
        }
        if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(tree)) {
            return *leaf;
        }
        const auto* node = dynamic_cast<const vxDecisionTreeNode*>(tree);
        if (node == nullptr || node->predicateFunction() == nullptr) {
            throw vxBadPointer();
        }
        const bool outcome = node->predicateFunction()->outcome(pattern);
        tree = (outcome ? node->trueTree() : node->falseTree()).get(); // the parent keeps it alive
    }
}

template <class Way>
Walk walked(Way way) {
    Walk walk;
    current = &walk;
    try {
        walk.leaf = &way();
    } catch (const std::exception& error) {
        walk.error = error.what();
    }
    return walk;
}

template <class Way>
Walk walkedWithCheck(long checksUntilCancelled, Way way) {
    Walk checked;
    Interruption interruption{checksUntilCancelled, &checked};
    const vxAttentionScope scope(&Interruption::check, &interruption);
    Walk walk = walked(way);
    walk.checks = checked.checks;
    return walk;
}

class RandomTrees {
public:
    explicit RandomTrees(unsigned seed) : random_(seed), onlyPlain_(seed % 3 == 0) {}

    Tree tree(int depth) {
        if (!made_.empty() && random_() % 6 == 0) {
            return made_[random_() % made_.size()]; // shared
        }
        Tree made = depth == 0 || random_() % 8 == 0
                        ? end()
                        : question(predicate(), tree(depth - 1), tree(depth - 1));
        if (made != nullptr) {
            made_.push_back(made);
        }
        return made;
    }

    vxFeaturePattern pattern() {
        std::vector<double> measurements(random_() % 7);
        std::vector<long> invalid;
        for (std::size_t i = 0; i < measurements.size(); ++i) {
            measurements[i] = number();
            if (random_() % 12 == 0) {
                invalid.push_back(static_cast<long>(i));
            }
        }
        return vxFeaturePattern(measurements, invalid);
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

private:
    double number() {
        const double strange[] = {test::nan, infinity, -infinity, -0.0};
        return random_() % 20 == 0 ? strange[random_() % 4] : static_cast<double>(random_() % 9) / 8.0;
    }

    Tree question(const Predicate& predicate, const Tree& trueTree, const Tree& falseTree) {
        if (!onlyPlain_ && random_() % 20 == 0) {
            return Tree(new test::PlainNode(test::GivenPredicate(predicate), test::GivenTree(trueTree),
                                            test::GivenTree(falseTree)));
        }
        return node(predicate, trueTree, falseTree);
    }

    Tree end() {
        const unsigned choice = onlyPlain_ ? 99 : below(30);
        if (choice == 0) {
            return nullptr;
        }
        if (choice == 1) {
            return Tree(new Neither);
        }
        return choice < 4 ? Tree(new OtherLeaf(test::resultOf({1}))) : test::leaf({2, 3});
    }

    Predicate predicate() {
        const vxRange range(random_() % 3 == 0 ? -infinity : number(), number());
        const long index = static_cast<long>(random_() % 7);
        switch (onlyPlain_ ? 99 : below(16)) {
        case 0:
            return nullptr;
        case 1:
            return Predicate(new Asked(random_() % 4 == 0 ? -1.0 : number()));
        case 2:
            return Predicate(new vxComparisonPredicate(index, index + 1));
        case 3:
            return test::has(index);
        case 4:
            return Predicate(new vxRangePredicate(range, {index, 0}));
        case 5:
            return Predicate(new vxRangePredicate(range, {}));
        case 6:
            return Predicate(new vxRangePredicate(range, {4294967296L + index}));
        default:
            return Predicate(new vxRangePredicate(range, {index}));
        }
    }

    std::mt19937 random_;
    bool onlyPlain_;
    std::vector<Tree> made_;
};

std::ostream& operator<<(std::ostream& out, const Walk& walk) {
    return out << walk.leaf << " \"" << walk.error << "\" " << walk.checks << " checks, " << walk.asked
               << " asked";
}

TEST(TreeWalks, ComeToTheLeafOfTheDefinitionWithItsChecksQuestionsAndErrors) {
    long leaves = 0;
    long errors = 0;
    for (unsigned seed = 0; seed < 600; ++seed) {
        RandomTrees random(seed);
        const Tree tree = random.tree(9);
        if (tree == nullptr) {
            continue;
        }
        const auto flat = FlatTree::of(*tree);
        ASSERT_NE(flat, nullptr);
        for (int i = 0; i < 40; ++i) {
            const vxFeaturePattern pattern = random.pattern();
            const auto defined = [&]() -> const vxDecisionTreeLeaf& {
                return walkByDefinition(&*tree, pattern);
            };
            const auto overObjects = [&]() -> const vxDecisionTreeLeaf& {
                return detail::leafFor(*tree, pattern);
            };
            const auto overPlaces = [&]() -> const vxDecisionTreeLeaf& { return flat->leafFor(pattern); };
            const Walk expected = walked(defined);
            ASSERT_EQ(walked(overObjects), expected) << "seed " << seed;
            ASSERT_EQ(walked(overPlaces), expected) << "seed " << seed;
            const long limit = random.below(12);
            const Walk checked = walkedWithCheck(limit, defined);
            ASSERT_EQ(walkedWithCheck(limit, overObjects), checked) << "seed " << seed;
            ASSERT_EQ(walkedWithCheck(limit, overPlaces), checked) << "seed " << seed;
            leaves += expected.leaf != nullptr ? 1 : 0;
            errors += expected.leaf == nullptr ? 1 : 0;
        }
    }
    EXPECT_GT(leaves, 5000) << "both outcomes must have been met";
    EXPECT_GT(errors, 100);
}

/// A caller's predicate that installs a check for the rest of the walk, or ends it.
class Installs : public vxPredicateFunction {
public:
    explicit Installs(std::unique_ptr<vxAttentionScope>& scope, Interruption& interruption)
        : scope_(scope), interruption_(interruption) {}
    bool outcome(const vxFeaturePattern&) const override {
        if (scope_ == nullptr) {
            scope_ = std::make_unique<vxAttentionScope>(&Interruption::check, &interruption_);
        } else {
            scope_.reset();
        }
        return true;
    }
    vxPtrHandle<vxPredicateFunction> clone() const override { return Predicate(new Installs(*this)); }

private:
    std::unique_ptr<vxAttentionScope>& scope_;
    Interruption& interruption_;
};

TEST(TreeWalks, MakeTheChecksThatAPredicateInstallsOnTheWay) {
    Walk walk;
    Interruption interruption{100, &walk};
    std::unique_ptr<vxAttentionScope> scope;
    const Predicate installs(new Installs(scope, interruption));
    const Predicate plain(new vxRangePredicate);
    const Tree end = test::leaf({1});
    const Tree last = node(plain, node(plain, end, end), end);
    const Tree tree = node(plain, node(installs, node(plain, node(installs, last, end), end), end), end);
    const auto flat = FlatTree::of(*tree);
    EXPECT_EQ(&flat->leafFor(test::patternOf({0.0})), end.get());
    EXPECT_EQ(walk.checks, 2) << "at the second plain node and at the predicate that ends it";
    EXPECT_EQ(scope, nullptr);
    EXPECT_EQ(&detail::leafFor(*tree, test::patternOf({0.0})), end.get());
    EXPECT_EQ(walk.checks, 4);
}

TEST(FlatTree, IsNotMadeOfATreeWithMorePlacesThanThereMayBe) {
    const Predicate within(new vxRangePredicate(vxRange(0.5, 1.0), {0}));
    const Tree end = test::leaf({1});
    const Tree tree = node(within, node(within, end, end), node(within, end, node(within, end, end)));
    std::size_t fewest = 1;
    while (FlatTree::of(*tree, fewest) == nullptr) {
        ++fewest;
        ASSERT_LT(fewest, 100U);
    }
    EXPECT_GE(fewest, 5U) << "four questions and a leaf";
    EXPECT_LE(fewest, 9U) << "four questions, and at most five places for what they lead to";
    EXPECT_EQ(&FlatTree::of(*tree, fewest)->leafFor(test::patternOf({0.0})), end.get());
}

TEST(FlatTree, LaysASharedBranchOutOnce) {
    Tree tree = test::leaf({1});
    const Predicate within(new vxRangePredicate(vxRange(0.5, 1.0), {0}));
    for (int i = 0; i < 200; ++i) { // 2 to the power of 200 paths
        tree = node(within, tree, tree);
    }
    const auto flat = FlatTree::of(*tree);
    ASSERT_NE(flat, nullptr);
    EXPECT_EQ(flat->leafFor(test::patternOf({0.75})).categoryLabels(), std::vector<long>{1});
    EXPECT_EQ(flat->leafFor(test::patternOf({0.25})).categoryLabels(), std::vector<long>{1});
}

/// As a number without sign it would lie among the marks of the places that are no questions.
TEST(FlatTree, LeavesALoadedNegativeIndexToItsPredicate) {
    for (const long index : {-1L, -4L, -2147483648L}) {
        vxRangePredicate loaded;
        test::load(test::archiveOf([&](vxArchive& archive) {
                       test::putBytes(archive, {0, 0, 0});
                       vxRange full = vxRange::FullRange();
                       std::vector<long> indices{index};
                       archive || full;
                       archive || indices;
                   }),
                   loaded);
        const Predicate predicate(new vxRangePredicate(loaded));
        const Tree tree = node(predicate, test::leaf({1}), test::leaf({2}));
        const auto flat = FlatTree::of(*tree);
        ASSERT_NE(flat, nullptr);
        EXPECT_ERROR(flat->leafFor(test::patternOf({1.0})), vxClassifierDefs::BadIndex,
                     L"Feature measurement indices must be >= 0");
    }
}

TEST(FlatTree, RefusesAMissingBranchWhenAWalkComesToIt) {
    const Predicate within(new vxRangePredicate(vxRange(0.0, 1.0), {0}));
    const vxFeaturePattern inside({0.5}, {});
    const vxFeaturePattern outside({2.0}, {});
    const Tree leaf = test::leaf({1});
    const Tree withoutTrue = node(within, nullptr, leaf);
    const auto flatWithoutTrue = FlatTree::of(*withoutTrue);
    EXPECT_THROW(flatWithoutTrue->leafFor(inside), vxBadPointer);
    EXPECT_EQ(flatWithoutTrue->leafFor(outside).classifierResult(), test::resultOf({1}));
    const Tree withoutFalse = node(within, leaf, nullptr);
    const auto flatWithoutFalse = FlatTree::of(*withoutFalse);
    EXPECT_EQ(flatWithoutFalse->leafFor(inside).classifierResult(), test::resultOf({1}));
    EXPECT_THROW(flatWithoutFalse->leafFor(outside), vxBadPointer);
}

TEST(FlatTree, IsDoneWithoutWhenMemoryRunsOut) {
    const Predicate within(new vxRangePredicate(vxRange(0.5, 1.0), {0}));
    const Tree tree = node(within, test::leaf({1}), node(within, test::leaf({2}), test::leaf({3})));
    const vxFeaturePattern pattern({0.25}, {});
    long withoutMemory = 0;
    for (long number = 1; withoutMemory == number - 1; ++number) {
        vx_ClassifierDecisionTree classifier;
        bool isTrained = true;
        try {
            const test::FailingAllocation failing(number);
            classifier.trainManual(*tree);
        } catch (const std::bad_alloc&) {
            isTrained = false;
        }
        EXPECT_EQ(classifier.isTrained(), isTrained);
        if (isTrained) {
            vxClassifierResult result;
            classifier.run(pattern, result);
            EXPECT_EQ(result, test::resultOf({3}));
        }
        const test::FailingAllocation failing(number);
        withoutMemory += FlatTree::of(*tree) == nullptr ? 1 : 0;
    }
    EXPECT_GT(withoutMemory, 2);
}

TEST(FlatTree, FollowsTheTreeOfItsClassifier) {
    const Predicate within(new vxRangePredicate(vxRange(0.5, 1.0), {0}));
    const Tree first = node(within, test::leaf({1}), test::leaf({2}));
    const Tree second = node(within, test::leaf({3}), test::leaf({4}));
    const auto decided = [](const vx_Classifier& classifier) {
        vxClassifierResult result;
        classifier.run(test::patternOf({0.75}), result);
        return result.categoryResults()[0].categoryLabel();
    };
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*first);
    const vx_ClassifierDecisionTree copy(classifier);
    const vxPtrHandle<vx_Classifier> clone = classifier.clone();
    classifier.trainManual(*second);
    EXPECT_EQ(decided(classifier), 3);
    EXPECT_EQ(decided(copy), 1);
    EXPECT_EQ(decided(*clone), 1);
    vx_ClassifierDecisionTree assigned(copy);
    assigned = classifier;
    classifier.untrain();
    EXPECT_EQ(decided(assigned), 3);
    assigned = classifier;
    EXPECT_FALSE(assigned.isTrained());
    vxStoringArchive storing;
    storing || const_cast<vx_ClassifierDecisionTree&>(copy);
    storing.finish();
    vxLoadingArchive loading(storing.bytes());
    assigned.trainManual(*second);
    loading || assigned;
    loading.finish();
    EXPECT_EQ(decided(assigned), 1);
    EXPECT_EQ(decided(copy), 1) << "storing changes nothing";
}

} // namespace
