#ifndef VXCLASSIFIER_TOTAL_DATA_GENERATOR_H
#define VXCLASSIFIER_TOTAL_DATA_GENERATOR_H

#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/platform/export.h>

#include <vector>

/// Combines synthetic patterns of several categories into one labelled, shuffled set. The same description
/// always gives the same set, on every machine.
///
/// It is small: each category contributes as many patterns as a pattern has measurements, and as many of all
/// those are taken, in random order. For larger sets combine the data of the class generators yourself.
///
/// States: empty at first; generated after the first call that drew patterns, and then for good. A copy
/// carries the state.
///
/// Ownership: keeps what it generated and shares the patterns with whoever asks.
///
/// Threads: generateData changes the object; give each thread its own.
class VXCLASSIFIER_API vx_TotalDataGenerator {
public:
    /// The place of a class generator in the vector is its category label.
    explicit vx_TotalDataGenerator(const std::vector<vx_ClassDataGenerator>& generators);
    vx_TotalDataGenerator(const vx_TotalDataGenerator& other);
    /// If this throws for want of memory, nothing has changed.
    vx_TotalDataGenerator& operator=(const vx_TotalDataGenerator& other);
    ~vx_TotalDataGenerator();

    /// The combined set; made at the first call. Without measurements it is empty, and each call lets the
    /// class generators draw, and keep, once more. Throwing leaves the generator as it was:
    /// vxClassifierDefs::BadIndex if a category has fewer patterns than measurements,
    /// vxClassifierDefs::BadFeatures if the categories differ in their number of measurements.
    vxClassifierDataProviderMemory generateData();

private:
    std::vector<vx_ClassDataGenerator> generators_;
    vxClassifierDataProviderMemory data_; // empty until drawn
};

#endif
