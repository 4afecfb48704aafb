#ifndef FUZZ_ARCHIVE_BUILDER_H
#define FUZZ_ARCHIVE_BUILDER_H

#include "tests/support/archive_bytes.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace fuzz {

/// Decisions read off the fuzzer's bytes; when they are used up, every further one is 0.
class Choices {
public:
    Choices(const unsigned char* data, std::size_t size) : next_(data), end_(data + size) {}

    unsigned byte() { return next_ == end_ ? 0U : *next_++; }
    std::uint64_t number(int size);
    /// One of 0 .. count - 1.
    std::size_t below(std::size_t count) { return byte() % count; }
    /// True for one value of a byte, which is never 0.
    bool rarely() { return byte() == 0xa5U; }

private:
    const unsigned char* next_;
    const unsigned char* end_;
};

/// Puts archives together that keep to the format nearly everywhere, so that the hostile values in them get
/// past the loader. docs/archive-format.md describes the format; what is built is a form:
///
///     i i32   u u32   b byte   t truth value   d f64   s text   v vector of the form behind it
///     n i32 that is seldom large: a number of trials, which asks for that many steps
///     r vxRange   x vxNMMatrix   F frequencies   C costs   K category result   R result
///     T tool   D distribution types   E an embedded pattern   h score function   U rule   1, 2 score
///     functions' values >f pointer to an object of the family f (the families are in archive_builder.cpp; *
///     is any of them)
class ArchiveBuilder {
public:
    ArchiveBuilder(const unsigned char* data, std::size_t size) : choices_(data, size) {}

    /// Appends values of the form. Objects are numbered through all calls.
    void append(const std::string& form);
    /// Appends a top-level pointer to an object of this class.
    void appendPointer(const std::string& className);
    /// Appends an object of this class as if stored by value.
    void appendInPlace(const std::string& className);

    /// The archive of all that was appended.
    test::Bytes sealed() { return payload_.sealed(); }

private:
    struct Record {
        char family;
        std::uint32_t number;
    };

    // `depth` says how many records are open: 0 is the top level.
    const char* one(test::Payload& out, const char* form, int depth);
    const char* vectorOf(test::Payload& out, const char* form, int depth);
    void each(test::Payload& out, const char* form, int depth);
    void version(test::Payload& out) { out.byte(choices_.rarely() ? choices_.byte() : 0U); }
    void versions(test::Payload& out, int count);
    void real(test::Payload& out);
    void whole(test::Payload& out);
    void trials(test::Payload& out);
    void matrix(test::Payload& out);
    void scoreFunction(test::Payload& out);
    std::uint32_t object(char family, int depth);
    std::uint32_t newObject(std::size_t index, int depth);
    template <class Make>
    void topLevelPointer(test::Payload& out, Make make);

    Choices choices_;
    test::Payload payload_;
    test::Payload pending_; // records of the top-level pointer that is being built
    std::vector<Record> records_;
    std::map<std::size_t, std::uint32_t> classNumbers_;
};

} // namespace fuzz

#endif
