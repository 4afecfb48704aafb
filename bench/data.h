#ifndef BENCH_DATA_H
#define BENCH_DATA_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// The one source of all data that is measured with: the same numbers on every machine and in every run.
namespace bench {

/// A generator of 64-bit numbers, and of doubles by arithmetic that rounds nowhere.
class Generator {
public:
    explicit Generator(std::uint64_t seed) noexcept : state_(seed) {}

    std::uint64_t next() noexcept {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return mixed ^ (mixed >> 31U);
    }

    /// Within [0, 1), all 53 bits in use.
    double uniform() noexcept { return static_cast<double>(next() >> 11U) * 0x1p-53; }

    /// From 0 to `count` - 1.
    std::size_t below(std::size_t count) noexcept { return static_cast<std::size_t>(next() % count); }

    /// The sum of four uniform numbers, around 0: a bell of variance 1/3 within (-2, 2). Its last bits are
    /// in use too, so that nothing gains by keeping the values in less than a double.
    double bell() noexcept {
        const std::uint64_t parts = next();
        const std::uint64_t sum =
            (parts & 0xffffU) + ((parts >> 16U) & 0xffffU) + ((parts >> 32U) & 0xffffU) + (parts >> 48U);
        return (static_cast<double>(sum) + uniform()) * 0x1p-16 - 2.0;
    }

private:
    std::uint64_t state_;
};

/// `count` rows of `size` values each, one after the other.
struct Rows {
    Rows(std::size_t numRows, std::size_t rowSize)
        : count(numRows), size(rowSize), values(numRows * rowSize) {}

    const double* row(std::size_t index) const noexcept { return values.data() + index * size; }
    double* row(std::size_t index) noexcept { return values.data() + index * size; }
    std::vector<double> vector(std::size_t index) const { return {row(index), row(index) + size}; }

    /// For rivals that keep single precision.
    std::vector<float> asFloats() const { return {values.begin(), values.end()}; }

    std::size_t count;
    std::size_t size;
    std::vector<double> values;
};

inline Rows bellRows(std::size_t count, std::size_t size, std::uint64_t seed) {
    Rows rows(count, size);
    Generator generator(seed);
    for (double& value : rows.values) {
        value = generator.bell();
    }
    return rows;
}

/// Patterns of categories that overlap a little. Each has its own mean and its own correlations: a category's
/// rows are a random lower triangular matrix times a bell-shaped vector, plus the mean.
class Categories {
public:
    Categories(std::size_t count, std::size_t size, std::uint64_t seed)
        : means_(count, size), factors_(count, size * size) {
        Generator generator(seed);
        for (double& mean : means_.values) {
            mean = 1.5 * generator.bell();
        }
        for (std::size_t category = 0; category < count; ++category) {
            for (std::size_t i = 0; i < size; ++i) {
                for (std::size_t j = 0; j <= i; ++j) {
                    factors_.row(category)[i * size + j] =
                        i == j ? 0.5 + generator.uniform() : 0.3 * generator.bell();
                }
            }
        }
    }

    std::size_t count() const noexcept { return means_.count; }

    void draw(std::size_t category, Generator& generator, double* row) const {
        const std::size_t size = means_.size;
        std::vector<double> source(size);
        for (double& value : source) {
            value = generator.bell();
        }
        for (std::size_t i = 0; i < size; ++i) {
            row[i] = means_.row(category)[i];
            for (std::size_t j = 0; j <= i; ++j) {
                row[i] += factors_.row(category)[i * size + j] * source[j];
            }
        }
    }

    /// Row i belongs to category i modulo their number.
    Rows rows(std::size_t numRows, std::uint64_t seed) const {
        Rows drawn(numRows, means_.size);
        Generator generator(seed);
        for (std::size_t i = 0; i < numRows; ++i) {
            draw(i % count(), generator, drawn.row(i));
        }
        return drawn;
    }

private:
    Rows means_;
    Rows factors_;
};

} // namespace bench

#endif
