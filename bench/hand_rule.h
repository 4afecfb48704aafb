#ifndef BENCH_HAND_RULE_H
#define BENCH_HAND_RULE_H

#include <array>
#include <cstddef>

namespace bench {

/// What a decision says of one category.
struct HandEntry {
    long label;
    double match;
    double posterior;
    double cost;
};

/// The decision rule as one would write it for oneself: arrays of a fixed size, the same costs for all wrong
/// decisions, no checks but the one for repeated labels. Ordered by cost, equal ones in the given order.
class HandRule {
public:
    static constexpr std::size_t capacity = 64;

    /// `entries` have labels and match scores; the rest is filled in.
    static void decide(HandEntry* entries, std::size_t count, double prior, double wrongCost) noexcept {
        std::array<double, capacity> weighted; // filled below
        double sum = 0.0;
        const double sumPrior = prior * static_cast<double>(count);
        for (std::size_t i = 0; i < count; ++i) {
            weighted[i] = entries[i].match * prior / sumPrior;
            sum += weighted[i];
        }
        for (std::size_t i = 0; i < count; ++i) {
            double risk = 0.0;
            for (std::size_t j = 0; j < i; ++j) {
                risk += wrongCost * weighted[j];
            }
            for (std::size_t j = i + 1; j < count; ++j) {
                risk += wrongCost * weighted[j];
            }
            entries[i].posterior = weighted[i] / sum;
            entries[i].cost = risk / sum;
        }
        order(entries, count);
    }

    static bool hasRepeatedLabel(const HandEntry* entries, std::size_t count) noexcept {
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                if (entries[i].label == entries[j].label) {
                    return true;
                }
            }
        }
        return false;
    }

private:
    static void order(HandEntry* entries, std::size_t count) noexcept {
        for (std::size_t i = 1; i < count; ++i) {
            const HandEntry moved = entries[i];
            std::size_t place = i;
            for (; place > 0 && moved.cost < entries[place - 1].cost; --place) {
                entries[place] = entries[place - 1];
            }
            entries[place] = moved;
        }
    }
};

} // namespace bench

#endif
