#include "clss/clastool/knn/cell_filter.h"

#include "clss/clastool/knn/compact_patterns.h"

#if defined(__x86_64__)

#include <cmath>
#include <immintrin.h>

// Only these functions may use the instructions: the rest of the library runs on any processor of its kind.
#define VX_AVX2 __attribute__((target("avx2")))

namespace detail {

namespace {

constexpr std::size_t rowBytes = CompactPatterns::rowBytes;
constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t numCells = CompactPatterns::numCells;
static_assert(rowBytes == sizeof(__m256i) && CellFilter::tableSize == sizeof(__m128i),
              "a row of codes and a table fill a register each");

/// The entries of four cells.
template <CheapNorm norm>
VX_AVX2 __m128i fourEntries(__m256d query, const double* lows, __m256d unitsPerSum) {
    const __m256d below = _mm256_sub_pd(_mm256_loadu_pd(lows), query);
    const __m256d above = _mm256_sub_pd(query, _mm256_loadu_pd(lows + numCells));
    const __m256d gap = _mm256_max_pd(_mm256_max_pd(below, above), _mm256_setzero_pd());
    const __m256d least = norm == CheapNorm::manhattan ? gap : _mm256_mul_pd(gap, gap);
    return _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_mul_pd(least, unitsPerSum), _mm256_set1_pd(255.0)));
}

template <CheapNorm norm>
VX_AVX2 void tabulateNorm(const double* query, const double* cells, std::size_t width, double unitsPerSum,
                          std::uint8_t* tables) {
    const __m256d units = _mm256_set1_pd(unitsPerSum);
    for (std::size_t j = 0; j < width; ++j, cells += CompactPatterns::cellDoubles) {
        const __m256d value = _mm256_set1_pd(query[j]);
        const __m128i first = _mm_packs_epi32(fourEntries<norm>(value, cells, units),
                                              fourEntries<norm>(value, cells + 4, units));
        const __m128i second = _mm_packs_epi32(fourEntries<norm>(value, cells + 8, units),
                                               fourEntries<norm>(value, cells + 12, units));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(tables + j * numCells), _mm_packus_epi16(first, second));
    }
}

VX_AVX2 void tabulate(CheapNorm norm, const double* query, const double* cells, std::size_t width,
                      double unitsPerSum, std::uint8_t* tables) {
    if (norm == CheapNorm::manhattan) {
        tabulateNorm<CheapNorm::manhattan>(query, cells, width, unitsPerSum, tables);
    } else {
        tabulateNorm<CheapNorm::euclidean>(query, cells, width, unitsPerSum, tables);
    }
}

VX_AVX2 inline __m256i load(const std::uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

/// The sums of a block's 64 patterns, in bytes.
struct Sums {
    __m256i first;
    __m256i second;
};

VX_AVX2 inline Sums sumTables(const std::uint8_t* row, const std::uint8_t* table, std::size_t width) {
    const __m256i lowHalves = _mm256_set1_epi8(15);
    Sums sums{_mm256_setzero_si256(), _mm256_setzero_si256()};
    for (std::size_t j = 0; j < width; ++j, row += rowBytes, table += numCells) {
        const __m256i codes = load(row);
        const __m256i entries =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table)));
        const __m256i first = _mm256_and_si256(codes, lowHalves);
        const __m256i second = _mm256_and_si256(_mm256_srli_epi16(codes, 4), lowHalves);
        sums.first = _mm256_adds_epu8(sums.first, _mm256_shuffle_epi8(entries, first));
        sums.second = _mm256_adds_epu8(sums.second, _mm256_shuffle_epi8(entries, second));
    }
    return sums;
}

/// A bit for each byte that is not 0.
VX_AVX2 inline std::uint64_t bitsOfBytes(__m256i first, __m256i second) {
    const auto low = static_cast<std::uint32_t>(_mm256_movemask_epi8(first));
    const auto high = static_cast<std::uint32_t>(_mm256_movemask_epi8(second));
    return low | static_cast<std::uint64_t>(high) << 32U;
}

VX_AVX2 inline void store(const Sums& sums, std::uint8_t* bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), sums.first);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes + rowBytes), sums.second);
}

VX_AVX2 void score(const std::uint8_t* codes, std::size_t width, std::size_t summed,
                   const std::uint8_t* tables, std::size_t blocks, std::uint8_t* scores,
                   std::uint8_t* smallest) {
    Sums least{_mm256_set1_epi8(-1), _mm256_set1_epi8(-1)};
    for (std::size_t b = 0; b < blocks; ++b) {
        const Sums sums = sumTables(codes + b * width * rowBytes, tables, summed);
        store(sums, scores + b * blockSize);
        least.first = _mm256_min_epu8(least.first, sums.first);
        least.second = _mm256_min_epu8(least.second, sums.second);
    }
    store(least, smallest);
}

VX_AVX2 void atMost(const std::uint8_t* scores, std::uint8_t bound, std::size_t blocks,
                    std::uint64_t* selected) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i limit = _mm256_set1_epi8(static_cast<char>(bound));
    for (std::size_t b = 0; b < blocks; ++b, scores += blockSize) {
        const __m256i first = _mm256_subs_epu8(load(scores), limit);
        const __m256i second = _mm256_subs_epu8(load(scores + rowBytes), limit);
        selected[b] = bitsOfBytes(_mm256_cmpeq_epi8(first, zero), _mm256_cmpeq_epi8(second, zero));
    }
}

VX_AVX2 void selectNarrow(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables,
                          std::size_t blocks, std::uint64_t* selected) {
    const __m256i full = _mm256_set1_epi8(-1);
    for (std::size_t b = 0; b < blocks; ++b, codes += width * rowBytes) {
        const Sums sums = sumTables(codes, tables, width);
        selected[b] = ~bitsOfBytes(_mm256_cmpeq_epi8(sums.first, full), _mm256_cmpeq_epi8(sums.second, full));
    }
}

/// The sums of 32 patterns in 16 bits, in the order in which unpacking leaves them and packing takes them.
struct WideSums {
    __m256i low;
    __m256i high;
};

VX_AVX2 inline void addWide(WideSums& wide, __m256i bytes) {
    const __m256i zero = _mm256_setzero_si256();
    wide.low = _mm256_adds_epu16(wide.low, _mm256_unpacklo_epi8(bytes, zero));
    wide.high = _mm256_adds_epu16(wide.high, _mm256_unpackhi_epi8(bytes, zero));
}

/// All bits of a byte set where the sum is less than the units.
VX_AVX2 inline __m256i lessThan(const WideSums& wide, __m256i units) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i low = _mm256_cmpeq_epi16(_mm256_subs_epu16(units, wide.low), zero);
    const __m256i high = _mm256_cmpeq_epi16(_mm256_subs_epu16(units, wide.high), zero);
    return _mm256_xor_si256(_mm256_packs_epi16(low, high), _mm256_set1_epi8(-1));
}

VX_AVX2 void selectWide(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables,
                        std::uint16_t units, std::size_t blocks, std::uint64_t* selected) {
    const __m256i limit = _mm256_set1_epi16(static_cast<short>(units));
    const std::size_t inGroups = width - width % CellFilter::groupSize;
    for (std::size_t b = 0; b < blocks; ++b, codes += width * rowBytes) {
        const __m256i zero = _mm256_setzero_si256();
        WideSums first{zero, zero};
        WideSums second{zero, zero};
        for (std::size_t j = 0; j < inGroups; j += CellFilter::groupSize) {
            const Sums sums = sumTables(codes + j * rowBytes, tables + j * numCells, CellFilter::groupSize);
            addWide(first, sums.first);
            addWide(second, sums.second);
        }
        const Sums rest =
            sumTables(codes + inGroups * rowBytes, tables + inGroups * numCells, width - inGroups);
        addWide(first, rest.first);
        addWide(second, rest.second);
        selected[b] = bitsOfBytes(lessThan(first, limit), lessThan(second, limit));
    }
}

VX_AVX2 void select(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables,
                    std::uint16_t units, std::size_t blocks, std::uint64_t* selected) {
    if (width <= CellFilter::narrow) {
        selectNarrow(codes, width, tables, blocks, selected);
    } else {
        selectWide(codes, width, tables, units, blocks, selected);
    }
}

template <CheapNorm norm>
VX_AVX2 inline __m256d fourTerms(const double* a, const double* b) {
    const __m256d difference = _mm256_sub_pd(_mm256_loadu_pd(a), _mm256_loadu_pd(b));
    return norm == CheapNorm::manhattan ? _mm256_andnot_pd(_mm256_set1_pd(-0.0), difference)
                                        : _mm256_mul_pd(difference, difference);
}

template <CheapNorm norm>
VX_AVX2 inline double sumOf(const double* a, const double* b, std::size_t width) {
    __m256d even = _mm256_setzero_pd();
    __m256d odd = _mm256_setzero_pd();
    std::size_t i = 0;
    for (; i + 8 <= width; i += 8) {
        even = _mm256_add_pd(even, fourTerms<norm>(a + i, b + i));
        odd = _mm256_add_pd(odd, fourTerms<norm>(a + i + 4, b + i + 4));
    }
    if (i + 4 <= width) {
        even = _mm256_add_pd(even, fourTerms<norm>(a + i, b + i));
        i += 4;
    }
    even = _mm256_add_pd(even, odd);
    const __m128d two = _mm_add_pd(_mm256_castpd256_pd128(even), _mm256_extractf128_pd(even, 1));
    double sum = _mm_cvtsd_f64(_mm_add_sd(two, _mm_unpackhi_pd(two, two)));
    for (; i < width; ++i) {
        const double difference = a[i] - b[i];
        sum += norm == CheapNorm::manhattan ? std::fabs(difference) : difference * difference;
    }
    return sum;
}

VX_AVX2 double sum(CheapNorm norm, const double* a, const double* b, std::size_t width) {
    return norm == CheapNorm::manhattan ? sumOf<CheapNorm::manhattan>(a, b, width)
                                        : sumOf<CheapNorm::euclidean>(a, b, width);
}

constexpr CellFilter avx2{&tabulate, &score, &atMost, &select, &sum};

} // namespace

const CellFilter* avx2CellFilter() noexcept {
    const auto isKnown = static_cast<bool>(__builtin_cpu_supports("avx2"));
    return isKnown ? &avx2 : nullptr;
}

} // namespace detail

#else

namespace detail {

const CellFilter* avx2CellFilter() noexcept {
    return nullptr;
}

} // namespace detail

#endif
