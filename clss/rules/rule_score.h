#ifndef CLSS_RULES_RULE_SCORE_H
#define CLSS_RULES_RULE_SCORE_H

#include <vxclassifier/rule.h>

#include <cmath>

namespace detail {

/// The geometric mean of the scores of a rule's features.
class MeanScore {
public:
    /// A score that is the mark of a feature to leave out is left out. NaN is neither less nor greater than
    /// the mark, so it counts as the mark.
    void take(double score) noexcept {
        if (score < -1.0 || score > -1.0) {
            product_ = product_ * score;
            used_ = used_ + 1.0;
        }
    }

    double product() const noexcept { return product_; }

    /// A rule that uses no feature fits everything: its product is 1, and so would be 1 to the power of
    /// 1 / 0.
    double mean() const {
        return !(product_ > 0.0) || used_ == 0.0 ? product_ : std::pow(product_, 1.0 / used_);
    }

private:
    double product_ = 1.0;
    double used_ = 0.0;
};

/// Whether `rule.score(featureVector) > threshold`, for a threshold that is not below 0; throws what that
/// score throws. Calls none of the library's own functions, and computes no score that cannot change the
/// answer.
bool isScoreAbove(const vxClassifierRule& rule, const vxClassifierFeatureVector& featureVector,
                  double threshold);

} // namespace detail

#endif
