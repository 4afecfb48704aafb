#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <typeinfo>

// An archive exchanges a pattern's record in one step. Here each result is compared with that of a class
// whose records are the same but always go level by level; its name is as long.

/// A pattern that is never the first thing in its pass, and so never goes in one step.
class vxSlowerPatterns : public vxFeaturePattern {
public:
    vxSlowerPatterns() : vxFeaturePattern({}, {}) {}
    static vxPersistent* make() { return new vxSlowerPatterns; }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        static const char somethingElse = 0;
        setVisited(&somethingElse, sizeof somethingElse);
        vxFeaturePattern::dispatchSerialize(archive);
    }

private:
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator vxSlowerPatterns::sExemplar(typeid(vxSlowerPatterns), &vxSlowerPatterns::make);

namespace {

using test::Bytes;
using test::Payload;
using Memory = vxClassifierDataProviderMemory;

const std::string fastName = "vxFeaturePattern";
const std::string slowName = "vxSlowerPatterns";

Payload record(const std::vector<double>& measurements, const std::vector<unsigned>& marks) {
    Payload content;
    content.byte(0).byte(0).byte(0).u32(static_cast<std::uint32_t>(measurements.size()));
    for (const double value : measurements) {
        content.real(value);
    }
    content.byte(0).u32(static_cast<std::uint32_t>(marks.size()));
    for (const unsigned mark : marks) {
        content.byte(mark);
    }
    return content;
}

/// The payload of a pointer to a provider with these patterns; a null handle stands behind them.
Bytes providerOf(const std::vector<Payload>& records) {
    const auto count = static_cast<std::uint32_t>(records.size());
    Payload payload;
    payload.u32(count + 1).firstRecord(0, fastName, records.front());
    for (std::size_t i = 1; i < records.size(); ++i) {
        payload.record(0, records[i]);
    }
    Payload provider;
    provider.byte(0).byte(0).byte(0).u32(0).u32(0).byte(0).u32(count + 1);
    for (std::uint32_t i = 1; i <= count; ++i) {
        provider.u32(i);
    }
    provider.u32(0).byte(0).u32(count + 1);
    for (std::uint32_t i = 0; i <= count; ++i) {
        provider.u32(i);
    }
    payload.firstRecord(1, "vxClassifierDataProviderMemory", provider).u32(count + 1);
    return payload.bytes();
}

/// The same content with objects of the other class, if it names the first one.
Bytes slowerFormOf(Bytes payload) {
    const auto name = std::search(payload.begin(), payload.end(), fastName.begin(), fastName.end());
    if (name != payload.end()) {
        std::copy(slowName.begin(), slowName.end(), name);
    }
    return payload;
}

/// `behind` lies behind the archive in memory.
vxPtrHandle<Memory> loaded(const Bytes& payload, const Bytes& behind = {}) {
    Bytes sealed = Payload().append(payload).sealed();
    const std::size_t size = sealed.size();
    sealed.insert(sealed.end(), behind.begin(), behind.end());
    vxLoadingArchive archive(sealed.data(), size);
    vxPtrHandle<Memory> handle;
    archive || handle;
    archive.finish();
    return handle;
}

/// What becomes of a payload: the bytes of what was loaded, or the error.
std::string outcomeOf(const Bytes& payload, const Bytes& behind = {}) {
    try {
        const vxPtrHandle<Memory> provider = loaded(payload, behind);
        if (provider.isNull()) {
            return "null";
        }
        const Bytes sealed = test::storedPointer(provider.get());
        const Bytes again = slowerFormOf(test::payload(sealed));
        return std::string(again.begin(), again.end());
    } catch (const vxArchive::Errors& error) {
        return std::string(typeid(error).name()) + ": " + error.what();
    }
}

/// Records with all kinds of marks: as many as measurements, fewer, more; with and without invalid ones.
std::vector<Payload> manyRecords() {
    std::mt19937 random(5);
    std::vector<Payload> records;
    for (const std::size_t size : {0u, 1u, 7u, 8u, 9u, 16u, 31u, 32u, 33u, 62u, 63u, 64u, 65u, 130u}) {
        std::vector<double> measurements;
        for (std::size_t i = 0; i < size; ++i) {
            measurements.push_back(static_cast<double>(random()) - 2e9);
        }
        records.push_back(record(measurements, std::vector<unsigned>(size, 1)));
        records.push_back(record(measurements, std::vector<unsigned>(size + 1, 1)));
        records.push_back(record(measurements, std::vector<unsigned>(size / 2, 1)));
        for (int i = 0; i < 6; ++i) {
            std::vector<unsigned> marks(size, 1);
            for (int invalid = 0; size > 0 && invalid <= i; ++invalid) {
                marks[random() % size] = 0;
            }
            records.push_back(record(measurements, marks));
        }
    }
    return records;
}

TEST(PatternRecord, ComesBackAsLevelByLevelAndGoesInAgain) {
    const Bytes payload = providerOf(manyRecords());
    const vxPtrHandle<Memory> fast = loaded(payload);
    const vxPtrHandle<Memory> slow = loaded(slowerFormOf(payload));
    ASSERT_EQ(test::payload(test::storedPointer(fast.get())), payload);
    ASSERT_EQ(test::payload(test::storedPointer(slow.get())), slowerFormOf(payload));
}

TEST(PatternRecord, IsOfTheVeryClassThatTheArchiveNames) {
    const Bytes payload = providerOf({record({1.0}, {1}), record({2.0}, {1})});
    for (long i = 0; i < 2; ++i) {
        const auto fast = loaded(payload)->featurePattern(i);
        const auto slow = loaded(slowerFormOf(payload))->featurePattern(i);
        EXPECT_EQ(dynamic_cast<const vxSlowerPatterns*>(fast.get()), nullptr);
        EXPECT_NE(dynamic_cast<const vxSlowerPatterns*>(slow.get()), nullptr);
    }
}

TEST(PatternRecord, IsRefusedOrTakenAsLevelByLevelWhateverItsBytesAre) {
    const Bytes good = providerOf({record({1.5, -2.0}, {1, 1}), record({3.0, 4.0}, {1, 0}),
                                   record({5.0}, {1}), record({6.0, 7.0}, {1})});
    const auto name = std::search(good.begin(), good.end(), fastName.begin(), fastName.end());
    const auto nameAt = static_cast<std::size_t>(name - good.begin());
    long refused = 0;
    for (std::size_t i = 0; i < good.size(); ++i) {
        if (i + sizeof(std::uint32_t) >= nameAt && i < nameAt + fastName.size()) {
            continue; // the name and its length: a message names the class
        }
        for (const unsigned change : {1u, 2u, 3u, 9u, 0x10u, 0x80u, 0xffu}) {
            Bytes bad = good;
            bad[i] = static_cast<unsigned char>(bad[i] ^ change);
            const std::string slow = outcomeOf(slowerFormOf(bad));
            EXPECT_EQ(outcomeOf(bad), slow) << "byte " << i << " changed by " << change;
            refused += slow.find(": ") != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_GT(refused, 500);
}

TEST(PatternRecord, IsNotTakenFromWhatLiesBehindTheArchive) {
    const Bytes whole = providerOf({record({1.5, -2.0}, {1, 1}), record({3.0}, {1}), record({4.0}, {0})});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
        const Bytes cut(whole.begin(), end);
        const Bytes behind(end, whole.end());
        const std::string slow = outcomeOf(slowerFormOf(cut), behind);
        EXPECT_NE(slow.find(": "), std::string::npos) << "cut to " << size;
        EXPECT_EQ(outcomeOf(cut, behind), slow) << "cut to " << size;
    }
}

} // namespace
