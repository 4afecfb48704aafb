#ifndef VXCLASSIFIER_CLASS_DATA_GENERATOR_H
#define VXCLASSIFIER_CLASS_DATA_GENERATOR_H

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/pair.h>

#include <vector>

/// Makes synthetic patterns of one category: independent, normally distributed measurements. The same
/// description always gives the same patterns, on every machine. All generators draw from the same sequence
/// of standard normal numbers, so the patterns of two of them are independent of each other only if they come
/// from different parts of it.
///
/// States: empty at first; generated after the first call that drew patterns, and then for good. A copy
/// carries the state.
///
/// Ownership: keeps what it generated and shares the patterns with whoever asks.
///
/// Threads: generateData changes the object; give each thread its own.
class VXCLASSIFIER_API vx_ClassDataGenerator {
public:
    /// One pair for each measurement, `first` its mean and `second` its standard deviation, and the number of
    /// patterns. Nothing is checked: a count below 1 gives no patterns.
    vx_ClassDataGenerator(const std::vector<vxPair<double>>& measurements, long count);
    vx_ClassDataGenerator(const vx_ClassDataGenerator& other);
    /// If this throws for want of memory, nothing has changed.
    vx_ClassDataGenerator& operator=(const vx_ClassDataGenerator& other);
    ~vx_ClassDataGenerator();

    /// The patterns, all valid and with the label 0; drawn at the first call, pattern by pattern and
    /// measurement by measurement. A generator without measurements cannot tell that it has drawn: each call
    /// appends `count` empty patterns to those of the calls before. Throwing (std::bad_alloc) leaves the
    /// generator as it was.
    vxClassifierDataProviderMemory generateData();

private:
    std::vector<vxPair<double>> measurements_;
    long count_;
    vxClassifierDataProviderMemory data_; // empty until drawn
};

#endif
