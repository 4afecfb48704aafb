#include <vxclassifier/classifier_distribution_types.h>

#include "clss/clastool/foundation/parallel_vectors.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

void requireLabel(long label) {
    if (label < 0) {
        throw vxClassifierDefs::BadLabel(L"Cateogory labels must be >= 0");
    }
}

void requireIndex(long index) {
    if (index < 0) {
        throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
    }
}

void requireIndices(const std::vector<long>& indices) {
    for (const long index : indices) {
        requireIndex(index);
    }
}

bool contains(const std::vector<long>& set, long index) {
    return std::find(set.begin(), set.end(), index) != set.end();
}

std::vector<long> withoutRepeats(const std::vector<long>& indices) {
    std::vector<long> distinct;
    std::unordered_set<long> seen;
    for (const long index : indices) {
        if (seen.insert(index).second) {
            distinct.push_back(index);
        }
    }
    return distinct;
}

} // namespace

vxClassifierDistributionTypes::vxClassifierDistributionTypes(DistributionType defaultType) noexcept
    : defaultDistributionType_(defaultType) {}

vxClassifierDistributionTypes&
vxClassifierDistributionTypes::operator=(const vxClassifierDistributionTypes& other) {
    return *this = vxClassifierDistributionTypes(other);
}

std::size_t vxClassifierDistributionTypes::overrideRows() const noexcept {
    return detail::commonRows(overrideLabels_, overrideIndices_, overrideTypes_);
}

std::size_t vxClassifierDistributionTypes::dependencyRows() const noexcept {
    return detail::commonRows(dependencyLabels_, dependencySets_);
}

long vxClassifierDistributionTypes::distOverrideIndex_(long label, long index) const {
    requireLabel(label);
    requireIndex(index);
    for (std::size_t k = 0; k < overrideRows(); ++k) {
        if (overrideLabels_[k] == label && overrideIndices_[k] == index) {
            return static_cast<long>(k);
        }
    }
    return -1;
}

vxClassifierDistributionTypes::DistributionType
vxClassifierDistributionTypes::distributionType(long label, long index) const {
    const long k = distOverrideIndex_(label, index);
    return k == -1 ? defaultDistributionType_ : overrideTypes_[static_cast<std::size_t>(k)];
}

bool vxClassifierDistributionTypes::dependsAlready(long label, long index) const {
    for (std::size_t row = 0; row < dependencyRows(); ++row) {
        if (dependencyLabels_[row] == label && contains(dependencySets_[row], index)) {
            return true;
        }
    }
    return false;
}

void vxClassifierDistributionTypes::distributionTypeOverride(long label, long index, DistributionType type) {
    if (type == defaultDistributionType_) {
        return;
    }
    if (dependsAlready(label, index)) {
        throw vxClassifierDefs::BadParams(L"Cannot override distribution type of a feature measurement that "
                                          L"is already part of a dependency set.");
    }
    const long k = distOverrideIndex_(label, index);
    if (k != -1) {
        overrideTypes_[static_cast<std::size_t>(k)] = type;
        return;
    }
    detail::makeRoomForRow(overrideLabels_, overrideIndices_, overrideTypes_);
    overrideLabels_.push_back(label);
    overrideIndices_.push_back(index);
    overrideTypes_.push_back(type);
}

void vxClassifierDistributionTypes::clearDistributionOverrides() noexcept {
    overrideLabels_.clear();
    overrideIndices_.clear();
    overrideTypes_.clear();
}

void vxClassifierDistributionTypes::setDependent(long label, const std::vector<long>& indices) {
    requireLabel(label);
    requireIndices(indices);
    const std::vector<long> set = withoutRepeats(indices);
    if (set.empty()) {
        return;
    }
    const DistributionType type = distributionType(label, set.front());
    for (const long index : set) {
        if (distributionType(label, index) != type) {
            throw vxClassifierDefs::BadParams(
                L"The distribution types of dependent feature measurements must be the same.");
        }
    }
    const std::vector<std::size_t> rows = rowsSharing(label, set);
    if (rows.empty()) {
        appendSet(label, set);
    } else {
        mergeSets(rows, set);
    }
}

std::vector<std::size_t> vxClassifierDistributionTypes::rowsSharing(long label,
                                                                    const std::vector<long>& indices) const {
    const std::unordered_set<long> wanted(indices.begin(), indices.end());
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < dependencyRows(); ++row) {
        const std::vector<long>& set = dependencySets_[row];
        if (dependencyLabels_[row] == label &&
            std::any_of(set.begin(), set.end(), [&](long index) { return wanted.count(index) != 0; })) {
            rows.push_back(row);
        }
    }
    return rows;
}

void vxClassifierDistributionTypes::appendSet(long label, const std::vector<long>& set) {
    std::vector<long> copy = set;
    detail::makeRoomForRow(dependencyLabels_, dependencySets_);
    dependencyLabels_.push_back(label);
    dependencySets_.push_back(std::move(copy));
}

void vxClassifierDistributionTypes::mergeSets(const std::vector<std::size_t>& rows,
                                              const std::vector<long>& set) {
    std::vector<long> merged = dependencySets_[rows.front()];
    merged.insert(merged.end(), set.begin(), set.end());
    for (std::size_t other = 1; other < rows.size(); ++other) {
        const std::vector<long>& joining = dependencySets_[rows[other]];
        merged.insert(merged.end(), joining.begin(), joining.end());
    }
    // Nothing throws from here on.
    dependencySets_[rows.front()].swap(merged);
    std::size_t kept = 0;
    for (std::size_t row = 0, other = 1; row < dependencyRows(); ++row) {
        if (other < rows.size() && rows[other] == row) {
            ++other;
            continue;
        }
        dependencyLabels_[kept] = dependencyLabels_[row];
        dependencySets_[kept].swap(dependencySets_[row]);
        ++kept;
    }
    dependencyLabels_.resize(kept);
    dependencySets_.resize(kept);
}

bool vxClassifierDistributionTypes::isDependent(long label, const std::vector<long>& indices) const {
    requireLabel(label);
    if (indices.empty()) {
        return false;
    }
    requireIndices(indices);
    for (std::size_t row = 0; row < dependencyRows(); ++row) {
        const std::vector<long>& set = dependencySets_[row];
        if (dependencyLabels_[row] == label && contains(set, indices.front())) {
            const std::unordered_set<long> members(set.begin(), set.end());
            return std::all_of(indices.begin(), indices.end(),
                               [&](long index) { return members.count(index) != 0; });
        }
    }
    return false;
}

bool vxClassifierDistributionTypes::operator==(const vxClassifierDistributionTypes& other) const noexcept {
    return defaultDistributionType_ == other.defaultDistributionType_ &&
           overrideLabels_ == other.overrideLabels_ && overrideIndices_ == other.overrideIndices_ &&
           overrideTypes_ == other.overrideTypes_ && dependencyLabels_ == other.dependencyLabels_ &&
           dependencySets_ == other.dependencySets_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes::DistributionType& type) {
    long number = type;
    archive || number;
    // What is stored is only read: several threads may store the same parameters.
    if (archive.isLoading()) {
        type = static_cast<vxClassifierDistributionTypes::DistributionType>(number);
    }
    return archive;
}

vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes& types) {
    detail::exchangeVersion(archive, "clss/clastool/bayes");
    archive || types.defaultDistributionType_;
    archive || types.overrideLabels_;
    archive || types.overrideIndices_;
    archive || types.overrideTypes_;
    archive || types.dependencyLabels_;
    archive || types.dependencySets_;
    return archive;
}
