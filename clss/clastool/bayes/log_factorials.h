#ifndef CLSS_CLASTOOL_BAYES_LOG_FACTORIALS_H
#define CLSS_CLASTOOL_BAYES_LOG_FACTORIALS_H

#include <cstdint>

namespace detail {

/// The logarithms of n!, k! and m!; 0 for a number below 2.
struct LogFactorials {
    double ofN;
    double ofK;
    double ofM;
};

/// Each is the sum of log(2), log(3), ... in this order, so all three can be read off one sum on its way to
/// the largest. That sum is long for large numbers: every 2^20 terms the interruption check is made, and what
/// it throws passes.
LogFactorials logFactorials(std::int64_t n, std::int64_t k, std::int64_t m);

} // namespace detail

#endif
