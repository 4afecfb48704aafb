#ifndef CLSS_CLASTOOL_BAYES_SCORING_PLAN_H
#define CLSS_CLASTOOL_BAYES_SCORING_PLAN_H

#include "platform/statistics/independent_normals.h"
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
/// are known to be such. All others are left to the model.
///
/// A density from which something was copied tells when it changes; the plan is out of use from then on.
class ScoringPlan {
public:
    using Sets = std::vector<std::vector<long>>;
    using Densities = std::vector<vxPtrHandle<vx_ProbabilityDensityFunction>>;

    /// Sets and densities may be what an archive brought. Whoever uses the plan keeps the densities. One that
    /// was copied for another plan puts that one out of use.
    ScoringPlan(const Sets& sets, const Densities& densities);

    /// Whether the plan is good for this pattern.
    bool covers(const vxFeaturePattern& pattern) const noexcept {
        return freshness_->isFresh && pattern.numMeasurements() >= numUsed_ && pattern.numInvalid() == 0;
    }

    /// The sum of the log values of all sets in their order, at the values of a pattern that is covered.
    /// `logValueOf(set)` is asked for the log value of a set that the plan leaves to the model.
    template <class LogValueOf>
    double logLikelihood(const double* values, LogValueOf logValueOf) const {
        double ofOnlySet = 0.0;
        if (isOneJoint_ && evaluate(joints_.front(), values, ofOnlySet)) {
            return 0.0 + ofOnlySet; // which is no -0 then either
        }
        Scratch<double> ofSingles(paddedToLanes(singles_.size()));
        if (singles_.size() != 0) {
            singles_.logValues(values, ofSingles.data());
        }
        if (areAllSingles()) {
            const double sum = sumOf(ofSingles.data(), singles_.size());
            if (isCertain(sum)) {
                return sum;
            }
        }
        std::size_t single = 0;
        std::size_t joint = 0;
        double sum = 0.0;
        for (std::size_t set = 0; set < kinds_.size(); ++set) {
            double logValue = 0.0;
            if (kinds_[set] == Kind::single) {
                logValue = ofSingles[single++];
                if (!(logValue >= IndependentNormals::leastCertain)) {
                    logValue = logValueOf(set);
                }
            } else if (kinds_[set] == Kind::other || !evaluate(joints_[joint++], values, logValue)) {
                logValue = logValueOf(set);
            }
            sum += logValue;
        }
        return sum;
    }

    /// Whether the plan consists of single measurements that are evaluated side by side.
    bool areAllSingles() const noexcept { return joints_.empty() && singles_.size() == kinds_.size(); }

    /// As logLikelihood of two such plans that cover the pattern. An addition waits for the one before it,
    /// but not for that of the other sum. False, with `sums` untouched, for plans of different or unusual
    /// size, and for values that are not certain.
    static bool logLikelihoodsOfPair(const ScoringPlan& a, const ScoringPlan& b, const double* values,
                                     double* sums) noexcept;

private:
    enum class Kind : unsigned char { single, joint, other };

    struct Joint {
        const vx_PDFMultivariateNormal* density;
        std::vector<long> indices;
        bool areConsecutive;
    };

    /// Whether all log values of a sum were certain: one that is not would have made the sum as odd.
    static bool isCertain(double sum) noexcept { return sum >= 0.1 * IndependentNormals::leastCertain; }

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
    static bool evaluate(const Joint& joint, const double* values, double& logValue);

    std::vector<Kind> kinds_; // one for each set
    IndependentNormals singles_;
    std::vector<Joint> joints_;
    bool isOneJoint_ = false; // all measurements in one set, the plainest of models
    long numUsed_ = 0;        // 1 + the largest index that the plan reads
    std::shared_ptr<Freshness> freshness_;
};

} // namespace detail

#endif
