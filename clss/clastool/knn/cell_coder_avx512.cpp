#include "clss/clastool/knn/cell_coder.h"

#if defined(__x86_64__)

#include <immintrin.h>

// Only these functions may use the instructions: the rest of the library runs on any processor of its kind.
#define VX_AVX512 __attribute__((target("avx512f")))

namespace detail {

namespace {

constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t numCells = CompactPatterns::numCells;
constexpr std::size_t lanes = 8;

/// 16 doubles from which each lane can pick one by its number.
struct Table {
    VX_AVX512 Table(__m512d first, __m512d second) : low(first), high(second) {}
    VX_AVX512 explicit Table(const double* doubles)
        : Table(_mm512_loadu_pd(doubles), _mm512_loadu_pd(doubles + lanes)) {}

    VX_AVX512 __m512d pick(__m512i numbers) const { return _mm512_permutex2var_pd(low, numbers, high); }

    __m512d low;
    __m512d high;
};

/// The ends of a measurement's cells in the order in which a value meets them.
struct Ends {
    VX_AVX512 explicit Ends(const double* ends)
        : high3(_mm512_set1_pd(ends[numCells + 3])), high7(_mm512_set1_pd(ends[numCells + 7])),
          high11(_mm512_set1_pd(ends[numCells + 11])),
          nextHighs(_mm512_loadu_pd(ends + numCells + 1),
                    _mm512_maskz_loadu_pd(0x7f, ends + numCells + 1 + lanes)), // there are 15
          highs(ends + numCells), lows(ends) {}

    __m512d high3, high7, high11;
    Table nextHighs; // at the number of a cell the greatest value of the next one
    Table highs;
    Table lows;
};

/// What is found along with the cells.
struct Extremes {
    __m512d greatest;
    __mmask8 areBelow; // lanes in which a value was below its cell
};

VX_AVX512 inline __mmask8 isLess(__m512d a, __m512d b) {
    return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ);
}

VX_AVX512 inline __m512i addWhere(__mmask8 lanesToChange, __m512i cells, long long number) {
    return _mm512_mask_add_epi64(cells, lanesToChange, cells, _mm512_set1_epi64(number));
}

/// The cells of eight values, halving as cellOf() does.
VX_AVX512 inline __m512i eightCells(const double* values, const Ends& ends, Extremes& extremes) {
    const __m512d eight = _mm512_loadu_pd(values);
    extremes.greatest = _mm512_mask_max_pd(eight, 0xff, extremes.greatest, eight);
    const __mmask8 areUpper = isLess(ends.high7, eight);
    __m512i cells = _mm512_maskz_set1_epi64(areUpper, 8);
    cells = addWhere(isLess(_mm512_mask_blend_pd(areUpper, ends.high3, ends.high11), eight), cells, 4);
    cells = addWhere(isLess(ends.nextHighs.pick(cells), eight), cells, 2);
    cells = addWhere(isLess(ends.highs.pick(cells), eight), cells, 1);
    extremes.areBelow = static_cast<__mmask8>(extremes.areBelow | isLess(eight, ends.lows.pick(cells)));
    return cells;
}

VX_AVX512 bool findCells(const double* values, const double* ends, std::uint8_t* cells, double& greatest) {
    const Ends loaded(ends);
    Extremes extremes{_mm512_set1_pd(greatest), 0};
    for (std::size_t i = 0; i < blockSize; i += lanes) {
        // Of all eight lanes: the form without a mask is one that gcc 12 warns of.
        const __m128i bytes = _mm512_maskz_cvtepi64_epi8(0xff, eightCells(values + i, loaded, extremes));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cells + i), bytes);
    }
    double most[lanes];
    _mm512_storeu_pd(most, extremes.greatest);
    for (const double value : most) {
        greatest = greatest < value ? value : greatest;
    }
    return extremes.areBelow == 0;
}

} // namespace

const CellCoder* avx512CellCoder() noexcept {
    const CellCoder* const narrower = avx2CellCoder();
    if (narrower == nullptr || !static_cast<bool>(__builtin_cpu_supports("avx512f"))) {
        return nullptr;
    }
    static const CellCoder avx512{narrower->gather, &findCells};
    return &avx512;
}

} // namespace detail

#else

namespace detail {

const CellCoder* avx512CellCoder() noexcept {
    return nullptr;
}

} // namespace detail

#endif
