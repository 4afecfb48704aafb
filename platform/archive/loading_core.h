#ifndef PLATFORM_ARCHIVE_LOADING_CORE_H
#define PLATFORM_ARCHIVE_LOADING_CORE_H

#include "platform/archive/byte_order.h"
#include "platform/archive/class_registry.h"
#include "platform/archive/counted_part.h"
#include "platform/archive/object_tracker.h"
#include "platform/archive/whole_record.h"

#include <vxclassifier/platform/ptr_handle.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class vxArchive;
class vxPersistent;

namespace detail {

/// The inside of an archive that is being read: the place in its bytes, and the objects made so far. A record
/// can refer only to earlier ones, so an object is complete before anything points to it, and nothing here
/// recurses by data.
class LoadingCore {
public:
    /// Reads `size` borrowed bytes. Throws as verifyFrame does.
    LoadingCore(const unsigned char* archive, std::size_t size);

    /// Reads an archive whose frame is verified already.
    explicit LoadingCore(std::vector<unsigned char> verified);

    ~LoadingCore();
    LoadingCore(const LoadingCore&) = delete;
    LoadingCore& operator=(const LoadingCore&) = delete;

    unsigned char getByte() { return *takeBytes(1); }
    long getSigned() { return signedAt(takeBytes(sizeof(std::uint32_t))); }
    unsigned long getUnsigned() { return getLittleEndian<std::uint32_t>(takeBytes(sizeof(std::uint32_t))); }
    double getDouble() { return doubleOf(getLittleEndian<std::uint64_t>(takeBytes(sizeof(double)))); }
    void getDoubles(double* values, std::size_t count);

    // Replace the elements by so many new ones, for which there are enough bytes.
    void getDoubles(std::vector<double>& values, std::size_t count);
    void getNumbers(std::vector<long>& values, std::size_t count);
    void getTruths(std::vector<bool>& values, std::size_t count);

    std::wstring getText();

    /// What is read next, for those who look at it before they take it.
    const unsigned char* next() const noexcept { return next_; }

    /// The next so many bytes, of which there are enough. They stay as long as the archive.
    const unsigned char* getBlock(std::size_t size) { return takeBytes(size); }

    vxPersistent* getPointer(vxArchive& archive);

    /// The object that getPointer() would give, if it takes no more than to look it up: the pointer stands in
    /// a record and the object is counted. Otherwise null, and nothing was read.
    vxPersistent* getCounted() noexcept {
        if (!usable_ || !inRecord_ || left() < sizeof(std::uint32_t)) {
            return nullptr;
        }
        const auto number = getLittleEndian<std::uint32_t>(next_);
        if (number == 0 || number > records_ || made_[number - 1].rep == nullptr) {
            return nullptr;
        }
        next_ += sizeof(std::uint32_t);
        lastHandedOut_ = number;
        countReference(made_[number - 1]);
        return made_[number - 1].object;
    }

    /// Throws vxArchive::TooLarge unless `count` elements of at least `elementSize` bytes each can follow.
    /// The product may be larger than any number of bytes.
    void requireElements(std::uint64_t count, std::size_t elementSize) const {
        requireUsable();
        if (count > left() / elementSize) {
            throwTooLarge();
        }
    }

    /// How many bytes can be read before the end of the archive, or of the record.
    std::size_t left() const noexcept { return static_cast<std::size_t>(end_ - next_); }

    /// Throws vxArchive::Misuse when the archive is finished, or was left in the middle of an object.
    void requireUsable() const {
        if (!usable_) {
            throwUnusable();
        }
    }

    /// Throws vxArchive::CorruptData for a byte that is neither 0 nor 1 where a truth value should be.
    [[noreturn]] static void throwNoTruthValue();

    /// Whoever asked for the pointer that was read last does not take the object.
    void leaveLast() noexcept;

    /// Something was left half read: the archive cannot be used any more.
    void fail() noexcept { usable_ = false; }

    /// Throws vxArchive::CorruptData when bytes are left. Gives up the objects.
    void finish();

private:
    /// An object made for a record. A share of a counted one is kept, so that its address is not used again.
    /// One that is not counted belongs to the archive until somebody takes it, and is tracked from then on.
    struct Made {
        vxPersistent* object = nullptr;
        const vxRepBase* rep = nullptr; // null for an object that is not counted
        unsigned long takers = 0;       // of one that is not counted
        bool isReferenced = false;      // by a pointer that was read
    };

    struct NamedClass {
        std::string name;
        MakeFunction make = nullptr;
        const WholeRecord* whole = nullptr;
    };

    const unsigned char* takeBytes(std::size_t size) {
        requireUsable();
        if (left() < size) {
            throwShort();
        }
        return std::exchange(next_, next_ + size);
    }
    [[noreturn]] static void throwUnusable();
    [[noreturn]] static void throwShort();
    [[noreturn]] static void throwTooLarge();
    static long signedAt(const unsigned char* from) noexcept {
        return static_cast<std::int32_t>(getLittleEndian<std::uint32_t>(from));
    }

    void makeRoomForRecords(std::size_t count);
    void getRecord(vxArchive& archive);
    bool getWholeRecord();
    NamedClass& getClass();
    NamedClass& nameClass();
    template <class MakeObject>
    vxPersistent* make(MakeObject makeObject);
    void fill(vxArchive& archive, vxPersistent& object, std::uint64_t size);
    std::uint32_t getReference();
    void countReference(Made& made) noexcept {
        if (!std::exchange(made.isReferenced, true)) {
            --unreferenced_;
        }
    }
    vxPersistent* handOut(std::uint32_t record);
    void releaseAll() noexcept;

    const std::vector<unsigned char> owned_;
    const unsigned char* next_;
    const unsigned char* end_; // of the record that is being read, or of the payload
    bool inRecord_ = false;
    bool usable_ = true;
    std::vector<NamedClass> classes_; // by class number; no name twice
    std::vector<Made> made_;          // that of record n at n - 1
    std::size_t records_ = 0;         // how many are complete; one more may be under way
    std::size_t unreferenced_ = 0;    // how many complete ones no pointer has named yet
    std::uint32_t lastHandedOut_ = 0; // the record that the last pointer named
    CountedPart countedPart_;
    ObjectTracker uncounted_;
};

} // namespace detail

#endif
