#include "tests/support/expect_error.h"

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

namespace {

/// A check that counts its calls and returns what it is told.
struct Check {
    long status = vxStatus::success;
    int calls = 0;

    static long call(void* context) {
        Check& self = *static_cast<Check*>(context);
        ++self.calls;
        return self.status;
    }
};

TEST(Attention, SucceedsWhenNothingIsInstalled) {
    EXPECT_EQ(vsys_attention_check(), vxStatus::success);
}

TEST(Attention, ReturnsWhatTheInstalledCheckSays) {
    Check check;
    {
        const vxAttentionScope scope(&Check::call, &check);
        EXPECT_EQ(vsys_attention_check(), vxStatus::success);
        check.status = 42;
        EXPECT_EQ(vsys_attention_check(), 42);
        EXPECT_EQ(check.calls, 2);
    }
    EXPECT_EQ(vsys_attention_check(), vxStatus::success);
    EXPECT_EQ(check.calls, 2);
}

TEST(Attention, TheInnermostScopeCountsAndPutsTheOuterOneBack) {
    Check outer;
    Check inner;
    outer.status = 1;
    inner.status = 2;
    const vxAttentionScope outerScope(&Check::call, &outer);
    {
        const vxAttentionScope innerScope(&Check::call, &inner);
        EXPECT_EQ(vsys_attention_check(), 2);
    }
    EXPECT_EQ(vsys_attention_check(), 1);
    EXPECT_EQ(outer.calls, 1);
    EXPECT_EQ(inner.calls, 1);
}

TEST(Attention, AScopeEndsWithAnException) {
    Check check;
    try {
        const vxAttentionScope scope(&Check::call, &check);
        throw vxInterrupted();
    } catch (const vxInterrupted&) {
    }
    vsys_attention_check();
    EXPECT_EQ(check.calls, 0);
}

TEST(Attention, ACancelFlagIsASwitch) {
    vxCancelFlag flag;
    EXPECT_FALSE(flag.isSet());
    const vxAttentionScope scope(flag);
    EXPECT_EQ(vsys_attention_check(), vxStatus::success);
    flag.set();
    EXPECT_TRUE(flag.isSet());
    EXPECT_EQ(vsys_attention_check(), vsys_attention_cancelled);
    EXPECT_EQ(vsys_attention_check(), vsys_attention_cancelled) << "it stays set";
    flag.clear();
    EXPECT_EQ(vsys_attention_check(), vxStatus::success);
}

TEST(Attention, ACancelledOperationIsReportedAsInterrupted) {
    EXPECT_TRUE(vxStatus::isFailure(vsys_attention_cancelled));
    EXPECT_EQ(vsys_attention_cancelled, static_cast<long>(0x80000021UL));
    EXPECT_ERROR(vfThrowExceptionOnFailure(vsys_attention_cancelled), vxInterrupted,
                 L"The operation was interrupted.");
    EXPECT_ERROR_CLASS(vfThrowExceptionOnFailure(vsys_attention_cancelled + 1), vxStatusFailure);
}

} // namespace
