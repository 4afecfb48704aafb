#ifndef TESTS_LAWS_QUERY_PATTERNS_H
#define TESTS_LAWS_QUERY_PATTERNS_H

#include <vxclassifier/feature_pattern.h>

#include <vector>

namespace laws {

/// Valid patterns of two measurements, as many as the samples' training data have.
inline std::vector<vxFeaturePattern> queryPatterns() {
    std::vector<vxFeaturePattern> patterns;
    for (const double x : {-1.0, 0.3, 1.9, 2.7, 5.2, 100.0}) {
        for (const double y : {0.0, 1.1, 3.9, 6.8}) {
            patterns.emplace_back(std::vector<double>{x, y}, std::vector<long>{});
        }
    }
    return patterns;
}

} // namespace laws

#endif
