#ifndef CLSS_CLASTOOL_BAYES_SCORING_PLAN_H
#define CLSS_CLASTOOL_BAYES_SCORING_PLAN_H

#include "platform/statistics/independent_normals.h"
#include "platform/statistics/joint_normals.h"
#include "platform/statistics/lanes.h"
#include "platform/statistics/scratch.h"

#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/probability_density_function.h>

#include <cstddef>
#include <memory>
#include <vector>

class vx_PDFMultivariateNormal;

namespace detail {

/// Whether what was copied from densities is still what they know. Shared by the copy and the densities.
struct Freshness {
    bool isFresh = true;
};

/// How a category model scores complete patterns without asking each of its densities for itself: the normal
/// densities of single measurements are copied into one block and evaluated side by side, those of several
/// are known to be ready. All others are left to the model.
///
/// A density tells when it changes; the plan is out of use from then on.
class ScoringPlan {
public:
    using Sets = std::vector<std::vector<long>>;
    using Densities = std::vector<vxPtrHandle<vx_ProbabilityDensityFunction>>;

    /// Sets and densities may be what an archive brought. Whoever uses the plan keeps the densities. One that
    /// is in another plan puts that one out of use.
    ScoringPlan(const Sets& sets, const Densities& densities);

    /// Whether the plan is good for this pattern.
    bool covers(const vxFeaturePattern& pattern) const noexcept {
        return isFresh() && pattern.numMeasurements() >= numUsed_ && pattern.numInvalid() == 0;
    }

    /// The sum of the log values of all sets in their order, at the values of a pattern that is covered.
    /// `logValueOf(set)` is asked for the log value of a set that the plan leaves to the model.
    template <class LogValueOf>
    double logLikelihood(const double* values, LogValueOf logValueOf) const {
        if (isOneJoint_) {
            return 0.0 + evaluate(joints_.front(), values); // which is no -0 then either
        }
        Scratch<double> ofSingles(paddedToLanes(singles_.size()));
        if (singles_.size() != 0) {
            singles_.logValues(values, ofSingles.data());
        }
        if (areAllSingles()) {
            const double sum = sumOf(ofSingles.data(), singles_.size());
            if (IndependentNormals::isCertainSum(sum)) {
                return sum;
            }
        }
        std::size_t single = 0;
        std::size_t joint = 0;
        double sum = 0.0;
        for (std::size_t set = 0; set < kinds_.size(); ++set) {
            if (kinds_[set] == Kind::joint) {
                sum += evaluate(joints_[joint++], values);
            } else if (kinds_[set] == Kind::single &&
                       ofSingles[single++] >= IndependentNormals::leastCertain) {
                sum += ofSingles[single - 1];
            } else {
                sum += logValueOf(set);
            }
        }
        return sum;
    }

    /// Whether the plan consists of single measurements that are evaluated side by side.
    bool areAllSingles() const noexcept { return joints_.empty() && singles_.size() == kinds_.size(); }

    /// The densities of these measurements.
    const IndependentNormals& singles() const noexcept { return singles_; }

    /// Whether the plan consists of one set of consecutive measurements that JointNormals can take.
    bool isPlainJoint() const noexcept {
        return isOneJoint_ && joints_.front().areConsecutive &&
               JointNormals::canTake(*joints_.front().density);
    }

    /// Adds the density of such a plan.
    void appendTo(JointNormals& normals) const {
        const Joint& joint = joints_.front();
        normals.append(*joint.density, static_cast<std::size_t>(joint.indices.front()));
    }

    /// 1 + the largest index that the plan reads.
    long numUsed() const noexcept { return numUsed_; }

    /// Whether all densities are as they were.
    bool isFresh() const noexcept { return freshness_->isFresh; }

private:
    enum class Kind : unsigned char { single, joint, other };

    struct Joint {
        const NormalDensity* density; // the vx_PDFMultivariateNormal's; good until that changes
        std::vector<long> indices;
        bool areConsecutive;
    };

    static double sumOf(const double* values, std::size_t number) noexcept {
        double sum = 0.0;
        std::size_t i = 0;
        for (; i + 4 <= number; i += 4) { // one after the other, but with fewer steps of the loop
            sum += values[i];
            sum += values[i + 1];
            sum += values[i + 2];
            sum += values[i + 3];
        }
        for (; i < number; ++i) {
            sum += values[i];
        }
        return sum;
    }

    Kind add(const std::vector<long>& set, vx_ProbabilityDensityFunction* density);
    static double evaluate(const Joint& joint, const double* values) {
        return joint.areConsecutive ? joint.density->logValue(values + joint.indices.front())
                                    : evaluateScattered(joint, values);
    }

    static double evaluateScattered(const Joint& joint, const double* values);

    std::vector<Kind> kinds_; // one for each set
    IndependentNormals singles_;
    std::vector<Joint> joints_;
    bool isOneJoint_ = false; // all measurements in one set, the plainest of models
    long numUsed_ = 0;        // 1 + the largest index that the plan reads
    std::shared_ptr<Freshness> freshness_;
};

} // namespace detail

#endif
