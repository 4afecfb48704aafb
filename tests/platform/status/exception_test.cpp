#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <exception>
#include <ostream>
#include <type_traits>

namespace {

using test::Bytes;
using test::Payload;

/// An application's own error; counts how many of its kind exist.
class Mishap : public vxExceptionWithString {
public:
    Mishap() noexcept { ++living; }
    explicit Mishap(const std::wstring& message) : vxExceptionWithString(message) { ++living; }
    Mishap(const Mishap& other) noexcept : vxExceptionWithString(other) { ++living; }
    Mishap& operator=(const Mishap&) noexcept = default;
    ~Mishap() override { --living; }

    static vxPersistent* make() { return new Mishap; }
    long errorNumber() const override { return 77; }
    void suicideAndRethrow() override {
        Mishap copy(*this);
        delete this;
        throw copy;
    }

    static long living;

private:
    static const vx_Instantiator sExemplar;
};
long Mishap::living = 0;
const vx_Instantiator Mishap::sExemplar(typeid(Mishap), &Mishap::make);

/// Derives from the root of the family directly.
class Bare : public vxException {
public:
    long errorNumber() const override { return 1; }
    void suicideAndRethrow() override {}

protected:
    void message_(std::wostream& out) const override { out << L"bare"; }
};

/// Calls its levels more than once, as a class does that has them as bases on several ways.
struct Repeating : Mishap {
    using Mishap::Mishap;
    void dispatchSerialize(vxArchive& archive) override {
        Mishap::dispatchSerialize(archive);
        vxException::dispatchSerialize(archive);
        Mishap::dispatchSerialize(archive);
    }
};

/// Hands a version that does not exist yet to one of its levels.
template <class Level>
struct OfLaterVersion : Mishap {
    using Mishap::Mishap;
    void dispatchSerialize(vxArchive& archive) override { Level::serialize_(archive, 1); }
};

struct Slots : vxException {
    static std::size_t messageSlot() { return test::slotOf(&Slots::message_); }
    static std::size_t dispatchSlot() { return test::slotOf(&Slots::dispatchSerialize); }
};

template <class Error>
constexpr bool copiesCannotFail =
    std::is_nothrow_copy_constructible_v<Error>&& std::is_nothrow_copy_assignable_v<Error>;
static_assert(copiesCannotFail<vxBadPointer>);
static_assert(copiesCannotFail<vxStatusFailure>);
static_assert(copiesCannotFail<vxInterrupted>);
static_assert(copiesCannotFail<Mishap>);

TEST(Exception, VirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(Slots::dispatchSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vxException::errorNumber), 5U);
    EXPECT_EQ(test::slotOf(&vxException::suicideAndRethrow), 6U);
    EXPECT_EQ(Slots::messageSlot(), 7U);
}

TEST(Exception, GivesItsMessageAsWideTextAndAsUtf8) {
    const Mishap mishap(L"gr\u00f6\u00dfer als 3 \u20ac \U0001f600");
    EXPECT_EQ(mishap.message(), L"gr\u00f6\u00dfer als 3 \u20ac \U0001f600");
    EXPECT_STREQ(mishap.what(), "gr\xc3\xb6\xc3\x9f"
                                "er als 3 \xe2\x82\xac \xf0\x9f\x98\x80");
}

TEST(Exception, HasAnEmptyMessageByDefault) {
    const Mishap mishap;
    EXPECT_EQ(mishap.message(), L"");
    EXPECT_STREQ(mishap.what(), "");
}

TEST(Exception, OneWithoutATextHasStillAMessage) {
    const Bare bare;
    EXPECT_EQ(bare.message(), L"bare");
    EXPECT_STREQ(bare.what(), "");
}

TEST(Exception, CopiesShareTheMessage) {
    const Mishap original(L"why");
    const Mishap copy(original);
    EXPECT_EQ(copy.what(), original.what()) << "the same characters, not equal ones";
    Mishap assigned(L"other");
    assigned = original;
    EXPECT_EQ(assigned.message(), L"why");
    EXPECT_EQ(original.message(), L"why");
}

TEST(Exception, AssigningTakesTheMessageAndTheStatusOver) {
    vxBadPointer pointer(L"null");
    pointer = vxBadPointer(L"gone");
    EXPECT_EQ(pointer.message(), L"gone");

    vxStatusFailure failure(static_cast<long>(0x80001234UL));
    const vxStatusFailure other(static_cast<long>(0x8000abcdUL));
    failure = other;
    EXPECT_EQ(failure.status(), other.status());
    EXPECT_EQ(failure.message(), L"An operation failed with the status 0x8000ABCD.");

    const vxInterrupted interrupted;
    vxInterrupted assigned;
    assigned = interrupted;
    EXPECT_EQ(assigned.what(), interrupted.what()) << "the same characters, not equal ones";
}

TEST(Exception, IsCaughtAsEachOfItsBases) {
    const auto throwMishap = [] { throw Mishap(L"why"); };
    EXPECT_THROW(throwMishap(), Mishap);
    EXPECT_THROW(throwMishap(), vxExceptionWithString);
    EXPECT_THROW(throwMishap(), vxException);
    EXPECT_THROW(throwMishap(), vxPersistent);
    try {
        throwMishap();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "why");
    }
}

TEST(Exception, ErrorsOfTheLibraryReachAnApplicationAcrossItsBorder) {
    try {
        vfThrowExceptionOnFailure(static_cast<long>(0x80001234UL));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::exception& error) {
        EXPECT_NE(dynamic_cast<const vxStatusFailure*>(&error), nullptr);
        EXPECT_NE(dynamic_cast<const vxPersistent*>(&error), nullptr);
    }
}

TEST(Exception, SuicideAndRethrowFreesTheObjectAndKeepsTheClass) {
    ASSERT_EQ(Mishap::living, 0);
    vxException* onTheHeap = new Mishap(L"why");
    EXPECT_ERROR(onTheHeap->suicideAndRethrow(), Mishap, L"why");
    EXPECT_EQ(Mishap::living, 0);
    EXPECT_ERROR((new vxBadPointer(L"null"))->suicideAndRethrow(), vxBadPointer, L"null");
    EXPECT_ERROR((new vxInterrupted)->suicideAndRethrow(), vxInterrupted, L"The operation was interrupted.");
    EXPECT_ERROR((new vxStatusFailure(0))->suicideAndRethrow(), vxStatusFailure,
                 L"An operation failed with the status 0x00000000.");
}

TEST(Exception, EachClassHasItsNumber) {
    EXPECT_EQ(vxBadPointer().errorNumber(), 0x10000001);
    EXPECT_EQ(vxStatusFailure(0).errorNumber(), 0x10000002);
    EXPECT_EQ(vxInterrupted().errorNumber(), 0x10000003);
}

TEST(Exception, ABadPointerHasADefaultMessage) {
    EXPECT_EQ(vxBadPointer().message(), L"A null pointer was used where an object is needed.");
    EXPECT_EQ(vxBadPointer(L"own").message(), L"own");
}

TEST(Exception, IsArchivedAsItsLevelsAndItsMessage) {
    // vxExceptionWithString, vxException, vxPersistent, then the message
    const Payload expected = Payload().byte(0).byte(0).byte(0).u32(2).u32('a').u32(0xe4);
    EXPECT_EQ(test::payload(test::stored(Mishap(L"a\u00e4"))), expected.bytes());
    Mishap loaded(L"before");
    test::load(test::stored(Mishap(L"a\u00e4")), loaded);
    EXPECT_EQ(loaded.message(), L"a\u00e4");
    EXPECT_STREQ(loaded.what(), "a\xc3\xa4");
    test::load(test::stored(Mishap()), loaded);
    EXPECT_EQ(loaded.message(), L"");
}

TEST(Exception, IsArchivedOnceHoweverOftenItsLevelsAreCalled) {
    const Bytes bytes = test::stored(Repeating(L"why"));
    EXPECT_EQ(bytes, test::stored(Mishap(L"why")));
    Repeating loaded(L"before");
    test::load(bytes, loaded);
    EXPECT_EQ(loaded.message(), L"why");
}

TEST(Exception, ALevelKnowsNoVersionButItsOwn) {
    const std::wstring message = L"The archive has a version that this release does not know.";
    EXPECT_ERROR(test::stored(OfLaterVersion<vxException>(L"why")), vxArchive::UnknownVersion, message);
    EXPECT_ERROR(test::stored(OfLaterVersion<vxExceptionWithString>(L"why")), vxArchive::UnknownVersion,
                 message);
}

TEST(Exception, AnotherVersionOfAnyLevelIsRefused) {
    for (int level = 0; level < 3; ++level) {
        Payload content;
        for (int i = 0; i < 3; ++i) {
            content.byte(i == level ? 1 : 0);
        }
        Mishap mishap(L"before");
        EXPECT_ERROR(test::load(content.u32(0).sealed(), mishap), vxArchive::UnknownVersion,
                     L"The archive has a version that this release does not know.");
        EXPECT_EQ(mishap.message(), L"before");
    }
}

TEST(Exception, OneThatCameOutOfAnArchiveFreesItselfAndIsNotFoundAgain) {
    Bytes bytes;
    {
        Mishap mishap(L"why");
        bytes = test::archiveOf([&](vxArchive& archive) {
            vxPersistent* unused = nullptr;
            vxPersistent::serializePointer(archive, &mishap, unused);
            vxPersistent::serializePointer(archive, &mishap, unused);
        });
    }
    vxLoadingArchive archive(bytes);
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    EXPECT_ERROR(dynamic_cast<vxException&>(*loaded).suicideAndRethrow(), Mishap, L"why");
    EXPECT_EQ(Mishap::living, 0);
    EXPECT_ERROR(vxPersistent::serializePointer(archive, nullptr, loaded), vxArchive::BadReference,
                 L"The archive refers to an object that is gone already.");
}

} // namespace
