#include <vxclassifier/classifier_defs.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/hand_written.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

using test::Bytes;
using test::HandWritten;

template <class Error>
struct Published;

#define PUBLISHED(Name, Number)                                                                              \
    template <>                                                                                              \
    struct Published<vxClassifierDefs::Name> {                                                               \
        static constexpr const char* name = "vxClassifierDefs::" #Name;                                      \
        static constexpr long number = Number;                                                               \
    }
PUBLISHED(BadParams, 0x10004200);
PUBLISHED(NotTrained, 0x10004201);
PUBLISHED(BadIndex, 0x10004202);
PUBLISHED(BadLabel, 0x10004203);
PUBLISHED(BadMethod, 0x10004204);
PUBLISHED(NotImplemented, 0x10004205);
PUBLISHED(BadFeatures, 0x10004206);
PUBLISHED(InsufficientTrainData, 0x10004207);
#undef PUBLISHED

using Family =
    testing::Types<vxClassifierDefs::BadParams, vxClassifierDefs::NotTrained, vxClassifierDefs::BadIndex,
                   vxClassifierDefs::BadLabel, vxClassifierDefs::BadMethod, vxClassifierDefs::NotImplemented,
                   vxClassifierDefs::BadFeatures, vxClassifierDefs::InsufficientTrainData>;

/// What the levels below the family write: the text with what belongs to it.
struct PlainText : vxExceptionWithString {
    using vxExceptionWithString::vxExceptionWithString;
    long errorNumber() const override { return 0; }
    void suicideAndRethrow() override {}
};

/// An error of the family whose end can be observed and whose insides can be reached.
template <class Error>
struct Derived : Error {
    explicit Derived(const std::wstring& text, bool* destroyed = nullptr)
        : Error(text), destroyed_(destroyed) {}
    Derived(const Derived&) = default;
    Derived& operator=(const Derived&) = default;
    ~Derived() override {
        if (destroyed_ != nullptr) {
            *destroyed_ = true;
        }
    }

    void body(vxArchive& archive, unsigned char version) { Error::serialize_(archive, version); }
    void familyBody(vxArchive& archive, unsigned char version) {
        vxClassifierDefs::Errors::serialize_(archive, version);
    }

    static std::size_t dispatchSlot() { return test::slotOf(&Derived::dispatchSerialize); }
    static std::size_t messageSlot() { return test::slotOf(&Derived::message_); }

private:
    bool* destroyed_;
};

/// Exchanges its level twice, as a class with two ways to it would.
template <class Error>
struct Doubled : Error {
    using Error::Error;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        Error::dispatchSerialize(archive);
        Error::dispatchSerialize(archive);
    }
};

constexpr const wchar_t* message = L"K must be >= 1 \u2265";

template <class Error>
class ClassifierErrors : public testing::Test {};
TYPED_TEST_SUITE(ClassifierErrors, Family, );

TYPED_TEST(ClassifierErrors, HaveTheirPublishedNumber) {
    EXPECT_EQ(TypeParam(L"x").errorNumber(), Published<TypeParam>::number);
    const vxException& base = TypeParam(L"x");
    EXPECT_EQ(base.errorNumber(), Published<TypeParam>::number);
}

TYPED_TEST(ClassifierErrors, CarryTheirMessage) {
    EXPECT_EQ(TypeParam(message).message(), message);
    EXPECT_STREQ(TypeParam(L"plain").what(), "plain");
}

TYPED_TEST(ClassifierErrors, ADefaultOneHasAnEmptyMessage) {
    EXPECT_EQ(TypeParam().message(), L"");
    EXPECT_EQ(TypeParam().errorNumber(), Published<TypeParam>::number);
}

TYPED_TEST(ClassifierErrors, MakeGivesADefaultOneOnTheHeap) {
    const std::unique_ptr<vxPersistent> made(TypeParam::make());
    const auto* error = dynamic_cast<const TypeParam*>(made.get());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(typeid(*error), typeid(TypeParam));
    EXPECT_EQ(error->message(), L"");
    EXPECT_EQ(error->errorNumber(), Published<TypeParam>::number);
}

TYPED_TEST(ClassifierErrors, CopyingAndAssigningTakeTheMessageOverAndCannotFail) {
    const TypeParam original(message);
    const TypeParam copy(original);
    EXPECT_EQ(copy.message(), message);
    TypeParam assigned(L"other");
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(assigned.message(), message);
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<TypeParam>);
    EXPECT_TRUE(std::is_nothrow_copy_assignable_v<TypeParam>);
}

TYPED_TEST(ClassifierErrors, AreCaughtAsEachOfTheirBases) {
    EXPECT_THROW(throw TypeParam(L"x"), TypeParam);
    EXPECT_THROW(throw TypeParam(L"x"), vxClassifierDefs::Errors);
    EXPECT_THROW(throw TypeParam(L"x"), vxExceptionWithString);
    EXPECT_THROW(throw TypeParam(L"x"), vxException);
    EXPECT_THROW(throw TypeParam(L"x"), vxPersistent);
    EXPECT_THROW(throw TypeParam(L"x"), std::exception);
}

TYPED_TEST(ClassifierErrors, DeriveDirectlyFromTheFamilysBaseAndAddNothing) {
    EXPECT_TRUE((std::is_base_of_v<vxClassifierDefs::Errors, TypeParam>));
    EXPECT_EQ(sizeof(TypeParam), sizeof(vxExceptionWithString));
}

TYPED_TEST(ClassifierErrors, RethrowingDestroysTheObjectAndThrowsACopyOfItsClass) {
    bool destroyed = false;
    vxException* onHeap = new Derived<TypeParam>(message, &destroyed);
    EXPECT_ERROR(onHeap->suicideAndRethrow(), TypeParam, message);
    EXPECT_TRUE(destroyed);
}

TYPED_TEST(ClassifierErrors, StandWithTheirVirtualFunctionsInThePublishedOrder) {
    EXPECT_EQ(Derived<TypeParam>::dispatchSlot(), 2U);
    EXPECT_EQ(test::slotOf(&TypeParam::reInit), 3U);
    EXPECT_EQ(test::slotOf(&TypeParam::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&TypeParam::errorNumber), 5U);
    EXPECT_EQ(test::slotOf(&TypeParam::suicideAndRethrow), 6U);
    EXPECT_EQ(Derived<TypeParam>::messageSlot(), 7U);
}

TYPED_TEST(ClassifierErrors, AreArchivedAsTwoVersionsAndTheText) {
    const Bytes text = test::payload(test::stored(PlainText(message)));
    HandWritten byHand;
    byHand.byte(0).byte(0);
    for (const unsigned char byte : text) {
        byHand.byte(byte);
    }
    EXPECT_EQ(test::stored(TypeParam(message)), byHand.sealed());
}

TYPED_TEST(ClassifierErrors, ComeBackFromAnArchiveAsTheyWere) {
    for (const std::wstring& text : {std::wstring(message), std::wstring()}) {
        const Bytes sealed = test::stored(TypeParam(text));
        TypeParam into(L"something else");
        test::load(sealed, into);
        EXPECT_EQ(into.message(), text);
        EXPECT_EQ(test::stored(into), sealed);
    }
}

TYPED_TEST(ClassifierErrors, AnotherVersionOfTheClassIsRefusedByItsName) {
    const Bytes sealed = HandWritten().byte(1).byte(0).sealed();
    TypeParam into(L"kept");
    EXPECT_UNKNOWN_VERSION(test::load(sealed, into), Published<TypeParam>::name, 0);
    EXPECT_EQ(into.message(), L"kept");
}

TYPED_TEST(ClassifierErrors, AnotherVersionOfTheFamilyIsRefusedByTheFamilysName) {
    const Bytes sealed = HandWritten().byte(0).byte(1).sealed();
    TypeParam into(L"kept");
    EXPECT_UNKNOWN_VERSION(test::load(sealed, into), "vxClassifierDefs::Errors", 0);
    EXPECT_EQ(into.message(), L"kept");
}

TYPED_TEST(ClassifierErrors, TheBodiesCheckTheirVersionThemselves) {
    test::archiveOf([](vxArchive& archive) {
        Derived<TypeParam> error(L"x");
        EXPECT_UNKNOWN_VERSION(error.body(archive, 1), Published<TypeParam>::name, 0);
        EXPECT_UNKNOWN_VERSION(error.familyBody(archive, 255), "vxClassifierDefs::Errors", 0);
    });
}

TYPED_TEST(ClassifierErrors, TheBodiesWriteNoVersionOfTheirOwn) {
    Derived<TypeParam> error(message);
    const Bytes text = test::stored(PlainText(message));
    EXPECT_EQ(test::archiveOf([&](vxArchive& archive) { error.familyBody(archive, 0); }), text);
    const Bytes body = test::payload(test::archiveOf([&](vxArchive& archive) { error.body(archive, 0); }));
    Bytes familyLevel{0};
    const Bytes textBytes = test::payload(text);
    familyLevel.insert(familyLevel.end(), textBytes.begin(), textBytes.end());
    EXPECT_EQ(body, familyLevel);
}

TYPED_TEST(ClassifierErrors, ALevelIsExchangedOnceInAPass) {
    EXPECT_EQ(test::stored(Doubled<TypeParam>(message)), test::stored(TypeParam(message)));
}

TYPED_TEST(ClassifierErrors, ComeBackThroughAPointerAndCanBeRethrown) {
    TypeParam original(message);
    const Bytes sealed = test::storedPointer(&original);
    vxPersistent* loaded = nullptr;
    {
        vxLoadingArchive archive(sealed);
        vxPersistent::serializePointer(archive, nullptr, loaded);
        archive.finish();
    }
    auto* error = dynamic_cast<vxException*>(loaded);
    ASSERT_NE(error, nullptr);
    EXPECT_ERROR(error->suicideAndRethrow(), TypeParam, message);
}

TYPED_TEST(ClassifierErrors, OneThatIsGoneIsNotReferredToAnyMore) {
    TypeParam original(message);
    const Bytes sealed = HandWritten().pointer(&original).pointer(&original).sealed();
    vxLoadingArchive archive(sealed);
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    auto* error = dynamic_cast<vxException*>(loaded);
    ASSERT_NE(error, nullptr);
    EXPECT_ERROR(error->suicideAndRethrow(), TypeParam, message);
    EXPECT_ERROR_CLASS(vxPersistent::serializePointer(archive, nullptr, loaded), vxArchive::BadReference);
}

TEST(ClassifierErrorsBase, IsAbstractWithAVirtualEnd) {
    EXPECT_TRUE(std::is_abstract_v<vxClassifierDefs::Errors>);
    EXPECT_TRUE(std::has_virtual_destructor_v<vxClassifierDefs::Errors>);
    EXPECT_TRUE((std::is_convertible_v<vxClassifierDefs::Errors*, vxExceptionWithString*>));
}

TEST(ClassifierErrorsBase, CanBeDerivedFromAndArchivesItsOwnLevelOnly) {
    struct Own : vxClassifierDefs::Errors {
        using Errors::Errors;
        long errorNumber() const override { return 5; }
        void suicideAndRethrow() override {}
    };
    EXPECT_THROW(throw Own(L"mine"), vxClassifierDefs::Errors);
    Own copy = Own(L"mine");
    const Own other(L"other");
    copy = other;
    EXPECT_EQ(copy.message(), L"other");
    Bytes expected{0};
    const Bytes text = test::payload(test::stored(PlainText(L"other")));
    expected.insert(expected.end(), text.begin(), text.end());
    EXPECT_EQ(test::payload(test::stored(copy)), expected);
}

TEST(ClassifierErrorsBase, MessagesAreWrittenToWideStreams) {
    struct Open : vxClassifierDefs::BadParams {
        using BadParams::BadParams;
        using BadParams::message_;
    };
    std::wostringstream out;
    Open(L"text").message_(out);
    EXPECT_EQ(out.str(), L"text");
}

} // namespace
