#include "platform/archive/storing_core.h"

#include "platform/archive/archive_frame.h"
#include "platform/archive/class_registry.h"
#include "platform/archive/count_limit.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"
#include "platform/archive/truth_values.h"
#include "platform/archive/visited_scope.h"
#include "platform/handle/share_count.h"
#include "platform/status/code_points.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <typeinfo>
#include <utility>

namespace detail {

namespace {

/// Writes what stands in front of the bytes of an object whose class is named already.
void putHead(unsigned char* to, std::uint32_t classNumber, std::size_t size) noexcept {
    putLittleEndian(to, classNumber);
    putLittleEndian(to + sizeof(std::uint32_t), std::uint64_t{size});
}

/// Many batches with few elements each must not cost a copy each.
template <class Element>
void makeRoomFor(std::vector<Element>& elements, std::size_t count) {
    if (elements.capacity() - elements.size() < count) {
        elements.reserve(std::max(elements.size() + count, 2 * elements.capacity()));
    }
}

} // namespace

StoringCore::StoringCore() {
    room(frameSize);
}

StoringCore::~StoringCore() {
    releaseMet();
}

void StoringCore::requireUsable() const {
    if (!usable_) {
        throw vxArchive::Misuse(L"The archive is finished, or an operation on it had failed.");
    }
}

void StoringCore::makeRoom(std::size_t size) {
    requireUsable();
    sumUp();
    archive_.prepare(size, capacityFor(archive_.size() + size));
}

void StoringCore::sumUp() noexcept {
    Checksum& sum = graph_ == 0 ? sum_ : graphSum_;
    const std::size_t next = (graph_ == 0 ? frameSize : graph_) + sum.size();
    const std::size_t end = inRecord_ ? head_ : archive_.size();
    if (next < end) {
        sum.add(archive_.at(next), end - next);
    }
}

/// All records of the top-level pointer are written, and their number is.
void StoringCore::joinSums() noexcept {
    constexpr std::size_t much = std::size_t{1} << 16; // takes longer to sum up again than to append
    if (graphSum_.size() >= much) {
        const std::size_t next = frameSize + sum_.size();
        sum_.add(archive_.at(next), graph_ - next);
        sum_.append(graphSum_);
    }
    graphSum_ = Checksum();
    graph_ = 0;
}

/// To copy what is there and to ask the system for fresh memory can take as long as all the rest. So once
/// there is enough to judge by, there will be room for all objects that are known, at the size of those
/// before them, but for not too much more than the usual: they may be of another size.
std::size_t StoringCore::capacityFor(std::size_t size) const noexcept {
    constexpr std::size_t least = std::size_t{1} << 10;
    constexpr std::size_t enough = std::size_t{1} << 16;
    constexpr std::size_t mostMore = std::size_t{1} << 26;
    const std::size_t usual = std::max(least, 2 * size);
    const std::size_t complete = inRecord_ ? head_ : archive_.size();
    if (complete < enough || records_ == 0) {
        return usual;
    }
    const std::size_t expected = complete / records_ * met_.size();
    return std::clamp(expected + expected / 8, usual, usual + mostMore);
}

std::uint32_t StoringCore::representable(long value) {
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        throw vxArchive::NotRepresentable(L"An archive holds whole numbers of 32 bits only.");
    }
    return static_cast<std::uint32_t>(value);
}

std::uint32_t StoringCore::representable(unsigned long value) {
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        throw vxArchive::NotRepresentable(L"An archive holds whole numbers of 32 bits only.");
    }
    return static_cast<std::uint32_t>(value);
}

void StoringCore::putDoubles(const double* values, std::size_t count) {
    detail::putDoubles(room(count * sizeof(double)), values, count);
}

void StoringCore::putNumbers(const std::vector<long>& values) {
    unsigned char* to = room(values.size() * sizeof(std::uint32_t));
    for (const long value : values) {
        putLittleEndian(to, representable(value));
        to += sizeof(std::uint32_t);
    }
}

void StoringCore::putTruths(const std::vector<bool>& values) {
    putTruthValues(room(values.size()), values);
}

void StoringCore::putText(const std::wstring& text) {
    requireUsable();
    const std::vector<std::uint32_t> points = codePoints(text);
    const std::uint32_t size = countWithin(std::numeric_limits<std::uint32_t>::max(), points.size(),
                                           L"An archive counts the characters of a text with 32 bits only.");
    for (const std::uint32_t point : points) {
        if (point > lastCodePoint) {
            throw vxArchive::NotRepresentable(L"A text holds a character that is no Unicode code point.");
        }
    }
    constexpr std::size_t unit = sizeof(std::uint32_t);
    unsigned char* to = room((1 + points.size()) * unit);
    putLittleEndian(to, size);
    for (const std::uint32_t point : points) {
        to += unit;
        putLittleEndian(to, point);
    }
}

void StoringCore::putPointer(vxArchive& archive, vxPersistent* object) {
    requireUsable();
    const std::uint32_t met = meet(object);
    if (inRecord_) {
        noteReference(archive_.size() - head_, met);
        room(sizeof(std::uint32_t));
        return;
    }
    const std::size_t countOffset = archive_.size();
    const std::uint32_t before = records_;
    room(sizeof(std::uint32_t));
    if (met != nothing && met_[met].record == noRecord) {
        graph_ = archive_.size();
        putGraph(archive, met);
    }
    putLittleEndian(archive_.at(countOffset), records_ - before);
    joinSums();
    putLittleEndian(room(sizeof(std::uint32_t)), recordOf(met));
}

void StoringCore::putPointers(vxArchive& archive, vxPersistent* const* objects, std::size_t count) {
    if (!inRecord_) {
        std::for_each(objects, objects + count, [&](vxPersistent* object) { putPointer(archive, object); });
        return;
    }
    std::size_t offset = archive_.size() - head_;
    room(count * sizeof(std::uint32_t));
    for (std::size_t i = 0; i < count; ++i) {
        noteReference(offset, meet(objects[i]));
        offset += sizeof(std::uint32_t);
    }
}

void StoringCore::expectPointers(std::size_t count) {
    if (inRecord_) {
        makeRoomFor(references_, count);
        makeRoomFor(met_, count);
    }
}

/// The record under way has a pointer at this distance from its head.
void StoringCore::noteReference(std::size_t offset, std::uint32_t met) {
    Reference& reference = references_.emplace_back();
    reference.offset = offset;
    reference.met = met;
}

/// The place of the object in met_, or `nothing` for null.
std::uint32_t StoringCore::meet(vxPersistent* object) {
    if (object == nullptr) {
        return nothing;
    }
    if (object->isTracked_()) {
        const std::uint32_t known = find(*object);
        if (known != nothing) {
            return known;
        }
    }
    const std::uint32_t met = countWithin(nothing - 1, met_.size(), L"An archive cannot hold more objects.");
    Met& entry = met_.emplace_back();
    entry.object = object;
    // An object without any share may be a local variable: a share of ours would delete it when given back.
    const vxRepBase* rep = countedPart_.of(*object);
    if (rep != nullptr && vx_PtrHandleBase_RepAccessor::count(*rep) > 0) {
        ShareCount::share(*rep);
        entry.rep = rep;
    }
    track(met);
    return met;
}

/// The place in met_ of an object that is tracked by some archive, or `nothing`: not by this one.
std::uint32_t StoringCore::find(const vxPersistent& object) const noexcept {
    const std::atomic<std::uint64_t>& tracking = PersistentAccess::tracking(object);
    const std::uint32_t place = stamps_.placeOf(TrackingMark::stampOf(tracking));
    if (place < met_.size() && met_[place].object == &object) {
        return place;
    }
    return TrackingMark::hasTrackers(tracking) ? tracker_.numberAt(&object) : nothing;
}

/// What is kept alive is stamped, unless an archive did so before; then the tracker has to do.
void StoringCore::track(std::uint32_t met) {
    Met& entry = met_[met];
    const std::uint32_t stamp = stamps_.at(met);
    if (entry.rep != nullptr && TrackingMark::tryStamp(PersistentAccess::tracking(*entry.object), stamp)) {
        entry.stamp = stamp;
    } else {
        tracker_.track(*entry.object, met);
    }
}

void StoringCore::putGraph(vxArchive& archive, std::uint32_t root) {
    begin(archive, root);
    while (!pending_.empty()) {
        advance(archive);
    }
}

/// Writes the object's own bytes; its references are noted, not followed. Returns whether its record is
/// complete; otherwise the object is the innermost pending one.
bool StoringCore::begin(vxArchive& archive, std::uint32_t met) {
    if (met_[met].rep == nullptr && tracker_.numberAt(met_[met].object) != met) {
        throw vxArchive::BadReference(L"An object to be stored was gone before it could be written.");
    }
    vxPersistent& object = *met_[met].object;
    StoredClass& type = classOf(object); // an unregistered class is refused before anything of it is written
    if (putWhole(met_[met], type)) {
        return true;
    }
    Pending begun;
    begun.met = met;
    begun.type = &type;
    begun.firstReference = references_.size();
    begun.nextReference = references_.size();
    met_[met].record = pendingRecord;
    dispatch(archive, object);
    if (isComplete(begun)) {
        completeInPlace(begun);
        return true;
    }
    putAside(begun);
    return false;
}

/// Writes the record of an object that can be written in one step, if it is one.
bool StoringCore::putWhole(Met& entry, const StoredClass& type) {
    if (type.whole == nullptr || type.number == unnumbered) {
        return false;
    }
    const std::size_t size = type.whole->size(*entry.object);
    if (size == 0) {
        return false;
    }
    unsigned char* head = room(headSize + size);
    putHead(head, type.number, size);
    type.whole->put(*entry.object, head + headSize);
    entry.record = ++records_;
    return true;
}

/// Writes room for the record's head and the object's bytes.
void StoringCore::dispatch(vxArchive& archive, vxPersistent& object) {
    head_ = archive_.size();
    room(headSize);
    const VisitedScope scope;
    inRecord_ = true;
    PersistentAccess::dispatchSerialize(object, archive);
    inRecord_ = false;
}

/// Whether the record can stay where it is: all that the object refers to has its record, and its class has
/// its name.
bool StoringCore::isComplete(const Pending& object) const noexcept {
    const auto isRecorded = [this](const Reference& reference) {
        return reference.met == nothing ||
               (met_[reference.met].record != noRecord && met_[reference.met].record != pendingRecord);
    };
    return object.type->number != unnumbered &&
           std::all_of(references_.begin() + static_cast<std::ptrdiff_t>(object.firstReference),
                       references_.end(), isRecorded);
}

void StoringCore::completeInPlace(const Pending& object) {
    unsigned char* head = archive_.at(head_);
    putReferences(object, head);
    putHead(head, object.type->number, archive_.size() - head_ - headSize);
    finishRecord(object);
}

/// The records of others come first.
void StoringCore::putAside(const Pending& object) {
    Pending& pending = pending_.emplace_back(object);
    pending.head = scratch_.size();
    scratch_.insert(scratch_.end(), archive_.at(head_), archive_.at(archive_.size()));
    archive_.cutTo(head_);
}

/// Takes the innermost pending object further: begins the objects that it refers to, up to the first one that
/// has to wait itself, or completes it.
void StoringCore::advance(vxArchive& archive) {
    Pending& top = pending_.back();
    while (top.nextReference < references_.size()) {
        const std::uint32_t next = references_[top.nextReference].met;
        ++top.nextReference;
        if (next == nothing) {
            continue;
        }
        if (met_[next].record == pendingRecord) {
            throw vxArchive::BadReference(L"The objects to be stored refer to each other in a circle.");
        }
        if (met_[next].record == noRecord && !begin(archive, next)) {
            return; // `top` may be gone
        }
    }
    completeAside();
}

/// All that the innermost object refers to has its record: moves its own to the payload. The object itself is
/// not touched any more.
void StoringCore::completeAside() {
    const Pending done = pending_.back();
    putReferences(done, scratch_.data() + done.head);
    const unsigned char* content = scratch_.data() + done.head + headSize;
    const std::size_t size = scratch_.size() - done.head - headSize;
    putClass(*done.type);
    putLittleEndian(room(sizeof(std::uint64_t)), std::uint64_t{size});
    std::copy_n(content, size, room(size));
    scratch_.resize(done.head);
    pending_.pop_back();
    finishRecord(done);
}

/// Fills in the numbers of the records that the object refers to.
void StoringCore::putReferences(const Pending& object, unsigned char* head) {
    for (std::size_t i = object.firstReference; i < references_.size(); ++i) {
        putLittleEndian(head + references_[i].offset, recordOf(references_[i].met));
    }
}

void StoringCore::finishRecord(const Pending& object) {
    met_[object.met].record = ++records_;
    references_.resize(object.firstReference);
}

StoringCore::StoredClass& StoringCore::classOf(const vxPersistent& object) {
    return *classesMetLast_.get(object, [&] { return &findClassOf(object); });
}

StoringCore::StoredClass& StoringCore::findClassOf(const vxPersistent& object) {
    const std::type_info& type = typeid(object);
    const auto known = classes_.find(type);
    if (known != classes_.end()) {
        return known->second;
    }
    const std::string name = archivedClassName(type);
    if (!isRegisteredClass(type)) {
        throw vxArchive::UnknownClass(L"The class " + widened(name) +
                                      L" is not registered with the archive.");
    }
    return classes_.emplace(type, StoredClass{name, unnumbered, wholeRecordOf(type)}).first->second;
}

/// Writes the class's number; the first record of a class brings the name along.
void StoringCore::putClass(StoredClass& stored) {
    if (stored.number != unnumbered) {
        putLittleEndian(room(sizeof(std::uint32_t)), stored.number);
        return;
    }
    stored.number = numberedClasses_++;
    putLittleEndian(room(sizeof(std::uint32_t)), stored.number);
    putLittleEndian(room(sizeof(std::uint32_t)), static_cast<std::uint32_t>(stored.name.size()));
    std::copy(stored.name.begin(), stored.name.end(), room(stored.name.size()));
}

std::uint32_t StoringCore::recordOf(std::uint32_t met) const {
    return met == nothing ? 0 : met_[met].record;
}

void StoringCore::releaseMet() noexcept {
    tracker_.forgetAll();
    for (const Met& met : met_) {
        if (met.stamp != 0) {
            TrackingMark::removeStamp(PersistentAccess::tracking(*met.object), met.stamp);
        }
        if (met.rep != nullptr) {
            ShareCount::release(*met.rep);
        }
    }
    std::vector<Met>().swap(met_);
}

std::vector<unsigned char> StoringCore::finish() {
    requireUsable();
    if (inRecord_) {
        throw vxArchive::Misuse(L"An archive cannot be finished from within an object.");
    }
    usable_ = false;
    releaseMet();
    sumUp();
    std::vector<unsigned char> sealed = archive_.take();
    sealFrame(sealed, sum_.value());
    return sealed;
}

} // namespace detail
