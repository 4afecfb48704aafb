#include <vxclassifier/detail/validity_marks.h>

#include "platform/archive/truth_values.h"

#include <algorithm>
#include <cstddef>

namespace detail {

static_assert(alignof(std::vector<bool>) > 1, "the address of a list leaves the tag's bit clear");

ValidityMarks::ValidityMarks(const std::vector<bool>& marks, std::size_t numMeasurements) {
    const std::size_t numInline = std::min(marks.size(), inlineSize);
    const auto firstBeyond = marks.begin() + static_cast<std::ptrdiff_t>(numInline);
    if (marks.size() != numMeasurements || std::find(firstBeyond, marks.end(), false) != marks.end()) {
        keepList(marks);
        return;
    }
    for (std::size_t i = 0; i < numInline; ++i) {
        if (!marks[i]) {
            invalidateInline(i);
        }
    }
}

bool ValidityMarks::areInline(const unsigned char* bytes, std::size_t count,
                              std::size_t numMeasurements) noexcept {
    const std::size_t numInline = std::min(count, inlineSize);
    return count == numMeasurements && countTrue(bytes + numInline, count - numInline) == count - numInline;
}

ValidityMarks::ValidityMarks(const unsigned char* bytes, std::size_t count, std::size_t numMeasurements) {
    const std::size_t numInline = std::min(count, inlineSize);
    if (!areInline(bytes, count, numMeasurements)) {
        std::vector<bool> marks;
        getTruthValues(marks, bytes, count);
        keepList(marks);
        return;
    }
    for (std::size_t i = countTrue(bytes, numInline); i < numInline; ++i) {
        word_ |= (bytes[i] == 0 ? std::uint64_t{1} : 0) << (i + 1);
    }
}

ValidityMarks::ValidityMarks(const ValidityMarks& other) : word_(other.word_) {
    if (other.isListed()) {
        keepList(*other.listed());
    }
}

void ValidityMarks::keepList(const std::vector<bool>& marks) {
    word_ = none;
    if (!marks.empty()) {
        word_ = reinterpret_cast<std::uintptr_t>(new std::vector<bool>(marks));
    }
}

const std::vector<bool>* ValidityMarks::listed() const noexcept {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): keepList stored the address of such a vector.
    return reinterpret_cast<const std::vector<bool>*>(static_cast<std::uintptr_t>(word_));
}

void ValidityMarks::deleteList() noexcept {
    delete listed();
}

bool ValidityMarks::isListedValid(std::size_t index) const noexcept {
    return isListed() && index < listed()->size() && (*listed())[index];
}

std::vector<bool> ValidityMarks::list(std::size_t numMeasurements) const {
    if (isListed()) {
        return *listed();
    }
    std::vector<bool> marks(word_ == none ? 0 : numMeasurements, true);
    for (std::size_t i = 0; i < std::min(marks.size(), inlineSize); ++i) {
        marks[i] = isValid(i);
    }
    return marks;
}

void ValidityMarks::put(unsigned char* to, std::size_t numMeasurements) const noexcept {
    if (isListed()) {
        putTruthValues(to, *listed());
        return;
    }
    const std::size_t count = size(numMeasurements);
    std::fill_n(to, count, static_cast<unsigned char>(1));
    for (std::size_t i = 0; i < std::min(count, inlineSize); ++i) {
        to[i] = isValid(i) ? 1 : 0;
    }
}

bool ValidityMarks::operator==(const ValidityMarks& other) const noexcept {
    if (isListed() && other.isListed()) {
        return *listed() == *other.listed();
    }
    return word_ == other.word_;
}

} // namespace detail
