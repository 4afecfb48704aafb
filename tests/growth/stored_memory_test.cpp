// What a stored pattern takes of memory, with its handle, its label, and what the allocator keeps for itself.

#include "tests/support/archives.h"
#include "tests/support/memory_meter.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

constexpr std::int64_t numPatterns = 20'000;

vxClassifierDataProviderMemory dataOf(long numMeasurements, const std::vector<long>& invalid) {
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    for (std::int64_t i = 0; i < numPatterns; ++i) {
        const std::vector<double> measurements(static_cast<std::size_t>(numMeasurements),
                                               static_cast<double>(i % 1000));
        patterns.emplace_back(new vxFeaturePattern(measurements, invalid));
    }
    vxClassifierDataProviderMemory data;
    data.data(patterns, std::vector<long>(patterns.size(), 1));
    return data;
}

/// In bytes; each block of the C library's malloc has a word in front of it.
double bytesPerPattern(const test::MemoryMeter& meter) {
    constexpr std::int64_t header = sizeof(void*);
    return static_cast<double>(meter.held() + meter.blocks() * header) / static_cast<double>(numPatterns);
}

constexpr double allTogether = 1.0; // bytes of each pattern for what is there once

class StoredMemory : public ::testing::TestWithParam<long> {
protected:
    void SetUp() override {
        if (!test::canMeterMemory()) {
            GTEST_SKIP() << "this build cannot count memory";
        }
    }

    double measurements() const { return static_cast<double>(GetParam()) * sizeof(double); }
};

TEST_P(StoredMemory, OfAPatternIsItsMeasurementsAndAtMost96Bytes) {
    const test::MemoryMeter meter;
    const vxClassifierDataProviderMemory data = dataOf(GetParam(), {});
    EXPECT_LE(bytesPerPattern(meter), measurements() + 96 + allTogether);
}

TEST_P(StoredMemory, OfAPatternWithAnInvalidMeasurementIs32BytesMore) {
    const test::MemoryMeter meter;
    const vxClassifierDataProviderMemory data = dataOf(GetParam(), {1});
    EXPECT_LE(bytesPerPattern(meter), measurements() + 128 + allTogether);
}

TEST_P(StoredMemory, OfAPatternWithAnInvalidMeasurementBehindThe63rdIsAListMore) {
    constexpr long farther = 63;
    const test::MemoryMeter meter;
    const vxClassifierDataProviderMemory data = dataOf(GetParam() + farther, {farther});
    const double more = static_cast<double>(farther) * sizeof(double);
    const double list = 48 + 32; // its head and its bits, in two blocks
    EXPECT_LE(bytesPerPattern(meter), measurements() + more + 128 + list + allTogether);
}

TEST_P(StoredMemory, OfALoadedPatternIsTheSame) {
    for (const std::vector<long>& invalid : {std::vector<long>{}, std::vector<long>{1}}) {
        const test::Bytes sealed = test::stored(dataOf(GetParam(), invalid));
        const test::MemoryMeter meter;
        vxClassifierDataProviderMemory data;
        test::load(sealed, data);
        EXPECT_LE(bytesPerPattern(meter), measurements() + (invalid.empty() ? 96 : 128) + allTogether);
    }
}

TEST_P(StoredMemory, OfATrainedToolHasThreeTenthsOfTheMeasurementsForSpeed) {
    const test::MemoryMeter meter;
    vxClassifierTool tool;
    tool.train(dataOf(GetParam(), {}), vxClassifierTrainParamsKNN(5));
    EXPECT_LE(bytesPerPattern(meter), measurements() + 96 + 0.3 * measurements() + allTogether);
}

TEST_P(StoredMemory, OfAFinishedArchiveIsGivenBack) {
    vxClassifierDataProviderMemory data = dataOf(GetParam(), {});
    const test::MemoryMeter stored;
    vxStoringArchive storing;
    storing || data;
    storing.finish();
    // The bytes themselves keep what a vector that grew has taken.
    const double archive = static_cast<double>(storing.bytes().capacity()) / static_cast<double>(numPatterns);
    EXPECT_LE(bytesPerPattern(stored), archive + allTogether) << "nothing is left but the bytes";
}

TEST_P(StoredMemory, OfAFinishedArchiveThatWasLoadedIsGivenBack) {
    vxClassifierDataProviderMemory data = dataOf(GetParam(), {});
    const test::Bytes bytes = test::stored(data);
    vxClassifierDataProviderMemory loaded;
    const test::MemoryMeter meter;
    vxLoadingArchive loading(bytes);
    loading || loaded;
    loading.finish();
    EXPECT_LE(bytesPerPattern(meter), measurements() + 96 + allTogether);
}

INSTANTIATE_TEST_SUITE_P(Measurements, StoredMemory, ::testing::Values(2, 3, 4, 16, 64));

} // namespace
