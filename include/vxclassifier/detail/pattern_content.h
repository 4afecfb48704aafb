#ifndef VXCLASSIFIER_DETAIL_PATTERN_CONTENT_H
#define VXCLASSIFIER_DETAIL_PATTERN_CONTENT_H

#include <vxclassifier/detail/validity_marks.h>

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace detail {

/// The measurements of a pattern whose validity marks say more than that all are valid, in no more space than
/// a vector takes.
///
/// Ownership: owns both. Threads: as any plain value.
struct MarkedMeasurements {
    std::unique_ptr<std::vector<double>> measurements; // null only when it was moved elsewhere

    // One for each measurement, but for what an archive brought: a missing mark means invalid, a surplus one
    // takes part in comparing and storing only.
    ValidityMarks validity;

    bool isValid(std::size_t index) const noexcept {
        return index < measurements->size() && validity.isValid(index);
    }
};

/// What a pattern holds, in the space of a vector. Training data are patterns by the million, nearly all of
/// them valid throughout: such a *plain* pattern has its measurements and nothing else, any other is
/// *marked*.
///
/// Which of the two it is, the pattern knows: it has a bit to spare, and a variant would take a word for it.
///
/// Initial state: plain, without measurements.
///
/// Ownership: owns what it holds. Threads: as any plain value.
class PatternContent {
public:
    PatternContent() noexcept : plain_() {}
    PatternContent(const PatternContent&) = delete;
    PatternContent& operator=(const PatternContent&) = delete;

    // NOLINTBEGIN(cppcoreguidelines-pro-type-union-access): for the reason above.
    /// It has to be plain again by then.
    ~PatternContent() { plain_.~vector(); }

    std::vector<double>& plain() noexcept { return plain_; }
    const std::vector<double>& plain() const noexcept { return plain_; }
    MarkedMeasurements& marked() noexcept { return marked_; }
    const MarkedMeasurements& marked() const noexcept { return marked_; }

    /// Requires a plain one.
    void makeMarked(MarkedMeasurements&& marked) noexcept {
        plain_.~vector();
        new (&marked_) MarkedMeasurements(std::move(marked));
    }

    /// Requires a marked one; leaves it without measurements.
    void makePlain() noexcept {
        marked_.~MarkedMeasurements();
        new (&plain_) std::vector<double>();
    }
    // NOLINTEND(cppcoreguidelines-pro-type-union-access)

private:
    union {
        std::vector<double> plain_;
        MarkedMeasurements marked_;
    };
};

} // namespace detail

#endif
