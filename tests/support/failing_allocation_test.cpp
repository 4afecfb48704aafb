#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#ifndef __cpp_sized_deallocation // the functions are there all the same, for what other compilers have made
void operator delete(void* memory, std::size_t size) noexcept;
void operator delete[](void* memory, std::size_t size) noexcept;
void operator delete(void* memory, std::size_t size, std::align_val_t alignment) noexcept;
void operator delete[](void* memory, std::size_t size, std::align_val_t alignment) noexcept;
#endif

namespace {

constexpr std::align_val_t aligned{64};

/// One form of operator new, with the operator delete that belongs to it.
struct Form {
    const char* name;
    bool throws;
    std::size_t alignment;
    void* (*allocate)(std::size_t size);
    void (*release)(void* memory, std::size_t size);
};

void releasePlain(void* memory, std::size_t) {
    ::operator delete(memory);
}

const Form forms[] = {
    {"new", true, 1, [](std::size_t size) { return ::operator new(size); }, &releasePlain},
    {"new, with the size given back", true, 1, [](std::size_t size) { return ::operator new(size); },
     [](void* memory, std::size_t size) { ::operator delete(memory, size); }},
    {"new[]", true, 1, [](std::size_t size) { return ::operator new[](size); },
     [](void* memory, std::size_t) { ::operator delete[](memory); }},
    {"new[], with the size given back", true, 1, [](std::size_t size) { return ::operator new[](size); },
     [](void* memory, std::size_t size) { ::operator delete[](memory, size); }},
    {"new without exceptions", false, 1, [](std::size_t size) { return ::operator new(size, std::nothrow); },
     [](void* memory, std::size_t) { ::operator delete(memory, std::nothrow); }},
    {"new without exceptions, given back as usual", false, 1,
     [](std::size_t size) { return ::operator new(size, std::nothrow); }, &releasePlain},
    {"new[] without exceptions", false, 1,
     [](std::size_t size) { return ::operator new[](size, std::nothrow); },
     [](void* memory, std::size_t) { ::operator delete[](memory, std::nothrow); }},
    {"aligned new", true, 64, [](std::size_t size) { return ::operator new(size, aligned); },
     [](void* memory, std::size_t) { ::operator delete(memory, aligned); }},
    {"aligned new, with the size given back", true, 64,
     [](std::size_t size) { return ::operator new(size, aligned); },
     [](void* memory, std::size_t size) { ::operator delete(memory, size, aligned); }},
    {"aligned new[]", true, 64, [](std::size_t size) { return ::operator new[](size, aligned); },
     [](void* memory, std::size_t) { ::operator delete[](memory, aligned); }},
    {"aligned new[], with the size given back", true, 64,
     [](std::size_t size) { return ::operator new[](size, aligned); },
     [](void* memory, std::size_t size) { ::operator delete[](memory, size, aligned); }},
    {"aligned new without exceptions", false, 64,
     [](std::size_t size) { return ::operator new(size, aligned, std::nothrow); },
     [](void* memory, std::size_t) { ::operator delete(memory, aligned, std::nothrow); }},
    {"aligned new[] without exceptions", false, 64,
     [](std::size_t size) { return ::operator new[](size, aligned, std::nothrow); },
     [](void* memory, std::size_t) { ::operator delete[](memory, aligned, std::nothrow); }},
};

bool isRefused(const Form& form, std::size_t size) {
    void* memory = nullptr;
    try {
        memory = form.allocate(size);
        EXPECT_FALSE(form.throws && memory == nullptr);
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(form.throws);
    }
    const bool refused = memory == nullptr;
    form.release(memory, size);
    return refused;
}

TEST(FailingAllocation, CountsWhatEachFormOfNewAllocates) {
    for (const Form& form : forms) {
        SCOPED_TRACE(form.name);
        for (const std::size_t size : {0U, 1U, 64U, 1000U}) {
            const long before = test::liveAllocations();
            void* const memory = form.allocate(size);
            const long during = test::liveAllocations();
            ASSERT_NE(memory, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % form.alignment, 0U);
            std::memset(memory, 1, size);
            form.release(memory, size);
            EXPECT_EQ(during - before, 1);
            EXPECT_EQ(test::liveAllocations(), before);
        }
    }
}

TEST(FailingAllocation, FailsTheAllocationOfEachForm) {
    for (const Form& form : forms) {
        SCOPED_TRACE(form.name);
        const long before = test::liveAllocations();
        std::vector<bool> refused(4);
        bool happened = false;
        {
            const test::FailingAllocation failing(2);
            for (std::size_t i = 0; i < refused.size(); ++i) {
                refused[i] = isRefused(form, 10);
            }
            happened = test::FailingAllocation::happened();
        }
        EXPECT_TRUE(happened);
        EXPECT_EQ(refused, (std::vector<bool>{false, true, false, false}));
        refused = std::vector<bool>();
        EXPECT_EQ(test::liveAllocations(), before);
    }
}

TEST(FailingAllocation, RefusesASizeThatRunsOverWhenItIsRoundedToTheAlignment) {
    // Not a constant that a compiler could warn about.
    volatile std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const Form& form : forms) {
        if (form.alignment > 1) {
            SCOPED_TRACE(form.name);
            const long before = test::liveAllocations();
            EXPECT_TRUE(isRefused(form, most));
            EXPECT_EQ(test::liveAllocations(), before);
        }
    }
}

} // namespace
