// What a release has stored, every later one loads, and stores again byte for byte. The files under files/
// are never written anew: a class that is new or stored otherwise gets a further file. A missing one is
// written to the working folder of the test, to be looked at and added.

#include "tests/laws/subject.h"
#include "tests/support/archives.h"

#include <vxclassifier/vxclassifier.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

/// The bytes of a golden file; fails, and offers `now` for it, if there is none.
test::Bytes golden(const std::string& name, const test::Bytes& now) {
    std::ifstream source(GOLDEN_FILES + name, std::ios::binary);
    if (!source) {
        std::ofstream(name, std::ios::binary)
            .write(reinterpret_cast<const char*>(now.data()), static_cast<std::streamsize>(now.size()));
        ADD_FAILURE() << "there is no file for it; its present form was written to "
                      << std::filesystem::absolute(name);
        return {};
    }
    return test::Bytes(std::istreambuf_iterator<char>(source), {});
}

std::string fileOf(std::string className) {
    std::replace(className.begin(), className.end(), ':', '_');
    return className + ".vxc";
}

/// Loads the pointer that the bytes hold.
laws::Object loadedPointer(const test::Bytes& bytes) {
    vxLoadingArchive archive(bytes);
    vxPersistent* object = nullptr;
    vxPersistent::serializePointer(archive, nullptr, object);
    laws::Object owned = laws::own(object);
    archive.finish();
    return owned;
}

class GoldenClass : public testing::TestWithParam<laws::Subject> {};

TEST_P(GoldenClass, IsLoadedAsItWasAndStoredByteForByte) {
    const laws::Object sample = GetParam().samples().front();
    const test::Bytes bytes = golden(fileOf(GetParam().name), test::storedPointer(sample.get()));
    ASSERT_FALSE(bytes.empty());
    const laws::Object loaded = loadedPointer(bytes);
    laws::expectEqual(GetParam(), sample, loaded);
    EXPECT_EQ(test::storedPointer(loaded.get()), bytes);
}

INSTANTIATE_LAWS(GoldenClass, laws::subjects());

/// Loads a value from its golden file, expects it to be equal to the sample, and to be stored as the file.
template <class T>
void expectGolden(const std::string& name, const T& sample, T loaded) {
    const test::Bytes bytes = golden(name, test::stored(sample));
    ASSERT_FALSE(bytes.empty());
    test::load(bytes, loaded);
    EXPECT_TRUE(loaded == sample);
    EXPECT_EQ(test::stored(loaded), bytes);
}

vxClassifierRuleTable ruleTable() {
    vxClassifierFeatureScoreOneSided small;
    small.init(2.0, 1.0, 0.0, 0.0, 1.0);
    vxClassifierFeatureScoreTwoSided middle;
    middle.init(1.0, 2.0, 3.0, 5.0, 4.0, 3.0, 0.1, 0.9, 0.2, 0.8);
    std::vector<vxPtrHandle<vxClsFtSc>> methods;
    for (vxClsFtSc* method : {small.clone(), middle.clone(), vxClassifierFeatureScoreIgnore().clone()}) {
        methods.emplace_back(method);
    }
    vxClassifierRule rule;
    rule.init(methods, 3);
    vxClassifierRuleTable table;
    table.train({rule, rule});
    return table;
}

vxClassifierTool tool(const vxClassifierTrainParams& params) {
    vxClassifierDataProviderMemory data;
    for (const double x : {0.5, 1.0, 2.5, 4.0}) {
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, x * x - 1.0}, {})),
                     x < 2.0 ? 2 : 7);
    }
    vxClassifierTool trained;
    trained.train(data, params);
    return trained;
}

TEST(GoldenValue, TheEmptyTool) {
    expectGolden("tool-empty.vxc", vxClassifierTool(), vxClassifierTool());
}

TEST(GoldenValue, AToolOfNearestNeighbours) {
    vxClassifierCosts costs(2.0);
    costs.misclassificationCostOverride(2, 7, 0.5);
    expectGolden("tool-knn.vxc", tool(vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(1.5), costs)),
                 vxClassifierTool());
}

TEST(GoldenValue, ABayesianTool) {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    types.setDependent(2, {0, 1});
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(7, 0.25);
    expectGolden("tool-bayes.vxc",
                 tool(vxClassifierTrainParamsBayesian(types, frequencies, vxClassifierCosts(1.0),
                                                      vxFeaturePattern({10.0, 20.0}, {1}))),
                 vxClassifierTool());
}

TEST(GoldenValue, AToolWithATree) {
    const vxDecisionTreeLeaf leaf(vxClassifierResult({{1, 0.5, 0.75, 0.25}, {3, 0.25, 0.25, 0.75}}, -1.5));
    vxClassifierTool trained;
    trained.train(vxDecisionTreeNode(vxRangePredicate(vxRange(-1.0, 1.0), {0, 2}), leaf,
                                     vxDecisionTreeNode(vxComparisonPredicate(1, 0), leaf, leaf)));
    expectGolden("tool-tree.vxc", trained, vxClassifierTool());
}

TEST(GoldenValue, ARuleTable) {
    expectGolden("rule-table.vxc", ruleTable(), vxClassifierRuleTable());
}

} // namespace
