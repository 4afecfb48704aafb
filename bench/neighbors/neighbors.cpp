#include "bench/neighbors/neighbors.h"

#include "bench/neighbors/literal_list.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace bench::neighbors {

namespace {

constexpr std::size_t numQueries = 64;
constexpr std::size_t numChecked = 4;
constexpr std::size_t sizesOfRows[] = {4, 16, 64};

/// Whether the published formula, two powers and all, is affordable as the judge.
bool isSmall(const Workload& workload) {
    return workload.stored.values.size() <= 2'000'000;
}

double squaredDistance(const double* a, const double* b, std::size_t size) {
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return sum;
}

double publishedDistance(const double* a, const double* b, std::size_t size) {
    const volatile double order = 2.0; // keeps the compiler from putting a product for the power
    const double power = order;
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        sum += std::pow(std::fabs(a[i] - b[i]), power);
    }
    return std::pow(sum, 1.0 / power);
}

Found nearest(const Workload& workload, const double* query) {
    const auto distance = isSmall(workload) ? &publishedDistance : &squaredDistance;
    LiteralList list;
    for (std::size_t i = 0; i < workload.stored.count; ++i) {
        list.offer(i, distance(query, workload.stored.row(i), workload.stored.size));
    }
    return list.rows();
}

std::array<double, numNeighbors> sortedDistances(const Workload& workload, const double* query,
                                                 const Found& rows) {
    std::array<double, numNeighbors> distances{};
    for (std::size_t i = 0; i < numNeighbors; ++i) {
        distances[i] = std::sqrt(squaredDistance(query, workload.stored.row(rows[i]), workload.stored.size));
    }
    std::sort(distances.begin(), distances.end());
    return distances;
}

Found sorted(Found rows) {
    std::sort(rows.begin(), rows.end());
    return rows;
}

bool agree(const Workload& workload, std::size_t query, const Found& found, Precision precision) {
    const Found& expected = workload.expected[query];
    if (precision == Precision::published) {
        return sorted(found) == sorted(expected);
    }
    const Found distinct = sorted(found);
    if (std::adjacent_find(distinct.begin(), distinct.end()) != distinct.end()) {
        return false;
    }
    const double tolerance = precision == Precision::doubles ? 1e-14 : 1e-6;
    const double* values = workload.query(query);
    const auto right = sortedDistances(workload, values, expected);
    const auto given = sortedDistances(workload, values, found);
    for (std::size_t i = 0; i < numNeighbors; ++i) {
        if (!(std::fabs(given[i] - right[i]) <= tolerance * right[i])) {
            return false;
        }
    }
    return true;
}

std::string sizes(std::size_t n, std::size_t d) {
    const int digits = static_cast<int>(std::lround(std::log10(static_cast<double>(n))));
    return "n=1e" + std::to_string(digits) + ",d=" + std::to_string(d);
}

struct Size {
    std::size_t n;
    std::size_t d;
};

using MakeRows = std::function<std::pair<Rows, Rows>(Size)>; // stored rows and queries

std::pair<Rows, Rows> ordinary(Size size) {
    return {bellRows(size.n, size.d, 1), bellRows(numQueries, size.d, 2)};
}

/// All rows lie on a sphere around the query: no bound can leave one out before the last.
std::pair<Rows, Rows> atOneDistance(Size size) {
    Rows stored(size.n, size.d);
    Generator generator(3);
    for (double& value : stored.values) {
        value = (generator.next() & 1U) != 0 ? 1.0 : -1.0;
    }
    return {std::move(stored), Rows(numQueries, size.d)};
}

std::pair<Rows, Rows> zerosAndOnes(Size size) {
    Rows stored(size.n, size.d);
    Rows queries(numQueries, size.d);
    Generator generator(4);
    for (Rows* rows : {&stored, &queries}) {
        for (double& value : rows->values) {
            value = (generator.next() & 1U) != 0 ? 1.0 : 0.0;
        }
    }
    return {std::move(stored), std::move(queries)};
}

/// One value of a hundred thousand is off by many powers of ten, which stretches any common scale.
std::pair<Rows, Rows> withFarOutliers(Size size) {
    auto rows = ordinary(size);
    Generator generator(5);
    for (std::size_t i = 0; i < rows.first.values.size() / 100'000 + 1; ++i) {
        rows.first.values[generator.below(rows.first.values.size())] *= 1e9;
    }
    return rows;
}

void addWorkload(const std::string& name, Size size, const MakeRows& makeRows,
                 const std::vector<Contender>& contenders) {
    static LastMade<const Workload> lastMade;
    for (const Contender& contender : contenders) {
        add(name, contender.role, contender.name, [=] {
            const std::shared_ptr<const Workload> workload = lastMade.get(name, [&] {
                auto rows = makeRows(size);
                return std::make_shared<const Workload>(name, std::move(rows.first), std::move(rows.second));
            });
            return contender.make(workload);
        });
    }
}

std::vector<Contender> everyone() {
    std::vector<Contender> contenders;
    addOurs(contenders);
#ifdef BENCH_WITH_FAISS
    addFaiss(contenders);
#endif
#ifdef BENCH_WITH_NANOFLANN
    addNanoflann(contenders);
#endif
#ifdef BENCH_WITH_OPENCV
    addOpenCV(contenders);
#endif
    addFloors(contenders);
    return contenders;
}

std::vector<Contender> filterAndFormula() {
    std::vector<Contender> contenders;
    addOurs(contenders);
    addLiteral(contenders);
    return contenders;
}

} // namespace

Workload::Workload(std::string workloadName, Rows storedRows, Rows queryRows)
    : name(std::move(workloadName)), stored(std::move(storedRows)), queries(std::move(queryRows)) {
    for (std::size_t i = 0; i < numChecked; ++i) {
        expected.push_back(nearest(*this, query(i)));
    }
}

void requireAgreement(const Workload& workload, Searcher& searcher, Precision precision) {
    for (std::size_t i = 0; i < numChecked; ++i) {
        if (!agree(workload, i, searcher.find(i), precision)) {
            throw Disagreement("other neighbours for query " + std::to_string(i));
        }
    }
}

} // namespace bench::neighbors

void bench::addAll() {
    using namespace neighbors;
    const std::vector<std::size_t> counts = isQuick()
                                                ? std::vector<std::size_t>{1'000, 10'000}
                                                : std::vector<std::size_t>{1'000, 10'000, 100'000, 1'000'000};
    for (const std::size_t n : counts) {
        for (const std::size_t d : sizesOfRows) {
            addWorkload("neighbors/" + sizes(n, d), {n, d}, &ordinary, everyone());
        }
    }
    const std::size_t n = isQuick() ? 10'000 : 100'000;
    for (const std::size_t d : sizesOfRows) {
        addWorkload("neighbors/ordinary," + sizes(n, d), {n, d}, &ordinary, filterAndFormula());
        addWorkload("neighbors/one distance," + sizes(n, d), {n, d}, &atOneDistance, filterAndFormula());
        addWorkload("neighbors/zeros and ones," + sizes(n, d), {n, d}, &zerosAndOnes, filterAndFormula());
        addWorkload("neighbors/far outliers," + sizes(n, d), {n, d}, &withFarOutliers, filterAndFormula());
    }
}
