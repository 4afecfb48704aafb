#include <vxclassifier/classifier_frequencies.h>

#include "clss/clastool/foundation/parallel_vectors.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

namespace {

void requirePositive(double frequency) {
    if (0.0 >= frequency) {
        throw vxClassifierDefs::BadParams(L"Category frequencies must be > 0.0");
    }
}

} // namespace

vxClassifierFrequencies::vxClassifierFrequencies(double defaultFrequency)
    : defaultCategoryFrequency_(defaultFrequency) {
    requirePositive(defaultFrequency);
}

vxClassifierFrequencies& vxClassifierFrequencies::operator=(const vxClassifierFrequencies& other) {
    return *this = vxClassifierFrequencies(other);
}

void vxClassifierFrequencies::defaultCategoryFrequency(double frequency) {
    requirePositive(frequency);
    defaultCategoryFrequency_ = frequency;
}

std::size_t vxClassifierFrequencies::rows() const noexcept {
    return detail::commonRows(overrideLabels_, overrideFrequencies_);
}

long vxClassifierFrequencies::freqOverrideIndex_(long label) const {
    if (label < 0) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
    }
    const std::size_t count = rows();
    for (std::size_t k = 0; k < count; ++k) {
        if (overrideLabels_[k] == label) {
            return static_cast<long>(k);
        }
    }
    return -1;
}

double vxClassifierFrequencies::categoryFrequency(long label) const {
    const long k = freqOverrideIndex_(label);
    return k == -1 ? defaultCategoryFrequency_ : overrideFrequencies_[static_cast<std::size_t>(k)];
}

void vxClassifierFrequencies::categoryFrequencyOverride(long label, double frequency) {
    requirePositive(frequency);
    const long k = freqOverrideIndex_(label);
    if (k != -1) {
        overrideFrequencies_[static_cast<std::size_t>(k)] = frequency;
        return;
    }
    detail::makeRoomForRow(overrideLabels_, overrideFrequencies_);
    overrideLabels_.push_back(label);
    overrideFrequencies_.push_back(frequency);
}

void vxClassifierFrequencies::clearFrequencyOverrides() noexcept {
    overrideLabels_.clear();
    overrideFrequencies_.clear();
}

bool vxClassifierFrequencies::operator==(const vxClassifierFrequencies& other) const noexcept {
    return defaultCategoryFrequency_ == other.defaultCategoryFrequency_ &&
           overrideLabels_ == other.overrideLabels_ && overrideFrequencies_ == other.overrideFrequencies_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFrequencies& frequencies) {
    detail::exchangeVersion(archive, "clss/clastool/clastool", 522);
    archive || frequencies.defaultCategoryFrequency_;
    archive || frequencies.overrideLabels_;
    archive || frequencies.overrideFrequencies_;
    return archive;
}
