#include "tests/laws/subject.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstdint>

// What holds for every class that archives can create.

namespace {

using laws::allObjects;
using laws::loadPointer;
using laws::Object;
using laws::own;
using laws::Subject;
using test::Bytes;

class PersistentLaws : public testing::TestWithParam<Subject> {
protected:
    static Object make() { return own(GetParam().make()); }
    static bool equal(const Object& a, const Object& b) { return GetParam().equal(*a, *b); }

    static void expectEqual(const Object& a, const Object& b) { laws::expectEqual(GetParam(), a, b); }

    static long sharesOf(const Object& object) {
        const auto* counted = dynamic_cast<const vxRepBase*>(object.get());
        return counted == nullptr ? 1 : vx_PtrHandleBase_RepAccessor::count(*counted);
    }
};
INSTANTIATE_LAWS(PersistentLaws, laws::subjects());

class CloneLaws : public PersistentLaws {};
INSTANTIATE_LAWS(CloneLaws, laws::subjectsWith(&Subject::clone));

class HandleLaws : public PersistentLaws {};
INSTANTIATE_LAWS(HandleLaws, laws::subjectsWith(&Subject::checkHandles));

/// The same archive with another byte at one place of its content.
Bytes withByte(const Bytes& sealed, std::size_t place, unsigned char value) {
    Bytes content = test::payload(sealed);
    content.at(place) = value;
    return test::archiveOf([&](vxArchive& archive) {
        for (unsigned char& byte : content) {
            archive || byte;
        }
    });
}

TEST_P(PersistentLaws, MakeGivesANewObjectOfExactlyTheClassThatNobodyKnows) {
    const Object made = make();
    const Object another = make();
    EXPECT_NE(made, another);
    EXPECT_EQ(laws::classOf(*made), laws::classOf(*GetParam().samples().front()));
    EXPECT_EQ(sharesOf(made), 1) << "only our own";
    EXPECT_FALSE(made->isTracked_());
    expectEqual(made, another);
}

TEST_P(PersistentLaws, TheSamplesDifferAndAreEqualToThemselves) {
    const std::vector<Object> samples = GetParam().samples();
    ASSERT_GE(samples.size(), 2U);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t j = 0; j < samples.size(); ++j) {
            EXPECT_EQ(equal(samples[i], samples[j]), i == j) << i << " and " << j;
        }
    }
}

TEST_P(PersistentLaws, MadeTheSameWayTheyAreEqual) {
    const std::vector<Object> once = GetParam().samples();
    const std::vector<Object> again = GetParam().samples();
    ASSERT_EQ(once.size(), again.size());
    for (std::size_t i = 0; i < once.size(); ++i) {
        expectEqual(once[i], again[i]);
        EXPECT_EQ(test::stored(*once[i]), test::stored(*again[i]));
    }
}

TEST_P(PersistentLaws, NoObjectOfAnotherClassOfTheFamilyIsEqual) {
    const Object mine = GetParam().samples().front();
    for (const Subject& other : laws::subjects()) {
        if (other.name == GetParam().name) {
            continue;
        }
        const Object foreign = other.samples().front();
        try {
            EXPECT_FALSE(GetParam().equal(*mine, *foreign)) << other.name;
        } catch (const std::bad_cast&) {
            // Another family: its objects cannot be asked about at all.
        }
    }
}

TEST_P(PersistentLaws, ComesBackThroughAPointerAsItWas) {
    for (const Object& object : allObjects(GetParam())) {
        const Bytes sealed = test::storedPointer(object.get());
        const Object loaded = loadPointer(sealed);
        expectEqual(object, loaded);
        EXPECT_EQ(test::storedPointer(loaded.get()), sealed);
    }
}

TEST_P(PersistentLaws, ComesBackIntoAnyObjectOfItsClass) {
    for (const Object& object : allObjects(GetParam())) {
        const Bytes sealed = test::stored(*object);
        for (const Object& into : allObjects(GetParam())) {
            test::load(sealed, *into);
            expectEqual(object, into);
            EXPECT_EQ(test::stored(*into), sealed);
        }
    }
}

TEST_P(PersistentLaws, StoringChangesNothing) {
    for (const Object& object : allObjects(GetParam())) {
        const Object before = GetParam().copy(*object);
        const Bytes once = test::stored(*object);
        EXPECT_EQ(test::stored(*object), once);
        test::storedPointer(object.get());
        EXPECT_EQ(test::stored(*object), once);
        expectEqual(object, before);
        EXPECT_FALSE(object->isTracked_()) << "a finished archive knows nobody";
        EXPECT_EQ(sharesOf(object), 1) << "and keeps nobody";
    }
}

TEST_P(PersistentLaws, TwoPointersToOneObjectComeBackAsOne) {
    const Object object = GetParam().samples().front();
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        vxPersistent* unused = nullptr;
        vxPersistent::serializePointer(archive, object.get(), unused);
        vxPersistent::serializePointer(archive, object.get(), unused);
    });
    vxLoadingArchive archive(sealed);
    vxPersistent* first = nullptr;
    vxPersistent* second = nullptr;
    vxPersistent::serializePointer(archive, nullptr, first);
    vxPersistent::serializePointer(archive, nullptr, second);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    const Object loaded = own(first);
    archive.finish();
    EXPECT_EQ(sharesOf(loaded), 1);
    expectEqual(object, loaded);
}

TEST_P(PersistentLaws, BeginsWithAVersionForEachLevelAndRefusesAnyOther) {
    for (const Object& object : allObjects(GetParam())) {
        const Bytes sealed = test::stored(*object);
        for (int level = 0; level < GetParam().levels; ++level) {
            const auto place = static_cast<std::size_t>(level);
            ASSERT_EQ(test::payload(sealed).at(place), 0) << level;
            const Object into = make();
            for (const unsigned char version : {std::uint8_t{1}, std::uint8_t{255}}) {
                EXPECT_THROW(test::load(withByte(sealed, place, version), *into), vxArchive::UnknownVersion)
                    << level;
            }
        }
    }
}

TEST_P(PersistentLaws, ALevelOfAnotherVersionIsNamedByTheErrorsOnly) {
    const bool namesItself = dynamic_cast<const vxException*>(make().get()) != nullptr;
    const Object into = make();
    EXPECT_UNKNOWN_VERSION(test::load(withByte(test::stored(*make()), 0, 1), *into),
                           namesItself ? GetParam().name.c_str() : nullptr, 0);
}

TEST_P(PersistentLaws, ACopyIsEqualIndependentAndKnownToNobody) {
    const std::vector<Object> objects = allObjects(GetParam());
    for (const Object& object : objects) {
        const Object copy = GetParam().copy(*object);
        expectEqual(object, copy);
        EXPECT_EQ(sharesOf(copy), 1);
        EXPECT_EQ(sharesOf(object), 1);
        const Bytes before = test::stored(*object);
        for (const Object& other : objects) {
            GetParam().assign(*copy, *other);
            EXPECT_EQ(test::stored(*object), before) << "changing the copy must not show in the original";
        }
    }
}

TEST_P(PersistentLaws, AssigningMakesEqualAndKeepsTheShares) {
    for (const Object& from : allObjects(GetParam())) {
        for (const Object& to : allObjects(GetParam())) {
            const long shares = sharesOf(to);
            GetParam().assign(*to, *from);
            expectEqual(from, to);
            EXPECT_EQ(test::stored(*to), test::stored(*from));
            EXPECT_EQ(sharesOf(to), shares);
            GetParam().assign(*to, *to);
            expectEqual(from, to);
        }
    }
}

TEST_P(CloneLaws, ACloneIsEqualIndependentAndOwnedByItsHandle) {
    const std::vector<Object> objects = allObjects(GetParam());
    for (const Object& object : objects) {
        const Object clone = GetParam().clone(*object);
        EXPECT_NE(clone, object);
        expectEqual(object, clone);
        EXPECT_EQ(sharesOf(clone), 1);
        EXPECT_EQ(test::stored(*clone), test::stored(*object));
        const Bytes before = test::stored(*object);
        GetParam().assign(*clone, *objects.back());
        EXPECT_EQ(test::stored(*object), before);
    }
}

TEST_P(HandleLaws, BothKindsOfHandlesKeepThem) {
    for (const Object& object : allObjects(GetParam())) {
        GetParam().checkHandles(*object);
    }
}

TEST_P(PersistentLaws, EveryTruncationIsRefused) {
    const Object object = GetParam().samples().front();
    const Bytes content = test::payload(test::storedPointer(object.get()));
    for (std::size_t size = 0; size < content.size(); ++size) {
        const Bytes cut = test::archiveOf([&](vxArchive& archive) {
            for (std::size_t i = 0; i < size; ++i) {
                unsigned char byte = content[i];
                archive || byte;
            }
        });
        EXPECT_THROW(loadPointer(cut), vxArchive::Errors) << size << " of " << content.size() << " bytes";
    }
}

} // namespace
