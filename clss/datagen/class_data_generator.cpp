#include <vxclassifier/class_data_generator.h>

#include <vxclassifier/platform/random.h>

namespace {

constexpr long seed = 1;
constexpr long generatedLabel = 0;

vxPtrHandle_const<vxFeaturePattern> drawPattern(const std::vector<vxPair<double>>& measurements,
                                                vxRandomGaussian& random) {
    std::vector<double> values;
    values.reserve(measurements.size());
    for (const vxPair<double>& measurement : measurements) {
        values.push_back(random.next(measurement.first, measurement.second));
    }
    return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, {}));
}

} // namespace

vx_ClassDataGenerator::vx_ClassDataGenerator(const std::vector<vxPair<double>>& measurements, long count)
    : measurements_(measurements), count_(count) {}
vx_ClassDataGenerator::vx_ClassDataGenerator(const vx_ClassDataGenerator&) = default;
vx_ClassDataGenerator& vx_ClassDataGenerator::operator=(const vx_ClassDataGenerator&) = default;
vx_ClassDataGenerator::~vx_ClassDataGenerator() = default;

vxClassifierDataProviderMemory vx_ClassDataGenerator::generateData() {
    if (data_.numMeasurements() != 0 || count_ < 1) {
        return data_;
    }
    vxRandomGaussian random(seed);
    vxClassifierDataProviderMemory data(data_);
    for (long i = 0; i < count_; ++i) {
        data.addData(drawPattern(measurements_, random), generatedLabel);
    }
    data_ = data;
    return data;
}
