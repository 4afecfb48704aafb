#include "fuzz/entries.h"
#include "fuzz/round_trip.h"
#include "fuzz/uses.h"
#include "tests/laws/subject.h"

#include <map>
#include <typeindex>

namespace fuzz {

namespace {

const laws::Subject& subjectOf(const vxPersistent& object) {
    static const std::map<std::type_index, const laws::Subject*> byClass = [] {
        std::map<std::type_index, const laws::Subject*> made;
        for (const laws::Subject& subject : laws::subjects()) {
            made[laws::classOf(*laws::own(subject.make()))] = &subject;
        }
        return made;
    }();
    const auto found = byClass.find(laws::classOf(object));
    require(found != byClass.end(), "an object of a class that is not registered");
    return *found->second;
}

/// What holds for an object that was accepted, and for one that a refused load has filled partly.
void checkObject(const laws::Subject& subject, const laws::Object& object, std::uint64_t picks) {
    const test::Bytes stored = test::storedPointer(object.get());
    const laws::Object again = laws::loadPointer(stored);
    require(test::storedPointer(again.get()) == stored, "a reloaded object is stored as other bytes");
    requireCopy(subject.equal, *object, *again, stored);
    const laws::Object copy = subject.copy(*object);
    require(test::storedPointer(copy.get()) == stored, "a copy is stored as other bytes");
    requireCopy(subject.equal, *object, *copy, stored);
    const laws::Object assigned = laws::own(subject.make());
    subject.assign(*assigned, *object);
    require(test::storedPointer(assigned.get()) == stored, "an assigned object is stored as other bytes");
    if (subject.clone) {
        require(test::storedPointer(subject.clone(*object).get()) == stored, "a clone has other bytes");
    }
    useAll(*object, picks);
    require(test::storedPointer(object.get()) == stored, "using an object has changed it");
}

std::vector<test::Bytes> storedSamples(const laws::Subject& subject,
                                       const std::function<test::Bytes(const laws::Object&)>& store) {
    std::vector<test::Bytes> all;
    for (const laws::Object& object : laws::allObjects(subject)) {
        all.push_back(store(object));
    }
    return all;
}

/// Through a pointer, as a member of another object is loaded.
Entry throughPointer(const laws::Subject& subject) {
    Entry entry;
    entry.name = laws::testName(subject);
    entry.check = [](const test::Bytes& sealed) {
        laws::Object object;
        if (!accepts(sealed, [&] { object = laws::loadPointer(sealed); })) {
            return false;
        }
        if (object != nullptr) {
            checkObject(subjectOf(*object), object, picksOf(sealed));
        }
        return true;
    };
    entry.build = [&subject](ArchiveBuilder& builder) { builder.appendPointer(subject.name); };
    entry.seeds = [&subject] {
        return storedSamples(subject,
                             [](const laws::Object& object) { return test::storedPointer(object.get()); });
    };
    return entry;
}

/// Into an object that is there already, which a refused load may leave half filled.
Entry inPlace(const laws::Subject& subject) {
    Entry entry;
    entry.name = laws::testName(subject) + "InPlace";
    entry.check = [&subject](const test::Bytes& sealed) {
        const laws::Object object = laws::own(subject.make());
        const bool accepted = accepts(sealed, [&] { test::load(sealed, *object); });
        checkObject(subject, object, picksOf(sealed));
        return accepted;
    };
    entry.build = [&subject](ArchiveBuilder& builder) { builder.appendInPlace(subject.name); };
    entry.seeds = [&subject] {
        return storedSamples(subject, [](const laws::Object& object) { return test::stored(*object); });
    };
    return entry;
}

} // namespace

void addObjectEntries(std::vector<Entry>& all) {
    for (const laws::Subject& subject : laws::subjects()) {
        all.push_back(throughPointer(subject));
    }
    for (const laws::Subject& subject : laws::subjects()) {
        all.push_back(inPlace(subject));
    }
}

} // namespace fuzz
