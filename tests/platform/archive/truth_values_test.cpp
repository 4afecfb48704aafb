#include "platform/archive/truth_values.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const std::vector<bool>& values) {
    Bytes bytes(values.size() + 1, 7);
    detail::putTruthValues(bytes.data(), values);
    EXPECT_EQ(bytes.back(), 7) << "nothing is written behind the last one";
    bytes.pop_back();
    return bytes;
}

TEST(TruthValues, EveryOneIsAByteAtEveryLength) {
    std::mt19937 random(3);
    for (std::size_t size = 0; size < 200; ++size) {
        std::vector<bool> values(size);
        Bytes expected(size);
        for (std::size_t i = 0; i < size; ++i) {
            values[i] = random() % 4 != 0;
            expected[i] = values[i] ? 1 : 0;
        }
        ASSERT_EQ(bytesOf(values), expected);
        std::vector<bool> back(3, false);
        detail::getTruthValues(back, expected.data(), size);
        ASSERT_EQ(back, values);
    }
}

TEST(TruthValues, EachCombinationOfEightIsKept) {
    for (unsigned bits = 0; bits < 256; ++bits) {
        std::vector<bool> values(64 + 8, true);
        for (unsigned i = 0; i < 8; ++i) {
            values[56 + i] = (bits >> i) % 2 == 1;
            values[64 + i] = (bits >> i) % 2 == 0;
        }
        const Bytes bytes = bytesOf(values);
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_EQ(bytes[i], values[i] ? 1 : 0);
        }
        std::vector<bool> back;
        detail::getTruthValues(back, bytes.data(), bytes.size());
        ASSERT_EQ(back, values);
    }
}

TEST(TruthValues, TheFirstByteThatIsNoneIsFound) {
    for (std::size_t at = 0; at < 40; ++at) {
        for (const int byte : {2, 3, 128, 255}) {
            Bytes bytes(40, 1);
            bytes[at] = static_cast<unsigned char>(byte);
            EXPECT_EQ(detail::countTruthValues(bytes.data(), bytes.size()), at);
            EXPECT_EQ(detail::countTruthValues(bytes.data(), at), at);
        }
    }
}

TEST(TruthValues, TheFirstOneThatIsNotTrueIsFound) {
    for (const unsigned char other : Bytes{0x00, 0x02, 0x03, 0x81, 0xff}) {
        for (std::size_t at = 0; at < 40; ++at) {
            Bytes bytes(40, 1);
            bytes[at] = other;
            EXPECT_EQ(detail::countTrue(bytes.data(), bytes.size()), at);
            EXPECT_EQ(detail::countTrue(bytes.data(), at), at);
        }
    }
}

TEST(TruthValues, WhatLiesBehindThoseThatAreAskedForDoesNotCount) {
    const Bytes bytes(80, 1);
    for (std::size_t asked = 0; asked < 40; ++asked) {
        EXPECT_EQ(detail::countTruthValues(bytes.data(), asked), asked);
        EXPECT_EQ(detail::countTrue(bytes.data(), asked), asked);
    }
}

} // namespace
