#include "clss/clastool/foundation/decision_rule.h"

#include "clss/clastool/foundation/override_access.h"
#include "clss/clastool/foundation/stable_merge_sort.h"
#include "platform/statistics/lanes.h"
#include "platform/statistics/scratch.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/classifier_defs.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>

namespace detail {

namespace {

constexpr std::size_t mostRanked = 64; // beyond that, comparing each pair takes longer than sorting

bool haveAscendingLabels(const CategoryResults& results) noexcept {
    for (std::size_t i = 1; i < results.size(); ++i) {
        if (results[i - 1].categoryLabel() >= results[i].categoryLabel()) {
            return false;
        }
    }
    return true;
}

/// The priors; gives their sum.
double takePriors(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
                  double* priors) {
    const bool isDefault = OverrideAccess::hasNone(frequencies);
    double sum = 0.0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const long label = matches[i].categoryLabel();
        priors[i] = isDefault && label >= 0 ? frequencies.defaultCategoryFrequency()
                                            : frequencies.categoryFrequency(label);
        sum += priors[i];
    }
    return sum;
}

/// Makes the priors the posteriors, but for their common factor; gives their sum. With an interruption check
/// installed, it is made for each category.
double weighMatchScores(const CategoryResults& matches, double sumPrior, double* weights) {
    const bool isChecked = isAttentionCheckInstalled();
    double sum = 0.0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (isChecked) {
            throwIfInterrupted();
        }
        weights[i] = matches[i].matchScore() * weights[i] / sumPrior;
        sum += weights[i];
    }
    return sum;
}

/// What assigning each category costs if every mistake costs the same, but for the common factor: the sum of
/// all terms but the category's own, added from 0 in their order. What precedes the own one is the same for
/// all later categories, and what follows it is added to many sums at a time.
void takeRisks(double cost, const double* weights, std::size_t size, double* risks) noexcept {
    double before = 0.0;
    for (std::size_t j = 0; j < size; ++j) {
        const double term = cost * weights[j];
        for (std::size_t i = 0; i < j; ++i) {
            risks[i] += term;
        }
        risks[j] = before;
        before += term;
    }
}

/// The costs of assigning one category, by the place of the true one. Of several rows for one pair, which an
/// archive can bring, the first one counts; so they are written last row first.
void takeCosts(const CategoryResults& matches, std::size_t assigned, const vxClassifierCosts& costs,
               double* costsByPlace) {
    std::fill(costsByPlace, costsByPlace + matches.size(), costs.defaultMisclassificationCost());
    for (std::size_t k = OverrideAccess::rows(costs); k-- > 0;) {
        if (OverrideAccess::assignedLabels(costs)[k] != matches[assigned].categoryLabel()) {
            continue;
        }
        for (std::size_t j = 0; j < matches.size(); ++j) {
            if (OverrideAccess::trueLabels(costs)[k] == matches[j].categoryLabel()) {
                costsByPlace[j] = OverrideAccess::costs(costs)[k];
            }
        }
    }
}

/// Replaces the risks of the categories whose assignment costs something else than the default.
void takeOverriddenRisks(const CategoryResults& matches, const vxClassifierCosts& costs,
                         const double* weights, double* risks) {
    const long* const labels = OverrideAccess::assignedLabels(costs);
    const std::size_t rows = OverrideAccess::rows(costs);
    Scratch<double> scratch(matches.size());
    double* const costsByPlace = scratch.data();
    for (std::size_t i = 0; i < matches.size(); ++i) {
        if (std::find(labels, labels + rows, matches[i].categoryLabel()) == labels + rows) {
            continue;
        }
        takeCosts(matches, i, costs, costsByPlace);
        risks[i] = 0.0;
        for (std::size_t j = 0; j < matches.size(); ++j) {
            if (j != i) {
                risks[i] += costsByPlace[j] * weights[j];
            }
        }
    }
}

/// Where a stable sort by ascending cost puts each of the categories. It compares each pair, but has no
/// branch to mispredict, which is what sorting few values costs. No cost may be NaN.
void takeRanks(const double* costs, std::size_t size, std::size_t* ranks) noexcept {
    for (std::size_t j = 0; j < size; ++j) {
        std::size_t before = j;
        for (std::size_t i = 0; i < j; ++i) {
            const std::size_t isLess = costs[j] < costs[i] ? 1 : 0;
            ranks[i] += isLess;
            before -= isLess;
        }
        ranks[j] = before;
    }
}

bool haveNotANumber(const double* values, std::size_t size) noexcept {
    bool isAny = false;
    for (std::size_t i = 0; i < size; ++i) {
        isAny |= std::isnan(values[i]);
    }
    return isAny;
}

/// Makes a category anew where it is. Assigning one that was made elsewhere moves it in larger pieces than it
/// was written in, which waits until all of them have left the processor's store buffer.
void replace(vxClassifierCategoryResult& place, long label, double matchScore, double classScore,
             double expectedCost) {
    new (&place) vxClassifierCategoryResult(label, matchScore, classScore, expectedCost);
}

/// Checks each category and puts it where it belongs.
void fill(const double* classScores, const double* costs, const std::size_t* ranks,
          CategoryResults& categories) {
    const std::size_t size = categories.size();
    vxClassifierCategoryResult* const places = categories.data();
    std::array<long, mostRanked> labels;        // filled below
    std::array<double, mostRanked> matchScores; // likewise
    for (std::size_t i = 0; i < size; ++i) {
        labels[i] = places[i].categoryLabel();
        matchScores[i] = places[i].matchScore();
    }
    for (std::size_t i = 0; i < size; ++i) {
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): the loop above has filled both.
        replace(places[ranks[i]], labels[i], matchScores[i], classScores[i], costs[i]);
    }
}

/// Checks each category where it is.
void fill(const double* classScores, const double* costs, CategoryResults& categories) {
    for (std::size_t i = 0; i < categories.size(); ++i) {
        vxClassifierCategoryResult& category = categories[i];
        replace(category, category.categoryLabel(), category.matchScore(), classScores[i], costs[i]);
    }
}

void fillInOrder(const double* classScores, const double* costs, CategoryResults& categories) {
    const std::size_t size = categories.size();
    if (size <= mostRanked && !haveNotANumber(costs, size)) {
        std::array<std::size_t, mostRanked> ranks; // takeRanks fills it
        takeRanks(costs, size, ranks.data());
        fill(classScores, costs, ranks.data(), categories);
    } else {
        fill(classScores, costs, categories);
        orderByExpectedCost(categories);
    }
}

/// Whether two categories, nothing overridden and no check to be made leave only the arithmetic to be done.
bool isPlainPair(const CategoryResults& categories, const vxClassifierFrequencies& frequencies,
                 const vxClassifierCosts& costs) noexcept {
    if (categories.size() != 2) {
        return false;
    }
    const long first = categories[0].categoryLabel();
    const long second = categories[1].categoryLabel();
    return first >= 0 && second >= 0 && first != second && OverrideAccess::hasNone(frequencies) &&
           OverrideAccess::hasNone(costs) && !isAttentionCheckInstalled();
}

/// The decision of a plain pair, step by step as for any number; the loops and their memory would take longer
/// than the arithmetic. False, with nothing changed, if a sum is 0.
bool decidePair(double prior, double cost, CategoryResults& categories) {
    vxClassifierCategoryResult* const places = categories.data();
    const long labels[] = {places[0].categoryLabel(), places[1].categoryLabel()};
    const PairOfDoubles matchScores = {places[0].matchScore(), places[1].matchScore()};
    const double sumPrior = prior + prior;
    const PairOfDoubles weights = matchScores * prior / sumPrior;
    const double sum = weights[0] + weights[1];
    if (sumPrior == 0.0 || sum == 0.0) {
        return false;
    }
    const PairOfDoubles classScores = weights / sum;
    const PairOfDoubles others = {weights[1], weights[0]};
    const PairOfDoubles risks = (0.0 + cost * others) / sum; // added to 0, -0 becomes 0
    // The second one comes first only if it costs less, which NaN does not.
    const std::size_t placeOfFirst = risks[1] < risks[0] ? 1 : 0;
    replace(places[placeOfFirst], labels[0], matchScores[0], classScores[0], risks[0]);
    replace(places[1 - placeOfFirst], labels[1], matchScores[1], classScores[1], risks[1]);
    return true;
}

} // namespace

void requireUniqueLabels(const CategoryResults& results) {
    if (haveAscendingLabels(results)) { // as nearly all techniques give them
        return;
    }
    Scratch<long> scratch(results.size());
    long* const labels = scratch.data();
    for (std::size_t i = 0; i < results.size(); ++i) {
        labels[i] = results[i].categoryLabel();
    }
    std::sort(labels, labels + results.size());
    if (std::adjacent_find(labels, labels + results.size()) != labels + results.size()) {
        throw vxClassifierDefs::BadParams(L"The category labels of the match results must be unique.");
    }
}

void orderByExpectedCost(CategoryResults& results) {
    stableMergeSort(results, [](const vxClassifierCategoryResult& a, const vxClassifierCategoryResult& b) {
        return a.expectedCost() < b.expectedCost();
    });
}

namespace {

/// The general case; a room of its own since it needs much of the stack.
[[gnu::noinline]] void decideAny(const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                                 CategoryResults& categories) {
    requireUniqueLabels(categories);
    const std::size_t size = categories.size();
    Scratch<double> scratch(2 * size);
    double* const weights = scratch.data();
    double* const risks = weights + size;
    const double sumPrior = takePriors(categories, frequencies, weights);
    if (size == 0 || sumPrior == 0.0) {
        throw vxClassifierDefs::BadParams(L"At least one of the category frequencies must be > 0.");
    }
    const double sum = weighMatchScores(categories, sumPrior, weights);
    if (sum == 0.0) {
        throw vxClassifierDefs::BadParams(
            L"At least one of the resulting classification scores must be > 0.");
    }
    takeRisks(costs.defaultMisclassificationCost(), weights, size, risks);
    if (!OverrideAccess::hasNone(costs)) {
        takeOverriddenRisks(categories, costs, weights, risks);
    }
    for (std::size_t i = 0; i < 2 * size;
         i += 2) { // the risks lie behind the weights; two divisions at a time
        weights[i] /= sum;
        weights[i + 1] /= sum;
    }
    fillInOrder(weights, risks, categories);
}

} // namespace

void decide(const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
            CategoryResults& categories) {
    if (!isPlainPair(categories, frequencies, costs) ||
        !decidePair(frequencies.defaultCategoryFrequency(), costs.defaultMisclassificationCost(),
                    categories)) {
        decideAny(frequencies, costs, categories);
    }
}

} // namespace detail
