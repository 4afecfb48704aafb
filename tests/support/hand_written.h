#ifndef TESTS_SUPPORT_HAND_WRITTEN_H
#define TESTS_SUPPORT_HAND_WRITTEN_H

#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>

#include <string>
#include <vector>

namespace test {

/// An archive put together value by value from the archive's primitives:
///     HandWritten().byte(0).number(7).reals({0.5, 1.0}).sealed()
/// What a class stores must be the same bytes, and what no class would store can be loaded.
class HandWritten {
public:
    HandWritten& byte(unsigned char value) { return put(value); }
    HandWritten& number(long value) { return put(value); }
    HandWritten& count(unsigned long value) { return put(value); }
    HandWritten& real(double value) { return put(value); }
    HandWritten& text(std::wstring value) { return put(value); }

    HandWritten& pointer(const vxPersistent* object) {
        vxPersistent* unused = nullptr;
        vxPersistent::serializePointer(archive_, const_cast<vxPersistent*>(object), unused);
        return *this;
    }

    HandWritten& numbers(const std::vector<long>& values) {
        byte(0).count(values.size());
        for (const long value : values) {
            number(value);
        }
        return *this;
    }

    HandWritten& reals(const std::vector<double>& values) {
        byte(0).count(values.size());
        for (const double value : values) {
            real(value);
        }
        return *this;
    }

    HandWritten& flags(const std::vector<bool>& values) {
        byte(0).count(values.size());
        for (const bool value : values) {
            byte(value ? 1 : 0);
        }
        return *this;
    }

    /// Ends the archive; call it once.
    Bytes sealed() {
        archive_.finish();
        return archive_.bytes();
    }

private:
    template <class T>
    HandWritten& put(T& value) {
        archive_ || value;
        return *this;
    }

    vxStoringArchive archive_;
};

/// What `archive || value` makes of an archive that holds nothing else.
template <class T>
T loaded(const Bytes& sealed, T into) {
    load(sealed, into);
    return into;
}

} // namespace test

#endif
