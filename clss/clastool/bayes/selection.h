#ifndef CLSS_CLASTOOL_BAYES_SELECTION_H
#define CLSS_CLASTOOL_BAYES_SELECTION_H

#include "platform/statistics/scratch.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// Whether there are indices, none negative, each by one larger than the one before: then the measurements of
/// a complete pattern lie next to each other.
inline bool areConsecutive(const std::vector<long>& indices) noexcept {
    return !indices.empty() && indices.front() >= 0 &&
           std::adjacent_find(indices.begin(), indices.end(),
                              [](long a, long b) { return a >= b || b - a != 1; }) == indices.end();
}

/// The measurements of a pattern at given indices, in their order. One that is invalid or lies past the
/// pattern's end is invalid in the selection too, with the value 0. A selection of the usual size lives on
/// the stack.
class Selection {
public:
    /// Throws vxClassifierDefs::BadIndex for a negative index.
    Selection(const vxFeaturePattern& pattern, const std::vector<long>& indices)
        : size_(indices.size()), values_(indices.size()), invalid_(indices.size()) {
        for (std::size_t j = 0; j < size_; ++j) {
            if (pattern.isValid(indices[j])) {
                values_[j] = pattern.featureMeasurement(indices[j], false);
            } else {
                values_[j] = 0.0;
                invalid_[numInvalid_++] = static_cast<std::int32_t>(j);
            }
        }
    }

    long size() const noexcept { return static_cast<long>(size_); }

    /// Null if a measurement is invalid.
    const double* valuesIfValid() noexcept { return numInvalid_ == 0 ? values_.data() : nullptr; }

    /// Borrows from the selection.
    vmath_FeaturePattern view() noexcept {
        vmath_FeaturePattern view;
        view.values = values_.data();
        view.numValues = size();
        view.invalidIndices = invalid_.data();
        view.numInvalid = static_cast<long>(numInvalid_);
        return view;
    }

    vxFeaturePattern pattern() {
        return vxFeaturePattern(std::vector<double>(values_.data(), values_.data() + size_),
                                std::vector<long>(invalid_.data(), invalid_.data() + numInvalid_));
    }

private:
    std::size_t size_;
    std::size_t numInvalid_ = 0;
    Scratch<double> values_;
    Scratch<std::int32_t> invalid_;
};

} // namespace detail

#endif
