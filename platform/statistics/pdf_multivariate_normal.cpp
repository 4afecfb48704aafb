#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include "platform/statistics/nmmatrix.h"
#include "platform/statistics/normal_density.h"
#include "platform/statistics/normal_statistics.h"
#include "platform/statistics/ready_density.h"
#include "platform/statistics/sample_block.h"
#include "platform/statistics/scratch.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <new>
#include <utility>

namespace {

/// What evaluation needs, derived from the statistics.
struct Prepared {
    long status = vmath_status::noData; // what an evaluation answers
    long numMeasurements = 0;
    detail::NormalDensity density;
};

} // namespace

struct vmath_PDFMultivariateNormal_State {
    detail::StatisticsRest rest;
    detail::SampleBlock block; // samples that have come since _beginUpdates and are not in the statistics yet
    Prepared prepared;
    bool isPrepared = true; // `prepared` belongs to the present statistics
    bool isUpdating = false;
    bool isPreparedOnDemandOnly = false;
    bool isBehind = false; // what is published is: the block is not empty, or half of the covariance is old
};

namespace {

struct MemoryConverter {
    MemoryConverter() { vfRegisterExceptionConverter(vmath_status::generalModule, &convert); }

    static void convert(long status) {
        if (status == vmath_status::outOfMemory) {
            throw std::bad_alloc();
        }
    }
};
const MemoryConverter memoryConverter;

/// Runs an operation behind which no exception may come out. Only memory can fail in here.
template <class Operation>
long guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (const std::exception&) { // of a size that no memory holds, it may also be a std::length_error
        return vmath_status::outOfMemory;
    }
}

bool isRecord(const vmath_PDFMultivariateNormal* pdf) noexcept {
    return pdf != nullptr && pdf->state != nullptr;
}

bool isPattern(const vmath_FeaturePattern& pattern) noexcept {
    return pattern.numValues >= 0 && pattern.numInvalid >= 0 &&
           (pattern.values != nullptr || pattern.numValues == 0) &&
           (pattern.invalidIndices != nullptr || pattern.numInvalid == 0);
}

bool isData(const vmath_FeaturePatternVector& data) noexcept {
    return data.numPatterns >= 0 && (data.patterns != nullptr || data.numPatterns == 0) &&
           std::all_of(data.patterns, data.patterns + data.numPatterns, isPattern);
}

bool hasConsistentShapes(const vmath_PDFMultivariateNormal& pdf) noexcept {
    const long size = pdf.mean.numRows;
    return pdf.covariance.numRows == size && pdf.covariance.numColumns == size &&
           pdf.mean.numColumns == (size == 0 ? 0 : 1);
}

bool isFinite(const vmath_PDFMultivariateNormal& pdf) noexcept {
    for (long row = 0; row < pdf.mean.numRows; ++row) {
        const double* covariances = pdf.covariance.rows[row];
        if (!std::isfinite(pdf.mean.rows[row][0]) ||
            !std::all_of(covariances, covariances + row + 1,
                         [](double entry) { return std::isfinite(entry); })) {
            return false;
        }
    }
    return true;
}

Prepared prepare(const vmath_PDFMultivariateNormal& pdf) {
    Prepared prepared;
    const std::int64_t numSamples = pdf.state->rest.numSamples;
    if (numSamples <= 0) {
        return prepared;
    }
    if (!hasConsistentShapes(pdf)) {
        prepared.status = vmath_status::inconsistentStatistics;
    } else if (isFinite(pdf)) {
        prepared.density = detail::NormalDensity(pdf.mean, pdf.covariance, numSamples);
        prepared.numMeasurements = pdf.mean.numRows;
        prepared.status = vxStatus::success;
    }
    return prepared;
}

/// Publishes everything that has come.
void catchUp(vmath_PDFMultivariateNormal& pdf) noexcept {
    vmath_PDFMultivariateNormal_State& state = *pdf.state;
    if (!state.isBehind) {
        return;
    }
    state.block.moveInto(pdf, state.rest);
    // There is nothing to copy after the first sample, whose covariance should not take memory.
    if (state.rest.covariance.order() == state.rest.mean.size()) {
        detail::copyUpperToLower(pdf.covariance);
    }
    state.isBehind = false;
}

/// To be called after each change of the statistics. They have changed by now, so lack of memory is no
/// failure of the change: evaluation then prepares for itself.
void statisticsHaveChanged(vmath_PDFMultivariateNormal& pdf) noexcept {
    vmath_PDFMultivariateNormal_State& state = *pdf.state;
    state.isPrepared = false;
    if (state.isUpdating) {
        return;
    }
    catchUp(pdf);
    if (state.isPreparedOnDemandOnly) {
        return;
    }
    guarded([&] {
        state.prepared = prepare(pdf);
        state.isPrepared = true;
        return vxStatus::success;
    });
}

bool isIndexOf(const vmath_FeaturePattern& pattern, std::int32_t index) noexcept {
    return index >= 0 && index < pattern.numValues;
}

bool isComplete(const vmath_FeaturePattern& pattern) noexcept {
    return std::none_of(pattern.invalidIndices, pattern.invalidIndices + pattern.numInvalid,
                        [&](std::int32_t index) { return isIndexOf(pattern, index); });
}

bool enters(const vmath_FeaturePattern& pattern, double factor) noexcept {
    return isComplete(pattern) && std::all_of(pattern.values, pattern.values + pattern.numValues,
                                              [&](double value) { return std::isfinite(value / factor); });
}

/// Makes statistics of no samples, with room for some.
void beginStatistics(vmath_PDFMultivariateNormal& pdf, long size, std::int64_t total) {
    detail::OwnedMatrix covariance(size, size);
    detail::OwnedMatrix mean(size, 1);
    detail::StatisticsRest rest;
    rest.reserve(static_cast<std::size_t>(size), total);
    mean.swap(pdf.mean);
    covariance.swap(pdf.covariance);
    pdf.state->rest = std::move(rest);
    pdf.numSamples = 0;
}

/// Makes room for `total` samples in statistics that have some. Updates read one half of the covariance, and
/// what was loaded counts as its other half says.
void makeRoom(vmath_PDFMultivariateNormal& pdf, std::size_t size, std::int64_t total) {
    detail::StatisticsRest& rest = pdf.state->rest;
    const bool isLoaded = rest.covariance.order() != size;
    rest.reserve(size, total);
    if (isLoaded) {
        detail::copyLowerToUpper(pdf.covariance);
    }
}

void enterOneByOne(vmath_PDFMultivariateNormal& pdf, const vmath_FeaturePatternVector& data, double factor) {
    const vmath_FeaturePattern* const end = data.patterns + data.numPatterns;
    const auto entering =
        std::count_if(data.patterns, end, [&](const auto& pattern) { return enters(pattern, factor); });
    if (entering == 0) {
        return;
    }
    detail::StatisticsRest& rest = pdf.state->rest;
    const long size = data.patterns->numValues;
    detail::Scratch<double> differences(static_cast<std::size_t>(size));
    if (rest.numSamples <= 0) {
        beginStatistics(pdf, size, entering);
    } else {
        makeRoom(pdf, static_cast<std::size_t>(size), rest.numSamples + entering);
    }
    for (const vmath_FeaturePattern* pattern = data.patterns; pattern != end; ++pattern) {
        if (enters(*pattern, factor)) {
            detail::enterPattern(pdf, rest, pattern->values, factor, differences.data());
        }
    }
    pdf.state->isBehind = true;
    statisticsHaveChanged(pdf);
}

/// Whether samples may wait for each other.
bool takesBlocks(const vmath_PDFMultivariateNormal& pdf, std::size_t size) noexcept {
    const vmath_PDFMultivariateNormal_State& state = *pdf.state;
    return state.isUpdating && state.rest.numSamples >= detail::SampleBlock::leastStatistics &&
           (state.block.hasRoomFor(size) || isFinite(pdf));
}

void enterInBlocks(vmath_PDFMultivariateNormal& pdf, const vmath_FeaturePatternVector& data, double factor) {
    vmath_PDFMultivariateNormal_State& state = *pdf.state;
    const std::size_t size = static_cast<std::size_t>(data.patterns->numValues);
    makeRoom(pdf, size, state.rest.numSamples + 1);
    state.block.reserve(size);
    for (long i = 0; i < data.numPatterns; ++i) {
        if (isComplete(data.patterns[i])) {
            state.block.add(data.patterns[i].values, factor);
        }
        if (state.block.isFull()) {
            state.block.moveInto(pdf, state.rest);
        }
    }
    state.isBehind = true;
    statisticsHaveChanged(pdf);
}

long enterPatterns(vmath_PDFMultivariateNormal& pdf, const vmath_FeaturePatternVector& data, double factor) {
    if (takesBlocks(pdf, static_cast<std::size_t>(data.patterns->numValues))) {
        enterInBlocks(pdf, data, factor);
    } else {
        enterOneByOne(pdf, data, factor);
    }
    return vxStatus::success;
}

long mergeStatistics(vmath_PDFMultivariateNormal& pdf, const vmath_PDFMultivariateNormal& other) {
    catchUp(pdf);
    pdf.state->block = detail::SampleBlock();
    const std::size_t size = static_cast<std::size_t>(pdf.mean.numRows);
    detail::StatisticsRest otherRest = other.state->rest;
    otherRest.reserve(size, 1);
    detail::Scratch<double> differences(size);
    pdf.state->rest.reserve(size, 2);
    detail::enterStatistics(pdf, pdf.state->rest, other, otherRest, differences.data());
    statisticsHaveChanged(pdf);
    return vxStatus::success;
}

/// A copy of which everything is published.
class UpToDateCopy {
public:
    explicit UpToDateCopy(const vmath_PDFMultivariateNormal& pdf) noexcept
        : status_(vmath_PDFMultivariateNormal_constructCopy(&copy_, &pdf)) {}
    ~UpToDateCopy() { vmath_PDFMultivariateNormal_destruct(&copy_); }
    UpToDateCopy(const UpToDateCopy&) = delete;
    UpToDateCopy& operator=(const UpToDateCopy&) = delete;

    long status() const noexcept { return status_; }
    const vmath_PDFMultivariateNormal& record() const noexcept { return copy_; }

private:
    vmath_PDFMultivariateNormal copy_;
    long status_;
};

double marginalAt(const detail::NormalDensity& density, const vmath_FeaturePattern& pattern) {
    const std::size_t size = static_cast<std::size_t>(pattern.numValues);
    detail::Scratch<unsigned char> valid(size);
    std::fill_n(valid.data(), size, static_cast<unsigned char>(1));
    for (long i = 0; i < pattern.numInvalid; ++i) {
        const std::int32_t index = pattern.invalidIndices[i];
        if (isIndexOf(pattern, index)) {
            valid[static_cast<std::size_t>(index)] = 0;
        }
    }
    return density.marginalLogValue(pattern.values, valid.data());
}

long logValueOf(const Prepared& prepared, const vmath_FeaturePattern& pattern, double& result) {
    if (vxStatus::isFailure(prepared.status)) {
        return prepared.status;
    }
    if (pattern.numValues != prepared.numMeasurements) {
        return vmath_status::otherSizeOnEvaluation;
    }
    result = isComplete(pattern) ? prepared.density.logValue(pattern.values)
                                 : marginalAt(prepared.density, pattern);
    return vxStatus::success;
}

long logValueOf(const vmath_PDFMultivariateNormal& pdf, const vmath_FeaturePattern& pattern, double& result) {
    return pdf.state->isPrepared ? logValueOf(pdf.state->prepared, pattern, result)
                                 : logValueOf(prepare(pdf), pattern, result);
}

} // namespace

const detail::NormalDensity* detail::readyDensity(const vmath_PDFMultivariateNormal& pdf,
                                                  long numValues) noexcept {
    if (pdf.state == nullptr || !pdf.state->isPrepared) {
        return nullptr;
    }
    const Prepared& prepared = pdf.state->prepared;
    const bool isReady = !vxStatus::isFailure(prepared.status) && prepared.numMeasurements == numValues;
    return isReady ? &prepared.density : nullptr;
}

void detail::prepareOnDemandOnly(vmath_PDFMultivariateNormal& pdf) noexcept {
    pdf.state->isPreparedOnDemandOnly = true;
}

/// A block that has room is there only since samples have begun to wait: updates are going on, the statistics
/// fit, nothing but samples has come since then, and that they have changed has been noted.
bool detail::joinWaitingSamples(vmath_PDFMultivariateNormal& pdf, const double* values,
                                std::size_t size) noexcept {
    vmath_PDFMultivariateNormal_State& state = *pdf.state;
    if (!state.block.hasRoomFor(size)) {
        return false;
    }
    state.block.add(values, 1.0);
    if (state.block.isFull()) {
        state.block.moveInto(pdf, state.rest);
    }
    return true;
}

long vmath_PDFMultivariateNormal_construct(vmath_PDFMultivariateNormal* pdf) noexcept {
    if (pdf == nullptr) {
        return vmath_status::badArgument;
    }
    return guarded([&] {
        auto state = std::make_unique<vmath_PDFMultivariateNormal_State>();
        *pdf = vmath_PDFMultivariateNormal();
        pdf->state = state.release();
        return vxStatus::success;
    });
}

long vmath_PDFMultivariateNormal_constructCopy(vmath_PDFMultivariateNormal* pdf,
                                               const vmath_PDFMultivariateNormal* source) noexcept {
    if (pdf == nullptr || !isRecord(source)) {
        return vmath_status::badArgument;
    }
    return guarded([&] {
        detail::OwnedMatrix mean(source->mean);
        detail::OwnedMatrix covariance(source->covariance);
        auto state = std::make_unique<vmath_PDFMultivariateNormal_State>(*source->state);
        *pdf = vmath_PDFMultivariateNormal();
        mean.swap(pdf->mean);
        covariance.swap(pdf->covariance);
        pdf->numSamples = source->numSamples;
        pdf->state = state.release();
        return vmath_PDFMultivariateNormal_endUpdates(pdf);
    });
}

long vmath_PDFMultivariateNormal_assign(vmath_PDFMultivariateNormal* pdf,
                                        const vmath_PDFMultivariateNormal* source) noexcept {
    if (!isRecord(pdf)) {
        return vmath_status::badArgument;
    }
    vmath_PDFMultivariateNormal copy;
    const long status = vmath_PDFMultivariateNormal_constructCopy(&copy, source);
    if (!vxStatus::isFailure(status)) {
        copy.state->isUpdating = pdf->state->isUpdating;
        copy.state->isPreparedOnDemandOnly = pdf->state->isPreparedOnDemandOnly;
        std::swap(*pdf, copy);
        vmath_PDFMultivariateNormal_destruct(&copy);
    }
    return status;
}

long vmath_PDFMultivariateNormal_destruct(vmath_PDFMultivariateNormal* pdf) noexcept {
    if (pdf == nullptr) {
        return vmath_status::badArgument;
    }
    detail::OwnedMatrix mean;
    detail::OwnedMatrix covariance;
    mean.swap(pdf->mean);
    covariance.swap(pdf->covariance);
    delete pdf->state;
    *pdf = vmath_PDFMultivariateNormal();
    return vxStatus::success;
}

long vmath_PDFMultivariateNormal_updateWithDataNormalize(vmath_PDFMultivariateNormal* pdf,
                                                         const vmath_FeaturePatternVector* data,
                                                         double factor) noexcept {
    if (!isRecord(pdf) || data == nullptr || !isData(*data)) {
        return vmath_status::badArgument;
    }
    if (data->numPatterns == 0) {
        return vxStatus::success;
    }
    const bool isTrained = pdf->state->rest.numSamples > 0;
    if (isTrained && !hasConsistentShapes(*pdf)) {
        return vmath_status::inconsistentStatistics;
    }
    const long size = isTrained ? pdf->mean.numRows : data->patterns->numValues;
    if (std::any_of(data->patterns, data->patterns + data->numPatterns,
                    [&](const auto& pattern) { return pattern.numValues != size; })) {
        return vmath_status::otherSizeOnUpdate;
    }
    return guarded([&] { return enterPatterns(*pdf, *data, factor); });
}

long vmath_PDFMultivariateNormal_beginUpdates(vmath_PDFMultivariateNormal* pdf) noexcept {
    if (!isRecord(pdf)) {
        return vmath_status::badArgument;
    }
    pdf->state->isUpdating = true;
    return vxStatus::success;
}

long vmath_PDFMultivariateNormal_endUpdates(vmath_PDFMultivariateNormal* pdf) noexcept {
    if (!isRecord(pdf)) {
        return vmath_status::badArgument;
    }
    pdf->state->isUpdating = false;
    if (!pdf->state->isPrepared) {
        statisticsHaveChanged(*pdf);
    }
    pdf->state->block = detail::SampleBlock();
    return vxStatus::success;
}

long vmath_PDFMultivariateNormal_merge(vmath_PDFMultivariateNormal* pdf,
                                       const vmath_PDFMultivariateNormal* other) noexcept {
    if (!isRecord(pdf) || !isRecord(other)) {
        return vmath_status::badArgument;
    }
    if (other->state->rest.numSamples <= 0) {
        return vxStatus::success;
    }
    if (pdf->state->rest.numSamples <= 0) {
        return vmath_PDFMultivariateNormal_assign(pdf, other);
    }
    if (!hasConsistentShapes(*pdf) || !hasConsistentShapes(*other)) {
        return vmath_status::inconsistentStatistics;
    }
    if (pdf->mean.numRows != other->mean.numRows) {
        return vmath_status::otherSizeOnUpdate;
    }
    if (other->state->isBehind) {
        const UpToDateCopy copy(*other);
        return vxStatus::isFailure(copy.status())
                   ? copy.status()
                   : guarded([&] { return mergeStatistics(*pdf, copy.record()); });
    }
    return guarded([&] { return mergeStatistics(*pdf, *other); });
}

long vmath_PDFMultivariateNormal_statisticsChanged(vmath_PDFMultivariateNormal* pdf) noexcept {
    if (!isRecord(pdf)) {
        return vmath_status::badArgument;
    }
    pdf->state->rest = detail::StatisticsRest();
    pdf->state->block = detail::SampleBlock();
    pdf->state->isBehind = false;
    pdf->state->rest.numSamples = pdf->numSamples;
    statisticsHaveChanged(*pdf);
    return vxStatus::success;
}

long vmath_PDFMultivariateNormal_logValue(const vmath_PDFMultivariateNormal* pdf,
                                          const vmath_FeaturePattern* pattern, double* result) noexcept {
    if (!isRecord(pdf) || pattern == nullptr || result == nullptr || !isPattern(*pattern)) {
        return vmath_status::badArgument;
    }
    if (pdf->state->isBehind) {
        const UpToDateCopy copy(*pdf);
        return vxStatus::isFailure(copy.status())
                   ? copy.status()
                   : guarded([&] { return logValueOf(copy.record(), *pattern, *result); });
    }
    return guarded([&] { return logValueOf(*pdf, *pattern, *result); });
}
