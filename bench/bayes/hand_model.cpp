#include "bench/bayes/hand_model.h"

#include <algorithm>
#include <cmath>

namespace bench::bayes {

namespace {

constexpr double logTwoPi = 1.8378770664093453;

std::size_t packed(std::size_t row) {
    return row * (row + 1) / 2;
}

using Pair = double __attribute__((vector_size(2 * sizeof(double)), aligned(alignof(double)), may_alias));

const Pair& pairAt(const double* values) {
    return *reinterpret_cast<const Pair*>(values);
}

Pair& pairAt(double* values) {
    return *reinterpret_cast<Pair*>(values);
}

/// The lower triangle of the sum of the products of four rows with themselves.
void addProducts(const double* rows, std::size_t width, std::vector<double>& products) {
    const double* r0 = rows;
    const double* r1 = r0 + width;
    const double* r2 = r1 + width;
    const double* r3 = r2 + width;
    for (std::size_t i = 0; i < products.size() / width; ++i) {
        double* sums = products.data() + i * width;
        for (std::size_t j = 0; j <= i; j += 2) {
            pairAt(sums + j) += r0[i] * pairAt(r0 + j) + r1[i] * pairAt(r1 + j) + r2[i] * pairAt(r2 + j) +
                                r3[i] * pairAt(r3 + j);
        }
    }
}

} // namespace

HandJoint::HandJoint(const Workload& workload, std::size_t category)
    : size_(workload.rows.size), mean_(size_), factor_(packed(size_)), reciprocals_(size_) {
    accumulate(workload, category);
    factorize();
}

/// One pass: sums of the deviations from the first row, and of their products, four rows at a time and two
/// products at once.
void HandJoint::accumulate(const Workload& workload, std::size_t category) {
    constexpr std::size_t batch = 4;
    const double* first = workload.rows.row(category);
    const std::size_t width = size_ + size_ % 2;
    std::vector<double> deviations(batch * width);
    std::vector<double> products(size_ * width);
    std::size_t filled = 0;
    double count = 0.0;
    for (std::size_t row = category; row < workload.rows.count; row += workload.categories) {
        const double* values = workload.rows.row(row);
        double* deviation = deviations.data() + filled * width;
        for (std::size_t i = 0; i < size_; ++i) {
            deviation[i] = values[i] - first[i];
            mean_[i] += deviation[i];
        }
        count += 1.0;
        if (++filled == batch) {
            addProducts(deviations.data(), width, products);
            filled = 0;
        }
    }
    std::fill(deviations.begin() + static_cast<std::ptrdiff_t>(filled * width), deviations.end(), 0.0);
    addProducts(deviations.data(), width, products);
    for (std::size_t i = 0; i < size_; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            factor_[packed(i) + j] = (products[i * width + j] - mean_[i] * mean_[j] / count) / (count - 1.0);
        }
    }
    for (std::size_t i = 0; i < size_; ++i) {
        mean_[i] = first[i] + mean_[i] / count;
    }
}

void HandJoint::factorize() {
    logFactor_ = -0.5 * static_cast<double>(size_) * logTwoPi;
    for (std::size_t i = 0; i < size_; ++i) {
        double* row = factor_.data() + packed(i);
        for (std::size_t j = 0; j <= i; ++j) {
            const double* other = factor_.data() + packed(j);
            double rest = row[j];
            for (std::size_t k = 0; k < j; ++k) {
                rest -= row[k] * other[k];
            }
            row[j] = i == j ? std::sqrt(rest) : rest * reciprocals_[j];
        }
        reciprocals_[i] = 1.0 / row[i];
        logFactor_ -= std::log(row[i]);
    }
}

double HandJoint::logDensity(const double* row, double* scratch) const noexcept {
    const double* factor = factor_.data();
    double squares = 0.0;
    for (std::size_t i = 0; i < size_; ++i) {
        double rest = row[i] - mean_[i];
        for (std::size_t j = 0; j < i; ++j) {
            rest -= factor[j] * scratch[j];
        }
        scratch[i] = rest * reciprocals_[i];
        squares += scratch[i] * scratch[i];
        factor += i + 1;
    }
    return logFactor_ - 0.5 * squares;
}

HandIndependent::HandIndependent(const Workload& workload, std::size_t category)
    : mean_(workload.rows.size), reciprocals_(workload.rows.size) {
    const double* first = workload.rows.row(category);
    const std::size_t size = workload.rows.size;
    std::vector<double> squares(size);
    double count = 0.0;
    for (std::size_t row = category; row < workload.rows.count; row += workload.categories) {
        for (std::size_t i = 0; i < size; ++i) {
            const double deviation = workload.rows.row(row)[i] - first[i];
            mean_[i] += deviation;
            squares[i] += deviation * deviation;
        }
        count += 1.0;
    }
    for (std::size_t i = 0; i < size; ++i) {
        const double variance = (squares[i] - mean_[i] * mean_[i] / count) / (count - 1.0);
        mean_[i] = first[i] + mean_[i] / count;
        reciprocals_[i] = 0.5 / variance;
        logFactor_ -= 0.5 * (logTwoPi + std::log(variance));
    }
}

double HandIndependent::logDensity(const double* row, double*) const noexcept {
    double sum = logFactor_;
    for (std::size_t i = 0; i < mean_.size(); ++i) {
        const double deviation = row[i] - mean_[i];
        sum -= deviation * deviation * reciprocals_[i];
    }
    return sum;
}

} // namespace bench::bayes
