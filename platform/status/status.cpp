#include <vxclassifier/platform/status.h>

#include "platform/status/exception_numbers.h"
#include "platform/status/rethrow.h"

#include <map>
#include <mutex>

namespace {

struct Converters {
    std::mutex mutex;
    std::map<long, vfExceptionConverter> byModule;
};

// Made at its first use and never destroyed: static initialisers register converters, and a failure may be
// reported after the end of main().
Converters& converters() {
    static Converters& instance = *new Converters;
    return instance;
}

vfExceptionConverter findConverter(long module) {
    Converters& all = converters();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto found = all.byModule.find(module);
    return found == all.byModule.end() ? nullptr : found->second;
}

std::wstring failureMessage(long status) {
    constexpr wchar_t digits[] = L"0123456789ABCDEF";
    std::wstring number;
    for (int shift = 28; shift >= 0; shift -= 4) {
        number.push_back(digits[(static_cast<unsigned long>(status) >> shift) & 0xf]);
    }
    return L"An operation failed with the status 0x" + number + L".";
}

} // namespace

void vfRegisterExceptionConverter(long module, vfExceptionConverter converter) {
    Converters& all = converters();
    const std::lock_guard<std::mutex> lock(all.mutex);
    if (converter == nullptr) {
        all.byModule.erase(module);
    } else {
        all.byModule[module] = converter;
    }
}

void vfThrowExceptionOnFailure(long status) {
    if (!vxStatus::isFailure(status)) {
        return;
    }
    const long low = static_cast<long>(static_cast<unsigned long>(status) & 0xffffffffUL);
    if (const vfExceptionConverter convert = findConverter(vxStatus::module(low))) {
        convert(low);
    }
    throw vxStatusFailure(low);
}

vxStatusFailure::vxStatusFailure(long status)
    : vxExceptionWithString(failureMessage(status)),
      status_(static_cast<long>(static_cast<unsigned long>(status) & 0xffffffffUL)) {}
vxStatusFailure::vxStatusFailure(const vxStatusFailure&) noexcept = default;
vxStatusFailure& vxStatusFailure::operator=(const vxStatusFailure&) noexcept = default;
vxStatusFailure::~vxStatusFailure() = default;
long vxStatusFailure::status() const noexcept {
    return status_;
}
long vxStatusFailure::errorNumber() const {
    return detail::errorNumber::statusFailure;
}
void vxStatusFailure::suicideAndRethrow() {
    detail::deleteAndRethrow(this);
}
