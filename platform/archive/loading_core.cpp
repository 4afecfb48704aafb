#include "platform/archive/loading_core.h"

#include "platform/archive/archive_frame.h"
#include "platform/archive/byte_order.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/visited_scope.h"
#include "platform/status/code_points.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace detail {

LoadingCore::LoadingCore(const unsigned char* archive, std::size_t size) {
    verifyFrame(archive, size);
    next_ = archive + frameSize;
    end_ = archive + size;
}

LoadingCore::LoadingCore(std::vector<unsigned char> verified)
    : owned_(std::move(verified)), next_(owned_.data() + frameSize), end_(owned_.data() + owned_.size()) {}

LoadingCore::~LoadingCore() {
    releaseAll();
}

void LoadingCore::requireUsable() const {
    if (!usable_) {
        throw vxArchive::Misuse(L"The archive is finished, or an operation on it had failed.");
    }
}

const unsigned char* LoadingCore::take(std::size_t size) {
    requireUsable();
    if (left() < size) {
        throw vxArchive::ShortData(L"The archive holds fewer bytes than are to be read.");
    }
    return std::exchange(next_, next_ + size);
}

unsigned char LoadingCore::getByte() {
    return *take(1);
}

long LoadingCore::getSigned() {
    return static_cast<std::int32_t>(getLittleEndian<std::uint32_t>(take(sizeof(std::uint32_t))));
}

unsigned long LoadingCore::getUnsigned() {
    return getLittleEndian<std::uint32_t>(take(sizeof(std::uint32_t)));
}

double LoadingCore::getDouble() {
    return doubleOf(getLittleEndian<std::uint64_t>(take(sizeof(double))));
}

void LoadingCore::getDoubles(double* values, std::size_t count) {
    const unsigned char* from = take(count * sizeof(double));
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = doubleOf(getLittleEndian<std::uint64_t>(from + i * sizeof(double)));
    }
}

std::wstring LoadingCore::getText() {
    const unsigned long count = getUnsigned();
    requireElements(count, sizeof(std::uint32_t));
    const unsigned char* from = take(count * sizeof(std::uint32_t));
    std::vector<std::uint32_t> points(count);
    for (unsigned long i = 0; i < count; ++i) {
        points[i] = getLittleEndian<std::uint32_t>(from + i * sizeof(std::uint32_t));
        if (points[i] > lastCodePoint) {
            throw vxArchive::CorruptData(
                L"A text in the archive holds a character that is no Unicode code point.");
        }
    }
    return textOf(points);
}

void LoadingCore::requireElements(std::uint64_t count, std::size_t elementSize) const {
    requireUsable();
    if (count > left() / elementSize) {
        throw vxArchive::TooLarge(L"A size in the archive is larger than what is left of it.");
    }
}

vxPersistent* LoadingCore::getPointer(vxArchive& archive) {
    if (inRecord_) {
        return resolve(getUnsigned());
    }
    const unsigned long newRecords = getUnsigned();
    constexpr std::size_t leastRecord = sizeof(std::uint32_t) + sizeof(std::uint64_t);
    requireElements(newRecords, leastRecord);
    try {
        for (unsigned long i = 0; i < newRecords; ++i) {
            getRecord(archive);
        }
        return resolve(getUnsigned());
    } catch (...) {
        fail();
        throw;
    }
}

void LoadingCore::getRecord(vxArchive& archive) {
    const MakeFunction make = getClass();
    const std::uint64_t size = getLittleEndian<std::uint64_t>(take(sizeof(std::uint64_t)));
    requireElements(size, 1);
    records_.reserve(records_.size() + 1); // keep() must not fail once the object is there
    std::unique_ptr<vxPersistent> object(make());
    fillRecord(archive, *object, size);
    keep(*object.release());
}

MakeFunction LoadingCore::getClass() {
    const unsigned long number = getUnsigned();
    if (number < classes_.size()) {
        return classes_[number];
    }
    if (number > classes_.size()) {
        throw vxArchive::CorruptData(L"The archive uses a class before it names it.");
    }
    const unsigned long length = getUnsigned();
    requireElements(length, 1);
    const unsigned char* first = take(length);
    const std::string name(first, first + length);
    const MakeFunction make = findClass(name);
    if (make == nullptr) {
        throw vxArchive::UnknownClass(L"The archive holds an object of the unknown class " + widened(name) +
                                      L".");
    }
    classes_.push_back(make);
    return make;
}

void LoadingCore::fillRecord(vxArchive& archive, vxPersistent& object, std::uint64_t size) {
    const unsigned char* outerEnd = std::exchange(end_, next_ + size);
    const VisitedScope scope;
    inRecord_ = true;
    PersistentAccess::dispatchSerialize(object, archive);
    inRecord_ = false;
    if (next_ != end_) {
        throw vxArchive::CorruptData(L"An object in the archive is longer than its class knows.");
    }
    end_ = outerEnd;
    object.reInit();
}

void LoadingCore::keep(vxPersistent& object) {
    const auto* rep = dynamic_cast<const vxRepBase*>(&object);
    if (rep != nullptr) {
        vx_PtrHandleBase_RepAccessor::share(*rep);
    }
    records_.push_back(Loaded{&object, rep, false});
}

/// The object of a record that is complete. Inside a record that means an earlier one.
vxPersistent* LoadingCore::resolve(unsigned long number) {
    if (number == 0) {
        return nullptr;
    }
    if (number > records_.size()) {
        throw vxArchive::BadReference(
            L"The archive refers to an object that does not stand before the reference.");
    }
    Loaded& loaded = records_[number - 1];
    if (loaded.rep == nullptr) {
        if (loaded.taken && !uncounted_.tracks(*loaded.object)) {
            throw vxArchive::BadReference(L"The archive refers to an object that is gone already.");
        }
        uncounted_.track(*loaded.object, static_cast<std::uint32_t>(number));
        loaded.taken = true;
    }
    return loaded.object;
}

void LoadingCore::leave(vxPersistent* object) noexcept {
    // What is left is usually the object loaded last.
    const auto found = std::find_if(records_.rbegin(), records_.rend(), [object](const Loaded& loaded) {
        return loaded.object == object && loaded.rep == nullptr;
    });
    if (found != records_.rend()) {
        found->taken = false;
    }
}

void LoadingCore::releaseAll() noexcept {
    for (const Loaded& loaded : records_) {
        if (loaded.rep != nullptr) {
            vx_PtrHandleBase_RepAccessor::release(*loaded.rep);
        } else if (!loaded.taken) {
            delete loaded.object;
        }
    }
    records_.clear();
}

void LoadingCore::finish() {
    requireUsable();
    usable_ = false;
    releaseAll();
    if (next_ != end_) {
        throw vxArchive::CorruptData(L"Something is left in the archive that was not read.");
    }
}

} // namespace detail
