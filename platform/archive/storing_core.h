#ifndef PLATFORM_ARCHIVE_STORING_CORE_H
#define PLATFORM_ARCHIVE_STORING_CORE_H

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

    /// An object was left half written: the archive cannot be used any more.
    void fail() noexcept { usable_ = false; }

    /// Seals the archive and returns it; nothing can be written afterwards.
    std::vector<unsigned char> finish();

private:
    /// A place in an unfinished record that will hold the number of another one.
    struct Reference {
        std::size_t offset; // in scratch_
        vxPersistent* object;
    };

    /// An object whose own bytes are complete, but not the records of all the objects that it refers to.
    struct Pending {
        vxPersistent* object;
        std::size_t firstByte;      // in scratch_
        std::size_t firstReference; // in references_
        std::size_t nextReference;  // in references_; those before it have their records
    };

    enum class Progress { unknown, pending, recorded };

    /// A class that was met; it gets its number when the first record of it is complete.
    struct StoredClass {
        std::string name;
        std::uint32_t number = unnumbered;
    };
    static constexpr std::uint32_t unnumbered = 0xffffffffU;

    void requireUsable() const;
    std::vector<unsigned char>& target() noexcept { return inRecord_ ? scratch_ : archive_; }

    void putGraph(vxArchive& archive, vxPersistent& root);
    void begin(vxArchive& archive, vxPersistent& object);
    void advance(vxArchive& archive);
    void complete();
    StoredClass& classOf(const vxPersistent& object);
    void putClass(StoredClass& stored);

    Progress progress(const vxPersistent& object) const;
    std::uint32_t recordNumber(const vxPersistent& object) const;
    void remember(vxPersistent& object, std::uint32_t record);
    void releaseKept() noexcept;

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

    // The record of each object that was met, 0 while it is pending. A share of each counted object is kept,
    // so that no address is used again while the archive lives; the others report themselves.
    std::unordered_map<const vxPersistent*, std::uint32_t> counted_;
    std::vector<const vxRepBase*> kept_;
    ObjectTracker uncounted_;
};

} // namespace detail

#endif
