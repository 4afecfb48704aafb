#ifndef VXCLASSIFIER_PLATFORM_PERSISTENT_H
#define VXCLASSIFIER_PLATFORM_PERSISTENT_H

#include <vxclassifier/platform/export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <typeinfo>

class vxArchive;
class vxPersistent;

namespace detail {
class PersistentAccess;
class SpareBits;
} // namespace detail

/// Writes an embedded persistent object to a storing archive, or fills it from a loading one. Each such call
/// writes the object's whole record anew, without any frame around it; use serializePointer for objects that
/// are shared. A failed load leaves the object partly filled.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxPersistent& object);

/// Base of every object that an archive can hold.
///
/// A concrete class overrides dispatchSerialize, has a static `make` and a static vx_Instantiator, and so can
/// be created again from a stored pointer to any of its bases.
///
/// Initial state: not tracked by any archive. The tracking mark belongs to the object's place in memory: it
/// is neither copied nor assigned.
///
/// Ownership: none; see vxRepBase for objects that are shared.
///
/// Threads: no operation locks anything of the object. Several threads may store one object that nobody
/// changes.
class VXCLASSIFIER_API vxPersistent {
public:
    /// Tells the archives that track this object that it is gone.
    virtual ~vxPersistent();

protected:
    /// Exchanges this class level with the archive: the root level is one version byte. An override returns
    /// at once if haveVisited says so, exchanges its own version byte, its base's dispatchSerialize and its
    /// fields, and then calls setVisited. Called by the archive once for each stored or loaded record.
    virtual void dispatchSerialize(vxArchive& archive);

public:
    /// Called by a loading archive after the object's record was read completely; does nothing unless
    /// overridden.
    virtual void reInit();

    /// Fills this object from its record at the present place of a loading archive, as `archive || *this`
    /// does. Throws vxArchive::Misuse on a storing archive.
    virtual void loadSimple(vxArchive& archive);

    /// Exchanges a pointer to an object that may be shared. Storing: `in` may be null; an object met for the
    /// first time in this archive is stored with its registered class, a later one as a reference to the
    /// first. `out` is not touched. Loading: `out` becomes null, the object loaded before, or a new object.
    /// The archive keeps a share of a counted object until it is finished, so take one too before that. An
    /// object that is not counted (an exception) belongs to the caller. Throws vxArchive::UnknownClass for an
    /// object whose class is not registered, before anything of it is written.
    static void serializePointer(vxArchive& archive, vxPersistent* in, vxPersistent*& out);

    /// Whether the class level of `object` with this size was already exchanged in the present pass (one
    /// record, or one embedded object). False outside of any pass.
    static bool haveVisited(const void* object, std::size_t size) noexcept;

    /// Marks a class level as exchanged in the present pass; without effect outside of any.
    static void setVisited(const void* object, std::size_t size);

    /// Tells the archives that track this object that it is about to change or to go: they forget it, so that
    /// storing it again writes it anew and a loaded reference to it is refused. To be called while
    /// isTracked_() is true. Every destructor calls it, and the assignments of classifiers; other assignments
    /// and setters leave it to their caller.
    void mutating_() noexcept;

    /// Whether an archive that is not yet finished relies on this object staying as it is: one in which it
    /// was stored by pointer, or from which it was loaded by pointer without being counted.
    bool isTracked_() const noexcept { return tracking_.load(std::memory_order_acquire) > spareBits_; }

protected:
    vxPersistent() noexcept = default;
    vxPersistent(const vxPersistent&) noexcept {}
    vxPersistent& operator=(const vxPersistent&) noexcept { return *this; }

private:
    friend class detail::PersistentAccess;
    friend class detail::SpareBits;

    static constexpr std::uint64_t spareBits_ = 3;

    // The two lowest bits are detail::SpareBits, the others say which archives track this object
    // (detail::TrackingMark); changed through const references too, since storing an object does not change
    // it in any other way.
    mutable std::atomic<std::uint64_t> tracking_{0};
};

/// Registers a concrete class with the archive for as long as it lives: the class can then be stored and
/// loaded by pointer. One static object per class does it when the library that defines the class is loaded.
///
/// Initial state: registered, unless another class already has the same name; the first registration of a
/// name wins.
///
/// Ownership: the object made by the factory belongs to whoever asked for it.
///
/// Threads: registrations and look-ups may happen on several threads at once.
class VXCLASSIFIER_API vx_Instantiator {
public:
    /// `make` returns a new object of the class `type` in its default state, never null.
    vx_Instantiator(const std::type_info& type, vxPersistent* (*make)());
    ~vx_Instantiator();
    vx_Instantiator(const vx_Instantiator&) = delete;
    vx_Instantiator& operator=(const vx_Instantiator&) = delete;

private:
    const std::type_info& type_;
    bool registered_; // false: another class had the name first, and keeps it
};

#endif
