#include "platform/archive/loading_core.h"

#include "platform/archive/archive_frame.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/truth_values.h"
#include "platform/archive/visited_scope.h"
#include "platform/handle/share_count.h"
#include "platform/status/code_points.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace detail {

namespace {

/// A class name out of an archive as a message may show it: it can hold anything and be of any length.
std::wstring shown(const std::string& name) {
    constexpr std::size_t most = 200;
    std::wstring text;
    for (const char character : name.substr(0, most)) {
        const bool isPrintable = character >= ' ' && character <= '~';
        text.push_back(isPrintable ? static_cast<wchar_t>(character) : L'?');
    }
    return name.size() <= most ? text : text + L"...";
}

} // namespace

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

void LoadingCore::throwUnusable() {
    throw vxArchive::Misuse(L"The archive is finished, or an operation on it had failed.");
}

void LoadingCore::throwShort() {
    throw vxArchive::ShortData(L"The archive holds fewer bytes than are to be read.");
}

void LoadingCore::throwTooLarge() {
    throw vxArchive::TooLarge(L"A size in the archive is larger than what is left of it.");
}

void LoadingCore::getDoubles(double* values, std::size_t count) {
    detail::getDoubles(values, takeBytes(count * sizeof(double)), count);
}

void LoadingCore::getDoubles(std::vector<double>& values, std::size_t count) {
    values.resize(count);
    getDoubles(values.data(), count);
}

void LoadingCore::getNumbers(std::vector<long>& values, std::size_t count) {
    values.resize(count);
    const unsigned char* from = takeBytes(count * sizeof(std::uint32_t));
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = signedAt(from + i * sizeof(std::uint32_t));
    }
}

void LoadingCore::getTruths(std::vector<bool>& values, std::size_t count) {
    const unsigned char* from = takeBytes(count);
    const std::size_t valid = countTruthValues(from, count);
    getTruthValues(values, from, valid);
    if (valid < count) {
        throwNoTruthValue();
    }
}

void LoadingCore::throwNoTruthValue() {
    throw vxArchive::CorruptData(L"A truth value in the archive is neither 0 nor 1.");
}

std::wstring LoadingCore::getText() {
    const unsigned long count = getUnsigned();
    requireElements(count, sizeof(std::uint32_t));
    const unsigned char* from = takeBytes(count * sizeof(std::uint32_t));
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

vxPersistent* LoadingCore::getPointer(vxArchive& archive) {
    if (inRecord_) {
        return handOut(getReference());
    }
    const unsigned long newRecords = getUnsigned();
    constexpr std::size_t leastRecord = sizeof(std::uint32_t) + sizeof(std::uint64_t);
    requireElements(newRecords, leastRecord);
    makeRoomForRecords(newRecords);
    for (unsigned long i = 0; i < newRecords; ++i) {
        if (!getWholeRecord()) {
            getRecord(archive);
        }
        ++records_;
        ++unreferenced_;
    }
    const std::uint32_t record = getReference();
    if (unreferenced_ > 0) {
        throw vxArchive::CorruptData(L"The archive holds objects that nothing refers to.");
    }
    return handOut(record);
}

/// The bytes that are left can hold so many records. Many pointers with few records each must not cost a copy
/// each.
void LoadingCore::makeRoomForRecords(std::size_t count) {
    if (made_.capacity() - made_.size() < count) {
        made_.reserve(std::max(made_.size() + count, 2 * made_.capacity()));
    }
}

void LoadingCore::getRecord(vxArchive& archive) {
    NamedClass& named = getClass();
    const std::uint64_t size = getLittleEndian<std::uint64_t>(takeBytes(sizeof(std::uint64_t)));
    requireElements(size, 1);
    fill(archive, *make(named.make), size);
}

/// Reads a record in one step, as its class offers; false, and nothing was read, if it has to go level by
/// level.
bool LoadingCore::getWholeRecord() {
    constexpr std::size_t headSize = sizeof(std::uint32_t) + sizeof(std::uint64_t);
    if (left() < headSize) {
        return false;
    }
    const auto number = getLittleEndian<std::uint32_t>(next_);
    const auto size = getLittleEndian<std::uint64_t>(next_ + sizeof(std::uint32_t));
    if (number >= classes_.size() || classes_[number].whole == nullptr || size > left() - headSize) {
        return false;
    }
    const WholeRecord& whole = *classes_[number].whole;
    const unsigned char* const from = next_ + headSize;
    if (make([&] { return whole.get(from, static_cast<std::size_t>(size)); }) == nullptr) {
        return false;
    }
    next_ = from + size;
    return true;
}

LoadingCore::NamedClass& LoadingCore::getClass() {
    const unsigned long number = getUnsigned();
    if (number > classes_.size()) {
        throw vxArchive::CorruptData(L"The archive uses a class before it names it.");
    }
    return number < classes_.size() ? classes_[number] : nameClass();
}

LoadingCore::NamedClass& LoadingCore::nameClass() {
    const unsigned long length = getUnsigned();
    requireElements(length, 1);
    const unsigned char* first = takeBytes(length);
    const std::string name(first, first + length);
    const MakeFunction makeObject = findClass(name);
    if (makeObject == nullptr) {
        throw vxArchive::UnknownClass(L"The archive holds an object of the unknown class " + shown(name) +
                                      L".");
    }
    const auto isSame = [&name](const NamedClass& other) { return other.name == name; };
    if (std::any_of(classes_.begin(), classes_.end(), isSame)) {
        throw vxArchive::CorruptData(L"The archive names a class twice.");
    }
    NamedClass named;
    named.name = name;
    named.make = makeObject;
    named.whole = wholeRecordOf(makeObject);
    return classes_.emplace_back(std::move(named));
}

/// Makes the object of the next record. It belongs to the archive from the first moment, so that it neither
/// leaks when its record turns out bad nor goes away when it shares itself for a while. Null if it was not
/// made.
template <class MakeObject>
vxPersistent* LoadingCore::make(MakeObject makeObject) {
    Made& made = made_.emplace_back();
    made.object = makeObject();
    if (made.object == nullptr) {
        made_.pop_back();
        return nullptr;
    }
    made.rep = countedPart_.of(*made.object);
    if (made.rep != nullptr) {
        ShareCount::share(*made.rep);
    }
    return made.object;
}

void LoadingCore::fill(vxArchive& archive, vxPersistent& object, std::uint64_t size) {
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

/// Reads the number of a record that is complete, or 0. Inside a record that means an earlier one.
std::uint32_t LoadingCore::getReference() {
    const unsigned long number = getUnsigned();
    if (number > records_) {
        throw vxArchive::BadReference(
            L"The archive refers to an object that does not stand before the reference.");
    }
    if (number > 0) {
        countReference(made_[number - 1]);
    }
    return static_cast<std::uint32_t>(number);
}

/// The object of the record, or null for 0. One that is not counted may go at any moment from now on.
vxPersistent* LoadingCore::handOut(std::uint32_t record) {
    lastHandedOut_ = record;
    if (record == 0) {
        return nullptr;
    }
    Made& made = made_[record - 1];
    if (made.rep != nullptr) {
        return made.object;
    }
    if (made.takers > 0 && uncounted_.numberAt(made.object) != record) {
        throw vxArchive::BadReference(L"The archive refers to an object that is gone already.");
    }
    uncounted_.track(*made.object, record);
    ++made.takers;
    return made.object;
}

void LoadingCore::leaveLast() noexcept {
    Made& made = made_[lastHandedOut_ - 1];
    if (made.rep == nullptr) {
        --made.takers;
    }
}

void LoadingCore::releaseAll() noexcept {
    uncounted_.forgetAll();
    for (const Made& made : made_) {
        if (made.rep != nullptr) {
            ShareCount::release(*made.rep);
        } else if (made.takers == 0) {
            delete made.object;
        }
    }
    std::vector<Made>().swap(made_);
}

void LoadingCore::finish() {
    requireUsable();
    if (inRecord_) {
        throw vxArchive::Misuse(L"An archive cannot be finished from within an object.");
    }
    usable_ = false;
    releaseAll();
    if (next_ != end_) {
        throw vxArchive::CorruptData(L"Something is left in the archive that was not read.");
    }
}

} // namespace detail
