#include "tests/failures/callers.h"
#include "tests/support/archives.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/total_data_generator.h>

#include <memory>

// What is no technique and no object of an archive by itself: settings, generators, messages. Rule tables
// have a file of their own.

namespace {

using namespace failures;

using Types = vxClassifierDistributionTypes;

Types manyTypes() {
    Types types(Types::eMultivariateNormal);
    for (long label = 0; label < 5; ++label) {
        types.setDependent(label, {1, 2, 3});
        types.setDependent(label, {4, 5});
        types.distributionTypeOverride(label, 7, Types::eBinomial);
    }
    return types;
}

Types fewTypes() {
    Types types(Types::eBinomial);
    types.setDependent(1, {1, 2, 3});
    types.distributionTypeOverride(1, 7, Types::eMultivariateNormal);
    return types;
}

/// An operation on distribution types that changes nothing if it fails.
struct ChangeTypes {
    Types before = manyTypes();
    Types types = before;
    Types expected = before;
    void expectDone() const { EXPECT_TRUE(types == expected && types != before); }
    void expectFailed() const { EXPECT_TRUE(types == before); }
};

struct AssignTypes : ChangeTypes {
    AssignTypes() {
        before = fewTypes();
        types = before;
    }
    void attempt() { types = expected; }
};

struct OverrideType : ChangeTypes {
    OverrideType() { expected.distributionTypeOverride(2, 8, Types::eBinomial); }
    void attempt() { types.distributionTypeOverride(2, 8, Types::eBinomial); }
};

struct AddDependentSet : ChangeTypes {
    AddDependentSet() { expected.setDependent(2, {11, 12}); }
    void attempt() { types.setDependent(2, {11, 12}); }
};

struct MergeDependentSets : ChangeTypes {
    MergeDependentSets() { expected.setDependent(2, {5, 3, 9}); }
    void attempt() { types.setDependent(2, {5, 3, 9}); }
};

TEST(FailingDistributionTypes, ChangeAltogetherOrNotAtAll) {
    failEachStepOf<AssignTypes>(allocationFaults());
    failEachStepOf<OverrideType>(allocationFaults());
    failEachStepOf<AddDependentSet>(allocationFaults());
    failEachStepOf<MergeDependentSets>(allocationFaults());
}

vxClassifierTrainParamsBayesian paramsOf(const Types& types) {
    return vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                                           vxFeaturePattern({1.0}, {}));
}

struct SetTypesOfParams {
    vxClassifierTrainParamsBayesian params = paramsOf(fewTypes());
    Types types = manyTypes();
    void attempt() { params.distributionTypes(types); }
    void expectDone() const { EXPECT_TRUE(params.distributionTypes() == types); }
    void expectFailed() const { EXPECT_TRUE(params == paramsOf(fewTypes())); }
};

struct SetMaximaOfParams {
    vxClassifierTrainParamsBayesian params = paramsOf(fewTypes());
    vxFeaturePattern maxima{std::vector<double>(100, 2.0), {}};
    void attempt() { params.maxMeasurementValues(maxima); }
    void expectDone() const { EXPECT_TRUE(params.maxMeasurementValues() == maxima); }
    void expectFailed() const { EXPECT_TRUE(params == paramsOf(fewTypes())); }
};

TEST(FailingParams, OneSettingChangesAltogetherOrNotAtAll) {
    failEachStepOf<SetTypesOfParams>(allocationFaults());
    failEachStepOf<SetMaximaOfParams>(allocationFaults());
}

vx_CategoryModelBayesian modelOf(const std::vector<std::vector<long>>& sets) {
    const std::vector<Types::DistributionType> types(sets.size(), Types::eMultivariateNormal);
    return vx_CategoryModelBayesian(static_cast<long>(sets.size()), sets, types, vxFeaturePattern({}, {}));
}

struct AssignModel {
    vx_CategoryModelBayesian larger = modelOf({{0, 1, 2}, {3}, {4, 5}});
    vx_CategoryModelBayesian before = modelOf({{0}});
    vx_CategoryModelBayesian model = before;
    void attempt() { model = larger; }
    void expectDone() const { EXPECT_EQ(test::stored(model), test::stored(larger)); }
    void expectFailed() const { EXPECT_EQ(test::stored(model), test::stored(before)); }
};

TEST(FailingCategoryModel, IsAssignedAltogetherOrNotAtAll) {
    failEachStepOf<AssignModel>(allocationFaults());
}

struct UpdateNormal {
    std::vector<vxFeaturePattern> first{vxFeaturePattern({1.0, 2.0}, {}), vxFeaturePattern({3.0, 5.0}, {})};
    std::vector<vxFeaturePattern> more{vxFeaturePattern({2.0, 9.0}, {}), vxFeaturePattern({4.0, 4.0}, {})};
    vx_PDFMultivariateNormal before = trainedWith({first});
    vx_PDFMultivariateNormal expected = trainedWith({first, more});
    vx_PDFMultivariateNormal density = before;
    void attempt() { density.updateWithData(more); }
    void expectDone() const { expectSame(expected); }
    void expectFailed() const { expectSame(before); }

private:
    static vx_PDFMultivariateNormal trainedWith(const std::vector<std::vector<vxFeaturePattern>>& updates) {
        vx_PDFMultivariateNormal made;
        for (const std::vector<vxFeaturePattern>& update : updates) {
            made.updateWithData(update);
        }
        return made;
    }
    void expectSame(const vx_PDFMultivariateNormal& other) const {
        EXPECT_TRUE(density == other);
        EXPECT_EQ(density.logValue(first[0]), other.logValue(first[0])) << "the same bits, prepared or not";
    }
};

TEST(FailingDensity, TakesAllPatternsOrNone) {
    failEachStepOf<UpdateNormal>(allocationFaults());
}

/// A second generation gives what the first one gave, and a failed one counts for nothing.
template <int numMeasurements>
struct Generate {
    vx_ClassDataGenerator generator{
        std::vector<vxPair<double>>(static_cast<std::size_t>(numMeasurements), {1.0, 0.5}), 6};
    vxClassifierDataProviderMemory expected = vx_ClassDataGenerator(generator).generateData();
    vxClassifierDataProviderMemory data;
    void attempt() { data = generator.generateData(); }
    void expectDone() const {
        EXPECT_EQ(data.numPatterns(), 6);
        EXPECT_TRUE(data == expected);
    }
    void expectFailed() const { EXPECT_EQ(data.numPatterns(), 0); }
};

struct GenerateTotal {
    vx_TotalDataGenerator generator{{vx_ClassDataGenerator({{1.0, 0.5}, {2.0, 0.5}, {3.0, 0.5}}, 6),
                                     vx_ClassDataGenerator({{4.0, 0.5}, {5.0, 0.5}, {6.0, 0.5}}, 7)}};
    vxClassifierDataProviderMemory expected = vx_TotalDataGenerator(generator).generateData();
    vxClassifierDataProviderMemory data;
    void attempt() { data = generator.generateData(); }
    void expectDone() const {
        EXPECT_GT(data.numPatterns(), 0);
        EXPECT_TRUE(data == expected);
    }
    void expectFailed() const { EXPECT_EQ(data.numPatterns(), 0); }
};

TEST(FailingGenerators, GenerateTheSameAfterAFailure) {
    failEachStepOf<Generate<3>>(allocationFaults());
    failEachStepOf<GenerateTotal>(allocationFaults());
}

/// Such a generator appends at each call, so a call that failed after it had kept its data would show in the
/// next one.
struct GenerateWithoutMeasurements {
    vx_ClassDataGenerator generator{{}, 6};
    std::unique_ptr<vxClassifierDataProviderMemory> data;
    void attempt() { data.reset(new vxClassifierDataProviderMemory(generator.generateData())); }
    void expectDone() const { EXPECT_EQ(data->numPatterns(), 6); }
    void expectFailed() const { EXPECT_EQ(data, nullptr); }
};

TEST(FailingGenerators, WithoutMeasurementsAppendNothingWhenTheyFail) {
    failEachStepOf<GenerateWithoutMeasurements>(allocationFaults());
}

struct ReadMessage {
    vxClassifierDefs::BadParams error{std::wstring(1000, L'x') + L"the end"};
    std::wstring message;
    void attempt() { message = error.message(); }
    void expectDone() const { EXPECT_EQ(message.substr(1000), L"the end"); }
    void expectFailed() const { EXPECT_EQ(std::string(error.what()).substr(1000), "the end"); }
};

/// With the category's number behind the density's message.
struct MatchUntrained {
    vx_CategoryModelBayesian model = modelOf({{0}});
    vxFeaturePattern query{{1.0}, {}};
    std::wstring message;
    void attempt() {
        try {
            model.matchScore(query);
        } catch (const vxClassifierDefs::InsufficientTrainData& error) {
            message = error.message();
        }
    }
    void expectDone() const {
        EXPECT_EQ(message, L"No valid data has been used to train the distribution for category 1");
    }
    void expectFailed() const { EXPECT_EQ(message, L""); }
};

TEST(FailingMessages, AreWholeOrNotGiven) {
    failEachStepOf<ReadMessage>(allocationFaults());
    failEachStepOf<MatchUntrained>(allocationFaults());
}

} // namespace
