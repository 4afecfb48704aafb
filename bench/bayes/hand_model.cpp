#include "bench/bayes/hand_model.h"

#include <cmath>

namespace bench::bayes {

namespace {

constexpr double logTwoPi = 1.8378770664093453;

std::size_t packed(std::size_t row) {
    return row * (row + 1) / 2;
}

} // namespace

HandJoint::HandJoint(const Workload& workload, std::size_t category)
    : size_(workload.rows.size), mean_(size_), factor_(packed(size_)), reciprocals_(size_) {
    accumulate(workload, category);
    factorize();
}

/// One pass: sums of the deviations from the first row, and of their products.
void HandJoint::accumulate(const Workload& workload, std::size_t category) {
    const double* first = workload.rows.row(category);
    std::vector<double> deviation(size_);
    double count = 0.0;
    for (std::size_t row = category; row < workload.rows.count; row += workload.categories) {
        const double* values = workload.rows.row(row);
        double* products = factor_.data();
        for (std::size_t i = 0; i < size_; ++i) {
            deviation[i] = values[i] - first[i];
            mean_[i] += deviation[i];
            for (std::size_t j = 0; j <= i; ++j) {
                products[j] += deviation[i] * deviation[j];
            }
            products += i + 1;
        }
        count += 1.0;
    }
    for (std::size_t i = 0; i < size_; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            double& product = factor_[packed(i) + j];
            product = (product - mean_[i] * mean_[j] / count) / (count - 1.0);
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
