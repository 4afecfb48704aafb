#include "platform/archive/whole_record.h"

#include <algorithm>
#include <vector>

namespace detail {

namespace {

struct Offer {
    const std::type_info* type;
    MakeFunction make;
    const WholeRecord* whole;
};
using Offers = std::vector<Offer>; // of very few classes

// Made at its first use, since files are initialised in any order, and never destroyed.
Offers& offers() {
    static Offers& instance = *new Offers;
    return instance;
}

template <class IsWanted>
const WholeRecord* find(IsWanted isWanted) noexcept {
    const auto offer = std::find_if(offers().begin(), offers().end(), isWanted);
    return offer == offers().end() ? nullptr : offer->whole;
}

} // namespace

const WholeRecord* wholeRecordOf(const std::type_info& type) noexcept {
    return find([&type](const Offer& offer) { return *offer.type == type; });
}

const WholeRecord* wholeRecordOf(MakeFunction make) noexcept {
    return find([make](const Offer& offer) { return offer.make == make; });
}

WholeRecordOffer::WholeRecordOffer(const std::type_info& type, MakeFunction make, const WholeRecord& whole) {
    offers().push_back({&type, make, &whole});
}

} // namespace detail
