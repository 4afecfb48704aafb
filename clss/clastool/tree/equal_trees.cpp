#include "clss/clastool/tree/equal_trees.h"

#include <functional>

namespace detail {

std::size_t EqualTrees::PairHash::operator()(const Pair& pair) const noexcept {
    const std::hash<const vxDecisionTree*> hash;
    // The addresses of trees that were made one after the other lie at even distances, so that sums and
    // differences of them repeat; products do not.
    constexpr auto oddFactor = static_cast<std::size_t>(0x9e3779b97f4a7c15ULL);
    return hash(pair.first) * oddFactor + hash(pair.second);
}

bool EqualTrees::areKnown(const vxDecisionTree& left, const vxDecisionTree& right) {
    const auto leftNumber = numbers_.find(&left);
    const auto rightNumber = numbers_.find(&right);
    if (leftNumber != numbers_.end() && rightNumber != numbers_.end() &&
        classOf(leftNumber->second) == classOf(rightNumber->second)) {
        return true;
    }
    return pairs_.count(Pair(&left, &right)) != 0;
}

void EqualTrees::addTransitive(const vxDecisionTree& left, const vxDecisionTree& right) {
    const std::size_t leftClass = classOf(numberOf(left));
    const std::size_t rightClass = classOf(numberOf(right));
    next_[leftClass] = rightClass;
}

void EqualTrees::addPair(const vxDecisionTree& left, const vxDecisionTree& right) {
    pairs_.emplace(&left, &right);
}

std::size_t EqualTrees::numberOf(const vxDecisionTree& tree) {
    const auto [entry, isNew] = numbers_.emplace(&tree, next_.size());
    if (isNew) {
        next_.push_back(next_.size());
    }
    return entry->second;
}

std::size_t EqualTrees::classOf(std::size_t number) noexcept {
    while (next_[number] != number) {
        next_[number] = next_[next_[number]]; // halves the way for those who come next
        number = next_[number];
    }
    return number;
}

} // namespace detail
