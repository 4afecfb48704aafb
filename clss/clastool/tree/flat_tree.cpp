#include "clss/clastool/tree/flat_tree.h"

#include "clss/clastool/tree/range_test.h"
#include "clss/clastool/tree/tree_node_access.h"
#include "clss/clastool/tree/tree_walk.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/platform/exception.h>

#include <algorithm>
#include <new>
#include <typeinfo>

namespace detail {

// The measurement of a place says which member of its union holds; a variant would need room of its own for
// that.
// NOLINTBEGIN(cppcoreguidelines-pro-type-union-access)

namespace {

/// The places of trees that lie on several paths. While an archive is read it shares every object, so each
/// node of a tree may come here; a table of one block costs a fraction of one of linked nodes.
class PlaceTable {
public:
    static constexpr std::uint32_t unknown = 0xffffffffU;

    std::uint32_t find(const vxDecisionTree& tree) const noexcept {
        return slots_.empty() ? unknown : slots_[slotOf(&tree)].place;
    }

    /// For a tree that is not in the table.
    void add(const vxDecisionTree& tree, std::uint32_t place) {
        if (2 * (size_ + 1) > slots_.size()) {
            grow();
        }
        slots_[slotOf(&tree)] = {&tree, place};
        ++size_;
    }

private:
    struct Slot {
        const vxDecisionTree* tree = nullptr;
        std::uint32_t place = unknown;
    };

    /// Where the tree is, or would be put. There is always a free slot.
    std::size_t slotOf(const vxDecisionTree* tree) const noexcept {
        // The upper bits of the product depend on all bits of the address.
        const std::uint64_t hash = reinterpret_cast<std::uintptr_t>(tree) * 0x9e3779b97f4a7c15U >> 32;
        std::size_t slot = hash & (slots_.size() - 1);
        while (slots_[slot].tree != nullptr && slots_[slot].tree != tree) {
            slot = (slot + 1) & (slots_.size() - 1);
        }
        return slot;
    }

    void grow() {
        std::vector<Slot> old(std::max<std::size_t>(64, 2 * slots_.size()));
        old.swap(slots_);
        for (const Slot& slot : old) {
            if (slot.tree != nullptr) {
                slots_[slotOf(slot.tree)] = slot;
            }
        }
    }

    std::vector<Slot> slots_; // a power of two of them, at most half of them taken
    std::size_t size_ = 0;
};

} // namespace

/// Lays a tree out, the branches for false one behind the other. Has its own stack, since a tree may be deep,
/// and lays a shared branch out once, since it may lie on more paths than can be walked.
class FlatTreeBuilder {
public:
    FlatTreeBuilder(std::vector<FlatTree::Place>& places, std::size_t most) : places_(places), most_(most) {}

    /// To be called once; false if it takes more places than there may be.
    bool build(const vxDecisionTree& top) {
        placeAllFalse(&top);
        while (!open_.empty() && places_.size() < most_) {
            const Open next = open_.back();
            open_.pop_back();
            const std::uint32_t known = placeOf(next.tree);
            places_[next.question].target = known == PlaceTable::unknown ? nextPlace() : known;
            if (known == PlaceTable::unknown) {
                placeAllFalse(next.tree);
            }
        }
        return open_.empty();
    }

private:
    /// A branch for true that is still to be placed.
    struct Open {
        const vxDecisionTree* tree; // may be null
        std::uint32_t question;
    };

    std::uint32_t nextPlace() const noexcept { return static_cast<std::uint32_t>(places_.size()); }

    std::uint32_t placeOf(const vxDecisionTree* tree) const noexcept {
        return tree != nullptr && isShared(*tree) ? shared_.find(*tree) : PlaceTable::unknown;
    }

    /// Places a tree, its branch for false, the branch for false of that, and so on.
    void placeAllFalse(const vxDecisionTree* tree) {
        while (places_.size() < most_) {
            const std::uint32_t known = placeOf(tree);
            if (known != PlaceTable::unknown) {
                add(FlatTree::isJump).target = known;
                return;
            }
            if (tree != nullptr && isShared(*tree)) {
                shared_.add(*tree, nextPlace());
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
        QuestionObservation::observe(node);
        QuestionObservation::observe(range);
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
    std::size_t most_; // places
    std::vector<Open> open_;
    PlaceTable shared_;
};

std::shared_ptr<const FlatTree> FlatTree::of(const vxDecisionTree& top, std::size_t most) noexcept {
    try {
        const auto made = std::make_shared<FlatTree>();
        if (!FlatTreeBuilder(made->places_, most).build(top)) {
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
                                             bool isChecked) {
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

// NOLINTEND(cppcoreguidelines-pro-type-union-access)

} // namespace detail
