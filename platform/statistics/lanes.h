#ifndef PLATFORM_STATISTICS_LANES_H
#define PLATFORM_STATISTICS_LANES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Published results have the same bits on every processor. So vector code here works on independent numbers
// side by side, or adds up in eight lanes whatever the width of the registers is; and it is made for
// instruction sets without fused multiply-add.
#if defined(__x86_64__)
#define VXCLASSIFIER_HAS_AVX2 1
#define VXCLASSIFIER_AVX2 __attribute__((target("avx2")))
#else
#define VXCLASSIFIER_HAS_AVX2 0
#endif
#define VXCLASSIFIER_INLINE inline __attribute__((always_inline))

namespace detail {

/// Data for vector code come in multiples of this many doubles.
constexpr std::size_t numLanes = 8;

constexpr std::size_t paddedToLanes(std::size_t size) noexcept {
    return (size + numLanes - 1) / numLanes * numLanes;
}

/// Sets what may not get a value of its own behind `padded` lanes' data to 0, before they get theirs: always
/// as many numbers, which needs no call. There are some.
inline void fillLastLanes(double* values, std::size_t padded) noexcept {
    std::fill_n(values + padded - numLanes, numLanes, 0.0);
}

/// Numbers side by side in one register. Like what is made of it, it is for inlining only: wide registers
/// have no calling convention on processors without them.
template <class Vector>
struct Register {
    using Numbers = Vector;
    static constexpr std::size_t size = sizeof(Vector) / sizeof(double);

    VXCLASSIFIER_INLINE void load(const double* from) noexcept {
        std::memcpy(&numbers, from, sizeof numbers);
    }
    VXCLASSIFIER_INLINE void store(double* to) const noexcept { std::memcpy(to, &numbers, sizeof numbers); }
    VXCLASSIFIER_INLINE void add(const Register& other) noexcept { numbers += other.numbers; }
    VXCLASSIFIER_INLINE void subtract(const Register& other) noexcept { numbers -= other.numbers; }
    VXCLASSIFIER_INLINE void subtractFrom(double number) noexcept { numbers = number - numbers; }
    VXCLASSIFIER_INLINE void multiply(const Register& other) noexcept { numbers *= other.numbers; }
    VXCLASSIFIER_INLINE void addProduct(const Register& factor, double other) noexcept {
        numbers += factor.numbers * other;
    }
    VXCLASSIFIER_INLINE void addProduct(const Register& factor, const Register& other) noexcept {
        numbers += factor.numbers * other.numbers;
    }

    Vector numbers{};
};

template <class Part>
struct Twice {
    using Half = Part;
    using Numbers = typename Half::Numbers;
    static constexpr std::size_t size = 2 * Half::size;

    VXCLASSIFIER_INLINE void load(const double* from) noexcept {
        low.load(from);
        high.load(from + Half::size);
    }
    VXCLASSIFIER_INLINE void store(double* to) const noexcept {
        low.store(to);
        high.store(to + Half::size);
    }
    VXCLASSIFIER_INLINE void add(const Twice& other) noexcept {
        low.add(other.low);
        high.add(other.high);
    }
    VXCLASSIFIER_INLINE void subtract(const Twice& other) noexcept {
        low.subtract(other.low);
        high.subtract(other.high);
    }
    VXCLASSIFIER_INLINE void subtractFrom(double number) noexcept {
        low.subtractFrom(number);
        high.subtractFrom(number);
    }
    VXCLASSIFIER_INLINE void multiply(const Twice& other) noexcept {
        low.multiply(other.low);
        high.multiply(other.high);
    }
    VXCLASSIFIER_INLINE void addProduct(const Twice& factor, double other) noexcept {
        low.addProduct(factor.low, other);
        high.addProduct(factor.high, other);
    }
    VXCLASSIFIER_INLINE void addProduct(const Twice& factor, const Twice& other) noexcept {
        low.addProduct(factor.low, other.low);
        high.addProduct(factor.high, other.high);
    }

    Half low;
    Half high;
};

using PairOfDoubles = double __attribute__((vector_size(16)));
using QuadOfDoubles = double __attribute__((vector_size(32)));

template <class Vector>
struct BitsOf;
template <>
struct BitsOf<PairOfDoubles> {
    using Type = std::uint64_t __attribute__((vector_size(16)));
};
template <>
struct BitsOf<QuadOfDoubles> {
    using Type = std::uint64_t __attribute__((vector_size(32)));
};

/// Looks at many numbers for one that is larger in size than a limit: without their signs, doubles are
/// ordered as their bits are, and NaN is larger than any number. For inlining only, too.
template <class Vector>
class SizeCheck {
public:
    VXCLASSIFIER_INLINE explicit SizeCheck(double limit) noexcept {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &limit, sizeof bits);
        limit_ += bits;
    }

    VXCLASSIFIER_INLINE void look(const Register<Vector>& numbers) noexcept {
        constexpr std::uint64_t magnitude = 0x7fffffffffffffff;
        Bits bits;
        std::memcpy(&bits, &numbers.numbers, sizeof bits);
        borrows_ |= limit_ - (bits & magnitude);
    }
    template <class Half>
    VXCLASSIFIER_INLINE void look(const Twice<Half>& numbers) noexcept {
        look(numbers.low);
        look(numbers.high);
    }

    VXCLASSIFIER_INLINE bool areAllWithin() const noexcept {
        std::uint64_t borrows = 0;
        for (std::size_t i = 0; i < sizeof(Bits) / sizeof borrows; ++i) {
            borrows |= borrows_[i];
        }
        return borrows >> 63 == 0;
    }

private:
    using Bits = typename BitsOf<Vector>::Type;

    Bits limit_{};
    Bits borrows_{};
};

// The eight lanes in the registers of every processor, and in those of processors with AVX2.
using NarrowLanes = Twice<Twice<Register<PairOfDoubles>>>;
using WideLanes = Twice<Register<QuadOfDoubles>>;
static_assert(NarrowLanes::size == numLanes && WideLanes::size == numLanes, "the same order of additions");

/// Whether code marked with VXCLASSIFIER_AVX2 can run here.
VXCLASSIFIER_INLINE bool hasAvx2() noexcept {
#if VXCLASSIFIER_HAS_AVX2
    return static_cast<bool>(__builtin_cpu_supports("avx2"));
#else
    return false;
#endif
}

} // namespace detail

#endif
