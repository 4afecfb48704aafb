#include "clss/clastool/bayes/log_factorials.h"

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <algorithm>
#include <cmath>

namespace detail {

LogFactorials logFactorials(std::int64_t n, std::int64_t k, std::int64_t m) {
    constexpr std::int64_t termsBetweenChecks = std::int64_t{1} << 20;
    LogFactorials logs{0.0, 0.0, 0.0};
    const std::int64_t largest = std::max({n, k, m});
    double sum = 0.0;
    for (std::int64_t i = 2; i <= largest; ++i) {
        sum += std::log(static_cast<double>(i));
        if (i == n) {
            logs.ofN = sum;
        }
        if (i == k) {
            logs.ofK = sum;
        }
        if (i == m) {
            logs.ofM = sum;
        }
        if (i % termsBetweenChecks == 0) {
            vfThrowExceptionOnFailure(vsys_attention_check());
        }
    }
    return logs;
}

} // namespace detail
