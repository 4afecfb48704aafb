#include "tests/support/expect_error.h"

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(AttentionThreads, AFlagSetOnAnotherThreadEndsTheWork) {
    vxCancelFlag flag;
    std::atomic<bool> isWorking{false};
    std::thread worker([&] {
        const vxAttentionScope scope(flag);
        EXPECT_ERROR(
            for (;;) {
                vfThrowExceptionOnFailure(vsys_attention_check());
                isWorking = true;
            },
            vxInterrupted, L"The operation was interrupted.");
    });
    while (!isWorking) {
        std::this_thread::yield();
    }
    flag.set();
    worker.join();
}

TEST(AttentionThreads, AScopeConcernsItsOwnThreadOnly) {
    vxCancelFlag flag;
    flag.set();
    const vxAttentionScope scope(flag);
    EXPECT_EQ(vsys_attention_check(), vsys_attention_cancelled);
    std::thread other([] { EXPECT_EQ(vsys_attention_check(), vxStatus::success); });
    other.join();
}

} // namespace
