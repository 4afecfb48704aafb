#ifndef VXCLASSIFIER_CLASSIFIER_DEFS_H
#define VXCLASSIFIER_CLASSIFIER_DEFS_H

#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>

#include <string>

/// The errors that the library's own checks throw. The class says what kind of rule was broken, the message
/// (fixed English text, message() or what()) says which one.
namespace vxClassifierDefs {

/// Base of all errors of this family.
///
/// Initial state: the given message. Ownership and threads: as for vxException; copying one cannot fail.
class VXCLASSIFIER_API Errors : public vxExceptionWithString {
public:
    explicit Errors(const std::wstring& message);
    Errors(const Errors&) noexcept;
    Errors& operator=(const Errors&) noexcept;
    ~Errors() override;

protected:
    Errors() noexcept;
    void dispatchSerialize(vxArchive& archive) override;

public:
    long errorNumber() const override = 0;
    void suicideAndRethrow() override = 0;

protected:
    void serialize_(vxArchive& archive, unsigned char version);
};

// The eight classes differ in their name and their number only.
#define VXCLASSIFIER_ERROR(Name)                                                                             \
    class VXCLASSIFIER_API Name : public Errors {                                                            \
    public:                                                                                                  \
        Name() noexcept;                                                                                     \
        explicit Name(const std::wstring& message);                                                          \
        Name(const Name&) noexcept;                                                                          \
        Name& operator=(const Name&) noexcept;                                                               \
        ~Name() override;                                                                                    \
        static vxPersistent* make();                                                                         \
                                                                                                             \
    protected:                                                                                               \
        void dispatchSerialize(vxArchive& archive) override;                                                 \
                                                                                                             \
    public:                                                                                                  \
        long errorNumber() const override;                                                                   \
        void suicideAndRethrow() override;                                                                   \
                                                                                                             \
    protected:                                                                                               \
        void serialize_(vxArchive& archive, unsigned char version);                                          \
                                                                                                             \
    private:                                                                                                 \
        static vx_Instantiator sExemplar;                                                                    \
    }

/// A value lies outside what is allowed. Number 0x10004200.
VXCLASSIFIER_ERROR(BadParams);
/// An index of a pattern or a measurement lies outside what is there. Number 0x10004202.
VXCLASSIFIER_ERROR(BadIndex);
/// A category label is not allowed here. Number 0x10004203.
VXCLASSIFIER_ERROR(BadLabel);
/// The technique in use cannot do what was asked. Number 0x10004204.
VXCLASSIFIER_ERROR(BadMethod);
/// Something must be trained first. Number 0x10004201.
VXCLASSIFIER_ERROR(NotTrained);
/// What was asked for does not exist in this library. Number 0x10004205.
VXCLASSIFIER_ERROR(NotImplemented);
/// A feature pattern does not fit: its size, or an invalid measurement. Number 0x10004206.
VXCLASSIFIER_ERROR(BadFeatures);
/// There were too few training data for what was asked. Number 0x10004207.
VXCLASSIFIER_ERROR(InsufficientTrainData);

#undef VXCLASSIFIER_ERROR

} // namespace vxClassifierDefs

#endif
