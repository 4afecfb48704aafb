#include <vxclassifier/total_data_generator.h>

#include "clss/datagen/drawn_place.h"

#include <vxclassifier/platform/random.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

constexpr long seed = 1;

/// Takes as many patterns of each category as a pattern has measurements.
vxClassifierDataProviderMemory collect(std::vector<vx_ClassDataGenerator>& generators) {
    vxClassifierDataProviderMemory collected;
    long label = 0;
    for (vx_ClassDataGenerator& generator : generators) {
        const vxClassifierDataProviderMemory category = generator.generateData();
        for (long j = 0; j < category.numMeasurements(); ++j) {
            collected.addData(category.featurePattern(j), label);
        }
        ++label;
    }
    return collected;
}

/// The numbers from 0 to size - 1, each swapped once with one drawn from all of them.
std::vector<long> shuffledOrder(long size) {
    vxRandomUniform random(seed);
    std::vector<long> order;
    for (long i = 0; i < size; ++i) {
        order.push_back(i);
    }
    for (long i = 0; i < size; ++i) {
        const double drawn = random.next(0.0, static_cast<double>(size));
        std::swap(order[static_cast<std::size_t>(i)],
                  order[static_cast<std::size_t>(detail::placeOf(drawn, size))]);
    }
    return order;
}

} // namespace

vx_TotalDataGenerator::vx_TotalDataGenerator(const std::vector<vx_ClassDataGenerator>& generators)
    : generators_(generators) {}
vx_TotalDataGenerator::vx_TotalDataGenerator(const vx_TotalDataGenerator&) = default;
vx_TotalDataGenerator::~vx_TotalDataGenerator() = default;

vx_TotalDataGenerator& vx_TotalDataGenerator::operator=(const vx_TotalDataGenerator& other) {
    std::vector<vx_ClassDataGenerator> generators = other.generators_;
    data_ = other.data_; // all or nothing, and the last that can throw
    generators_.swap(generators);
    return *this;
}

vxClassifierDataProviderMemory vx_TotalDataGenerator::generateData() {
    // Returned on every way, so it is made in the caller's place: keeping the data is the last that can fail.
    vxClassifierDataProviderMemory data(data_);
    if (data_.numMeasurements() == 0) {
        std::vector<vx_ClassDataGenerator> generators(generators_);
        const vxClassifierDataProviderMemory collected = collect(generators);
        for (const long k : shuffledOrder(collected.numMeasurements())) {
            data.addData(collected.featurePattern(k), collected.categoryLabel(k));
        }
        data_ = data;
        generators_.swap(generators); // those that have drawn
    }
    return data;
}
