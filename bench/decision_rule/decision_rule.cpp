#include "bench/data.h"
#include "bench/hand_rule.h"
#include "bench/harness.h"

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_result.h>

#include <algorithm>
#include <array>
#include <cmath>

// From match scores to an ordered result: what every technique but the tree ends with.

namespace bench {

namespace {

constexpr std::size_t numQueries = 64;

/// Match scores within (0, 1], a row for each query.
Rows matchScores(std::size_t categories) {
    Rows scores(numQueries, categories);
    Generator generator(12);
    for (double& score : scores.values) {
        score = 1.0 - generator.uniform();
    }
    return scores;
}

class ByHand : public Runner {
public:
    explicit ByHand(std::size_t categories) : scores_(matchScores(categories)) {}

    void run(std::size_t turn) override { first_ = decide(turn).front().label; }

    /// A result that outlives the next decision, for any number of categories.
    std::vector<HandEntry> decide(std::size_t turn) const {
        std::vector<HandEntry> entries(scores_.size);
        decideIn(entries.data(), turn);
        return entries;
    }

protected:
    void decideIn(HandEntry* entries, std::size_t turn) const {
        const double* row = scores_.row(turn % numQueries);
        for (std::size_t i = 0; i < scores_.size; ++i) {
            entries[i] = {static_cast<long>(i), row[i], 0.0, 0.0};
        }
        if (!HandRule::hasRepeatedLabel(entries, scores_.size)) {
            HandRule::decide(entries, scores_.size, 1.0, 1.0);
        }
    }

    volatile long first_ = 0;

private:
    Rows scores_;
};

/// Each decision overwrites the last one, and there is a largest number of categories.
class ByHandOnArrays : public ByHand {
public:
    using ByHand::ByHand;

    void run(std::size_t turn) override {
        decideIn(entries_.data(), turn);
        first_ = entries_.front().label;
    }

private:
    std::array<HandEntry, HandRule::capacity> entries_{};
};

class Ours : public Runner {
public:
    explicit Ours(std::size_t categories) {
        const Rows scores = matchScores(categories);
        for (std::size_t query = 0; query < numQueries; ++query) {
            queries_.emplace_back();
            for (std::size_t i = 0; i < categories; ++i) {
                queries_.back().emplace_back(static_cast<long>(i), scores.row(query)[i], 0.0, 0.0);
            }
        }
        requireAgreement(categories);
    }

    void run(std::size_t turn) override {
        const vxClassifierResult result = decide(turn);
        first_ = result.categoryResults().front().categoryLabel();
    }

private:
    vxClassifierResult decide(std::size_t turn) const {
        return {queries_[turn % numQueries], frequencies_, costs_, 0.0};
    }

    void requireAgreement(std::size_t categories) const {
        const ByHand byHand(categories);
        for (std::size_t query = 0; query < numQueries; ++query) {
            const vxClassifierResult result = decide(query);
            const HandEntry expected = byHand.decide(query).front();
            const vxClassifierCategoryResult& first = result.categoryResults().front();
            if (first.categoryLabel() != expected.label ||
                std::fabs(first.expectedCost() - expected.cost) > 1e-12) {
                throw Disagreement("another decision on query " + std::to_string(query));
            }
        }
    }

    std::vector<std::vector<vxClassifierCategoryResult>> queries_;
    vxClassifierFrequencies frequencies_{1.0};
    vxClassifierCosts costs_{1.0};
    volatile long first_ = 0;
};

} // namespace

} // namespace bench

void bench::addAll() {
    constexpr std::size_t counts[] = {2, 10, 50};
    for (const std::size_t count : counts) {
        const std::string name = "decision_rule/" + std::to_string(count) + " categories";
        add(name, Role::ours, "vxClassifierResult", [=] { return std::make_unique<Ours>(count); });
        add(name, Role::floor, "by hand", [=] { return std::make_unique<ByHand>(count); });
        add(name, Role::floor, "by hand, overwriting",
            [=] { return std::make_unique<ByHandOnArrays>(count); });
    }
}
