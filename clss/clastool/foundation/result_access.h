#ifndef CLSS_CLASTOOL_FOUNDATION_RESULT_ACCESS_H
#define CLSS_CLASTOOL_FOUNDATION_RESULT_ACCESS_H

#include "clss/clastool/foundation/decision_rule.h"

#include <vxclassifier/classifier_result.h>

#include <cstddef>

namespace detail {

/// The inside of a result, for those who fill it again and again and want its memory to stay.
class ResultAccess {
public:
    /// As `result = vxClassifierResult(matches, frequencies, costs, matchScoreFactorLog)`, but the memory for
    /// the entries is used again. If this throws, the result holds anything.
    static void decide(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
                       const vxClassifierCosts& costs, double matchScoreFactorLog,
                       vxClassifierResult& result) {
        result.categoryResults_ = matches;
        decide(frequencies, costs, matchScoreFactorLog, result);
    }

    /// The same for match results that stand in the result already.
    static void decide(const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                       double matchScoreFactorLog, vxClassifierResult& result) {
        detail::decide(frequencies, costs, result.categoryResults_);
        result.matchScoreFactorLog_ = matchScoreFactorLog;
    }

    /// The entries of the result, to be filled with match results.
    static CategoryResults& entries(vxClassifierResult& result) noexcept { return result.categoryResults_; }

    /// As `result = vxClassifierResult()`, but keeps the memory.
    static void clear(vxClassifierResult& result) noexcept {
        result.categoryResults_.clear();
        result.matchScoreFactorLog_ = 0.0;
    }

    /// How many entries the result has room for.
    static std::size_t capacity(const vxClassifierResult& result) noexcept {
        return result.categoryResults_.capacity();
    }
};

} // namespace detail

#endif
