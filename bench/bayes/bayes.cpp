#include "bench/bayes/bayes.h"

#include "bench/bayes/hand_model.h"

#include <limits>

namespace bench::bayes {

namespace {

constexpr std::size_t numQueries = 64;
constexpr std::size_t rowsPerCategory = 400;

template <class Model>
std::vector<long> mostLikely(const Workload& workload) {
    std::vector<Model> models;
    for (std::size_t i = 0; i < workload.categories; ++i) {
        models.emplace_back(workload, i);
    }
    std::vector<double> scratch(workload.rows.size);
    std::vector<long> labels;
    for (std::size_t query = 0; query < workload.queries.count; ++query) {
        double best = -std::numeric_limits<double>::infinity();
        long label = -1;
        for (std::size_t i = 0; i < models.size(); ++i) {
            const double score = models[i].logDensity(workload.query(query), scratch.data());
            if (score > best) {
                best = score;
                label = static_cast<long>(i);
            }
        }
        labels.push_back(label);
    }
    return labels;
}

void requireAgreement(const Workload& workload, Decider& decider) {
    for (std::size_t i = 0; i < numQueries; ++i) {
        if (decider.decide(i) != workload.expected[i]) {
            throw Disagreement("another decision on query " + std::to_string(i));
        }
    }
}

void addRunning(const std::vector<Contender>& contenders, std::size_t categories, std::size_t size,
                bool joint) {
    static LastMade<const Workload> lastMade;
    const std::string name = "bayes/" + std::to_string(categories) + " categories," +
                             (joint ? "joint" : "independent") + ",d=" + std::to_string(size);
    for (const Contender& contender : contenders) {
        const MakeDecider& make = joint ? contender.joint : contender.independent;
        if (make == nullptr) {
            continue;
        }
        add(name, contender.role, contender.name, [=] {
            const SharedWorkload workload = lastMade.get(name, [&] {
                return std::make_shared<const Workload>(categories, size, joint,
                                                        categories * rowsPerCategory);
            });
            std::unique_ptr<Decider> decider = make(workload);
            requireAgreement(*workload, *decider);
            return decider;
        });
    }
}

void addTraining(const std::vector<Contender>& contenders) {
    static LastMade<const Workload> lastMade;
    const std::string name = isQuick() ? "bayes/training 1e4 x 16" : "bayes/training 1e5 x 16";
    const std::size_t count = isQuick() ? 10'000 : 100'000;
    for (const Contender& contender : contenders) {
        add(name, contender.role, contender.name, [=] {
            return contender.training(
                lastMade.get(name, [&] { return std::make_shared<const Workload>(2, 16, true, count); }));
        });
    }
}

std::vector<Contender> everyone() {
    std::vector<Contender> contenders{ours()};
#ifdef BENCH_WITH_OPENCV
    contenders.push_back(openCV());
#endif
    contenders.push_back(byHand());
    return contenders;
}

} // namespace

Workload::Workload(std::size_t numCategories, std::size_t size, bool isJoint, std::size_t numRows)
    : categories(numCategories), joint(isJoint), rows(0, size), queries(0, size) {
    const Categories source(categories, size, 6);
    rows = source.rows(numRows, 7);
    queries = source.rows(numQueries, 8);
    expected = joint ? mostLikely<HandJoint>(*this) : mostLikely<HandIndependent>(*this);
}

} // namespace bench::bayes

void bench::addAll() {
    using namespace bayes;
    const std::vector<Contender> contenders = everyone();
    constexpr std::size_t counts[] = {2, 10};
    constexpr std::size_t sizes[] = {4, 16, 32};
    for (const bool joint : {true, false}) {
        for (const std::size_t categories : counts) {
            for (const std::size_t size : sizes) {
                addRunning(contenders, categories, size, joint);
            }
        }
    }
    addTraining(contenders);
}
