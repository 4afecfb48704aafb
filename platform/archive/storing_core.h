#ifndef PLATFORM_ARCHIVE_STORING_CORE_H
#define PLATFORM_ARCHIVE_STORING_CORE_H

#include "platform/archive/byte_order.h"
#include "platform/archive/byte_sink.h"
#include "platform/archive/checksum.h"
#include "platform/archive/class_cache.h"
#include "platform/archive/counted_part.h"
#include "platform/archive/object_tracker.h"
#include "platform/archive/stamps.h"
#include "platform/archive/whole_record.h"

#include <vxclassifier/platform/ptr_handle.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <vector>

class vxArchive;
class vxPersistent;

namespace detail {

/// The inside of an archive that is being written: its bytes so far, and what it knows of the objects that it
/// met.
///
/// A pointer at top level writes the objects that it reaches, each as its own record behind those it refers
/// to, and then the reference; inside a record a pointer is only the number of an earlier record. The walk
/// keeps its own stack, so the depth of a structure costs no machine stack.
class StoringCore {
public:
    StoringCore();
    ~StoringCore();
    StoringCore(const StoringCore&) = delete;
    StoringCore& operator=(const StoringCore&) = delete;

    void putByte(unsigned char value) { *room(1) = value; }
    void putSigned(long value) { putNumber(value); }
    void putUnsigned(unsigned long value) { putNumber(value); }
    void putDouble(double value) { putLittleEndian(room(sizeof(double)), bitsOf(value)); }
    void putDoubles(const double* values, std::size_t count);
    void putNumbers(const std::vector<long>& values);
    void putTruths(const std::vector<bool>& values);
    void putText(const std::wstring& text);

    /// A place for so many bytes, to be filled before anything else is written.
    unsigned char* putBlock(std::size_t size) { return room(size); }

    void putPointer(vxArchive& archive, vxPersistent* object);

    /// The same for several pointers.
    void putPointers(vxArchive& archive, vxPersistent* const* objects, std::size_t count);

    /// To be called before so many pointers are put, so that memory is taken for all of them at once.
    void expectPointers(std::size_t count);

    /// Something was left half written: the archive cannot be used any more.
    void fail() noexcept { usable_ = false; }

    /// Seals the archive and returns it; nothing can be written afterwards.
    std::vector<unsigned char> finish();

private:
    // The following are filled where they lie: a processor waits for small stores that are at once copied as
    // larger ones.

    /// An object that was met. A share of a counted one is kept, so that its address is not used again while
    /// the archive lives. One that is not counted may be gone before its turn comes; the tracker then no
    /// longer knows it.
    struct Met {
        vxPersistent* object = nullptr;
        const vxRepBase* rep = nullptr;  // null for an object that is not counted
        std::uint32_t record = noRecord; // its number, or one of the two below
        std::uint32_t stamp = 0;         // of a TrackingMark; 0 for an object that the tracker knows
    };
    static constexpr std::uint32_t noRecord = 0;
    static constexpr std::uint32_t pendingRecord = 0xffffffffU;
    static constexpr std::uint32_t nothing = ObjectTracker::unknown;

    /// A place in an unfinished record that will hold the number of another one.
    struct Reference {
        std::size_t offset = 0;      // from the record's head
        std::uint32_t met = nothing; // in met_, or `nothing` for a null pointer
    };

    /// A class that was met; it gets its number when the first record of it is complete.
    struct StoredClass {
        std::string name;
        std::uint32_t number = unnumbered;
        const WholeRecord* whole = nullptr;
    };
    static constexpr std::uint32_t unnumbered = 0xffffffffU;

    /// An object whose own bytes are complete, but not the records of all the objects that it refers to.
    struct Pending {
        std::uint32_t met = 0; // in met_
        StoredClass* type = nullptr;
        std::size_t head = 0;           // in scratch_: of its record
        std::size_t firstReference = 0; // in references_
        std::size_t nextReference = 0;  // in references_; those before it have their records
    };

    // What stands in front of the bytes of an object whose class is named already: the class, the length.
    static constexpr std::size_t headSize = sizeof(std::uint32_t) + sizeof(std::uint64_t);

    void requireUsable() const;

    /// A place for the next `size` bytes.
    unsigned char* room(std::size_t size) {
        if (!usable_ || !archive_.hasRoomFor(size)) {
            makeRoom(size);
        }
        return archive_.extend(size);
    }
    void makeRoom(std::size_t size);
    void sumUp() noexcept;
    void joinSums() noexcept;
    std::size_t capacityFor(std::size_t size) const noexcept;
    template <class Number>
    void putNumber(Number value) {
        unsigned char* to = room(sizeof(std::uint32_t)); // first, since it may find the archive unusable
        putLittleEndian(to, representable(value));
    }
    static std::uint32_t representable(long value);
    static std::uint32_t representable(unsigned long value);

    std::uint32_t meet(vxPersistent* object);
    void noteReference(std::size_t offset, std::uint32_t met);
    std::uint32_t find(const vxPersistent& object) const noexcept;
    void track(std::uint32_t met);
    void putGraph(vxArchive& archive, std::uint32_t root);
    bool begin(vxArchive& archive, std::uint32_t met);
    bool putWhole(Met& entry, const StoredClass& type);
    void dispatch(vxArchive& archive, vxPersistent& object);
    bool isComplete(const Pending& object) const noexcept;
    void completeInPlace(const Pending& object);
    void putAside(const Pending& object);
    void advance(vxArchive& archive);
    void completeAside();
    void putReferences(const Pending& object, unsigned char* head);
    void finishRecord(const Pending& object);
    StoredClass& classOf(const vxPersistent& object);
    StoredClass& findClassOf(const vxPersistent& object);
    void putClass(StoredClass& stored);
    std::uint32_t recordOf(std::uint32_t met) const;
    void releaseMet() noexcept;

    ByteSink archive_; // the frame's place, the payload so far, and the record under way
    bool usable_ = true;
    bool inRecord_ = false;
    std::size_t head_ = 0; // in archive_: of the record under way

    // Sums of bytes that stay as they are, taken while these are still near the processor. The number of
    // records of a top-level pointer is known when all of them are written, so what stands behind it has a
    // sum of its own until then.
    Checksum sum_;          // from the end of the frame on
    Checksum graphSum_;     // from graph_ on
    std::size_t graph_ = 0; // in archive_: of the first record of a top-level pointer under way, or 0

    // The stack of pending objects, and the bytes and references of all of them, innermost last.
    std::vector<Pending> pending_;
    std::vector<unsigned char> scratch_;
    std::vector<Reference> references_;

    std::unordered_map<std::type_index, StoredClass> classes_;
    ClassCache<StoredClass*> classesMetLast_;
    std::uint32_t numberedClasses_ = 0;
    std::uint32_t records_ = 0; // complete ones; they are numbered from 1

    std::vector<Met> met_;
    CountedPart countedPart_;
    Stamps stamps_;         // for the places in met_
    ObjectTracker tracker_; // knows the objects without stamps by their places there
};

} // namespace detail

#endif
