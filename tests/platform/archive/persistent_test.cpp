#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/persistent.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using test::Bytes;
using test::load;
using test::Node;
using test::payload;
using test::Payload;
using test::stored;

/// One level of a class: `own` is exchanged between the level's base and its end.
template <class Level, class Own>
void exchangeLevel(Level& level, vxArchive& archive, Own own) {
    if (vxPersistent::haveVisited(&level, sizeof(Level))) {
        return;
    }
    unsigned char version = 0;
    archive || version;
    own();
    vxPersistent::setVisited(&level, sizeof(Level));
}

class Left : public virtual vxPersistent {
public:
    long left = 0;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        exchangeLevel(*this, archive, [&] {
            vxPersistent::dispatchSerialize(archive);
            archive || left;
        });
    }
};

class Right : public virtual vxPersistent {
public:
    long right = 0;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        exchangeLevel(*this, archive, [&] {
            vxPersistent::dispatchSerialize(archive);
            archive || right;
        });
    }
};

class Both : public Left, public Right {
public:
    int completions = 0;
    void reInit() override { ++completions; }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        exchangeLevel(*this, archive, [&] {
            Left::dispatchSerialize(archive);
            Right::dispatchSerialize(archive);
        });
    }
};

/// Stores another object into an archive of its own while it is itself stored.
class Interleaved : public vxPersistent {
public:
    Both inner;
    Bytes innerBytes;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        exchangeLevel(*this, archive, [&] {
            vxPersistent::dispatchSerialize(archive);
            innerBytes = stored(inner);
            archive || inner || inner;
        });
    }
};

/// Writes through the whole depth of the inline marks, and counts what it finds.
class ManyLevels : public vxPersistent {
public:
    int found = 0;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        for (std::size_t size = 100; size < 120; ++size) {
            found += haveVisited(this, size) ? 1 : 0;
            setVisited(this, size);
            found += haveVisited(this, size) ? 100 : 0;
        }
    }
};

struct Slots : vxPersistent {
    static std::size_t dispatchSerializeSlot() { return test::slotOf(&Slots::dispatchSerialize); }
};

TEST(Persistent, VirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(Slots::dispatchSerializeSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vxPersistent::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vxPersistent::loadSimple), 4U);
}

TEST(Persistent, ABaseReachedTwiceIsExchangedOnce) {
    Both both;
    both.left = 1;
    both.right = 2;
    // Both, Left, vxPersistent, its number; Right, its number
    EXPECT_EQ(payload(stored(both)), Payload().byte(0).byte(0).byte(0).u32(1).byte(0).u32(2).bytes());
    Both loaded;
    load(stored(both), loaded);
    EXPECT_EQ(loaded.left, 1);
    EXPECT_EQ(loaded.right, 2);
    EXPECT_EQ(loaded.completions, 1);
}

TEST(Persistent, MarksLiveAsLongAsOneRecord) {
    Interleaved object;
    const Payload both = Payload().byte(0).byte(0).byte(0).u32(0).byte(0).u32(0);
    const Payload expected = Payload().byte(0).byte(0).append(both.bytes()).append(both.bytes());
    EXPECT_EQ(payload(stored(object)), expected.bytes());
    EXPECT_EQ(payload(object.innerBytes), both.bytes()) << "the other archive has marks of its own";
}

/// Stores an object by value between its own two bases, which have one root.
class Embedding : public Left, public Right {
public:
    test::Note note;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        exchangeLevel(*this, archive, [&] {
            Left::dispatchSerialize(archive);
            archive || note;
            Right::dispatchSerialize(archive);
        });
    }
};

TEST(Persistent, MarksOutliveAnEmbeddedObject) {
    // Embedding, Left, vxPersistent, its number; the note; Right, its number, and no second root
    const Payload note = Payload().byte(0).u32(0);
    const Payload expected = Payload().byte(0).byte(0).byte(0).u32(0).append(note.bytes()).byte(0).u32(0);
    EXPECT_EQ(payload(stored(Embedding())), expected.bytes());
}

TEST(Persistent, OneVariableStoredTwiceIsStoredTwice) {
    Bytes twice = test::archiveOf([](vxArchive& archive) {
        for (const long value : {1, 2}) {
            Both both;
            both.left = value;
            archive || both;
        }
    });
    Both first;
    Both second;
    vxLoadingArchive archive(twice);
    archive || first || second;
    archive.finish();
    EXPECT_EQ(first.left, 1);
    EXPECT_EQ(second.left, 2);
}

TEST(Persistent, ThereMayBeAnyNumberOfMarks) {
    ManyLevels object;
    stored(object);
    EXPECT_EQ(object.found, 2000) << "each size was unknown before it was marked, and known afterwards";
}

TEST(Persistent, ALoadedPointerReplacesWhateverItIsLoadedInto) {
    Both unrelated;
    vxPersistent* out = &unrelated;
    const Bytes bytes = test::storedPointer(nullptr);
    vxLoadingArchive archive(bytes);
    vxPersistent::serializePointer(archive, &unrelated, out);
    EXPECT_EQ(out, nullptr);
}

TEST(Persistent, OutsideOfAnyPassNothingIsVisited) {
    const int object = 0;
    EXPECT_FALSE(vxPersistent::haveVisited(&object, sizeof object));
    vxPersistent::setVisited(&object, sizeof object);
    EXPECT_FALSE(vxPersistent::haveVisited(&object, sizeof object));
    Both both;
    stored(both);
    EXPECT_FALSE(vxPersistent::haveVisited(static_cast<Left*>(&both), sizeof(Left)));
}

TEST(Persistent, AFailedExchangeEndsItsPass) {
    const Bytes bytes = Payload().byte(0).sealed();
    Both both;
    EXPECT_ERROR_CLASS(load(bytes, both), vxArchive::ShortData);
    vxPersistent::setVisited(&both, 1);
    EXPECT_FALSE(vxPersistent::haveVisited(&both, 1));
}

TEST(Persistent, TheRootLevelKnowsVersionZeroOnly) {
    const Bytes bytes = Payload().byte(0).byte(0).byte(1).u32(0).sealed();
    Both both;
    vxLoadingArchive archive(bytes);
    try {
        archive || both;
        ADD_FAILURE() << "the version was accepted";
    } catch (const vxArchive::UnknownVersion& error) {
        EXPECT_EQ(error.sourceName(), nullptr);
        EXPECT_EQ(error.line(), 0);
        EXPECT_EQ(error.message(), L"The archive has a version that this release does not know.");
    }
    unsigned char next = 0;
    EXPECT_ERROR_CLASS(archive || next, vxArchive::Misuse);
}

TEST(Persistent, LoadSimpleIsTheSameAsLoadingByValue) {
    Both both;
    both.left = 5;
    const Bytes bytes = stored(both);
    Both loaded;
    vxLoadingArchive archive(bytes);
    loaded.loadSimple(archive);
    archive.finish();
    EXPECT_EQ(loaded.left, 5);
    EXPECT_EQ(loaded.completions, 1);
}

TEST(Persistent, LoadSimpleFromAStoringArchiveIsMisuse) {
    vxStoringArchive archive;
    Both both;
    EXPECT_ERROR(both.loadSimple(archive), vxArchive::Misuse,
                 L"An object can be loaded only from an archive that is being read.");
    archive.finish();
    EXPECT_EQ(archive.bytes(), Payload().sealed()) << "nothing was written";
}

TEST(Persistent, StoringByPointerLeavesTheOutArgumentAlone) {
    Node node(1);
    Node other(2);
    vxPersistent* out = &other;
    vxStoringArchive archive;
    vxPersistent::serializePointer(archive, &node, out);
    EXPECT_EQ(out, &other);
}

TEST(Persistent, CountedPersistentObjectsAreSmall) {
    static_assert(std::is_nothrow_default_constructible_v<Both>);
    EXPECT_LE(sizeof(vxPersistent), 2 * sizeof(void*));
}

} // namespace
