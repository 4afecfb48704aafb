#ifndef TESTS_CLASTOOL_KNN_COMPACT_FIXTURES_H
#define TESTS_CLASTOOL_KNN_COMPACT_FIXTURES_H

#include "clss/clastool/knn/compact_patterns.h"

#include "tests/clastool/knn/knn_fixtures.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace test {

using Measurements = std::vector<double>;

inline vxClassifierDataProviderMemory storeOf(const std::vector<Measurements>& patterns) {
    std::vector<PatternHandle> handles;
    std::vector<long> labels;
    for (const Measurements& measurements : patterns) {
        handles.push_back(pattern(measurements));
        labels.push_back(static_cast<long>(labels.size() % 5));
    }
    vxClassifierDataProviderMemory store;
    store.data(handles, labels);
    return store;
}

/// A kind of data that may be hard for a search that leaves patterns out.
struct Data {
    std::string name;
    std::function<double(std::mt19937_64&)> value;
};

inline double between0And1(std::mt19937_64& engine) {
    return static_cast<double>(engine() >> 11U) * 0x1p-53;
}

inline std::vector<Data> kindsOfData() {
    using Engine = std::mt19937_64;
    return {
        {"anywhere", [](Engine& engine) { return between0And1(engine); }},
        {"0 or 1", [](Engine& engine) { return static_cast<double>(engine() % 2); }},
        {"few values", [](Engine& engine) { return static_cast<double>(engine() % 7) * 0.1; }},
        {"some more values", [](Engine& engine) { return static_cast<double>(engine() % 40) / 3.0; }},
        {"mostly equal", [](Engine& engine) { return engine() % 50 == 0 ? between0And1(engine) : 0.25; }},
        {"all equal", [](Engine&) { return 0.1; }},
        {"last bits", [](Engine& engine) { return 1.0 + static_cast<double>(engine() % 4) * 0x1p-52; }},
        {"far outliers",
         [](Engine& engine) { return between0And1(engine) * (engine() % 30 == 0 ? 1e12 : 1.0); }},
        {"all sizes",
         [](Engine& engine) {
             return std::ldexp(between0And1(engine) - 0.5, static_cast<int>(engine() % 400) - 200);
         }},
        {"tiny", [](Engine& engine) { return between0And1(engine) * 1e-160; }},
        {"denormal",
         [](Engine& engine) {
             return static_cast<double>(engine() % 1000) * std::numeric_limits<double>::denorm_min();
         }},
        {"least certain", [](Engine& engine) { return between0And1(engine) * 2e-140; }},
        {"signed zeros", [](Engine& engine) { return engine() % 2 == 0 ? 0.0 : -0.0; }},
        {"up to the largest",
         [](Engine& engine) {
             return (between0And1(engine) - 0.5) * 2.0 * detail::CompactPatterns::largest;
         }},
    };
}

inline Measurements draw(const Data& data, std::mt19937_64& engine, std::size_t width) {
    Measurements measurements(width);
    for (double& value : measurements) {
        value = data.value(engine);
    }
    return measurements;
}

inline std::vector<Measurements> draw(const Data& data, std::mt19937_64& engine, std::size_t count,
                                      std::size_t width) {
    std::vector<Measurements> patterns;
    for (std::size_t i = 0; i < count; ++i) {
        patterns.push_back(draw(data, engine, width));
    }
    return patterns;
}

} // namespace test

#endif
