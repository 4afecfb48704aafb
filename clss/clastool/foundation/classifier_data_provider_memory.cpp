#include <vxclassifier/classifier_data_provider_memory.h>

#include "clss/clastool/foundation/parallel_vectors.h"
#include "platform/archive/class_level.h"
#include "platform/archive/handle_batch.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

vx_Instantiator vxClassifierDataProviderMemory::sExemplar(typeid(vxClassifierDataProviderMemory),
                                                          &vxClassifierDataProviderMemory::make);

namespace {

constexpr long unknownLabel = -1;

void requireLabelOrUnknown(long label) {
    if (label < 0 && label != unknownLabel) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0 or unknown");
    }
}

} // namespace

vxClassifierDataProviderMemory::vxClassifierDataProviderMemory() noexcept = default;
vxClassifierDataProviderMemory::vxClassifierDataProviderMemory(const vxClassifierDataProviderMemory&) =
    default;

vxClassifierDataProviderMemory&
vxClassifierDataProviderMemory::operator=(const vxClassifierDataProviderMemory& other) {
    // All or nothing: copy first, then exchange.
    vxClassifierDataProviderMemory copy(other);
    name_.swap(copy.name_);
    description_.swap(copy.description_);
    patterns_.swap(copy.patterns_);
    labels_.swap(copy.labels_);
    ++revision_;
    return *this;
}

vxClassifierDataProviderMemory::~vxClassifierDataProviderMemory() = default;

vxPersistent* vxClassifierDataProviderMemory::make() {
    return new vxClassifierDataProviderMemory;
}

std::wstring vxClassifierDataProviderMemory::name() const {
    return name_;
}

std::wstring vxClassifierDataProviderMemory::description() const {
    return description_;
}

void vxClassifierDataProviderMemory::setName(const std::wstring& name) {
    name_ = name;
}

void vxClassifierDataProviderMemory::setDescription(const std::wstring& description) {
    description_ = description;
}

std::size_t vxClassifierDataProviderMemory::rows() const noexcept {
    return detail::commonRows(patterns_, labels_);
}

long vxClassifierDataProviderMemory::numPatterns() const {
    return static_cast<long>(rows());
}

long vxClassifierDataProviderMemory::numMeasurements() const {
    // A derived class may count otherwise, but it cannot make a first pattern.
    return numPatterns() == 0 || rows() == 0 ? 0 : patterns_.front()->numMeasurements();
}

bool vxClassifierDataProviderMemory::holds(long index) const {
    return index >= 0 && index < numPatterns() && static_cast<std::size_t>(index) < rows();
}

vxPtrHandle_const<vxFeaturePattern> vxClassifierDataProviderMemory::featurePattern(long index) const {
    if (!holds(index)) {
        throw vxClassifierDefs::BadIndex(L"Feature pattern index must be >=0 and < number of patterns.");
    }
    return patterns_[static_cast<std::size_t>(index)];
}

long vxClassifierDataProviderMemory::categoryLabel(long index) const {
    if (!holds(index)) {
        throw vxClassifierDefs::BadIndex(L"Category label index must be >=0 and < number of patterns.");
    }
    return labels_[static_cast<std::size_t>(index)];
}

void vxClassifierDataProviderMemory::addData(const vxPtrHandle_const<vxFeaturePattern>& pattern, long label) {
    if (numPatterns() > 0 && pattern->numMeasurements() != numMeasurements()) {
        throw vxClassifierDefs::BadFeatures(
            L"Feature pattern must have the same number of measurements as the rest of the data.");
    }
    requireLabelOrUnknown(label);
    detail::makeRoomForRow(patterns_, labels_);
    patterns_.push_back(pattern);
    labels_.push_back(label);
    ++revision_;
}

void vxClassifierDataProviderMemory::data(const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns,
                                          const std::vector<long>& labels) {
    if (patterns.size() != labels.size()) {
        throw vxClassifierDefs::BadFeatures(
            L"The number of the feature patterns must be equal to the number of category labels");
    }
    for (std::size_t i = 1; i < patterns.size(); ++i) {
        if (patterns[i]->numMeasurements() != patterns.front()->numMeasurements()) {
            throw vxClassifierDefs::BadFeatures(
                L"Feature patterns must all have the same number of measurements");
        }
    }
    for (const long label : labels) {
        requireLabelOrUnknown(label);
    }
    auto newPatterns = patterns;
    auto newLabels = labels;
    patterns_.swap(newPatterns);
    labels_.swap(newLabels);
    ++revision_;
}

bool vxClassifierDataProviderMemory::isEqual_(const vxClassifierDataProvider& other) const {
    const auto* memory = dynamic_cast<const vxClassifierDataProviderMemory*>(&other);
    if (memory == nullptr || rows() != memory->rows()) {
        return false;
    }
    for (std::size_t i = 0; i < rows(); ++i) {
        if (*patterns_[i] != *memory->patterns_[i]) {
            return false;
        }
    }
    return name_ == memory->name_ && description_ == memory->description_ && labels_ == memory->labels_;
}

void vxClassifierDataProviderMemory::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxClassifierDataProviderMemory::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxClassifierDataProvider::dispatchSerialize(archive);
    if (archive.isLoading()) {
        ++revision_; // before the change: reading may fail halfway
    }
    archive || name_;
    archive || description_;
    detail::exchangeHandles(archive, patterns_);
    archive || labels_;
}
