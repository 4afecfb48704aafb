#include "tests/support/expect_error.h"

#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr long module = 1234; // nobody else's
constexpr long ownFailure = vxStatus::failure(module, 5);

class FirstAnswer : public vxBadPointer {
public:
    FirstAnswer() : vxBadPointer(L"first") {}
};
class SecondAnswer : public vxBadPointer {
public:
    SecondAnswer() : vxBadPointer(L"second") {}
};

long askedFor = 0;

void answerFirst(long status) {
    askedFor = status;
    throw FirstAnswer();
}
void answerSecond(long) {
    throw SecondAnswer();
}
void doNotKnow(long status) {
    askedFor = status;
}

/// Leaves no converter behind.
class Converters : public ::testing::Test {
protected:
    ~Converters() override { vfRegisterExceptionConverter(module, nullptr); }
};

long asLong(unsigned long value) {
    return static_cast<long>(value);
}

TEST(Status, Bit31MeansFailureWhateverTheWidthOfLong) {
    for (const unsigned long failure : {0x80000000UL, 0x80000001UL, 0x80000b61UL, 0xffffffffUL}) {
        EXPECT_TRUE(vxStatus::isFailure(asLong(failure)));
        EXPECT_THROW(vfThrowExceptionOnFailure(asLong(failure)), vxException);
    }
    EXPECT_TRUE(vxStatus::isFailure(-1));
    EXPECT_TRUE(vxStatus::isFailure(std::numeric_limits<std::int32_t>::min()));
    for (const unsigned long success : {0UL, 1UL, 0x7fffffffUL}) {
        EXPECT_FALSE(vxStatus::isFailure(asLong(success)));
        EXPECT_NO_THROW(vfThrowExceptionOnFailure(asLong(success)));
    }
    if (std::numeric_limits<unsigned long>::digits > 32) {
        const unsigned long bit32 = 0x80000000UL << 1;
        EXPECT_FALSE(vxStatus::isFailure(asLong(bit32)));
        EXPECT_TRUE(vxStatus::isFailure(asLong(bit32 | 0x80000000UL)));
    }
}

TEST(Status, TheModuleIsTheLow31BitsDividedBy32) {
    EXPECT_EQ(vxStatus::module(asLong(0x80000b61UL)), 91);
    EXPECT_EQ(vxStatus::module(asLong(0x80000b7fUL)), 91);
    EXPECT_EQ(vxStatus::module(asLong(0x80000b80UL)), 92);
    EXPECT_EQ(vxStatus::module(asLong(0x80000b5fUL)), 90);
    EXPECT_EQ(vxStatus::module(-1), 0x3ffffff);
    EXPECT_EQ(vxStatus::module(asLong(0x80000000UL)), 0);
    EXPECT_EQ(vxStatus::failure(91, 1), asLong(0x80000b61UL));
    EXPECT_EQ(vxStatus::failure(0, 0), asLong(0x80000000UL));
    EXPECT_EQ(vxStatus::module(vxStatus::failure(module, 31)), module);
}

TEST(Status, AFailureThatNobodyKnowsIsGivenInHexadecimal) {
    EXPECT_ERROR(vfThrowExceptionOnFailure(ownFailure), vxStatusFailure,
                 L"An operation failed with the status 0x80009A45.");
    EXPECT_ERROR(vfThrowExceptionOnFailure(-1), vxStatusFailure,
                 L"An operation failed with the status 0xFFFFFFFF.");
    EXPECT_ERROR(vfThrowExceptionOnFailure(asLong(0x80000000UL)), vxStatusFailure,
                 L"An operation failed with the status 0x80000000.");
}

TEST(Status, TheExceptionKeepsTheLow32Bits) {
    try {
        vfThrowExceptionOnFailure(-2);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vxStatusFailure& failure) {
        EXPECT_EQ(failure.status(), asLong(0xfffffffeUL));
    }
    EXPECT_EQ(vxStatusFailure(ownFailure).status(), ownFailure);
}

TEST_F(Converters, TheConverterOfTheModuleIsAskedForTheLow32Bits) {
    vfRegisterExceptionConverter(module, &answerFirst);
    EXPECT_ERROR(vfThrowExceptionOnFailure(ownFailure), FirstAnswer, L"first");
    EXPECT_EQ(askedFor, ownFailure);
    if (std::numeric_limits<unsigned long>::digits > 32) {
        const unsigned long signExtended = ~0xffffffffUL | static_cast<unsigned long>(ownFailure);
        askedFor = 0;
        EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(asLong(signExtended)), FirstAnswer);
        EXPECT_EQ(askedFor, ownFailure);
    }
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(vxStatus::failure(module + 1, 5)), vxStatusFailure);
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(vxStatus::failure(module - 1, 31)), vxStatusFailure);
}

TEST_F(Converters, ASuccessDoesNotAskAnyone) {
    vfRegisterExceptionConverter(module, &answerFirst);
    EXPECT_NO_THROW(vfThrowExceptionOnFailure(module * 32 + 5));
}

TEST_F(Converters, OneThatDoesNotKnowTheStatusLeavesItToTheGeneralFailure) {
    vfRegisterExceptionConverter(module, &doNotKnow);
    askedFor = 0;
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(ownFailure), vxStatusFailure);
    EXPECT_EQ(askedFor, ownFailure);
}

TEST_F(Converters, ALaterRegistrationReplacesAnEarlierOneAndNullRemovesIt) {
    vfRegisterExceptionConverter(module, &answerFirst);
    vfRegisterExceptionConverter(module, &answerSecond);
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(ownFailure), SecondAnswer);
    vfRegisterExceptionConverter(module, nullptr);
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(ownFailure), vxStatusFailure);
    vfRegisterExceptionConverter(module, nullptr);
}

} // namespace
