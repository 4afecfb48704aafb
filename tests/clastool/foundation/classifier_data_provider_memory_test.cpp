#include <vxclassifier/classifier_data_provider_memory.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/hand_written.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/exception.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using test::Bytes;
using test::HandWritten;
using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;

using Pattern = vxPtrHandle_const<vxFeaturePattern>;
using Patterns = std::vector<Pattern>;
using Labels = std::vector<long>;
using Memory = vxClassifierDataProviderMemory;

constexpr const wchar_t* badPatternIndex = L"Feature pattern index must be >=0 and < number of patterns.";
constexpr const wchar_t* badLabelIndex = L"Category label index must be >=0 and < number of patterns.";
constexpr const wchar_t* badLabel = L"Category labels must be >= 0 or unknown";
constexpr const wchar_t* otherSize =
    L"Feature pattern must have the same number of measurements as the rest of the data.";
constexpr const wchar_t* differentSizes = L"Feature patterns must all have the same number of measurements";
constexpr const wchar_t* differentCounts =
    L"The number of the feature patterns must be equal to the number of category labels";

Pattern pattern(const std::vector<double>& measurements, const std::vector<long>& invalid = {}) {
    return Pattern(new vxFeaturePattern(measurements, invalid));
}

Memory twoPatterns() {
    Memory memory;
    memory.setName(L"name");
    memory.setDescription(L"description");
    memory.addData(pattern({1, 2}), 0);
    memory.addData(pattern({3, 4}, {1}), -1);
    return memory;
}

/// A provider as an archive brings it, whether or not the operations would make it.
Memory forged(const Patterns& patterns, const Labels& labels) {
    HandWritten byHand;
    byHand.byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(patterns.size());
    for (const Pattern& each : patterns) {
        byHand.pointer(each.get());
    }
    byHand.numbers(labels);
    return test::loaded(byHand.sealed(), Memory());
}

/// Says that it has another number of patterns.
struct Recounted : Memory {
    long numPatterns() const override { return count; }
    long count = 0;
};

TEST(DataProviderMemory, IsEmptyAtFirst) {
    const Memory memory;
    EXPECT_EQ(memory.name(), L"");
    EXPECT_EQ(memory.description(), L"");
    EXPECT_EQ(memory.numPatterns(), 0);
    EXPECT_EQ(memory.numMeasurements(), 0);
}

TEST(DataProviderMemory, HasANameAndADescription) {
    Memory memory;
    memory.setName(L"na\u00efve \u4e2d");
    memory.setDescription(L"what it is");
    EXPECT_EQ(memory.name(), L"na\u00efve \u4e2d");
    EXPECT_EQ(memory.description(), L"what it is");
}

TEST(DataProviderMemory, AppendsPairsInOrder) {
    const Pattern first = pattern({1, 2});
    const Pattern second = pattern({3, 4}, {1});
    Memory memory;
    memory.addData(first, 5);
    memory.addData(second, 0);
    EXPECT_EQ(memory.numPatterns(), 2);
    EXPECT_EQ(memory.numMeasurements(), 2);
    EXPECT_EQ(memory.featurePattern(0), first);
    EXPECT_EQ(memory.featurePattern(1), second);
    EXPECT_EQ(memory.categoryLabel(0), 5);
    EXPECT_EQ(memory.categoryLabel(1), 0);
}

TEST(DataProviderMemory, AcceptsTheUnknownLabelAndNoOtherNegativeOne) {
    Memory memory;
    memory.addData(pattern({1}), -1);
    EXPECT_EQ(memory.categoryLabel(0), -1);
    EXPECT_ERROR(memory.addData(pattern({1}), -2), BadLabel, badLabel);
    EXPECT_ERROR(memory.addData(pattern({1}), std::numeric_limits<long>::min()), BadLabel, badLabel);
    EXPECT_ERROR(Memory().addData(pattern({1}), -2), BadLabel, badLabel);
    EXPECT_EQ(memory.numPatterns(), 1);
}

TEST(DataProviderMemory, TheFirstPatternSetsTheNumberOfMeasurements) {
    Memory memory;
    memory.addData(pattern({}), 1);
    EXPECT_EQ(memory.numMeasurements(), 0);
    EXPECT_EQ(memory.numPatterns(), 1);
    EXPECT_ERROR(memory.addData(pattern({1}), 1), BadFeatures, otherSize);
    memory.addData(pattern({}), 1);
    EXPECT_EQ(memory.numPatterns(), 2);
}

TEST(DataProviderMemory, ALaterPatternMustFitAndThatIsCheckedBeforeItsLabel) {
    Memory memory = twoPatterns();
    const Memory before(memory);
    EXPECT_ERROR(memory.addData(pattern({1, 2, 3}), 0), BadFeatures, otherSize);
    EXPECT_ERROR(memory.addData(pattern({1}), -2), BadFeatures, otherSize);
    EXPECT_ERROR(memory.addData(nullptr, -2), vxBadPointer,
                 L"A null pointer was used where an object is needed.");
    EXPECT_ERROR(memory.addData(pattern({1, 2}), -2), BadLabel, badLabel);
    EXPECT_TRUE(memory == before);
}

TEST(DataProviderMemory, TheFirstHandleIsNotLookedAt) {
    Memory memory;
    EXPECT_ERROR(memory.addData(nullptr, -2), BadLabel, badLabel);
    EXPECT_EQ(memory.numPatterns(), 0);
    memory.addData(nullptr, 3);
    EXPECT_EQ(memory.numPatterns(), 1);
    EXPECT_EQ(memory.categoryLabel(0), 3);
    EXPECT_TRUE(memory.featurePattern(0).isNull());
    EXPECT_ERROR_CLASS(memory.numMeasurements(), vxBadPointer);
    EXPECT_ERROR_CLASS(memory.addData(pattern({1}), 0), vxBadPointer);
    EXPECT_EQ(memory.numPatterns(), 1);
}

TEST(DataProviderMemory, ReplacesAllDataWhateverTheOldSizesWere) {
    Memory memory = twoPatterns();
    memory.data({pattern({1, 2, 3})}, {7});
    EXPECT_EQ(memory.numPatterns(), 1);
    EXPECT_EQ(memory.numMeasurements(), 3);
    EXPECT_EQ(memory.categoryLabel(0), 7);
    EXPECT_EQ(memory.name(), L"name");
    memory.data({}, {});
    EXPECT_EQ(memory.numPatterns(), 0);
    EXPECT_EQ(memory.numMeasurements(), 0);
}

TEST(DataProviderMemory, ReplacingNeedsAsManyLabelsAsPatterns) {
    Memory memory = twoPatterns();
    const Memory before(memory);
    EXPECT_ERROR(memory.data({pattern({1})}, {}), BadFeatures, differentCounts);
    EXPECT_ERROR(memory.data({}, {1}), BadFeatures, differentCounts);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({1, 2})}, {-5}), BadFeatures, differentCounts);
    EXPECT_ERROR(memory.data({nullptr, nullptr}, {1}), BadFeatures, differentCounts);
    EXPECT_TRUE(memory == before);
}

TEST(DataProviderMemory, ReplacingNeedsPatternsOfOneSize) {
    Memory memory = twoPatterns();
    const Memory before(memory);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({1, 2})}, {0, 0}), BadFeatures, differentSizes);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({2}), pattern({})}, {0, -5, 0}), BadFeatures,
                 differentSizes);
    EXPECT_TRUE(memory == before);
}

TEST(DataProviderMemory, ReplacingMeetsNullHandlesInOrder) {
    Memory memory = twoPatterns();
    const Memory before(memory);
    EXPECT_ERROR_CLASS(memory.data({nullptr, pattern({1})}, {0, 0}), vxBadPointer);
    EXPECT_ERROR_CLASS(memory.data({pattern({1}), nullptr}, {0, 0}), vxBadPointer);
    EXPECT_ERROR_CLASS(memory.data({pattern({1}), nullptr, pattern({1, 2})}, {0, 0, -5}), vxBadPointer);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({1, 2}), nullptr}, {0, 0, 0}), BadFeatures,
                 differentSizes);
    EXPECT_TRUE(memory == before);
}

TEST(DataProviderMemory, ReplacingDoesNotLookAtASinglePattern) {
    Memory memory;
    memory.data({nullptr}, {4});
    EXPECT_EQ(memory.numPatterns(), 1);
    EXPECT_TRUE(memory.featurePattern(0).isNull());
    EXPECT_ERROR(memory.data({nullptr}, {-4}), BadLabel, badLabel);
    EXPECT_EQ(memory.categoryLabel(0), 4);
}

TEST(DataProviderMemory, ReplacingChecksEveryLabel) {
    Memory memory = twoPatterns();
    const Memory before(memory);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({2})}, {0, -2}), BadLabel, badLabel);
    EXPECT_ERROR(memory.data({pattern({1}), pattern({2})}, {-2, 0}), BadLabel, badLabel);
    EXPECT_TRUE(memory == before);
    memory.data({pattern({1}), pattern({2})}, {-1, -1});
    EXPECT_EQ(memory.categoryLabel(1), -1);
}

TEST(DataProviderMemory, IndicesOutsideAreRefusedWithTheirOwnTexts) {
    const Memory memory = twoPatterns();
    for (const long index :
         {-1L, 2L, 4294967296L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        EXPECT_ERROR(memory.featurePattern(index), BadIndex, badPatternIndex);
        EXPECT_ERROR(memory.categoryLabel(index), BadIndex, badLabelIndex);
    }
    EXPECT_ERROR(Memory().featurePattern(0), BadIndex, badPatternIndex);
    EXPECT_ERROR(Memory().categoryLabel(0), BadIndex, badLabelIndex);
}

TEST(DataProviderMemory, HandsOutSharesOfThePatterns) {
    const Pattern only = pattern({1});
    Memory memory;
    memory.addData(only, 0);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*only), 2);
    const Pattern handed = memory.featurePattern(0);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*only), 3);
}

TEST(DataProviderMemory, ACopySharesThePatternsAndNothingElse) {
    Memory original = twoPatterns();
    const Memory copy(original);
    Memory assigned;
    assigned.addData(pattern({9}), 9);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_TRUE(copy == original);
    EXPECT_TRUE(assigned == original);
    EXPECT_EQ(copy.featurePattern(0), original.featurePattern(0));
    EXPECT_EQ(assigned.featurePattern(1), original.featurePattern(1));
    original.data({}, {});
    original.setName(L"other");
    EXPECT_EQ(copy.numPatterns(), 2);
    EXPECT_EQ(assigned.numPatterns(), 2);
    EXPECT_EQ(copy.name(), L"name");
    Memory& self = assigned;
    assigned = self;
    EXPECT_TRUE(assigned == copy);
}

TEST(DataProviderMemory, EqualityComparesPatternsByValueThenNameDescriptionAndLabels) {
    EXPECT_TRUE(twoPatterns() == twoPatterns());
    EXPECT_FALSE(twoPatterns() != twoPatterns());
    Memory other = twoPatterns();
    other.setName(L"else");
    EXPECT_TRUE(twoPatterns() != other);
    other = twoPatterns();
    other.setDescription(L"else");
    EXPECT_TRUE(twoPatterns() != other);
    other = twoPatterns();
    other.addData(pattern({5, 6}), 0);
    EXPECT_TRUE(twoPatterns() != other);
    EXPECT_TRUE(Memory() == Memory());
}

TEST(DataProviderMemory, EqualityNoticesALabelAValueAndAValidityMark) {
    const auto with = [](const Pattern& second, long label) {
        Memory memory;
        memory.addData(pattern({1, 2}), 0);
        memory.addData(second, label);
        return memory;
    };
    const Memory memory = with(pattern({3, 4}), 1);
    EXPECT_TRUE(memory == with(pattern({3, 4}), 1));
    EXPECT_TRUE(memory != with(pattern({3, 4}), 2));
    EXPECT_TRUE(memory != with(pattern({3, 5}), 1));
    EXPECT_TRUE(memory != with(pattern({3, 4}, {1}), 1));
    const Memory withNan = with(pattern({3, std::numeric_limits<double>::quiet_NaN()}), 1);
    EXPECT_TRUE(withNan != withNan);
    EXPECT_FALSE(withNan == withNan);
}

TEST(DataProviderMemory, ANullHandleIsMetWhenItIsCompared) {
    Memory withNull;
    withNull.addData(nullptr, 0);
    Memory sound;
    sound.addData(pattern({1}), 0);
    EXPECT_ERROR_CLASS(static_cast<void>(withNull == sound), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(sound == withNull), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(withNull == withNull), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(sound != withNull), vxBadPointer);
    withNull.setName(L"another name");
    EXPECT_ERROR_CLASS(static_cast<void>(withNull == sound), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(sound == withNull), vxBadPointer);
    EXPECT_FALSE(withNull == Memory()) << "another number of patterns is noticed first";
    Memory differsFirst;
    differsFirst.data({pattern({2}), pattern({1})}, {0, 0});
    const Memory nullSecond = forged({pattern({1}), nullptr}, {0, 0});
    EXPECT_FALSE(nullSecond == differsFirst) << "the first difference ends the comparison";
}

TEST(DataProviderMemory, IsNeverEqualToAProviderOfAnotherClass) {
    struct Own : vxClassifierDataProvider {
        std::wstring name() const override { return L""; }
        std::wstring description() const override { return L""; }
        long numMeasurements() const override { return 0; }
        long numPatterns() const override { return 0; }
        Pattern featurePattern(long) const override { return nullptr; }
        long categoryLabel(long) const override { return -1; }
    };
    EXPECT_FALSE(Memory() == Own());
    EXPECT_TRUE(Memory() != Own());
}

TEST(DataProviderMemory, EqualityIsAskedOfTheOverrideOfADerivedClass) {
    struct NeverEqual : Memory {
        bool isEqual_(const vxClassifierDataProvider&) const override { return false; }
    };
    const NeverEqual never;
    const Memory& memory = never;
    EXPECT_FALSE(memory == memory);
    EXPECT_TRUE(memory != memory);
    EXPECT_TRUE(Memory() == never) << "a derived object is one of the base too";
}

TEST(DataProviderMemory, AsksADerivedClassForTheNumberOfPatterns) {
    Recounted fewer;
    fewer.data({pattern({1}), pattern({2})}, {5, 6});
    fewer.count = 1;
    EXPECT_EQ(fewer.categoryLabel(0), 5);
    EXPECT_ERROR(fewer.categoryLabel(1), BadIndex, badLabelIndex);
    EXPECT_ERROR(fewer.featurePattern(1), BadIndex, badPatternIndex);
    fewer.count = 0;
    EXPECT_EQ(fewer.numMeasurements(), 0);
    fewer.addData(nullptr, 0);
    fewer.count = 3;
    EXPECT_TRUE(fewer.featurePattern(2).isNull()) << "an empty provider takes any handle";
}

TEST(DataProviderMemory, MakeGivesAnEmptyOne) {
    const std::unique_ptr<vxPersistent> made(Memory::make());
    const auto* memory = dynamic_cast<const Memory*>(made.get());
    ASSERT_NE(memory, nullptr);
    EXPECT_TRUE(*memory == Memory());
}

TEST(DataProviderMemory, ItsVirtualFunctionsKeepTheOrderOfTheInterface) {
    EXPECT_EQ(test::slotOf(&Memory::name), 5U);
    EXPECT_EQ(test::slotOf(&Memory::description), 6U);
    EXPECT_EQ(test::slotOf(&Memory::numMeasurements), 7U);
    EXPECT_EQ(test::slotOf(&Memory::numPatterns), 8U);
    EXPECT_EQ(test::slotOf(&Memory::featurePattern), 9U);
    EXPECT_EQ(test::slotOf(&Memory::categoryLabel), 10U);
}

// The archive.

TEST(DataProviderMemoryArchive, HoldsTheVersionsTheTextsThePatternsAndTheLabels) {
    const Memory memory = twoPatterns();
    EXPECT_EQ(test::stored(memory), HandWritten()
                                        .byte(0) // vxClassifierDataProviderMemory
                                        .byte(0) // vxClassifierDataProvider
                                        .byte(0) // vxPersistent
                                        .text(L"name")
                                        .text(L"description")
                                        .byte(0)
                                        .count(2)
                                        .pointer(memory.featurePattern(0).get())
                                        .pointer(memory.featurePattern(1).get())
                                        .numbers({0, -1})
                                        .sealed());
    EXPECT_EQ(
        test::stored(Memory()),
        HandWritten().byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(0).numbers({}).sealed());
}

TEST(DataProviderMemoryArchive, BringsTheProviderBackInPlaceOfWhatWasThere) {
    Memory into;
    into.setName(L"old");
    into.addData(pattern({9, 9, 9}), 9);
    EXPECT_TRUE(test::loaded(test::stored(twoPatterns()), into) == twoPatterns());
    EXPECT_TRUE(test::loaded(test::stored(Memory()), into) == Memory());
}

TEST(DataProviderMemoryArchive, AnotherVersionOfEitherLevelIsRefusedWithoutAPlace) {
    Memory into = twoPatterns();
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(1).byte(0).byte(0).sealed(), into), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).byte(1).byte(0).sealed(), into), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).byte(0).byte(1).sealed(), into), nullptr, 0);
    EXPECT_TRUE(into == twoPatterns());
}

TEST(DataProviderMemoryArchive, AnotherVersionOfAVectorIsRefusedWithoutAPlaceAndWhatWasReadStays) {
    Memory into = twoPatterns();
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(0).byte(0).byte(0).text(L"new").text(L"").byte(1).count(0).sealed(),
                   into),
        nullptr, 0);
    EXPECT_EQ(into.name(), L"new");
    EXPECT_EQ(into.description(), L"");
    EXPECT_EQ(into.numPatterns(), 2);
}

TEST(DataProviderMemoryArchive, TheBodyChecksTheVersionItself) {
    struct Access : Memory {
        void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
    };
    Access memory;
    test::archiveOf([&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(memory.body(archive, 1), nullptr, 0); });
    EXPECT_EQ(test::archiveOf([&](vxArchive& archive) { memory.body(archive, 0); }),
              HandWritten().byte(0).byte(0).text(L"").text(L"").byte(0).count(0).numbers({}).sealed());
}

TEST(DataProviderMemoryArchive, TheLevelIsExchangedOnceInAPass) {
    struct Doubled : Memory {
    protected:
        void dispatchSerialize(vxArchive& archive) override {
            Memory::dispatchSerialize(archive);
            Memory::dispatchSerialize(archive);
        }
    };
    EXPECT_EQ(test::stored(Doubled()), test::stored(Memory()));
}

TEST(DataProviderMemoryArchive, APatternHeldTwiceIsStoredOnceAndSharedAgain) {
    const Pattern twice = pattern({1, 2});
    Memory memory;
    memory.addData(twice, 0);
    memory.addData(twice, 1);
    const Memory loaded = test::loaded(test::stored(memory), Memory());
    EXPECT_EQ(loaded.featurePattern(0), loaded.featurePattern(1));
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*loaded.featurePattern(0)), 3)
        << "two in the provider and the one that is asked";
}

TEST(DataProviderMemoryArchive, LoadedDataAreNotChecked) {
    const Memory memory = forged({pattern({1}), pattern({1, 2}), nullptr}, {-7, -1, 3});
    EXPECT_EQ(memory.numPatterns(), 3);
    EXPECT_EQ(memory.numMeasurements(), 1);
    EXPECT_EQ(memory.categoryLabel(0), -7);
    EXPECT_TRUE(memory.featurePattern(2).isNull());
}

TEST(DataProviderMemoryArchive, AnObjectThatIsNoPatternLeavesANullHandle) {
    const vxPtrHandle_const<Memory> noPattern(new Memory);
    HandWritten byHand;
    byHand.byte(0).byte(0).byte(0).text(L"").text(L"").byte(0).count(1).pointer(noPattern.get()).numbers({0});
    const Memory memory = test::loaded(byHand.sealed(), Memory());
    EXPECT_EQ(memory.numPatterns(), 1);
    EXPECT_TRUE(memory.featurePattern(0).isNull());
    EXPECT_ERROR_CLASS(memory.numMeasurements(), vxBadPointer);
}

} // namespace
