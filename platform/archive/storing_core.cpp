#include "platform/archive/storing_core.h"

#include "platform/archive/archive_frame.h"
#include "platform/archive/byte_order.h"
#include "platform/archive/class_registry.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"
#include "platform/archive/visited_scope.h"
#include "platform/status/code_points.h"

#include <atomic>
#include <limits>
#include <typeinfo>
#include <utility>

namespace detail {

StoringCore::StoringCore() : archive_(frameSize) {}

StoringCore::~StoringCore() {
    releaseMet();
}

void StoringCore::requireUsable() const {
    if (!usable_) {
        throw vxArchive::Misuse(L"The archive is finished, or an operation on it had failed.");
    }
}

void StoringCore::putByte(unsigned char value) {
    requireUsable();
    target().push_back(value);
}

void StoringCore::putSigned(long value) {
    requireUsable();
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        throw vxArchive::NotRepresentable(L"An archive holds whole numbers of 32 bits only.");
    }
    appendLittleEndian(target(), static_cast<std::uint32_t>(value));
}

void StoringCore::putUnsigned(unsigned long value) {
    requireUsable();
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        throw vxArchive::NotRepresentable(L"An archive holds whole numbers of 32 bits only.");
    }
    appendLittleEndian(target(), static_cast<std::uint32_t>(value));
}

void StoringCore::putDouble(double value) {
    requireUsable();
    appendLittleEndian(target(), bitsOf(value));
}

void StoringCore::putDoubles(const double* values, std::size_t count) {
    requireUsable();
    std::vector<unsigned char>& to = target();
    std::size_t offset = to.size();
    to.resize(offset + count * sizeof(double));
    for (std::size_t i = 0; i < count; ++i, offset += sizeof(double)) {
        putLittleEndian(to.data() + offset, bitsOf(values[i]));
    }
}

void StoringCore::putText(const std::wstring& text) {
    requireUsable();
    const std::vector<std::uint32_t> points = codePoints(text);
    if (points.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw vxArchive::TooLarge(L"An archive counts the characters of a text with 32 bits only.");
    }
    for (const std::uint32_t point : points) {
        if (point > lastCodePoint) {
            throw vxArchive::NotRepresentable(L"A text holds a character that is no Unicode code point.");
        }
    }
    std::vector<unsigned char>& to = target();
    appendLittleEndian(to, static_cast<std::uint32_t>(points.size()));
    for (const std::uint32_t point : points) {
        appendLittleEndian(to, point);
    }
}

void StoringCore::putPointer(vxArchive& archive, vxPersistent* object) {
    requireUsable();
    const std::uint32_t met = meet(object);
    if (inRecord_) {
        references_.push_back(Reference{scratch_.size(), met});
        appendLittleEndian(scratch_, std::uint32_t{0});
        return;
    }
    const std::size_t countOffset = archive_.size();
    const std::uint32_t before = records_;
    appendLittleEndian(archive_, std::uint32_t{0});
    if (met != nothing && met_[met].progress == Progress::met) {
        putGraph(archive, met);
    }
    putLittleEndian(archive_.data() + countOffset, records_ - before);
    appendLittleEndian(archive_, recordOf(met));
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
    if (met_.size() == nothing) {
        throw vxArchive::TooLarge(L"An archive cannot hold more objects.");
    }
    const std::uint32_t met = static_cast<std::uint32_t>(met_.size());
    met_.push_back(Met{object, nullptr, Progress::met, 0, false, 0});
    // An object without any share may be a local variable: a share of ours would delete it when given back.
    const auto* rep = dynamic_cast<const vxRepBase*>(object);
    if (rep != nullptr && vx_PtrHandleBase_RepAccessor::count(*rep) > 0) {
        vx_PtrHandleBase_RepAccessor::share(*rep);
        met_.back().rep = rep;
    }
    track(met);
    return met;
}

/// The place in met_ of an object that is tracked by some archive, or `nothing`: not by this one.
std::uint32_t StoringCore::find(const vxPersistent& object) const noexcept {
    const std::atomic<std::uint64_t>& tracking = PersistentAccess::tracking(object);
    const std::uint32_t marked = marked_.find(&object, liesAt(object));
    if (marked != AddressTable::none && TrackingMark::isValid(tracking, met_[marked].changes)) {
        return marked;
    }
    return TrackingMark::hasTrackers(tracking) ? tracker_.numberAt(&object) : nothing;
}

/// What is kept alive is marked, which needs no lock, unless it has all the marks that it can have.
void StoringCore::track(std::uint32_t met) {
    Met& entry = met_[met];
    vxPersistent& object = *entry.object;
    entry.isMarked =
        entry.rep != nullptr && TrackingMark::tryAdd(PersistentAccess::tracking(object), entry.changes);
    if (entry.isMarked) {
        marked_.set(&object, met, liesAt(object));
    } else {
        tracker_.track(object, met);
    }
}

void StoringCore::putGraph(vxArchive& archive, std::uint32_t root) {
    begin(archive, root);
    while (!pending_.empty()) {
        advance(archive);
    }
}

/// Writes the object's own bytes to the scratch buffer; its references are noted, not followed.
void StoringCore::begin(vxArchive& archive, std::uint32_t met) {
    if (met_[met].rep == nullptr && tracker_.numberAt(met_[met].object) != met) {
        throw vxArchive::BadReference(L"An object to be stored was gone before it could be written.");
    }
    vxPersistent& object = *met_[met].object;
    StoredClass& type = classOf(object); // an unregistered class is refused before anything of it is written
    met_[met].progress = Progress::pending;
    pending_.push_back(Pending{met, &type, scratch_.size(), references_.size(), references_.size()});
    const VisitedScope scope;
    inRecord_ = true;
    PersistentAccess::dispatchSerialize(object, archive);
    inRecord_ = false;
}

/// Takes the innermost pending object one step further: begins the next object that it refers to, or
/// completes it.
void StoringCore::advance(vxArchive& archive) {
    Pending& top = pending_.back();
    while (top.nextReference < references_.size()) {
        const std::uint32_t next = references_[top.nextReference].met;
        ++top.nextReference;
        if (next == nothing) {
            continue;
        }
        switch (met_[next].progress) {
        case Progress::recorded:
            continue;
        case Progress::pending:
            throw vxArchive::BadReference(L"The objects to be stored refer to each other in a circle.");
        case Progress::met:
            begin(archive, next); // `top` may be gone
            return;
        }
    }
    complete();
}

/// All that the innermost object refers to has its record: fills in the numbers and moves its bytes to the
/// payload. The object itself is not touched any more.
void StoringCore::complete() {
    const Pending done = pending_.back();
    for (std::size_t i = done.firstReference; i < references_.size(); ++i) {
        putLittleEndian(scratch_.data() + references_[i].offset, recordOf(references_[i].met));
    }
    putClass(*done.type);
    appendLittleEndian(archive_, std::uint64_t{scratch_.size() - done.firstByte});
    archive_.insert(archive_.end(), scratch_.begin() + static_cast<std::ptrdiff_t>(done.firstByte),
                    scratch_.end());

    met_[done.met].progress = Progress::recorded;
    met_[done.met].record = ++records_;
    scratch_.resize(done.firstByte);
    references_.resize(done.firstReference);
    pending_.pop_back();
}

StoringCore::StoredClass& StoringCore::classOf(const vxPersistent& object) {
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
    return classes_.emplace(type, StoredClass{name, unnumbered}).first->second;
}

/// Writes the class's number; the first record of a class brings the name along.
void StoringCore::putClass(StoredClass& stored) {
    if (stored.number != unnumbered) {
        appendLittleEndian(archive_, stored.number);
        return;
    }
    stored.number = numberedClasses_++;
    appendLittleEndian(archive_, stored.number);
    appendLittleEndian(archive_, static_cast<std::uint32_t>(stored.name.size()));
    archive_.insert(archive_.end(), stored.name.begin(), stored.name.end());
}

std::uint32_t StoringCore::recordOf(std::uint32_t met) const {
    return met == nothing ? 0 : met_[met].record;
}

void StoringCore::releaseMet() noexcept {
    tracker_.forgetAll();
    for (const Met& met : met_) {
        if (met.isMarked) {
            TrackingMark::remove(PersistentAccess::tracking(*met.object), met.changes);
        }
        if (met.rep != nullptr) {
            vx_PtrHandleBase_RepAccessor::release(*met.rep);
        }
    }
    met_.clear();
}

std::vector<unsigned char> StoringCore::finish() {
    requireUsable();
    if (inRecord_) {
        throw vxArchive::Misuse(L"An archive cannot be finished from within an object.");
    }
    usable_ = false;
    releaseMet();
    sealFrame(archive_);
    return std::move(archive_);
}

} // namespace detail
