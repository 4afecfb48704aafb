#include "bench/neighbors/neighbors.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

// What the machine itself needs to look at every stored value once. This file is compiled for the very
// machine that measures and with arithmetic in any order, since it stands for the limit, not for a program.

namespace bench::neighbors {

namespace {

/// Squared distances to all rows, and the smallest of them: one pass over the doubles, no list.
class DoubleScan : public Runner {
public:
    explicit DoubleScan(std::shared_ptr<const Workload> workload) : workload_(std::move(workload)) {}

    void run(std::size_t turn) override {
        const double* query = workload_->query(turn);
        switch (workload_->stored.size) {
        case 4:
            smallest_ = scan<4>(query);
            break;
        case 16:
            smallest_ = scan<16>(query);
            break;
        case 64:
            smallest_ = scan<64>(query);
            break;
        default:
            throw Disagreement("no scan for rows of this size");
        }
    }

private:
    template <std::size_t size>
    double scan(const double* query) const {
        const Rows& rows = workload_->stored;
        double smallest = std::numeric_limits<double>::max();
        for (std::size_t i = 0; i < rows.count; ++i) {
            const double* row = rows.values.data() + i * size;
            double sum = 0.0;
            for (std::size_t j = 0; j < size; ++j) {
                sum += (row[j] - query[j]) * (row[j] - query[j]);
            }
            smallest = sum < smallest ? sum : smallest;
        }
        return smallest;
    }

    std::shared_ptr<const Workload> workload_;
    volatile double smallest_ = 0.0;
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
        std::uint8_t values[blockSize] = {}; // the query as often as it fits
        for (std::size_t j = 0; j < blockSize; ++j) {
            values[j] = asByte(query[j % workload_->stored.size]);
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
