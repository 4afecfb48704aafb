#ifndef VXCLASSIFIER_PLATFORM_DIAG_OBJECT_H
#define VXCLASSIFIER_PLATFORM_DIAG_OBJECT_H

#include <vxclassifier/platform/export.h>

/// What a caller hands to a training or a run so that it can be recorded. Derive from it to keep what is
/// recorded; the techniques of this library record nothing by themselves.
///
/// Initial state: switched on, passes on every flag, records into itself.
///
/// Ownership: a destination is borrowed and must outlive this object's use. A copy has the same switch and
/// flags, and records into itself.
///
/// Threads: an object that nobody changes may be used by several threads.
class VXCLASSIFIER_API vxDiagObject {
public:
    vxDiagObject() noexcept = default;
    vxDiagObject(const vxDiagObject& other) noexcept;
    vxDiagObject& operator=(const vxDiagObject& other) noexcept;
    virtual ~vxDiagObject();

    /// Where what is recorded for `diag` goes, and with which flags.
    /// Null stays null, and leaves `flags` as they are. An object that is switched off gives null and clears
    /// `flags`. Otherwise `flags` are reduced to those that the object passes on; if it has a destination,
    /// the same holds there, and so on until an object records into itself, which is returned.
    static vxDiagObject* getRecordingDestination(vxDiagObject* diag, unsigned long& flags) noexcept;

    bool isEnabled() const noexcept { return enabled_; }
    void enable() noexcept { enabled_ = true; }
    void disable() noexcept { enabled_ = false; }

    /// The flags that are passed on; all bits by default.
    unsigned long passedFlags() const noexcept { return passedFlags_; }
    void passedFlags(unsigned long flags) noexcept { passedFlags_ = flags; }

    /// The object that is recorded into in place of this one, or null for this one itself.
    vxDiagObject* destination() const noexcept { return destination_; }

    /// Sets the destination; null ends the redirection. Throws vxBadPointer, and changes nothing, if the
    /// destination would lead back to this object.
    void destination(vxDiagObject* object);

private:
    bool enabled_ = true;
    unsigned long passedFlags_ = ~0UL;
    vxDiagObject* destination_ = nullptr; // following destinations never leads back here
};

#endif
