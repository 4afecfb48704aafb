#ifndef TESTS_SUPPORT_RANDOM_NUMBERS_H
#define TESTS_SUPPORT_RANDOM_NUMBERS_H

#include <cstddef>
#include <random>
#include <vector>

namespace test {

/// Numbers between -2 and 2, the same for the same seed.
class RandomNumbers {
public:
    explicit RandomNumbers(unsigned seed) : random_(seed) {}

    double next() { return std::uniform_real_distribution<double>(-2.0, 2.0)(random_); }

    std::vector<double> row(std::size_t size) {
        std::vector<double> values(size);
        for (double& value : values) {
            value = next();
        }
        return values;
    }

private:
    std::mt19937 random_;
};

} // namespace test

#endif
