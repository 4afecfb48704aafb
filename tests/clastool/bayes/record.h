#ifndef TESTS_CLASTOOL_BAYES_RECORD_H
#define TESTS_CLASTOOL_BAYES_RECORD_H

#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/nm_matrix.h>

#include <initializer_list>
#include <vector>

namespace test {

/// Puts a record together from single primitives, without the operators of the classes under test.
class Record {
public:
    explicit Record(vxArchive& archive) : archive_(archive) {}

    Record& versions(std::initializer_list<unsigned char> versions) {
        for (unsigned char version : versions) {
            archive_ || version;
        }
        return *this;
    }
    Record& number(long value) {
        archive_ || value;
        return *this;
    }
    Record& real(double value) {
        archive_ || value;
        return *this;
    }
    Record& numbers(const std::vector<long>& values) {
        head(values.size());
        for (const long value : values) {
            number(value);
        }
        return *this;
    }
    Record& reals(const std::vector<double>& values) {
        head(values.size());
        for (const double value : values) {
            real(value);
        }
        return *this;
    }
    Record& flags(const std::vector<bool>& values) {
        head(values.size());
        for (const bool value : values) {
            unsigned char byte = value ? 1 : 0;
            archive_ || byte;
        }
        return *this;
    }
    Record& sets(const std::vector<std::vector<long>>& values) {
        head(values.size());
        for (const std::vector<long>& value : values) {
            numbers(value);
        }
        return *this;
    }
    Record& matrix(long rows, long columns, const std::vector<double>& entries) {
        versions({0}).number(rows).number(columns);
        for (const double entry : entries) {
            real(entry);
        }
        return *this;
    }
    /// `object` must be one that handles share, or null.
    Record& pointer(vxPersistent* object) {
        vxPersistent* unused = nullptr;
        vxPersistent::serializePointer(archive_, object, unused);
        return *this;
    }
    Record& pointers(const std::vector<vxPersistent*>& objects) {
        head(objects.size());
        for (vxPersistent* object : objects) {
            pointer(object);
        }
        return *this;
    }

private:
    void head(std::size_t size) {
        versions({0});
        unsigned long count = size;
        archive_ || count;
    }

    vxArchive& archive_;
};

/// The sealed archive of what `write(record)` writes.
template <class Write>
Bytes recordOf(Write write) {
    return archiveOf([&](vxArchive& archive) {
        Record record(archive);
        write(record);
    });
}

} // namespace test

#endif
