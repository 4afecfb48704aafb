#include <vxclassifier/feature_pattern.h>

#include "clss/clastool/foundation/observed_patterns.h"

#include <vxclassifier/classifier_defs.h>

#include <algorithm>
#include <memory>
#include <utility>

vx_Instantiator vxFeaturePattern::sExemplar(typeid(vxFeaturePattern), &vxFeaturePattern::make);

// With anything more, each pattern would take sixteen bytes more of the memory that malloc gives.
static_assert(sizeof(vxFeaturePattern) <= 56 || sizeof(void*) != 8);

vxFeaturePattern::vxFeaturePattern() noexcept = default;

vxFeaturePattern::vxFeaturePattern(const std::vector<double>& measurements,
                                   const std::vector<long>& invalidIndices)
    : vxFeaturePattern() {
    detail::ValidityMarks validity;
    bool areInline = true;
    for (const long index : invalidIndices) {
        if (index < 0) {
            throwNegativeIndex_();
        }
        const auto place = static_cast<std::size_t>(index);
        if (place >= measurements.size()) {
            throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be < number of features");
        }
        if (place < detail::ValidityMarks::inlineSize) {
            validity.invalidateInline(place);
        } else {
            areInline = false;
        }
    }
    if (!areInline) {
        std::vector<bool> marks(measurements.size(), true);
        for (const long index : invalidIndices) {
            marks[static_cast<std::size_t>(index)] = false;
        }
        validity = detail::ValidityMarks(marks, marks.size());
    }
    fill_(measurements, std::move(validity));
}

vxFeaturePattern::vxFeaturePattern(const vxFeaturePattern& other) : vxFeaturePattern() {
    fill_(other.measurements_(), other.validity_());
}

vxFeaturePattern& vxFeaturePattern::operator=(const vxFeaturePattern& other) {
    vxFeaturePattern copy(other);
    takeOver_(copy);
    detail::PatternObservation::changed(*this);
    return *this;
}

vxFeaturePattern::~vxFeaturePattern() {
    if (isMarked_()) {
        content_.makePlain();
    }
}

vxPersistent* vxFeaturePattern::make() {
    return new vxFeaturePattern;
}

void vxFeaturePattern::throwNegativeIndex_() {
    throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
}

void vxFeaturePattern::throwNotAllValid_() {
    throw vxClassifierDefs::BadFeatures(
        L"Access to full feature vector requires that all features are valid.");
}

long vxFeaturePattern::countInvalid_() const noexcept {
    long invalid = 0;
    for (std::size_t i = 0; i < measurements_().size(); ++i) {
        invalid += content_.marked().isValid(i) ? 0 : 1;
    }
    return invalid;
}

/// That of a marked pattern, or what is not there.
double vxFeaturePattern::oddMeasurement_(long index, bool mustBeValid) const {
    if (!isValid(index) && mustBeValid) {
        throw vxClassifierDefs::BadFeatures(
            L"The measurement for the specified measurement index is not valid.");
    }
    return index < numMeasurements() ? measurements_()[static_cast<std::size_t>(index)] : 0.0;
}

std::vector<long> vxFeaturePattern::invalidFeatureIndices() const {
    std::vector<long> indices;
    for (long i = 0; i < numMeasurements(); ++i) {
        if (!isValid(i)) {
            indices.push_back(i);
        }
    }
    return indices;
}

bool vxFeaturePattern::operator==(const vxFeaturePattern& other) const noexcept {
    if (isMarked_() != other.isMarked_() || measurements_() != other.measurements_()) {
        return false;
    }
    return !isMarked_() || content_.marked().validity == other.content_.marked().validity;
}

detail::ValidityMarks vxFeaturePattern::validity_() const {
    return isMarked_() ? content_.marked().validity : detail::ValidityMarks();
}

std::size_t vxFeaturePattern::numMarks_() const noexcept {
    const std::size_t size = measurements_().size();
    return isMarked_() ? content_.marked().validity.size(size) : size;
}

/// Writes all marks, a byte for each, 0 or 1.
void vxFeaturePattern::putMarks_(unsigned char* to) const noexcept {
    const std::size_t size = measurements_().size();
    if (isMarked_()) {
        content_.marked().validity.put(to, size);
    } else {
        std::fill_n(to, size, static_cast<unsigned char>(1));
    }
}

/// If this throws for want of memory, nothing has changed.
void vxFeaturePattern::replace_(std::vector<double> measurements, detail::ValidityMarks validity) {
    vxFeaturePattern fresh;
    fresh.fill_(std::move(measurements), std::move(validity));
    takeOver_(fresh);
}

/// For a pattern without measurements. If this throws for want of memory, it has none still.
void vxFeaturePattern::fill_(std::vector<double> measurements, detail::ValidityMarks validity) {
    if (validity.areAllValid()) {
        content_.plain() = std::move(measurements);
    } else {
        mark_({std::make_unique<std::vector<double>>(std::move(measurements)), std::move(validity)});
    }
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the content has it.

/// Leaves `other` fit for nothing but to be destroyed.
void vxFeaturePattern::takeOver_(vxFeaturePattern& other) noexcept {
    if (isMarked_()) {
        content_.makePlain();
        detail::SpareBits::clear(*this, markedBit_);
    }
    if (other.isMarked_()) {
        mark_(std::move(other.content_.marked()));
    } else {
        content_.plain().swap(other.content_.plain());
    }
}

/// Makes a plain pattern a marked one.
void vxFeaturePattern::mark_(detail::MarkedMeasurements&& marked) noexcept {
    content_.makeMarked(std::move(marked));
    detail::SpareBits::set(*this, markedBit_);
}
