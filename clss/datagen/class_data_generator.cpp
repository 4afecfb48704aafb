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
vx_ClassDataGenerator::~vx_ClassDataGenerator() = default;

vx_ClassDataGenerator& vx_ClassDataGenerator::operator=(const vx_ClassDataGenerator& other) {
    std::vector<vxPair<double>> measurements = other.measurements_;
    data_ = other.data_; // all or nothing, and the last that can throw
    measurements_.swap(measurements);
    count_ = other.count_;
    return *this;
}

vxClassifierDataProviderMemory vx_ClassDataGenerator::generateData() {
    // Returned on every way, so it is made in the caller's place: keeping the data is the last that can fail.
    vxClassifierDataProviderMemory data(data_);
    if (data_.numMeasurements() == 0 && count_ >= 1) {
        vxRandomGaussian random(seed);
        for (long i = 0; i < count_; ++i) {
            data.addData(drawPattern(measurements_, random), generatedLabel);
        }
        data_ = data;
    }
    return data;
}
