#include "platform/archive/address_table.h"

#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using detail::AddressTable;

/// Addresses with numbers, as an archive has them: several numbers may have belonged to one address.
class Numbered {
    auto isAt(const void* address) const {
        return [this, address](std::uint32_t number) { return addresses_[number] == address; };
    }

public:
    void set(const void* address) {
        addresses_.push_back(address);
        table_.set(address, static_cast<std::uint32_t>(addresses_.size() - 1), isAt(address));
    }
    std::uint32_t find(const void* address) const { return table_.find(address, isAt(address)); }

    /// How many numbers the search for an address looks at.
    int looksFor(const void* address) const {
        int looks = 0;
        table_.find(address, [&](std::uint32_t number) {
            ++looks;
            return addresses_[number] == address;
        });
        return looks;
    }

private:
    std::vector<const void*> addresses_;
    AddressTable table_;
};

/// An address that is only looked at, never through.
const void* addressOf(std::uint64_t number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): as above.
    return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(number));
}

TEST(AddressTable, FindsNothingAtFirst) {
    const Numbered numbered;
    EXPECT_EQ(numbered.find(&numbered), AddressTable::none);
    EXPECT_EQ(numbered.find(nullptr), AddressTable::none);
}

TEST(AddressTable, FindsEachOfManyAtAnyDistance) {
    for (const std::uint64_t distance : {16U, 288U, 4096U, 1U << 20}) {
        Numbered numbered;
        constexpr std::uint32_t count = 10000;
        for (std::uint32_t i = 0; i < count; ++i) {
            numbered.set(addressOf((i + 1) * distance));
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(numbered.find(addressOf((i + 1) * distance)), i);
            ASSERT_LE(numbered.looksFor(addressOf((i + 1) * distance)), 4);
        }
        EXPECT_EQ(numbered.find(addressOf(distance / 2)), AddressTable::none);
    }
}

TEST(AddressTable, ALaterNumberTakesThePlaceOfTheEarlier) {
    Numbered numbered;
    constexpr std::uint32_t count = 1000;
    for (std::uint32_t i = 0; i < count; ++i) {
        numbered.set(&numbered);
        ASSERT_EQ(numbered.find(&numbered), i);
        ASSERT_EQ(numbered.looksFor(&numbered), 1);
    }
}

TEST(AddressTable, AddressesWithTheSameHashAreToldApart) {
    // A number times the inverse of the hash's factor has itself as its product; only the upper half counts.
    constexpr std::uint64_t inverse = 0xf1de83e19937733dU;
    static_assert(0x9e3779b97f4a7c15U * inverse == 1);
    Numbered numbered;
    for (std::uint32_t i = 0; i < 8; ++i) {
        numbered.set(addressOf(inverse * i));
    }
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(numbered.find(addressOf(inverse * i)), i);
    }
    EXPECT_EQ(numbered.find(addressOf(inverse * 8)), AddressTable::none);
}

TEST(AddressTable, StaysAsItIsWhenMemoryRunsOut) {
    AddressTable table;
    const auto never = [](std::uint32_t) { return false; };
    const auto always = [](std::uint32_t) { return true; };
    long failures = 0;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        failures += test::failEachAllocation(
            [&] { table.set(addressOf(i), i, never); },
            [&] { EXPECT_EQ(table.find(addressOf(i), always), AddressTable::none); });
    }
    EXPECT_EQ(failures, 6) << "64, 128, ... 2048 slots";
    for (std::uint32_t i = 0; i < 1000; ++i) {
        EXPECT_EQ(table.find(addressOf(i), always), i);
    }
}

} // namespace
