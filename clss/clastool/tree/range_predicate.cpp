#include <vxclassifier/range_predicate.h>

#include "clss/clastool/tree/measurement_index.h"
#include "clss/clastool/tree/observed_questions.h"
#include "clss/clastool/tree/range_test.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/platform/archive.h>

vx_Instantiator vxRangePredicate::sExemplar(typeid(vxRangePredicate), &vxRangePredicate::make);

vxRangePredicate::vxRangePredicate() : measurementRange_(vxRange::FullRange()), measurementIndices_{0} {}

vxRangePredicate::vxRangePredicate(const vxRange& range, const std::vector<long>& indices)
    : measurementRange_(range), measurementIndices_(indices) {
    detail::requireMeasurementIndices(measurementIndices_);
}

vxRangePredicate::vxRangePredicate(const vxRangePredicate& other)
    : vxPredicateFunction(other), measurementRange_(other.measurementRange_),
      measurementIndices_(other.measurementIndices_) {}

vxRangePredicate& vxRangePredicate::operator=(const vxRangePredicate& other) {
    detail::QuestionObservation::changing(*this);
    measurementIndices_ = other.measurementIndices_; // may throw, so it goes first
    measurementRange_ = other.measurementRange_;
    return *this;
}

vxRangePredicate::~vxRangePredicate() = default;

vxPersistent* vxRangePredicate::make() {
    return new vxRangePredicate;
}

bool vxRangePredicate::outcome(const vxFeaturePattern& pattern) const {
    return detail::RangeTest::outcome(*this, pattern);
}

vxPtrHandle<vxPredicateFunction> vxRangePredicate::clone() const {
    return vxPtrHandle<vxPredicateFunction>(new vxRangePredicate(*this));
}

bool vxRangePredicate::isEqual(const vxPredicateFunction& other) const {
    const auto* range = dynamic_cast<const vxRangePredicate*>(&other);
    return range != nullptr && measurementRange_ == range->measurementRange_ &&
           measurementIndices_ == range->measurementIndices_;
}

void vxRangePredicate::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxRangePredicate::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPredicateFunction::dispatchSerialize(archive);
    if (archive.isLoading()) {
        detail::QuestionObservation::changing(*this);
    }
    archive || measurementRange_;
    archive || measurementIndices_;
}
