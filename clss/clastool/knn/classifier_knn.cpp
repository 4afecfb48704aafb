#include <vxclassifier/classifier_knn.h>

#include "clss/clastool/foundation/result_access.h"
#include "clss/clastool/knn/compact_patterns.h"
#include "clss/clastool/knn/compact_search.h"
#include "clss/clastool/knn/nearest_neighbors.h"
#include "platform/archive/class_level.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <utility>

vx_Instantiator vx_ClassifierKNN::sExemplar(typeid(vx_ClassifierKNN), &vx_ClassifierKNN::make);

namespace {

using Store = vxClassifierDataProviderMemory;

constexpr long unknownLabel = -1;

[[noreturn]] void throwUnsuitable() {
    throw vxClassifierDefs::BadFeatures(
        L"K-nearest neighbor classification does not support invalid measurements");
}

void requireAllValid(const vxFeaturePattern& pattern) {
    if (pattern.numInvalid() != 0) {
        throwUnsuitable();
    }
}

const vxClassifierTrainParamsKNN& asKNN(const vxClassifierTrainParams& params) {
    const auto* knn = dynamic_cast<const vxClassifierTrainParamsKNN*>(&params);
    if (knn == nullptr) {
        throw vxBadPointer();
    }
    return *knn;
}

/// A store of its own with the same, shared patterns.
vxPtrHandle<Store> copyOf(const vxPtrHandle<Store>& store) {
    return store.isNull() ? vxPtrHandle<Store>() : vxPtrHandle<Store>(new Store(*store));
}

void copyKnownPatterns(const vxClassifierDataProvider& from, Store& to) {
    // The vectors grow with the patterns that arrive: a provider may announce any number.
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    std::vector<long> labels;
    const long count = from.numPatterns();
    for (long i = 0; i < count; ++i) {
        vxPtrHandle_const<vxFeaturePattern> pattern = from.featurePattern(i);
        requireAllValid(*pattern);
        const long label = from.categoryLabel(i);
        if (label != unknownLabel) {
            patterns.push_back(std::move(pattern));
            labels.push_back(label);
        }
    }
    to.data(patterns, labels);
}

} // namespace

vx_ClassifierKNN::vx_ClassifierKNN() : workingParams_(1) {}

vx_ClassifierKNN::vx_ClassifierKNN(const vx_ClassifierKNN& other)
    : vx_Classifier(other), store_(copyOf(other.store_)), workingParams_(other.workingParams_),
      compact_(detail::CompactPatterns::copyOf(other.compact_)) {}

vx_ClassifierKNN& vx_ClassifierKNN::operator=(const vx_ClassifierKNN& other) {
    beginAssignment_();
    vxPtrHandle<Store> store = copyOf(other.store_);
    std::unique_ptr<detail::CompactPatterns> compact = detail::CompactPatterns::copyOf(other.compact_);
    workingParams_ = other.workingParams_; // the last step that may throw
    vx_Classifier::operator=(other);
    store_ = std::move(store);
    compact_ = std::move(compact);
    return *this;
}

vx_ClassifierKNN::~vx_ClassifierKNN() = default;

vxPersistent* vx_ClassifierKNN::make() {
    return new vx_ClassifierKNN;
}

vxPtrHandle<vx_Classifier> vx_ClassifierKNN::clone() const {
    return vxPtrHandle<vx_Classifier>(new vx_ClassifierKNN(*this));
}

bool vx_ClassifierKNN::isEquivalent(const vx_Classifier& other) const {
    const auto* knn = dynamic_cast<const vx_ClassifierKNN*>(&other);
    return knn != nullptr && *knn == *this;
}

bool vx_ClassifierKNN::operator==(const vx_ClassifierKNN& other) const {
    // The frame's part is asked of the other object; an override would come back here.
    if (!other.vx_Classifier::isEquivalent(*this)) {
        return false;
    }
    return !isTrained_() || *store_ == *other.store_;
}

void vx_ClassifierKNN::train_(const vxClassifierDataProvider& provider,
                              const vxClassifierTrainParams& params) {
    workingParams_ = asKNN(params);
    compact_.reset();
    store_ = vxPtrHandle<Store>(new Store);
    store_->setName(provider.name());
    store_->setDescription(provider.description());
    copyKnownPatterns(provider, *store_);
    compact_ = detail::CompactPatterns::describe(*store_);
}

void vx_ClassifierKNN::retrain_(const vxClassifierTrainParams& params) {
    if (storedParams_().isNull()) {
        throw vxBadPointer();
    }
    workingParams_ = asKNN(params);
}

void vx_ClassifierKNN::trainStart_(const vxClassifierTrainParams&) {}

void vx_ClassifierKNN::trainIncremental_(const vxFeaturePattern& pattern, long label) {
    const vxPtrHandle_const<vxFeaturePattern> copy(new vxFeaturePattern(pattern));
    const bool wasDescribed = compact_ != nullptr && compact_->describes(*store_);
    store_->addData(copy, label);
    if (wasDescribed) {
        detail::CompactPatterns::follow(compact_, *store_);
    } else {
        compact_.reset();
    }
}

void vx_ClassifierKNN::untrain_() {
    store_.reset();
    compact_.reset();
}

bool vx_ClassifierKNN::isTrained_() const {
    return !store_.isNull();
}

void vx_ClassifierKNN::checkRunnable_() const {
    if (store_->numPatterns() == 0) {
        throw vxClassifierDefs::InsufficientTrainData(L"No valid data was provided for training.");
    }
}

void vx_ClassifierKNN::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
    checkRunnable_();
    requireAllValid(pattern);
    if (pattern.numMeasurements() != store_->numMeasurements()) {
        throwUnsuitable();
    }
    std::vector<vxClassifierCategoryResult> matchResults;
    fillMatchResults_(voters(pattern), matchResults);
    detail::ResultAccess::decide(matchResults, vxClassifierFrequencies(1.0),
                                 workingParams_.misclassificationCosts(), 0.0, result);
}

/// The indices of the nearest stored patterns in any order, which is all that the votes depend on.
std::vector<long> vx_ClassifierKNN::voters(const vxFeaturePattern& pattern) const {
    const long k = detail::requireNeighborCount(workingParams_.k());
    const vxPtrHandle_const<vxPatternDistanceMetric> metric = workingParams_.distanceMetric();
    const auto search = [&] {
        return detail::CompactSearch(pattern, *store_, *compact_, *metric, k).neighbors();
    };
    const auto isSearchPossible = [&] {
        return detail::CompactSearch::isPossible(pattern, *store_, compact_.get(), metric.get());
    };
    if (isSearchPossible()) {
        if (detail::kindOfInstalledCheck() != detail::InstalledCheck::callers) {
            return search();
        }
        const vxPtrHandle<Store> store = store_; // the caller's check may do anything, even train
        const long checked = detail::CompactSearch::makeCallersChecks(*store);
        if (store == store_ && isSearchPossible()) {
            return search();
        }
        detail::NeighborList nearest(k, store->numPatterns());
        detail::offerStoredPatterns(pattern, *store, metric, nearest, checked);
        return std::move(nearest.indices());
    }
    std::vector<long> indices;
    std::vector<double> distances;
    findNearestNeighbors_(pattern, k, indices, distances);
    return indices;
}

void vx_ClassifierKNN::findNearestNeighbors_(const vxFeaturePattern& pattern, long k,
                                             std::vector<long>& indices,
                                             std::vector<double>& distances) const {
    detail::NeighborList nearest(detail::requireNeighborCount(k), store_->numPatterns());
    const vxPtrHandle<Store> store = store_; // the check may train this classifier
    detail::offerStoredPatterns(pattern, *store, workingParams_.distanceMetric(), nearest);
    indices.swap(nearest.indices());
    distances.swap(nearest.distances());
}

void vx_ClassifierKNN::fillMatchResults_(const std::vector<long>& indices,
                                         std::vector<vxClassifierCategoryResult>& results) const {
    std::vector<long> votes;
    votes.reserve(indices.size());
    for (const long index : indices) {
        votes.push_back(store_->categoryLabel(index));
    }
    std::sort(votes.begin(), votes.end());
    for (auto first = votes.cbegin(); first != votes.cend();) {
        const auto last = std::upper_bound(first, votes.cend(), *first);
        const double matchScore = static_cast<double>(last - first) / static_cast<double>(indices.size());
        results.emplace_back(*first, matchScore, 0.0, 0.0);
        first = last;
    }
}

void vx_ClassifierKNN::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordRunInputs_(vxDiagObject*, unsigned long, const vxFeaturePattern&) const {}
void vx_ClassifierKNN::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierKNN::recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                                         const vxClassifierResult&) const {}

void vx_ClassifierKNN::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_ClassifierKNN::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_Classifier::dispatchSerialize(archive);
    if (archive.isLoading()) {
        compact_.reset();
    }
    archive || store_;
    if (archive.isLoading() && !store_.isNull()) {
        compact_ = detail::CompactPatterns::describe(*store_);
    }
}
