#include "platform/archive/storing_core.h"

#include "platform/archive/archive_frame.h"
#include "platform/archive/byte_order.h"
#include "platform/archive/class_registry.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/visited_scope.h"
#include "platform/status/code_points.h"

#include <limits>
#include <typeinfo>
#include <utility>

namespace detail {

StoringCore::StoringCore() : archive_(frameSize) {}

StoringCore::~StoringCore() {
    releaseKept();
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
    const std::vector<std::uint32_t> points = codePoints(text);
    for (const std::uint32_t point : points) {
        if (point > lastCodePoint) {
            throw vxArchive::NotRepresentable(L"A text holds a character that is no Unicode code point.");
        }
    }
    putUnsigned(points.size());
    for (const std::uint32_t point : points) {
        appendLittleEndian(target(), point);
    }
}

void StoringCore::putPointer(vxArchive& archive, vxPersistent* object) {
    requireUsable();
    if (inRecord_) {
        references_.push_back(Reference{scratch_.size(), object});
        appendLittleEndian(scratch_, std::uint32_t{0});
        return;
    }
    const std::size_t countOffset = archive_.size();
    const std::uint32_t before = records_;
    appendLittleEndian(archive_, std::uint32_t{0});
    if (object != nullptr && progress(*object) == Progress::unknown) {
        putGraph(archive, *object);
    }
    putLittleEndian(archive_.data() + countOffset, records_ - before);
    appendLittleEndian(archive_, object == nullptr ? 0 : recordNumber(*object));
}

void StoringCore::putGraph(vxArchive& archive, vxPersistent& root) {
    try {
        begin(archive, root);
        while (!pending_.empty()) {
            advance(archive);
        }
    } catch (...) {
        // There are records without the reference that should follow them.
        fail();
        throw;
    }
}

/// Writes the object's own bytes to the scratch buffer; its references are noted, not followed.
void StoringCore::begin(vxArchive& archive, vxPersistent& object) {
    classOf(object); // an unregistered class is refused before anything of it is written
    remember(object, 0);
    pending_.push_back(Pending{&object, scratch_.size(), references_.size(), references_.size()});
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
        vxPersistent* next = references_[top.nextReference].object;
        ++top.nextReference;
        if (next == nullptr) {
            continue;
        }
        switch (progress(*next)) {
        case Progress::recorded:
            continue;
        case Progress::pending:
            throw vxArchive::BadReference(L"The objects to be stored refer to each other in a circle.");
        case Progress::unknown:
            begin(archive, *next); // `top` may be gone
            return;
        }
    }
    complete();
}

/// All that the innermost object refers to has its record: fills in the numbers and moves its bytes to the
/// payload.
void StoringCore::complete() {
    const Pending done = pending_.back();
    for (std::size_t i = done.firstReference; i < references_.size(); ++i) {
        const Reference& reference = references_[i];
        if (reference.object != nullptr) {
            putLittleEndian(scratch_.data() + reference.offset, recordNumber(*reference.object));
        }
    }
    if (records_ == std::numeric_limits<std::uint32_t>::max()) {
        throw vxArchive::TooLarge(L"An archive cannot hold more objects.");
    }
    putClass(classOf(*done.object));
    appendLittleEndian(archive_, std::uint64_t{scratch_.size() - done.firstByte});
    archive_.insert(archive_.end(), scratch_.begin() + static_cast<std::ptrdiff_t>(done.firstByte),
                    scratch_.end());

    remember(*done.object, ++records_);
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

StoringCore::Progress StoringCore::progress(const vxPersistent& object) const {
    const auto known = counted_.find(&object);
    if (known == counted_.end() && !(object.isTracked_() && uncounted_.tracks(object))) {
        return Progress::unknown;
    }
    return recordNumber(object) == 0 ? Progress::pending : Progress::recorded;
}

std::uint32_t StoringCore::recordNumber(const vxPersistent& object) const {
    const auto known = counted_.find(&object);
    return known != counted_.end() ? known->second : uncounted_.record(object);
}

void StoringCore::remember(vxPersistent& object, std::uint32_t record) {
    const auto known = counted_.find(&object);
    if (known != counted_.end()) {
        known->second = record;
        return;
    }
    // An object without any share may be a local variable: a share of ours would delete it when given back.
    const auto* rep = dynamic_cast<const vxRepBase*>(&object);
    const bool shared = rep != nullptr && vx_PtrHandleBase_RepAccessor::count(*rep) > 0;
    if (!shared || uncounted_.tracks(object)) {
        uncounted_.track(object, record);
        return;
    }
    kept_.push_back(rep);
    vx_PtrHandleBase_RepAccessor::share(*rep);
    counted_.emplace(&object, record);
}

void StoringCore::releaseKept() noexcept {
    for (const vxRepBase* rep : kept_) {
        vx_PtrHandleBase_RepAccessor::release(*rep);
    }
    kept_.clear();
}

std::vector<unsigned char> StoringCore::finish() {
    requireUsable();
    usable_ = false;
    releaseKept();
    sealFrame(archive_);
    return std::move(archive_);
}

} // namespace detail
