#ifndef VXCLASSIFIER_DETAIL_VALIDITY_MARKS_H
#define VXCLASSIFIER_DETAIL_VALIDITY_MARKS_H

#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// Which measurements of a pattern are valid, in one word; only of a pattern with more than 63 measurements,
/// or whose marks an archive brought, may they need memory of their own.
///
/// States: *inline*, one mark for each measurement of the pattern and none invalid but among the first ones;
/// *none*, no mark at all; *listed*, any other list of marks, which only an archive or a long pattern brings.
/// Initial state: inline, all valid.
///
/// A list of marks has one state only, given the number of measurements: marks are equal if their
/// states and contents are. In the state inline that number is not kept here; the pattern knows it.
///
/// Ownership: owns its list. Threads: as any plain value.
class VXCLASSIFIER_API ValidityMarks {
public:
    /// How many measurements at the beginning of a pattern the state inline has room for.
    static constexpr std::size_t inlineSize = 63;

    ValidityMarks() noexcept = default;

    /// The marks of a pattern with `numMeasurements` measurements: true means valid. There may be fewer or
    /// more of them than measurements.
    ValidityMarks(const std::vector<bool>& marks, std::size_t numMeasurements);

    /// Whether the marks that an archive has, a byte for each, have room in the state inline.
    static bool areInline(const unsigned char* bytes, std::size_t count,
                          std::size_t numMeasurements) noexcept;

    /// The marks that an archive has, each of which is 0 or 1.
    ValidityMarks(const unsigned char* bytes, std::size_t count, std::size_t numMeasurements);

    ValidityMarks(const ValidityMarks& other);
    ValidityMarks(ValidityMarks&& other) noexcept : word_(other.word_) { other.word_ = none; }
    ValidityMarks& operator=(const ValidityMarks&) = delete;
    ValidityMarks& operator=(ValidityMarks&& other) noexcept {
        swap(other);
        return *this;
    }
    ~ValidityMarks() {
        if (isListed()) {
            deleteList();
        }
    }

    void swap(ValidityMarks& other) noexcept {
        const std::uint64_t word = word_;
        word_ = other.word_;
        other.word_ = word;
    }

    /// Marks a measurement among the first inlineSize ones as invalid, in the state inline.
    void invalidateInline(std::size_t index) noexcept { word_ |= std::uint64_t{2} << index; }

    /// Whether there is one mark for each measurement and all of them are valid.
    bool areAllValid() const noexcept { return word_ == allValid; }

    /// Whether an existing measurement has a mark that says valid.
    bool isValid(std::size_t index) const noexcept {
        if ((word_ & inlineTag) == 0) {
            return isListedValid(index);
        }
        return index >= inlineSize || (word_ >> (index + 1) & 1) == 0;
    }

    /// The marks of a pattern with `numMeasurements` measurements, one by one.
    std::vector<bool> list(std::size_t numMeasurements) const;

    /// How many marks there are.
    std::size_t size(std::size_t numMeasurements) const noexcept {
        return isListed() ? listed()->size() : (word_ == none ? 0 : numMeasurements);
    }

    /// Writes all of them, a byte for each, 0 or 1.
    void put(unsigned char* to, std::size_t numMeasurements) const noexcept;

    /// For the marks of two patterns with the same number of measurements.
    bool operator==(const ValidityMarks& other) const noexcept;

private:
    static constexpr std::uint64_t none = 0;
    static constexpr std::uint64_t inlineTag = 1;
    static constexpr std::uint64_t allValid = inlineTag;

    bool isListed() const noexcept { return word_ != none && (word_ & inlineTag) == 0; }
    const std::vector<bool>* listed() const noexcept;
    bool isListedValid(std::size_t index) const noexcept;
    void keepList(const std::vector<bool>& marks);
    void deleteList() noexcept;

    // Inline: the tag, and above it one bit for each of the first measurements, set if it is invalid. Listed:
    // the address of the list, which is even.
    std::uint64_t word_ = allValid;
};

} // namespace detail

#endif
