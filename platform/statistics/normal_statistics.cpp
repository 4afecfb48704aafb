#include "platform/statistics/normal_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace detail {

namespace {

// Up to here a count is exact as a double. Nobody counts that far by updates, but merging a record with
// itself doubles the count.
constexpr std::int64_t maxSamples = std::int64_t{1} << 53;

std::int64_t sumOfCounts(std::int64_t a, std::int64_t b) noexcept {
    return std::min(maxSamples, std::min(maxSamples, a) + std::min(maxSamples, b));
}

/// Infinity becomes the largest double, so that it does not turn into NaN in the next difference.
double saturated(double value) noexcept {
    constexpr double largest = std::numeric_limits<double>::max();
    if (value > largest) {
        return largest;
    }
    return value < -largest ? -largest : value;
}

/// Adds to an average that is kept as a double and its rounding error.
void add(double& average, double& rest, double increment) noexcept {
    const double sum = average + increment;
    const double part = sum - average;
    const double error = (average - (sum - part)) + (increment - part);
    const double wholeRest = rest + error;
    average = sum + wholeRest;
    rest = wholeRest - (average - sum);
    if (!std::isfinite(average)) {
        average = saturated(sum);
        rest = 0.0;
    }
}

void enterFirst(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest, const double* values,
                double factor) noexcept {
    for (std::size_t i = 0; i < rest.mean.size(); ++i) {
        pdf.mean.rows[i][0] = values[i] / factor;
        rest.mean[i] = 0.0;
    }
}

} // namespace

void StatisticsRest::reserve(std::size_t size, std::int64_t total) {
    if (mean.size() != size) {
        mean.assign(size, 0.0);
    }
    if (total > 1 && covariance.order() != size) {
        covariance = PackedLower(size);
    }
}

std::int32_t published(std::int64_t numSamples) noexcept {
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(numSamples, largest));
}

void countSamples(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest, std::int64_t number) noexcept {
    rest.numSamples = sumOfCounts(rest.numSamples, number);
    pdf.numSamples = published(rest.numSamples);
}

void copyUpperToLower(vmath_nmmatrix& covariance) noexcept {
    for (long row = 1; row < covariance.numRows; ++row) {
        for (long column = 0; column < row; ++column) {
            covariance.rows[row][column] = covariance.rows[column][row];
        }
    }
}

void copyLowerToUpper(vmath_nmmatrix& covariance) noexcept {
    for (long row = 1; row < covariance.numRows; ++row) {
        for (long column = 0; column < row; ++column) {
            covariance.rows[column][row] = covariance.rows[row][column];
        }
    }
}

/// The covariance is kept as an average too, not as a sum of squares: it overflows no sooner than its result.
void enterPattern(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest, const double* values, double factor,
                  double* differences) noexcept {
    countSamples(pdf, rest, 1);
    if (rest.numSamples == 1) {
        enterFirst(pdf, rest, values, factor);
        return;
    }
    const std::size_t size = rest.mean.size();
    const double count = static_cast<double>(rest.numSamples);
    for (std::size_t i = 0; i < size; ++i) {
        double& mean = pdf.mean.rows[i][0];
        differences[i] = saturated((values[i] / factor - mean) - rest.mean[i]);
        add(mean, rest.mean[i], differences[i] / count);
    }
    const double oldShare = (count - 1.0) / count;
    for (std::size_t column = 0; column < size; ++column) {
        double* const entries = pdf.covariance.rows[column];
        double* const rests = rest.covariance.column(column);
        for (std::size_t row = column; row < size; ++row) {
            double& entry = entries[row];
            double& entryRest = rests[row - column];
            const double product = saturated(differences[row] * differences[column]) * oldShare;
            add(entry, entryRest, saturated((product - entry) - entryRest) / (count - 1.0));
        }
    }
}

/// Chan, Golub and LeVeque's rule for the moments of two groups, in shares of the whole.
void enterStatistics(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest,
                     const vmath_PDFMultivariateNormal& other, const StatisticsRest& otherRest,
                     double* differences) noexcept {
    const double ownCount = static_cast<double>(rest.numSamples);
    const double otherCount = static_cast<double>(otherRest.numSamples);
    const double count = ownCount + otherCount;
    const std::size_t size = rest.mean.size();
    for (std::size_t i = 0; i < size; ++i) {
        const double ofMeans = other.mean.rows[i][0] - pdf.mean.rows[i][0];
        differences[i] = saturated(ofMeans + (otherRest.mean[i] - rest.mean[i]));
    }
    const double ownShare = (ownCount - 1.0) / (count - 1.0);
    const double otherShare = (otherCount - 1.0) / (count - 1.0);
    const double share = (ownCount / count) * (otherCount / (count - 1.0));
    for (std::size_t column = 0; column < size; ++column) {
        for (std::size_t row = column; row < size; ++row) {
            double& entry = pdf.covariance.rows[row][column];
            const double within = ownShare * entry + otherShare * other.covariance.rows[row][column];
            const double between = saturated(differences[row] * differences[column]) * share;
            entry = saturated(within + between);
            pdf.covariance.rows[column][row] = entry;
            rest.covariance(row, column) = 0.0;
        }
    }
    for (std::size_t i = 0; i < size; ++i) {
        add(pdf.mean.rows[i][0], rest.mean[i], differences[i] * (otherCount / count));
    }
    rest.numSamples = sumOfCounts(rest.numSamples, otherRest.numSamples);
    pdf.numSamples = published(rest.numSamples);
}

} // namespace detail
