#include "clss/clastool/bayes/scoring_plan.h"

#include "clss/clastool/bayes/selection.h"
#include "platform/statistics/ready_density.h"

#include <vxclassifier/pdf_multivariate_normal.h>

#include <algorithm>
#include <array>
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
    numUsed_ = std::max(numUsed_, 1 + *std::max_element(set.begin(), set.end()));
    const NormalDensity* const ready = readyDensity(normal.pdf_, static_cast<long>(set.size()));
    if (ready != nullptr && IndependentNormals::canTake(*ready)) { // so the set has one index, too
        singles_.append(*ready, static_cast<std::size_t>(set.front()));
        normal.tellChangesTo(freshness_);
        return Kind::single;
    }
    joints_.push_back({&normal, set, areConsecutive(set)});
    return Kind::joint;
}

bool ScoringPlan::logLikelihoodsOfPair(const ScoringPlan& a, const ScoringPlan& b, const double* values,
                                       double* sums) noexcept {
    constexpr std::size_t most = 8 * numLanes;
    const std::size_t size = a.singles_.size();
    if (size > most || size != b.singles_.size()) {
        return false;
    }
    std::array<double, most> ofA; // filled below
    std::array<double, most> ofB; // likewise
    a.singles_.logValues(values, ofA.data());
    b.singles_.logValues(values, ofB.data());
    double sumOfA = 0.0;
    double sumOfB = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        sumOfA += ofA[i];
        sumOfB += ofB[i];
    }
    if (!isCertain(sumOfA) || !isCertain(sumOfB)) {
        return false;
    }
    sums[0] = sumOfA;
    sums[1] = sumOfB;
    return true;
}

bool ScoringPlan::evaluate(const Joint& joint, const double* values, double& logValue) {
    const std::size_t size = joint.indices.size();
    const NormalDensity* const density = readyDensity(joint.density->pdf_, static_cast<long>(size));
    if (density == nullptr) {
        return false;
    }
    if (joint.areConsecutive) {
        logValue = density->logValue(values + joint.indices.front());
        return true;
    }
    Scratch<double> chosen(size);
    std::transform(joint.indices.begin(), joint.indices.end(), chosen.data(),
                   [values](long index) { return values[index]; });
    logValue = density->logValue(chosen.data());
    return true;
}

} // namespace detail
