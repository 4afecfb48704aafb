#ifndef TESTS_DIGEST_DIGEST_H
#define TESTS_DIGEST_DIGEST_H

#include <vxclassifier/classifier_result.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace digest {

/// Stands for all the bits that were added, in their order (64-bit FNV-1a).
class Digest {
public:
    Digest() = default;
    /// Also prints each number, for those who look for a difference.
    explicit Digest(std::FILE* log) noexcept : log_(log) {}

    void add(double value) {
        // Which NaN an operation gives is left to the compiler: the sign and the payload are nobody's result.
        constexpr std::uint64_t anyNaN = 0x7ff8000000000000U;
        std::uint64_t bits = anyNaN;
        if (value == value) {
            std::memcpy(&bits, &value, sizeof bits);
        }
        if (log_ != nullptr) {
            std::fprintf(log_, "%016" PRIx64 " %.17g\n", bits, value);
        }
        addBits(bits);
    }
    void add(long value) { addBits(static_cast<std::uint64_t>(value)); }
    void add(bool value) { addBits(value ? 1U : 0U); }
    void add(const std::vector<unsigned char>& bytes) {
        ++values_;
        for (const unsigned char byte : bytes) {
            addByte(byte);
        }
    }
    void add(const std::vector<double>& values) {
        for (const double value : values) {
            add(value);
        }
    }
    void add(const vxClassifierResult& result) {
        add(result.matchScoreFactorLog());
        for (const vxClassifierCategoryResult& category : result.categoryResults()) {
            add(category.categoryLabel());
            add(category.matchScore());
            add(category.classScore());
            add(category.expectedCost());
        }
    }

    /// Calls `compute()`, which may add; an exception adds its message.
    template <class Compute>
    void addOutcome(Compute compute) {
        try {
            compute();
        } catch (const std::exception& error) {
            const std::string message = error.what();
            add(std::vector<unsigned char>(message.begin(), message.end()));
        }
    }

    std::uint64_t value() const noexcept { return hash_; }
    long values() const noexcept { return values_; } ///< how many were added

private:
    void addBits(std::uint64_t bits) noexcept {
        ++values_;
        for (int shift = 0; shift < 64; shift += 8) {
            addByte(static_cast<unsigned char>(bits >> shift));
        }
    }
    void addByte(unsigned char byte) noexcept { hash_ = (hash_ ^ byte) * 0x100000001b3U; }

    std::uint64_t hash_ = 0xcbf29ce484222325U;
    long values_ = 0;
    std::FILE* log_ = nullptr; // borrowed
};

} // namespace digest

#endif
