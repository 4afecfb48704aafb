#include <vxclassifier/platform/diag_object.h>

#include <vxclassifier/platform/exception.h>

vxDiagObject::~vxDiagObject() = default;

vxDiagObject::vxDiagObject(const vxDiagObject& other) noexcept
    : enabled_(other.enabled_), passedFlags_(other.passedFlags_) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the pointer is borrowed and stays.
vxDiagObject& vxDiagObject::operator=(const vxDiagObject& other) noexcept {
    enabled_ = other.enabled_;
    passedFlags_ = other.passedFlags_;
    return *this; // the destination stays: a copied one could lead back to this object
}

vxDiagObject* vxDiagObject::getRecordingDestination(vxDiagObject* diag, unsigned long& flags) noexcept {
    vxDiagObject* last = nullptr;
    for (vxDiagObject* next = diag; next != nullptr; next = next->destination_) {
        if (!next->enabled_) {
            flags = 0;
            return nullptr;
        }
        flags &= next->passedFlags_;
        last = next;
    }
    return last;
}

void vxDiagObject::destination(vxDiagObject* object) {
    for (const vxDiagObject* next = object; next != nullptr; next = next->destination_) {
        if (next == this) {
            throw vxBadPointer(L"The destination of a diagnostic object must not lead back to the object.");
        }
    }
    destination_ = object;
}
