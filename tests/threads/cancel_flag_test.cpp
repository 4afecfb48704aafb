#include "tests/threads/together.h"

#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(CancelFlag, IsSeenByTheThreadThatWatchesIt) {
    vxCancelFlag flag;
    int written = 0; // visible to the watcher through the flag
    test::together(2, [&flag, &written](std::size_t thread) {
        if (thread == 0) {
            written = 5;
            flag.set();
            return;
        }
        const vxAttentionScope scope(flag);
        while (vsys_attention_check() != vsys_attention_cancelled) {
            std::this_thread::yield();
        }
        EXPECT_EQ(written, 5);
    });
}

TEST(CancelFlag, ConcernsTheThreadsThatInstalledItAndNoOther) {
    vxCancelFlag flag;
    flag.set();
    std::atomic<int> cancelled{0};
    test::together(4, [&flag, &cancelled](std::size_t thread) {
        if (thread == 0) {
            const vxAttentionScope scope(flag);
            cancelled += vsys_attention_check() == vsys_attention_cancelled ? 1 : 0;
            return;
        }
        cancelled += vsys_attention_check() == vsys_attention_cancelled ? 10 : 0;
    });
    EXPECT_EQ(cancelled, 1);
}

} // namespace
