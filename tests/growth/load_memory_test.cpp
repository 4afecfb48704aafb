// Whatever an archive holds, loading it takes no more memory than 32 times its size and 1 MiB, whether it is
// accepted or refused.

#include "tests/laws/subject.h"
#include "tests/support/archives.h"
#include "tests/support/hand_written.h"
#include "tests/support/memory_meter.h"

#include <vxclassifier/vxclassifier.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <sstream>
#include <string>

namespace {

using test::Bytes;

/// Loads from the archive, and keeps what it loaded until it returns.
using Load = std::function<void(vxLoadingArchive& archive)>;

void loadPointers(vxLoadingArchive& archive, long count) {
    std::vector<laws::Object> loaded;
    for (long i = 0; i < count; ++i) {
        vxPersistent* object = nullptr;
        vxPersistent::serializePointer(archive, nullptr, object);
        loaded.push_back(laws::own(object));
    }
    archive.finish();
}

void loadPointer(vxLoadingArchive& archive) {
    loadPointers(archive, 1);
}

template <class T>
void loadValue(vxLoadingArchive& archive) {
    T value;
    archive || value;
    archive.finish();
}

template <class Open>
std::int64_t peakOf(const Load& load, Open open) {
    const test::MemoryMeter meter;
    try {
        open(load);
    } catch (const vxException&) {
        // Refused.
    }
    return meter.peak();
}

void expectModest(const Bytes& sealed, const std::string& what, std::int64_t peak) {
    const auto size = static_cast<std::int64_t>(sealed.size());
    EXPECT_LE(peak, 32 * size + (1 << 20)) << what;
}

/// An archive that is read from a stream is kept in memory on top of what comes out of it.
void expectModest(const Bytes& sealed, const Load& load, const std::string& what) {
    const auto fromMemory = [&](const Load& loadFrom) {
        vxLoadingArchive archive(sealed);
        loadFrom(archive);
    };
    expectModest(sealed, what, peakOf(load, fromMemory));
    std::istringstream stream(std::string(sealed.begin(), sealed.end()));
    const auto fromStream = [&](const Load& loadFrom) {
        vxLoadingArchive archive(stream);
        loadFrom(archive);
    };
    expectModest(sealed, what + ", from a stream", peakOf(load, fromStream));
}

Bytes sealed(const Bytes& content) {
    test::HandWritten archive;
    for (const unsigned char byte : content) {
        archive.byte(byte);
    }
    return archive.sealed();
}

class LoadMemory : public testing::Test {
protected:
    void SetUp() override {
        if (!test::canMeterMemory()) {
            GTEST_SKIP() << "this build has a malloc of its own";
        }
    }
};

struct GoldenFile {
    std::string name;
    Bytes bytes;
    Load load;
};

std::vector<GoldenFile> goldenFiles() {
    std::vector<GoldenFile> files;
    for (const auto& place : std::filesystem::directory_iterator(GOLDEN_FILES)) {
        std::ifstream file(place.path(), std::ios::binary);
        const std::string name = place.path().stem().string();
        Load load = &loadPointer;
        if (name.compare(0, 5, "tool-") == 0) {
            load = &loadValue<vxClassifierTool>;
        } else if (name == "rule-table") {
            load = &loadValue<vxClassifierRuleTable>;
        }
        files.push_back({name, Bytes(std::istreambuf_iterator<char>(file), {}), load});
    }
    return files;
}

TEST_F(LoadMemory, IsMetered) {
    const test::MemoryMeter meter;
    EXPECT_EQ(meter.peak(), 0);
    { const std::vector<double> some(1000); }
    const vxNMMatrix matrix(10, 20);
    EXPECT_GE(meter.peak(), 8000);
    EXPECT_LT(meter.peak(), 9000);
    EXPECT_GE(meter.total(), 8000 + 1600);
    EXPECT_LT(meter.total(), 11000);
    EXPECT_EQ(meter.allocations(), 2);
}

TEST_F(LoadMemory, OfAGoldenFileAndOfItsBeginningsIsModest) {
    const std::vector<GoldenFile> files = goldenFiles();
    EXPECT_GE(files.size(), 29U);
    for (const GoldenFile& file : files) {
        expectModest(file.bytes, file.load, file.name);
        Bytes content = test::payload(file.bytes);
        while (!content.empty()) {
            content.pop_back();
            expectModest(sealed(content), file.load,
                         file.name + " cut after " + std::to_string(content.size()));
        }
    }
}

std::uint32_t numberAt(const Bytes& bytes, std::size_t place) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i) {
        number = number << 8U | bytes[place + i - 1];
    }
    return number;
}

void putNumber(Bytes& bytes, std::size_t place, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[place + i] = static_cast<unsigned char>(number >> (8 * i));
    }
}

/// Four bytes that hold a small number may be a count. Behind the content stands enough for a large one.
TEST_F(LoadMemory, OfAHostileCountIsModest) {
    constexpr std::uint32_t room = 8192;
    for (const GoldenFile& file : goldenFiles()) {
        Bytes content = test::payload(file.bytes);
        const std::size_t size = content.size();
        content.resize(size + room);
        for (std::size_t place = 0; place + 4 <= size; ++place) {
            const std::uint32_t number = numberAt(content, place);
            if (number > 64) {
                continue;
            }
            for (const std::uint32_t hostile : {0xffffffffU, room, room / 4, room / 5, room / 9}) {
                putNumber(content, place, hostile);
                expectModest(sealed(content), file.load,
                             file.name + ": " + std::to_string(hostile) + " at " + std::to_string(place));
            }
            putNumber(content, place, number);
        }
    }
}

TEST_F(LoadMemory, OfManySmallObjectsOfAClassIsModest) {
    constexpr long count = 3000;
    for (const laws::Subject& subject : laws::subjects()) {
        for (const laws::Object& sample : {laws::own(subject.make()), subject.samples().front()}) {
            const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
                std::vector<laws::Object> kept;
                for (long i = 0; i < count; ++i) {
                    kept.push_back(subject.copy(*sample));
                    vxPersistent* unused = nullptr;
                    vxPersistent::serializePointer(archive, kept.back().get(), unused);
                }
            });
            expectModest(
                bytes, [](vxLoadingArchive& archive) { loadPointers(archive, count); }, subject.name);
        }
    }
}

vxPtrHandle_const<vxFeaturePattern> pattern(long measurements, double value) {
    return vxPtrHandle_const<vxFeaturePattern>(
        new vxFeaturePattern(std::vector<double>(static_cast<std::size_t>(measurements), value), {}));
}

vxClassifierDataProviderMemory provider(long patterns, long measurements) {
    vxClassifierDataProviderMemory data;
    for (long i = 0; i < patterns; ++i) {
        data.addData(pattern(measurements, static_cast<double>(i % 997)), i % 5);
    }
    return data;
}

/// Stores an object of the class T that takes its content from `source`.
template <class T>
Bytes storedObject(const T& source) {
    const laws::Object object = laws::own(new T(source));
    return test::storedPointer(object.get());
}

TEST_F(LoadMemory, OfLargeDataIsModest) {
    expectModest(storedObject(vxClassifierDataProviderMemory()), &loadPointer, "no patterns");
    expectModest(storedObject(provider(100000, 0)), &loadPointer, "100,000 empty patterns");
    expectModest(storedObject(provider(20000, 3)), &loadPointer, "20,000 patterns");
    expectModest(storedObject(*pattern(1000000, 0.5)), &loadPointer, "a million measurements");
}

/// A classifier as only an archive brings it, with patterns of different sizes.
Bytes storedNeighbors(const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns) {
    test::HandWritten provider;
    provider.byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(patterns.size());
    for (const auto& each : patterns) {
        provider.pointer(each.get());
    }
    provider.numbers(std::vector<long>(patterns.size(), 1));
    const vxPtrHandle<vxClassifierDataProviderMemory> store(new vxClassifierDataProviderMemory);
    test::load(provider.sealed(), *store);
    const auto params = vxClassifierTrainParamsKNN(3).clone();
    return test::HandWritten().byte(0).byte(0).byte(0).pointer(params.get()).pointer(store.get()).sealed();
}

/// A copy of the patterns with room for the largest of them everywhere would be a multiple of the archive.
TEST_F(LoadMemory, OfPatternsThatShareOrDifferMuchInSizeIsModest) {
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns(2000, pattern(20000, 1.0));
    expectModest(storedNeighbors(patterns), &loadValue<vx_ClassifierKNN>, "2000 times one pattern");
    for (std::size_t i = 1; i < patterns.size(); ++i) {
        patterns[i] = pattern(1, 0.5);
    }
    expectModest(storedNeighbors(patterns), &loadValue<vx_ClassifierKNN>, "one large pattern");
}

TEST_F(LoadMemory, OfLargeToolsIsModest) {
    vxClassifierTool tool;
    tool.train(provider(20000, 4), vxClassifierTrainParamsKNN(3));
    expectModest(test::stored(tool), &loadValue<vxClassifierTool>, "nearest neighbours");

    vxClassifierDataProviderMemory manyLabels;
    for (long i = 0; i < 2000; ++i) {
        manyLabels.addData(pattern(8, static_cast<double>(i % 7)), i / 2);
    }
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    types.distributionTypeOverride(3, 1, vxClassifierDistributionTypes::eBinomial);
    tool.train(manyLabels, vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0),
                                                           vxClassifierCosts(1.0), *pattern(8, 10.0)));
    expectModest(test::stored(tool), &loadValue<vxClassifierTool>, "a thousand Bayesian models");
}

TEST_F(LoadMemory, OfALargeDensityIsModest) {
    for (const long size : {50L, 200L}) {
        vx_PDFMultivariateNormal density;
        std::vector<vxFeaturePattern> samples;
        for (long i = 0; i < 3; ++i) {
            std::vector<double> values;
            for (long j = 0; j < size; ++j) {
                values.push_back(static_cast<double>((i + 1) * (j + 3) % 17));
            }
            samples.emplace_back(values, std::vector<long>{});
        }
        density.updateWithData(samples);
        expectModest(storedObject(density), &loadPointer, std::to_string(size) + " measurements");
    }
}

TEST_F(LoadMemory, OfALargeMatrixIsModest) {
    for (const auto& [rows, columns] : {vxPair<long>(700, 700), vxPair<long>(1, 500000)}) {
        expectModest(test::stored(vxNMMatrix(rows, columns)), &loadValue<vxNMMatrix>, "a matrix");
    }
}

TEST_F(LoadMemory, OfADeepTreeIsModest) {
    vxPtrHandle<vxDecisionTree> tree = vxDecisionTreeLeaf(vxClassifierResult()).clone();
    const vxPtrHandle<vxDecisionTree> leaf = tree;
    for (long i = 0; i < 50000; ++i) {
        tree = vxDecisionTreeNode(vxValidityPredicate({i % 3}), *tree, *leaf).clone();
    }
    expectModest(test::storedPointer(tree.get()), &loadPointer, "a chain of nodes");
}

/// The codes of the search are made with cells that come from a sample of the patterns, spread evenly.
TEST_F(LoadMemory, OfPatternsThatAreWideOnlyInTheSampleIsModest) {
    constexpr std::size_t count = 4000;
    const vxPtrHandle<vxFeaturePattern> wide(new vxFeaturePattern({1.0}, {}));
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    for (std::size_t i = 0; i < count; ++i) {
        patterns.emplace_back(new vxFeaturePattern({static_cast<double>(i)}, {}));
    }
    for (std::size_t inSample = 16; inSample <= 1024; inSample *= 2) {
        for (std::size_t i = 0; i < inSample; ++i) {
            patterns[i * count / inSample] = wide;
        }
    }
    vxClassifierDataProviderMemory provider;
    provider.data(patterns, std::vector<long>(count, 0));
    vxClassifierTool tool;
    tool.train(provider, vxClassifierTrainParamsKNN(1));
    *wide = vxFeaturePattern(std::vector<double>(8192, 0.5), {});
    expectModest(test::stored(tool), &loadValue<vxClassifierTool>, "patterns of different widths");
}

TEST_F(LoadMemory, OfALargeRuleTableIsModest) {
    std::vector<vxPtrHandle<vxClsFtSc>> methods;
    for (long i = 0; i < 20000; ++i) {
        methods.emplace_back(new vxClassifierFeatureScoreIgnore);
    }
    vxClassifierRule wide;
    wide.init(methods, 1);
    vxClassifierRuleTable table;
    table.train({wide});
    expectModest(test::stored(table), &loadValue<vxClassifierRuleTable>, "a wide rule");
    methods.resize(1);
    vxClassifierRule narrow;
    narrow.init(methods, 1);
    table.train(std::vector<vxClassifierRule>(20000, narrow));
    expectModest(test::stored(table), &loadValue<vxClassifierRuleTable>, "many rules");
}

} // namespace
