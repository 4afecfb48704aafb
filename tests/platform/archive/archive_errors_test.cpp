#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

template <class Error>
void expectLaws(long number) {
    static_assert(std::is_base_of_v<vxArchive::Errors, Error>);
    static_assert(std::is_nothrow_copy_constructible_v<Error>);
    static_assert(std::is_nothrow_copy_assignable_v<Error>);
    const Error error(L"why");
    EXPECT_EQ(error.errorNumber(), number);
    EXPECT_EQ(error.message(), L"why");
    EXPECT_STREQ(error.what(), "why");
    Error assigned(L"");
    assigned = error;
    EXPECT_EQ(assigned.message(), L"why");
    EXPECT_ERROR((new Error(error))->suicideAndRethrow(), Error, L"why");
}

TEST(ArchiveErrors, EachHasItsNumberAndKeepsItsMessage) {
    expectLaws<vxArchive::ShortData>(0x10000102);
    expectLaws<vxArchive::CorruptFrame>(0x10000103);
    expectLaws<vxArchive::CorruptData>(0x10000104);
    expectLaws<vxArchive::UnknownClass>(0x10000105);
    expectLaws<vxArchive::BadReference>(0x10000106);
    expectLaws<vxArchive::TooLarge>(0x10000107);
    expectLaws<vxArchive::NotRepresentable>(0x10000108);
    expectLaws<vxArchive::WriteFailed>(0x10000109);
    expectLaws<vxArchive::Misuse>(0x1000010a);
    expectLaws<vxArchive::ReadFailed>(0x1000010b);
}

TEST(ArchiveErrors, AnUnknownVersionSaysWhereItWasMet) {
    static_assert(std::is_nothrow_copy_constructible_v<vxArchive::UnknownVersion>);
    const vxArchive::UnknownVersion error("some/source", 896);
    EXPECT_STREQ(error.sourceName(), "some/source");
    EXPECT_EQ(error.line(), 896);
    EXPECT_EQ(error.errorNumber(), 0x10000101);
    EXPECT_EQ(error.message(),
              L"The archive has a version that this release does not know. (some/source, 896)");
    vxArchive::UnknownVersion assigned(nullptr, 0);
    EXPECT_EQ(assigned.message(), L"The archive has a version that this release does not know.");
    assigned = error;
    EXPECT_STREQ(assigned.sourceName(), "some/source");
    EXPECT_EQ(assigned.line(), 896);
}

TEST(ArchiveErrors, AnUnknownVersionIsRethrownWithItsPlace) {
    auto* error = new vxArchive::UnknownVersion("some/source", 3);
    try {
        error->suicideAndRethrow();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vxArchive::UnknownVersion& rethrown) {
        EXPECT_STREQ(rethrown.sourceName(), "some/source");
        EXPECT_EQ(rethrown.line(), 3);
    }
}

} // namespace
