#include <vxclassifier/feature_pattern.h>

#include "clss/clastool/foundation/observed_patterns.h"
#include "platform/archive/class_level.h"
#include "platform/archive/truth_exchange.h"
#include "platform/archive/visited_scope.h"
#include "platform/archive/whole_record.h"

#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

// An archive of training data is patterns by the hundred thousand, so a whole pattern goes in one step
// wherever nothing is odd. The plain way behind it, level by level, says what is wrong, and leaves what it
// has read.

namespace {

// What a record consists of: the versions of both levels, and two vectors, each with a version and a count.
constexpr std::size_t levels = 2;
constexpr std::size_t vectorHead = 1 + sizeof(std::uint32_t);

/// Where the parts of the record lie that an archive has next.
struct Layout {
    std::size_t numMeasurements = 0;
    std::size_t numMarks = 0;
    bool areAllValid = false; // found out by read()

    static constexpr std::size_t measurements() noexcept { return levels + vectorHead; }
    std::size_t secondHead() const noexcept { return measurements() + numMeasurements * sizeof(double); }
    std::size_t marks() const noexcept { return secondHead() + vectorHead; }
    std::size_t size() const noexcept { return marks() + numMarks; }

    /// False if the bytes are too few for a record, or have anything in them that is refused, or marks that
    /// take memory of their own.
    bool read(const unsigned char* from, std::size_t left) noexcept {
        if (left < levels + 2 * vectorHead || from[0] != 0 || from[1] != 0 || from[levels] != 0) {
            return false;
        }
        numMeasurements = detail::getLittleEndian<std::uint32_t>(from + levels + 1);
        if (numMeasurements > (left - levels - 2 * vectorHead) / sizeof(double) || from[secondHead()] != 0) {
            return false;
        }
        numMarks = detail::getLittleEndian<std::uint32_t>(from + secondHead() + 1);
        if (numMarks > left - marks()) {
            return false;
        }
        areAllValid = numMarks == numMeasurements && detail::countTrue(from + marks(), numMarks) == numMarks;
        return areAllValid || (detail::ValidityMarks::areInline(from + marks(), numMarks, numMeasurements) &&
                               detail::countTruthValues(from + marks(), numMarks) == numMarks);
    }
};

} // namespace

/// What a pattern's record is made from, and made into, in one step.
class detail::PatternRecord {
public:
    /// Does all that the plain way would do with the archive, or nothing and returns false.
    static bool exchange(vxFeaturePattern& pattern, vxArchive& archive) {
        bool isDone = false;
        guarded(archive, [&] {
            if (StoringCore* const core = ArchiveAccess::storing(archive)) {
                isDone = store(pattern, *core);
            } else {
                isDone = load(pattern, *ArchiveAccess::loading(archive));
            }
        });
        return isDone;
    }

    static std::size_t size(const vxFeaturePattern& pattern) noexcept {
        Layout layout = layoutOf(pattern);
        const bool canBeCounted =
            std::max(layout.numMeasurements, layout.numMarks) <= std::numeric_limits<std::uint32_t>::max();
        return canBeCounted ? layout.size() : 0;
    }

    static void put(const vxFeaturePattern& pattern, unsigned char* to) noexcept {
        const Layout layout = layoutOf(pattern);
        to[0] = 0;
        to[1] = 0;
        to[levels] = 0;
        putLittleEndian(to + levels + 1, static_cast<std::uint32_t>(layout.numMeasurements));
        putDoubles(to + Layout::measurements(), pattern.measurements_().data(), layout.numMeasurements);
        to[layout.secondHead()] = 0;
        putLittleEndian(to + layout.secondHead() + 1, static_cast<std::uint32_t>(layout.numMarks));
        pattern.putMarks_(to + layout.marks());
    }

    /// `layout` was read from there. If this throws for want of memory, nothing has changed.
    static void get(vxFeaturePattern& pattern, const unsigned char* from, const Layout& layout) {
        if (layout.areAllValid && !pattern.isMarked_()) {
            getMeasurements(pattern.content_.plain(), from + Layout::measurements(), layout.numMeasurements);
            return;
        }
        std::vector<double> measurements;
        getMeasurements(measurements, from + Layout::measurements(), layout.numMeasurements);
        pattern.replace_(std::move(measurements),
                         ValidityMarks(from + layout.marks(), layout.numMarks, layout.numMeasurements));
    }

    static vxPersistent* make(const unsigned char* from, const Layout& layout) {
        std::unique_ptr<vxFeaturePattern> pattern(new vxFeaturePattern);
        get(*pattern, from, layout);
        return pattern.release();
    }

private:
    static bool store(const vxFeaturePattern& pattern, StoringCore& core) {
        const std::size_t needed = size(pattern);
        if (needed != 0) {
            put(pattern, core.putBlock(needed));
        }
        return needed != 0;
    }

    static bool load(vxFeaturePattern& pattern, LoadingCore& core) {
        core.requireUsable();
        Layout layout;
        if (!layout.read(core.next(), core.left())) {
            return false;
        }
        PatternObservation::changed(pattern);
        get(pattern, core.next(), layout);
        core.getBlock(layout.size());
        return true;
    }

    /// The one step that may fail. A vector that grows gives its elements values first, which takes as long
    /// as to copy a few from elsewhere.
    static void getMeasurements(std::vector<double>& to, const unsigned char* from, std::size_t count) {
        constexpr std::size_t few = 32;
        if (count > few) {
            to.resize(count);
            getDoubles(to.data(), from, count);
            return;
        }
        double values[few];
        getDoubles(values, from, count);
        to.assign(values, values + count);
    }

    static Layout layoutOf(const vxFeaturePattern& pattern) noexcept {
        Layout layout;
        layout.numMeasurements = pattern.measurements_().size();
        layout.numMarks = pattern.numMarks_();
        return layout;
    }
};

namespace {

const vxFeaturePattern& asPattern(const vxPersistent& object) noexcept {
    return static_cast<const vxFeaturePattern&>(object);
}

std::size_t sizeOf(const vxPersistent& object) {
    return detail::PatternRecord::size(asPattern(object));
}

void put(const vxPersistent& object, unsigned char* to) noexcept {
    detail::PatternRecord::put(asPattern(object), to);
}

vxPersistent* get(const unsigned char* from, std::size_t size) {
    Layout layout;
    if (!layout.read(from, size) || layout.size() != size) {
        return nullptr;
    }
    return detail::PatternRecord::make(from, layout);
}

constexpr detail::WholeRecord wholeRecord{&sizeOf, &put, &get};
const detail::WholeRecordOffer offer(typeid(vxFeaturePattern), &vxFeaturePattern::make, wholeRecord);

} // namespace

void vxFeaturePattern::dispatchSerialize(vxArchive& archive) {
    detail::VisitedScope* const scope = detail::VisitedScope::current();
    if (scope == nullptr || !scope->isEmpty() || !detail::PatternRecord::exchange(*this, archive)) {
        detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
        return;
    }
    scope->add(static_cast<vxPersistent*>(this), sizeof(vxPersistent));
    scope->add(this, sizeof(vxFeaturePattern));
}

void vxFeaturePattern::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
    if (archive.isStoring()) {
        store_(archive);
    } else {
        load_(archive);
    }
}

void vxFeaturePattern::store_(vxArchive& archive) {
    archive || (isMarked_() ? *content_.marked().measurements : content_.plain());
    detail::storeTruths(archive, numMarks_(), [&](unsigned char* to) { putMarks_(to); });
}

void vxFeaturePattern::load_(vxArchive& archive) {
    detail::PatternObservation::changed(*this); // before the change: reading may fail halfway
    const std::vector<bool> old = validity_().list(measurements_().size());
    std::vector<double> measurements;
    archive || measurements;
    // If reading fails from here on, what was read stays, and the old marks where there are no new ones;
    // these may then be fewer or more than the measurements.
    detail::ValidityMarks validity(old, measurements.size());
    try {
        detail::loadTruths(archive, [&](const unsigned char* from, std::size_t count) {
            validity = detail::ValidityMarks(from, count, measurements.size());
        });
    } catch (...) {
        replace_(std::move(measurements), std::move(validity));
        throw;
    }
    replace_(std::move(measurements), std::move(validity));
}
