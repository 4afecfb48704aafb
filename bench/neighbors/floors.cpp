#include "bench/neighbors/neighbors.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// What the machine itself needs to look at every stored value once. This file is compiled for the very
// machine that measures and with arithmetic in any order, since it stands for the limit, not for a program.

namespace bench::neighbors {

namespace {

/// Subtracts the query from every stored row and adds up the squares: the least that a search by the doubles
/// themselves reads and computes.
class DoubleScan : public Runner {
public:
    explicit DoubleScan(std::shared_ptr<const Workload> workload) : workload_(std::move(workload)) {}

    void run(std::size_t turn) override {
        const double* query = workload_->query(turn);
        double repeated[blockSize] = {}; // the query as often as it fits: its size divides the block's
        const std::size_t size = workload_->stored.size;
        for (std::size_t j = 0; j < blockSize; j += size) {
            std::copy_n(query, size, repeated + j);
        }
        sum_ = scan(repeated);
    }

private:
    static constexpr std::size_t blockSize = 64;
    static constexpr std::size_t lanes = 8;
    using Lanes = double __attribute__((vector_size(lanes * sizeof(double)), aligned(alignof(double))));

    static Lanes squares(const double* values, const double* query) {
        Lanes difference;
        Lanes subtrahend;
        std::memcpy(&difference, values, sizeof difference);
        std::memcpy(&subtrahend, query, sizeof subtrahend);
        difference -= subtrahend;
        return difference * difference;
    }

    double scan(const double* query) const {
        const std::vector<double>& values = workload_->stored.values;
        Lanes sums[4] = {}; // several, so that no addition waits for the one before
        for (std::size_t block = 0; block + blockSize <= values.size(); block += blockSize) {
            for (std::size_t j = 0; j < blockSize; j += 4 * lanes) {
                for (std::size_t k = 0; k < 4; ++k) {
                    sums[k] += squares(values.data() + block + j + k * lanes, query + j + k * lanes);
                }
            }
        }
        const Lanes total = sums[0] + sums[1] + sums[2] + sums[3];
        return total[0] + total[1];
    }

    std::shared_ptr<const Workload> workload_;
    volatile double sum_ = 0.0;
};

/// One byte for each value, compared with the query's bytes: the least that a search by a compact copy reads.
class ByteScan : public Runner {
public:
    explicit ByteScan(std::shared_ptr<const Workload> workload) : workload_(std::move(workload)) {
        for (const double value : workload_->stored.values) {
            bytes_.push_back(asByte(value));
        }
    }

    void run(std::size_t turn) override {
        const double* query = workload_->query(turn);
        std::uint8_t values[blockSize] = {}; // the query as often as it fits: its size divides the block's
        const std::size_t size = workload_->stored.size;
        for (std::size_t j = 0; j < blockSize; j += size) {
            std::transform(query, query + size, values + j, &asByte);
        }
        unsigned sum = 0;
        for (std::size_t block = 0; block + blockSize <= bytes_.size(); block += blockSize) {
            for (std::size_t j = 0; j < blockSize; ++j) {
                sum += static_cast<unsigned>(std::abs(bytes_[block + j] - values[j]));
            }
        }
        sum_ = sum;
    }

private:
    static constexpr std::size_t blockSize = 64;

    static std::uint8_t asByte(double value) { return static_cast<std::uint8_t>((value + 2.0) * 63.0); }

    std::shared_ptr<const Workload> workload_;
    std::vector<std::uint8_t> bytes_;
    volatile unsigned sum_ = 0;
};

template <class Made>
Contender contender(const std::string& name) {
    return {Role::floor, name,
            [](const std::shared_ptr<const Workload>& workload) { return std::make_unique<Made>(workload); }};
}

} // namespace

void addFloors(std::vector<Contender>& contenders) {
    contenders.push_back(contender<DoubleScan>("scan of the doubles"));
    contenders.push_back(contender<ByteScan>("scan of bytes"));
}

} // namespace bench::neighbors
