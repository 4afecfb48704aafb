#ifndef TESTS_DIGEST_INPUTS_H
#define TESTS_DIGEST_INPUTS_H

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <cstdint>
#include <random>
#include <vector>

namespace digest {

/// Numbers that are the same on every machine and that no compiler knows beforehand: what it computed itself
/// would not show what the program computes. Compilers differ in the order in which they evaluate arguments
/// and operands, so draw at most one number in each expression, lists in braces excepted.
class Inputs {
public:
    /// In [0, 1).
    double number() { return static_cast<double>(bits_() >> 11U) * 0x1p-53; }
    double number(double low, double high) { return low + (high - low) * number(); }
    /// In [0, below).
    long whole(long below) { return static_cast<long>(bits_() % static_cast<std::uint64_t>(below)); }

    std::vector<double> numbers(long count, double low, double high) {
        std::vector<double> all;
        for (long i = 0; i < count; ++i) {
            all.push_back(number(low, high));
        }
        return all;
    }
    /// The value itself, as something that is known at run time only.
    static double opaque(double value) {
        volatile double hidden = value;
        return hidden;
    }

private:
    static std::uint64_t seed() {
        volatile std::uint64_t hidden = 20240229;
        return hidden;
    }

    std::mt19937_64 bits_{seed()};
};

inline vxPtrHandle_const<vxFeaturePattern> pattern(const std::vector<double>& measurements) {
    return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(measurements, {}));
}

/// So many measurements about `label`, which correlate with each other; every third is a count from 0 to 20.
inline std::vector<double> measurementsOf(Inputs& inputs, long label, long count) {
    const double common = inputs.number(-1.0, 1.0);
    std::vector<double> all;
    for (long i = 0; i < count; ++i) {
        if (i % 3 == 2) {
            all.push_back(static_cast<double>(inputs.whole(8 + 3 * label)));
        } else {
            const double own = inputs.number(-1.5, 1.5);
            all.push_back(static_cast<double>(label) * 0.75 + common / static_cast<double>(i + 1) + own);
        }
    }
    return all;
}

/// Three categories and some patterns of unknown category.
inline vxClassifierDataProviderMemory trainingData(Inputs& inputs, long patterns, long measurements) {
    vxClassifierDataProviderMemory data;
    for (long i = 0; i < patterns; ++i) {
        const long label = inputs.whole(20) == 0 ? -1 : inputs.whole(3);
        data.addData(pattern(measurementsOf(inputs, label, measurements)), label);
    }
    return data;
}

} // namespace digest

#endif
