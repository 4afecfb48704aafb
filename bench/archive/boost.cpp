#include "bench/archive/memory_stream.h"
#include "bench/archive/rival_runners.h"

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/base_object.hpp>
#include <boost/serialization/export.hpp>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <boost/version.hpp>

// How Boost.Serialization stores the model's classes.

namespace boost::serialization {

using namespace bench::archive;

template <class Archive>
void serialize(Archive& archive, Pattern& value, unsigned) {
    archive& value.measurements& value.validity;
}

template <class Archive>
void serialize(Archive& archive, Patterns& value, unsigned) {
    archive& value.name& value.description& value.patterns& value.labels;
}

template <class Archive>
void serialize(Archive&, Predicate&, unsigned) {}

template <class Archive>
void serialize(Archive& archive, RangePredicate& value, unsigned) {
    archive& base_object<Predicate>(value) & value.lower& value.upper& value.indices;
}

template <class Archive>
void serialize(Archive&, Tree&, unsigned) {}

template <class Archive>
void serialize(Archive& archive, Entry& value, unsigned) {
    archive& value.label& value.match& value.posterior& value.cost;
}

template <class Archive>
void serialize(Archive& archive, Leaf& value, unsigned) {
    archive& base_object<Tree>(value) & value.entries& value.factorLog;
}

template <class Archive>
void serialize(Archive& archive, Node& value, unsigned) {
    archive& base_object<Tree>(value) & value.predicate& value.trueTree& value.falseTree;
}

} // namespace boost::serialization

BOOST_CLASS_EXPORT(bench::archive::RangePredicate)
BOOST_CLASS_EXPORT(bench::archive::Leaf)
BOOST_CLASS_EXPORT(bench::archive::Node)

namespace bench::archive {

namespace {

struct Format {
    template <class Value>
    static std::vector<char> store(const Value& value) {
        std::vector<char> bytes;
        Sink sink(bytes);
        ::boost::archive::binary_oarchive archive(sink);
        archive << value;
        return bytes;
    }

    template <class Value>
    static void load(std::vector<char>& bytes, Value& value) {
        View view(bytes);
        ::boost::archive::binary_iarchive archive(view);
        archive >> value;
    }
};

} // namespace

Contender boost() {
    nameVersion("Boost.Serialization", BOOST_LIB_VERSION);
    return contender<Format>(Role::rival, "Boost.Serialization");
}

} // namespace bench::archive
