#include "platform/archive/whole_record.h"

#include "platform/archive/byte_order.h"
#include "platform/archive/handle_batch.h"
#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace {

using test::Bytes;
using test::Node;
using test::Note;

/// A number that goes into an archive in one step or in several, and counts both.
class Number : public vxPersistent, public vxRepBase {
public:
    Number() = default;
    explicit Number(long number) : value(number) {}
    static vxPersistent* make() { return new Number; }

    long value = 0;
    static long levels;  // exchanged by dispatchSerialize
    static long putOnes; // written whole
    static long gotOnes; // read whole
    static bool isOffered;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        ++levels;
        vxPersistent::dispatchSerialize(archive);
        archive || value;
    }

private:
    static const vx_Instantiator sExemplar;
};
long Number::levels = 0;
long Number::putOnes = 0;
long Number::gotOnes = 0;
bool Number::isOffered = true;
const vx_Instantiator Number::sExemplar(typeid(Number), &Number::make);

constexpr std::size_t numberSize = 1 + sizeof(std::uint32_t);

std::size_t sizeOf(const vxPersistent&) {
    return Number::isOffered ? numberSize : 0;
}

void put(const vxPersistent& object, unsigned char* to) noexcept {
    ++Number::putOnes;
    *to = 0;
    const long value = static_cast<const Number&>(object).value;
    detail::putLittleEndian(to + 1, static_cast<std::uint32_t>(value));
}

vxPersistent* get(const unsigned char* from, std::size_t size) {
    if (!Number::isOffered || size != numberSize || *from != 0) {
        return nullptr;
    }
    ++Number::gotOnes;
    return new Number(static_cast<std::int32_t>(detail::getLittleEndian<std::uint32_t>(from + 1)));
}

constexpr detail::WholeRecord whole{&sizeOf, &put, &get};
const detail::WholeRecordOffer offer(typeid(Number), &Number::make, whole);

class Derived : public Number {
public:
    using Number::Number;
    static vxPersistent* make() { return new Derived; }

private:
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator Derived::sExemplar(typeid(Derived), &Derived::make);

/// A class whose make() gives objects of other classes, and not always of the same one.
class Changeling : public Number {
public:
    using Number::Number;
    static vxPersistent* make() {
        ++numMade;
        return numMade % 2 == 1 ? new Number : new Derived;
    }

private:
    static long numMade;
    static const vx_Instantiator sExemplar;
};
long Changeling::numMade = 0;
const vx_Instantiator Changeling::sExemplar(typeid(Changeling), &Changeling::make);

/// Keeps handles that it exchanges all together or one by one.
class Keeper : public vxPersistent, public vxRepBase {
public:
    static vxPersistent* make() { return new Keeper; }

    std::vector<vxPtrHandle_const<Number>> handles;
    static bool together;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        if (together) {
            detail::exchangeHandles(archive, handles);
        } else {
            archive || handles;
        }
    }

private:
    static const vx_Instantiator sExemplar;
};
bool Keeper::together = true;
const vx_Instantiator Keeper::sExemplar(typeid(Keeper), &Keeper::make);

class WholeRecord : public ::testing::Test {
protected:
    void SetUp() override {
        Number::isOffered = true;
        Keeper::together = true;
        count();
    }

    static void count() { Number::levels = Number::putOnes = Number::gotOnes = 0; }

    static vxPtrHandle<Keeper> loaded(const Bytes& sealed) {
        vxPtrHandle<Keeper> keeper;
        test::load(sealed, keeper);
        return keeper;
    }

    /// Each number twice, with a null handle between.
    static vxPtrHandle<Keeper> keeperOf(long count) {
        vxPtrHandle<Keeper> keeper(new Keeper);
        for (long i = 0; i < count; ++i) {
            const vxPtrHandle_const<Number> number(i % 5 == 4 ? new Derived(i) : new Number(i));
            keeper->handles.insert(keeper->handles.end(), {number, nullptr, number});
        }
        return keeper;
    }
};

TEST_F(WholeRecord, IsKnownForExactlyTheClassThatOffersIt) {
    EXPECT_EQ(detail::wholeRecordOf(typeid(Number)), &whole);
    EXPECT_EQ(detail::wholeRecordOf(typeid(Derived)), nullptr);
    EXPECT_EQ(detail::wholeRecordOf(typeid(Node)), nullptr);
    EXPECT_EQ(detail::wholeRecordOf(&Number::make), &whole);
    EXPECT_EQ(detail::wholeRecordOf(&Derived::make), nullptr);
}

TEST_F(WholeRecord, IsOfferedForFeaturePatterns) {
    const detail::WholeRecord* const offered = detail::wholeRecordOf(typeid(vxFeaturePattern));
    EXPECT_NE(offered, nullptr);
    EXPECT_EQ(detail::wholeRecordOf(&vxFeaturePattern::make), offered);
}

TEST_F(WholeRecord, ServesAllObjectsOfTheClassButTheOneThatBringsTheName) {
    const auto keeper = keeperOf(4);
    const Bytes sealed = test::stored(keeper);
    EXPECT_EQ(Number::putOnes, 3);
    EXPECT_EQ(Number::levels, 1);
    count();
    EXPECT_EQ(loaded(sealed)->handles.back()->value, 3);
    EXPECT_EQ(Number::gotOnes, 3);
    EXPECT_EQ(Number::levels, 1);
}

TEST_F(WholeRecord, IsAsLevelByLevel) {
    const auto keeper = keeperOf(100);
    const Bytes fast = test::stored(keeper);
    Number::isOffered = false;
    count();
    EXPECT_EQ(test::stored(keeper), fast);
    EXPECT_EQ(Number::levels, 100);
    EXPECT_EQ(loaded(fast)->handles.back()->value, 99);
    EXPECT_EQ(Number::levels, 200);
    EXPECT_EQ(Number::putOnes + Number::gotOnes, 0);
}

TEST_F(WholeRecord, OfADerivedClassIsNotAsked) {
    const vxPtrHandle<Keeper> keeper(new Keeper);
    keeper->handles = {vxPtrHandle_const<Number>(new Derived(1)), vxPtrHandle_const<Number>(new Derived(2))};
    EXPECT_EQ(loaded(test::stored(keeper))->handles[1]->value, 2);
    EXPECT_EQ(Number::putOnes + Number::gotOnes, 0);
}

TEST_F(WholeRecord, IsLeftToTheClassThatTheArchiveNamesWhateverItMakes) {
    const vxPtrHandle<Keeper> keeper(new Keeper);
    for (const long value : {7L, 8L, 9L}) {
        keeper->handles.emplace_back(new Changeling(value));
    }
    const Bytes sealed = test::stored(keeper);
    count();
    const auto back = loaded(sealed);
    EXPECT_EQ(Number::gotOnes, 0);
    EXPECT_EQ(Number::levels, 3);
    const Changeling* none = nullptr;
    EXPECT_EQ(dynamic_cast<const Changeling*>(back->handles[0].get()), none);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back->handles[i]->value, 7 + static_cast<long>(i));
    }
}

TEST_F(WholeRecord, ThatIsNotTakenIsReadLevelByLevel) {
    const test::Payload number = test::Payload().byte(0).u32(1);
    const std::string name = "(anonymous namespace)::Number";
    const Bytes tooLong = test::Payload()
                              .u32(1)
                              .firstRecord(0, name, test::Payload().append(number.bytes()).byte(0))
                              .u32(1)
                              .sealed();
    vxPtrHandle<Number> into;
    EXPECT_THROW(test::load(tooLong, into), vxArchive::CorruptData);
    const Bytes later =
        test::Payload().u32(1).firstRecord(0, name, test::Payload().byte(1).u32(1)).u32(1).sealed();
    EXPECT_THROW(test::load(later, into), vxArchive::UnknownVersion);
    EXPECT_EQ(Number::levels, 2);
}

// Many handles at once.

/// What becomes of an archive: the values of the handles, or the error.
std::string outcomeOf(const Bytes& sealed, bool together) {
    Keeper::together = together;
    try {
        vxPtrHandle<Keeper> keeper;
        test::load(sealed, keeper);
        std::string values = keeper.isNull() ? "null" : "";
        for (std::size_t i = 0; !keeper.isNull() && i < keeper->handles.size(); ++i) {
            const auto& handle = keeper->handles[i];
            values += handle.isNull() ? "null " : std::to_string(handle->value) + ' ';
        }
        return values;
    } catch (const vxArchive::Errors& error) {
        return std::string(typeid(error).name()) + ": " + error.what();
    }
}

TEST_F(WholeRecord, HandlesTogetherAreStoredAsOneByOne) {
    for (const long count : {0L, 1L, 21L, 22L, 64L, 200L}) { // some fill a batch, or go beyond
        const auto keeper = keeperOf(count);
        Keeper::together = true;
        const Bytes byPointer = test::stored(keeper);
        const Bytes byValue = test::stored(*keeper);
        Keeper::together = false;
        EXPECT_EQ(test::stored(keeper), byPointer) << count;
        EXPECT_EQ(test::stored(*keeper), byValue) << count;
        EXPECT_EQ(outcomeOf(byPointer, true), outcomeOf(byPointer, false)) << count;
        Keeper into;
        Keeper::together = true;
        test::load(byValue, into);
        EXPECT_EQ(into.handles.size(), keeper->handles.size());
        EXPECT_EQ(test::stored(into), byValue) << count;
    }
}

TEST_F(WholeRecord, HandlesTogetherAreLoadedAsOneByOneWhateverTheBytesAre) {
    auto keeper = keeperOf(3);
    const Bytes good = test::payload(test::stored(keeper));
    long refused = 0;
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const unsigned change : {1u, 2u, 3u, 4u, 7u, 0x80u, 0xffu}) {
            Bytes bad = good;
            bad[i] = static_cast<unsigned char>(bad[i] ^ change);
            const Bytes sealed = test::Payload().append(bad).sealed();
            const std::string plain = outcomeOf(sealed, false);
            EXPECT_EQ(outcomeOf(sealed, true), plain) << "byte " << i << " changed by " << change;
            refused += plain.find(": ") != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_GT(refused, 500);
}

TEST_F(WholeRecord, AnObjectThatTheHandlesCannotHoldStaysWithTheArchive) {
    const long before = Node::living + Note::living;
    {
        const auto sealedAs = [](const std::string& className, const test::Payload& object) {
            const test::Payload keeper =
                test::Payload().byte(0).byte(0).u32(2).u32(1).u32(1); // level of vxPersistent; the vector
            const std::string name = "(anonymous namespace)::Keeper";
            return test::Payload()
                .u32(2)
                .firstRecord(0, className, object)
                .firstRecord(1, name, keeper)
                .u32(2)
                .sealed();
        };
        const Bytes node = sealedAs("test::Node", test::Payload().byte(0).byte(0).u32(1).u32(0).u32(0));
        EXPECT_EQ(outcomeOf(node, true), "null null ");
        EXPECT_EQ(outcomeOf(node, false), "null null ");
        const Bytes note = sealedAs("test::Note", test::Payload().byte(0).u32(1));
        EXPECT_EQ(outcomeOf(note, true), outcomeOf(note, false));
    }
    EXPECT_EQ(Node::living + Note::living, before);
}

} // namespace
