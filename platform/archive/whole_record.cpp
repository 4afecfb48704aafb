#include "platform/archive/whole_record.h"

#include <typeindex>
#include <unordered_map>

namespace detail {

namespace {

using Offers = std::unordered_map<std::type_index, const WholeRecord*>;

// Made at its first use, since files are initialised in any order, and never destroyed.
Offers& offers() {
    static Offers& instance = *new Offers;
    return instance;
}

} // namespace

const WholeRecord* wholeRecordOf(const std::type_info& type) noexcept {
    const auto offer = offers().find(type);
    return offer == offers().end() ? nullptr : offer->second;
}

WholeRecordOffer::WholeRecordOffer(const std::type_info& type, const WholeRecord& whole) {
    offers().emplace(type, &whole);
}

} // namespace detail
