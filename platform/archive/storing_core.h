#ifndef PLATFORM_ARCHIVE_STORING_CORE_H
#define PLATFORM_ARCHIVE_STORING_CORE_H

#include "platform/archive/address_table.h"
#include "platform/archive/object_tracker.h"

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

    void putByte(unsigned char value);
    void putSigned(long value);
    void putUnsigned(unsigned long value);
    void putDouble(double value);
    void putDoubles(const double* values, std::size_t count);
    void putText(const std::wstring& text);
    void putPointer(vxArchive& archive, vxPersistent* object);

    /// Something was left half written: the archive cannot be used any more.
    void fail() noexcept { usable_ = false; }

    /// Seals the archive and returns it; nothing can be written afterwards.
    std::vector<unsigned char> finish();

private:
    enum class Progress { met, pending, recorded };

    /// An object that was met. A share of a counted one is kept, so that its address is not used again while
    /// the archive lives. One that is not counted may be gone before its turn comes; the tracker then no
    /// longer knows it.
    struct Met {
        vxPersistent* object;
        const vxRepBase* rep; // null for an object that is not counted
        Progress progress;
        std::uint32_t record;  // once recorded
        bool isMarked;         // by a TrackingMark; only a counted one is
        std::uint32_t changes; // of a marked one: at which number of them
    };
    static constexpr std::uint32_t nothing = ObjectTracker::unknown;

    /// A place in an unfinished record that will hold the number of another one.
    struct Reference {
        std::size_t offset; // in scratch_
        std::uint32_t met;  // in met_, or `nothing` for a null pointer
    };

    /// A class that was met; it gets its number when the first record of it is complete.
    struct StoredClass {
        std::string name;
        std::uint32_t number = unnumbered;
    };
    static constexpr std::uint32_t unnumbered = 0xffffffffU;

    /// An object whose own bytes are complete, but not the records of all the objects that it refers to.
    struct Pending {
        std::uint32_t met; // in met_
        StoredClass* type;
        std::size_t firstByte;      // in scratch_
        std::size_t firstReference; // in references_
        std::size_t nextReference;  // in references_; those before it have their records
    };

    void requireUsable() const;
    std::vector<unsigned char>& target() noexcept { return inRecord_ ? scratch_ : archive_; }

    std::uint32_t meet(vxPersistent* object);
    std::uint32_t find(const vxPersistent& object) const noexcept;
    void track(std::uint32_t met);
    auto liesAt(const vxPersistent& object) const noexcept {
        return [this, &object](std::uint32_t met) { return met_[met].object == &object; };
    }
    void putGraph(vxArchive& archive, std::uint32_t root);
    void begin(vxArchive& archive, std::uint32_t met);
    void advance(vxArchive& archive);
    void complete();
    StoredClass& classOf(const vxPersistent& object);
    void putClass(StoredClass& stored);
    std::uint32_t recordOf(std::uint32_t met) const;
    void releaseMet() noexcept;

    std::vector<unsigned char> archive_; // the frame's place, then the payload so far
    bool usable_ = true;

    // The stack of pending objects, and the bytes and references of all of them, innermost last.
    bool inRecord_ = false;
    std::vector<Pending> pending_;
    std::vector<unsigned char> scratch_;
    std::vector<Reference> references_;

    std::unordered_map<std::type_index, StoredClass> classes_;
    std::uint32_t numberedClasses_ = 0;
    std::uint32_t records_ = 0; // complete ones; they are numbered from 1

    std::vector<Met> met_;
    AddressTable marked_;   // knows the marked objects of met_ by their places there
    ObjectTracker tracker_; // knows the other ones
};

} // namespace detail

#endif
