#include "clss/clastool/bayes/scoring_plan.h"

#include "clss/clastool/bayes/selection.h"
#include "platform/statistics/ready_density.h"

#include <vxclassifier/pdf_multivariate_normal.h>

#include <algorithm>
#include <limits>
#include <typeinfo>

namespace detail {

namespace {

/// Whether a pattern can have measurements at all of them. An archive can bring any numbers.
bool areIndices(const std::vector<long>& set) noexcept {
    return !set.empty() && std::all_of(set.begin(), set.end(), [](long index) {
        return index >= 0 && index < std::numeric_limits<long>::max();
    });
}

} // namespace

ScoringPlan::ScoringPlan(const Sets& sets, const Densities& densities)
    : freshness_(std::make_shared<Freshness>()) {
    kinds_.reserve(sets.size());
    for (std::size_t set = 0; set < sets.size(); ++set) {
        kinds_.push_back(add(sets[set], set < densities.size() ? densities[set].get() : nullptr));
    }
    isOneJoint_ = kinds_.size() == 1 && kinds_.front() == Kind::joint;
}

/// Densities of exactly our class only: one that is derived from it may answer otherwise.
ScoringPlan::Kind ScoringPlan::add(const std::vector<long>& set, vx_ProbabilityDensityFunction* density) {
    if (density == nullptr || typeid(*density) != typeid(vx_PDFMultivariateNormal) || !areIndices(set)) {
        return Kind::other;
    }
    auto& normal = static_cast<vx_PDFMultivariateNormal&>(*density);
    const NormalDensity* const ready = readyDensity(normal.pdf_, static_cast<long>(set.size()));
    if (ready == nullptr) {
        return Kind::other;
    }
    numUsed_ = std::max(numUsed_, 1 + *std::max_element(set.begin(), set.end()));
    normal.tellChangesTo(freshness_);
    if (IndependentNormals::canTake(*ready)) { // so the set has one index, too
        singles_.append(*ready, static_cast<std::size_t>(set.front()));
        return Kind::single;
    }
    joints_.push_back({ready, set, areConsecutive(set)});
    return Kind::joint;
}

double ScoringPlan::evaluateScattered(const Joint& joint, const double* values) {
    Scratch<double> chosen(joint.indices.size());
    std::transform(joint.indices.begin(), joint.indices.end(), chosen.data(),
                   [values](long index) { return values[index]; });
    return joint.density->logValue(chosen.data());
}

} // namespace detail
