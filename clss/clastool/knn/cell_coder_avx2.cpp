#include "clss/clastool/knn/cell_coder.h"

#if defined(__x86_64__)

#include <immintrin.h>

// Only these functions may use the instructions: the rest of the library runs on any processor of its kind.
#define VX_AVX2 __attribute__((target("avx2")))

namespace detail {

namespace {

constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t numCells = CompactPatterns::numCells;

/// Clears what is not all bits set where a value is NaN or too large.
VX_AVX2 inline __m256d andOrdinary(__m256d ordinary, __m256d values) {
    const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), values);
    return _mm256_and_pd(ordinary, _mm256_cmp_pd(size, _mm256_set1_pd(CompactPatterns::largest), _CMP_LE_OQ));
}

/// Turns four values each of four rows; returns whether they are ordinary.
VX_AVX2 inline __m256d turn(const double* const* rows, std::size_t first, double* columns) {
    const __m256d a = _mm256_loadu_pd(rows[0] + first);
    const __m256d b = _mm256_loadu_pd(rows[1] + first);
    const __m256d c = _mm256_loadu_pd(rows[2] + first);
    const __m256d d = _mm256_loadu_pd(rows[3] + first);
    const __m256d evenAB = _mm256_unpacklo_pd(a, b);
    const __m256d oddAB = _mm256_unpackhi_pd(a, b);
    const __m256d evenCD = _mm256_unpacklo_pd(c, d);
    const __m256d oddCD = _mm256_unpackhi_pd(c, d);
    _mm256_storeu_pd(columns, _mm256_permute2f128_pd(evenAB, evenCD, 0x20));
    _mm256_storeu_pd(columns + blockSize, _mm256_permute2f128_pd(oddAB, oddCD, 0x20));
    _mm256_storeu_pd(columns + 2 * blockSize, _mm256_permute2f128_pd(evenAB, evenCD, 0x31));
    _mm256_storeu_pd(columns + 3 * blockSize, _mm256_permute2f128_pd(oddAB, oddCD, 0x31));
    const __m256d all = _mm256_castsi256_pd(_mm256_set1_epi32(-1));
    return andOrdinary(andOrdinary(andOrdinary(andOrdinary(all, a), b), c), d);
}

VX_AVX2 bool gather(const double* const* rows, std::size_t first, std::size_t last, double* columns) {
    const std::size_t inFours = last - (last - first) % 4;
    __m256d ordinary = _mm256_castsi256_pd(_mm256_set1_epi32(-1));
    for (std::size_t i = 0; i < blockSize; i += 4) {
        for (std::size_t j = first; j < inFours; j += 4) {
            ordinary = _mm256_and_pd(ordinary, turn(rows + i, j, columns + (j - first) * blockSize + i));
        }
    }
    return _mm256_movemask_pd(ordinary) == 15 &&
           portableCellCoder().gather(rows, inFours, last, columns + (inFours - first) * blockSize);
}

/// A number for each quarter of the cells: that of its first, second, third or fourth cell.
VX_AVX2 inline __m256d ofQuarters(const double* ends, std::size_t cell) {
    return _mm256_setr_pd(ends[cell], ends[4 + cell], ends[8 + cell], ends[12 + cell]);
}

/// The ends of a measurement's cells in the order in which a value meets them.
struct Ends {
    VX_AVX2 explicit Ends(const double* ends)
        : high3(_mm256_set1_pd(ends[numCells + 3])), high7(_mm256_set1_pd(ends[numCells + 7])),
          high11(_mm256_set1_pd(ends[numCells + 11])), firstHighs(ofQuarters(ends + numCells, 0)),
          secondHighs(ofQuarters(ends + numCells, 1)), thirdHighs(ofQuarters(ends + numCells, 2)),
          firstLows(ofQuarters(ends, 0)), secondLows(ofQuarters(ends, 1)), thirdLows(ofQuarters(ends, 2)),
          fourthLows(ofQuarters(ends, 3)) {}

    __m256d high3, high7, high11;
    __m256d firstHighs, secondHighs, thirdHighs;
    __m256d firstLows, secondLows, thirdLows, fourthLows;
};

/// What is found along with the cells.
struct Extremes {
    __m256d greatest;
    __m256d areBelow; // all bits set where a value is below its cell
};

VX_AVX2 inline __m256d isLess(__m256d a, __m256d b) {
    return _mm256_cmp_pd(a, b, _CMP_LT_OQ);
}

VX_AVX2 inline __m256i add(__m256i numbers, __m256d mask) {
    return _mm256_add_epi32(numbers, _mm256_castpd_si256(mask));
}

/// For each quarter number, given as the two halves of a double among four, that double.
VX_AVX2 inline __m256d pick(__m256d fromFour, __m256i halves) {
    return _mm256_castps_pd(_mm256_permutevar8x32_ps(_mm256_castpd_ps(fromFour), halves));
}

/// Minus the cells of four values, each twice, in 32 bits.
VX_AVX2 inline __m256i fourCells(const double* values, const Ends& ends, Extremes& extremes) {
    const __m256d four = _mm256_loadu_pd(values);
    extremes.greatest = _mm256_max_pd(extremes.greatest, four);
    __m256i quarter = _mm256_castpd_si256(isLess(ends.high3, four));
    quarter = add(add(quarter, isLess(ends.high7, four)), isLess(ends.high11, four));
    const __m256i halves =
        _mm256_sub_epi32(_mm256_setr_epi32(0, 1, 0, 1, 0, 1, 0, 1), _mm256_slli_epi32(quarter, 1));
    const __m256d beyondFirst = isLess(pick(ends.firstHighs, halves), four);
    const __m256d beyondSecond = isLess(pick(ends.secondHighs, halves), four);
    const __m256d beyondThird = isLess(pick(ends.thirdHighs, halves), four);
    __m256d low = _mm256_blendv_pd(pick(ends.firstLows, halves), pick(ends.secondLows, halves), beyondFirst);
    low = _mm256_blendv_pd(low, pick(ends.thirdLows, halves), beyondSecond);
    low = _mm256_blendv_pd(low, pick(ends.fourthLows, halves), beyondThird);
    extremes.areBelow = _mm256_or_pd(extremes.areBelow, isLess(four, low));
    return add(add(add(_mm256_slli_epi32(quarter, 2), beyondFirst), beyondSecond), beyondThird);
}

/// The cells of 16 values, in bytes.
VX_AVX2 inline __m128i sixteenCells(const double* values, const Ends& ends, Extremes& extremes) {
    const __m256i first =
        _mm256_packs_epi32(fourCells(values, ends, extremes), fourCells(values + 4, ends, extremes));
    const __m256i second =
        _mm256_packs_epi32(fourCells(values + 8, ends, extremes), fourCells(values + 12, ends, extremes));
    const __m256i all = _mm256_abs_epi8(_mm256_packs_epi16(first, second));
    // The low half has the cells of values 0, 0, 1, 1, 4, 4, 5, 5 and so on, the high half those of 2, 2,
    // 3, 3.
    const __m256i once = _mm256_shuffle_epi8(
        all, _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 0, 0, 0, 0, 0, 0, 0, 0)));
    return _mm_unpacklo_epi16(_mm256_castsi256_si128(once), _mm256_extracti128_si256(once, 1));
}

VX_AVX2 bool findCells(const double* values, const double* ends, std::uint8_t* cells, double& greatest) {
    const Ends loaded(ends);
    Extremes extremes{_mm256_set1_pd(greatest), _mm256_setzero_pd()};
    for (std::size_t i = 0; i < blockSize; i += 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cells + i), sixteenCells(values + i, loaded, extremes));
    }
    const __m128d two =
        _mm_max_pd(_mm256_castpd256_pd128(extremes.greatest), _mm256_extractf128_pd(extremes.greatest, 1));
    greatest = _mm_cvtsd_f64(_mm_max_sd(two, _mm_unpackhi_pd(two, two)));
    return _mm256_movemask_pd(extremes.areBelow) == 0;
}

constexpr CellCoder avx2{&gather, &findCells};

} // namespace

const CellCoder* avx2CellCoder() noexcept {
    const auto isKnown = static_cast<bool>(__builtin_cpu_supports("avx2"));
    return isKnown ? &avx2 : nullptr;
}

} // namespace detail

#else

namespace detail {

const CellCoder* avx2CellCoder() noexcept {
    return nullptr;
}

} // namespace detail

#endif
