#include "fuzz/entries.h"

#include "fuzz/steps.h"

#include <vxclassifier/platform/archive.h>

namespace fuzz {

Tally tallies[3];

const std::vector<Entry>& entries() {
    static const std::vector<Entry> all = [] {
        std::vector<Entry> made;
        addObjectEntries(made);
        addValueEntries(made);
        addMixedEntry(made);
        return made;
    }();
    return all;
}

void checkFrame(const test::Bytes& bytes) {
    const bool right =
        bytes.size() >= test::frameSize && test::Payload().append(test::payload(bytes)).sealed() == bytes;
    bool opened = false;
    try {
        const vxLoadingArchive archive(bytes);
        opened = true;
    } catch (const vxArchive::ShortData&) {
    } catch (const vxArchive::CorruptFrame&) {
    }
    require(opened == right, right ? "an archive that cannot be opened" : "a damaged archive was opened");
}

void run(const Entry& entry, const unsigned char* data, std::size_t size) {
    if (size == 0) {
        return;
    }
    const std::size_t mode = data[0] % 3U;
    const test::Bytes rest(data + 1, data + size);
    test::Bytes bytes = rest;
    if (mode == static_cast<std::size_t>(Mode::sealed)) {
        bytes = test::Payload().append(rest).sealed();
    } else if (mode == static_cast<std::size_t>(Mode::built)) {
        ArchiveBuilder builder(rest.data(), rest.size());
        entry.build(builder);
        bytes = builder.sealed();
    } else {
        checkFrame(bytes);
    }
    ++tallies[mode].runs;
    tallies[mode].accepted += entry.check(bytes) ? 1 : 0;
}

} // namespace fuzz
