#include "bench/archive/memory_stream.h"
#include "bench/archive/rival_runners.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/polymorphic.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <cereal/version.hpp>

#include <istream>
#include <ostream>

// How cereal stores the model's classes.

namespace bench::archive {

template <class Archive>
void serialize(Archive& archive, Pattern& value) {
    archive(value.measurements, value.validity);
}

template <class Archive>
void serialize(Archive& archive, Patterns& value) {
    archive(value.name, value.description, value.patterns, value.labels);
}

template <class Archive>
void serialize(Archive&, Predicate&) {}

template <class Archive>
void serialize(Archive& archive, RangePredicate& value) {
    archive(value.lower, value.upper, value.indices);
}

template <class Archive>
void serialize(Archive&, Tree&) {}

template <class Archive>
void serialize(Archive& archive, Entry& value) {
    archive(value.label, value.match, value.posterior, value.cost);
}

template <class Archive>
void serialize(Archive& archive, Leaf& value) {
    archive(value.entries, value.factorLog);
}

template <class Archive>
void serialize(Archive& archive, Node& value) {
    archive(value.predicate, value.trueTree, value.falseTree);
}

namespace {

struct Format {
    template <class Value>
    static std::vector<char> store(const Value& value) {
        std::vector<char> bytes;
        Sink sink(bytes);
        std::ostream stream(&sink);
        ::cereal::BinaryOutputArchive archive(stream);
        archive(value);
        return bytes;
    }

    template <class Value>
    static void load(std::vector<char>& bytes, Value& value) {
        View view(bytes);
        std::istream stream(&view);
        ::cereal::BinaryInputArchive archive(stream);
        archive(value);
    }
};

} // namespace

Contender cereal() {
    nameVersion("cereal", std::to_string(CEREAL_VERSION_MAJOR) + '.' + std::to_string(CEREAL_VERSION_MINOR) +
                              '.' + std::to_string(CEREAL_VERSION_PATCH));
    return contender<Format>(Role::rival, "cereal");
}

} // namespace bench::archive

CEREAL_REGISTER_TYPE(bench::archive::RangePredicate)
CEREAL_REGISTER_TYPE(bench::archive::Leaf)
CEREAL_REGISTER_TYPE(bench::archive::Node)
CEREAL_REGISTER_POLYMORPHIC_RELATION(bench::archive::Predicate, bench::archive::RangePredicate)
CEREAL_REGISTER_POLYMORPHIC_RELATION(bench::archive::Tree, bench::archive::Leaf)
CEREAL_REGISTER_POLYMORPHIC_RELATION(bench::archive::Tree, bench::archive::Node)
