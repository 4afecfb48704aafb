#include "clss/clastool/tree/flat_tree.h"

#include "clss/clastool/tree/range_test.h"
#include "clss/clastool/tree/tree_node_access.h"
#include "clss/clastool/tree/tree_walk.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/platform/exception.h>

#include <new>
#include <unordered_map>

namespace detail {

/// Lays a tree out, the branches for false one behind the other. Has its own stack, since a tree may be deep,
/// and lays a shared branch out once, since it may lie on more paths than can be walked.
class FlatTreeBuilder {
public:
    explicit FlatTreeBuilder(std::vector<FlatTree::Place>& places) : places_(places) {}

    /// To be called once; false if there are more places than can be numbered.
    bool build(const vxDecisionTree& top) {
        placeAllFalse(&top);
        while (!open_.empty() && places_.size() < FlatTree::firstMark) {
            const Open next = open_.back();
            open_.pop_back();
            const std::uint32_t known = placeOf(next.tree);
            places_[next.question].target = known == unknown ? nextPlace() : known;
            if (known == unknown) {
                placeAllFalse(next.tree);
            }
        }
        return open_.empty();
    }

private:
    static constexpr std::uint32_t unknown = FlatTree::isLeaf; // no place has this number

    /// A branch for true that is still to be placed.
    struct Open {
        const vxDecisionTree* tree; // may be null
        std::uint32_t question;
    };

    std::uint32_t nextPlace() const noexcept { return static_cast<std::uint32_t>(places_.size()); }

    std::uint32_t placeOf(const vxDecisionTree* tree) const {
        const auto found = shared_.find(tree);
        return found == shared_.end() ? unknown : found->second;
    }

    /// Places a tree, its branch for false, the branch for false of that, and so on.
    void placeAllFalse(const vxDecisionTree* tree) {
        while (places_.size() < FlatTree::firstMark) {
            const std::uint32_t known = placeOf(tree);
            if (known != unknown) {
                add(FlatTree::isJump).target = known;
                return;
            }
            if (tree != nullptr && isShared(*tree)) {
                shared_.emplace(tree, nextPlace());
            }
            const vxDecisionTreeNode* node = tree == nullptr ? nullptr : exactNode(*tree);
            if (node == nullptr || !addQuestion(*node)) {
                addEnd(tree);
                return;
            }
            open_.push_back({TreeNodeAccess::trueTree(*node).get(), nextPlace() - 1});
            tree = TreeNodeAccess::falseTree(*node).get();
        }
    }

    bool addQuestion(const vxDecisionTreeNode& node) {
        const vxPredicateFunction* predicate = TreeNodeAccess::predicateFunction(node).get();
        if (predicate == nullptr || typeid(*predicate) != typeid(vxRangePredicate)) {
            return false;
        }
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): the line above is the check.
        const auto& range = static_cast<const vxRangePredicate&>(*predicate);
        const std::vector<long>& indices = RangeTest::indices(range);
        if (indices.size() != 1 || indices[0] < 0 || indices[0] >= static_cast<long>(FlatTree::firstMark)) {
            return false;
        }
        add(static_cast<std::uint32_t>(indices[0])).range = {range.measurementRange().lower(),
                                                             range.measurementRange().upper()};
        return true;
    }

    void addEnd(const vxDecisionTree* tree) {
        if (const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(tree)) {
            add(FlatTree::isLeaf).end = {leaf, leaf->classifierResult().categoryResults().data()};
        } else {
            add(FlatTree::isOther).other = tree;
        }
    }

    FlatTree::Place& add(std::uint32_t measurement) {
        FlatTree::Place& place = places_.emplace_back();
        place.measurement = measurement;
        return place;
    }

    std::vector<FlatTree::Place>& places_;
    std::vector<Open> open_;
    std::unordered_map<const vxDecisionTree*, std::uint32_t> shared_; // the places of shared trees
};

std::shared_ptr<const FlatTree> FlatTree::of(const vxDecisionTree& top) noexcept {
    try {
        const auto made = std::make_shared<FlatTree>();
        if (!FlatTreeBuilder(made->places_).build(top)) {
            return nullptr;
        }
        made->places_.shrink_to_fit();
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr; // the objects can be walked as well
    }
}

const vxDecisionTreeLeaf& FlatTree::leafFor(const vxFeaturePattern& pattern) const {
    const bool isChecked = isAttentionCheckInstalled();
    const double* const measurements = pattern.featureMeasurements(false).data();
    const std::size_t size = pattern.featureMeasurements(false).size();
    const bool areAllValid = pattern.numInvalid() == 0;
    const Place* const places = places_.data();
    const Place* place = places;
    for (;;) {
        const std::uint32_t index = place->measurement;
        if (index >= firstMark) {
            if (index != isJump) {
                return arriveAt(*place, pattern, isChecked);
            }
            place = places + place->target;
            continue;
        }
        if (isChecked) {
            throwIfInterrupted();
        }
        __builtin_prefetch(places + place->target); // the other branch lies right here
        const bool isWithin = index < size && place->range.lower <= measurements[index] &&
                              measurements[index] <= place->range.upper &&
                              (areAllValid || pattern.isValid(static_cast<long>(index)));
        place = isWithin ? places + place->target : place + 1;
    }
}

/// At a place that has no question: the walk ends, or goes on over the objects.
const vxDecisionTreeLeaf& FlatTree::arriveAt(const Place& place, const vxFeaturePattern& pattern,
                                             bool isChecked) const {
    if (place.measurement == isOther) {
        if (place.other == nullptr) {
            throw vxBadPointer();
        }
        return detail::leafFor(*place.other, pattern);
    }
    __builtin_prefetch(place.end.entries);
    if (isChecked) {
        throwIfInterrupted();
    }
    return *place.end.leaf;
}

} // namespace detail
