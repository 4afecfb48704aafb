// The tool with the techniques of the library, from end to end.

#include <vxclassifier/vxclassifier.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

vxPtrHandle_const<vxFeaturePattern> patternAt(double x) {
    return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x}, {}));
}

/// Two of category 0 near 0, one of category 1 near 10.
vxClassifierDataProviderMemory threePatterns() {
    vxClassifierDataProviderMemory provider;
    provider.addData(patternAt(0.0), 0);
    provider.addData(patternAt(1.0), 0);
    provider.addData(patternAt(10.0), 1);
    return provider;
}

vxDecisionTreeLeaf leafOf(long label) {
    return vxDecisionTreeLeaf(vxClassifierResult({vxClassifierCategoryResult(label, 1.0, 1.0, 0.0)}, 0.0));
}

/// 1 for measurements in [0, 5], else 2.
vxDecisionTreeNode smallTree() {
    return vxDecisionTreeNode(vxRangePredicate(vxRange(0.0, 5.0), {0}), leafOf(1), leafOf(2));
}

} // namespace

TEST(ClassifierToolTechniques, TwoOfThreeNeighboursMakeTheirCategoryTheDecision) {
    vxClassifierTool tool;
    tool.train(threePatterns(), vxClassifierTrainParamsKNN(3));
    vxClassifierResult result;
    tool.run(vxFeaturePattern({4.0}, {}), result);
    ASSERT_EQ(result.categoryResults().size(), 2U);
    const vxClassifierCategoryResult& decision = result.categoryResults()[0];
    EXPECT_EQ(decision.categoryLabel(), 0);
    EXPECT_EQ(decision.matchScore(), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(decision.classScore(), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(decision.expectedCost(), 1.0 / 3.0);
    EXPECT_EQ(result.categoryResults()[1].categoryLabel(), 1);
}

TEST(ClassifierToolTechniques, ATreeIsTakenOverAsACopyAndHandedOut) {
    vxDecisionTreeNode tree = smallTree();
    vxClassifierTool tool;
    tool.train(tree);
    EXPECT_TRUE(tool.decisionTree()->isEqual(smallTree()));
    tree.trueTree(leafOf(9));
    EXPECT_TRUE(tool.decisionTree()->isEqual(smallTree()));
    EXPECT_EQ(tool.decisionTree(), tool.decisionTree());

    vxClassifierResult result;
    tool.run(vxFeaturePattern({3.0}, {}), result);
    EXPECT_EQ(result, leafOf(1).classifierResult());
    tool.run(vxFeaturePattern({5.1}, {}), result);
    EXPECT_EQ(result, leafOf(2).classifierResult());
}

TEST(ClassifierToolTechniques, AToolWithATreeHasNoParametersAndCannotBeRetrained) {
    vxClassifierTool tool;
    tool.train(smallTree());
    EXPECT_ERROR(tool.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    EXPECT_ERROR(tool.retrain(vxClassifierTrainParamsKNN(1)), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_TRUE(tool.isTrained());
}

TEST(ClassifierToolTechniques, CanBeTrainedWithItsOwnTreeAndWithAPartOfIt) {
    vxClassifierTool tool;
    tool.train(smallTree());
    const vxDecisionTree& whole = *tool.decisionTree();
    tool.train(whole);
    EXPECT_TRUE(tool.decisionTree()->isEqual(smallTree()));

    const auto& node = dynamic_cast<const vxDecisionTreeNode&>(*tool.decisionTree());
    const vxDecisionTree& part = *node.falseTree();
    tool.train(part);
    EXPECT_TRUE(tool.decisionTree()->isEqual(leafOf(2)));
}

TEST(ClassifierToolTechniques, ATreeReplacesAnotherTechniqueAndTheOtherWayRound) {
    vxClassifierTool tool;
    tool.train(threePatterns(), vxClassifierTrainParamsKNN(1));
    EXPECT_ERROR(tool.decisionTree(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not trained using a decision tree.");
    tool.train(smallTree());
    EXPECT_ERROR(tool.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    tool.train(threePatterns(), vxClassifierTrainParamsKNN(1));
    EXPECT_EQ(dynamic_cast<const vxClassifierTrainParamsKNN&>(*tool.trainParams()).k(), 1);
}

TEST(ClassifierToolTechniques, ATrainingThatCannotRunIsAnErrorUnlessTheParametersSayOtherwise) {
    const vxClassifierDataProviderMemory empty;
    vxClassifierTrainParamsKNN params(1);
    vxClassifierTool tool;
    EXPECT_ERROR(tool.train(empty, params), vxClassifierDefs::InsufficientTrainData,
                 L"No valid data was provided for training.");
    EXPECT_FALSE(tool.isTrained());

    params.throwIfNotReady(false);
    tool.train(empty, params);
    EXPECT_TRUE(tool.isTrained());
    vxClassifierResult result;
    EXPECT_ERROR(tool.run(vxFeaturePattern({1.0}, {}), result), vxClassifierDefs::InsufficientTrainData,
                 L"No valid data was provided for training.");
}

TEST(ClassifierToolTechniques, AFailedTrainingLosesTheOldOne) {
    vxClassifierDataProviderMemory bad;
    bad.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0}, {0})), 0);
    vxClassifierTool tool;
    tool.train(threePatterns(), vxClassifierTrainParamsKNN(1));
    EXPECT_ERROR(tool.train(bad, vxClassifierTrainParamsKNN(1)), vxClassifierDefs::BadFeatures,
                 L"K-nearest neighbor classification does not support invalid measurements");
    EXPECT_FALSE(tool.isTrained());
}

TEST(ClassifierToolTechniques, ToolsOfDifferentTechniquesAreUnequal) {
    vxClassifierTool tree;
    tree.train(smallTree());
    vxClassifierTool neighbours;
    neighbours.train(threePatterns(), vxClassifierTrainParamsKNN(1));
    EXPECT_FALSE(tree == neighbours);
    EXPECT_FALSE(neighbours == tree);

    vxClassifierTool otherTree;
    otherTree.train(smallTree());
    EXPECT_TRUE(tree == otherTree);
    otherTree.train(leafOf(1));
    EXPECT_FALSE(tree == otherTree);
}

TEST(ClassifierToolTechniques, AStoredToolComesBackEqualAndDecidesAlike) {
    vxClassifierTool neighbours;
    neighbours.train(threePatterns(), vxClassifierTrainParamsKNN(3));
    vxClassifierTool tree;
    tree.train(smallTree());
    for (vxClassifierTool* tool : {&neighbours, &tree}) {
        const test::Bytes stored = test::stored(*tool);
        vxClassifierTool loaded;
        test::load(stored, loaded);
        EXPECT_TRUE(loaded == *tool);
        EXPECT_EQ(test::stored(loaded), stored);
    }
}

TEST(ClassifierToolTechniques, ALoadedNeighbourToolVotesWithOneNeighbourUntilItIsRetrained) {
    vxClassifierTool tool;
    tool.train(threePatterns(), vxClassifierTrainParamsKNN(3));
    vxClassifierTool loaded;
    test::load(test::stored(tool), loaded);

    vxClassifierResult result;
    loaded.run(vxFeaturePattern({4.0}, {}), result);
    EXPECT_EQ(result.categoryResults().size(), 1U);
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 1.0);

    loaded.retrain(*loaded.trainParams());
    loaded.run(vxFeaturePattern({4.0}, {}), result);
    vxClassifierResult expected;
    tool.run(vxFeaturePattern({4.0}, {}), expected);
    EXPECT_EQ(result, expected);
}
