#ifndef BENCH_ARCHIVE_RIVAL_RUNNERS_H
#define BENCH_ARCHIVE_RIVAL_RUNNERS_H

#include "bench/archive/archive.h"

#include <memory>
#include <utility>
#include <vector>

namespace bench::archive {

// The parts that all contenders have in common who store the plain model. `Format` has, for Patterns and for
// a shared_ptr<Tree>:
//     static std::vector<char> store(const Value&);
//     static void load(std::vector<char>& bytes, Value&);

template <class Value>
Value valueOf(const Source& source);
template <>
inline Patterns valueOf<Patterns>(const Source& source) {
    return patternsOf(source);
}
template <>
inline std::shared_ptr<Tree> valueOf<std::shared_ptr<Tree>>(const Source& source) {
    return treeOf(source);
}

inline bool isSame(const Patterns& a, const Patterns& b) {
    return areEqual(a, b);
}
inline bool isSame(const std::shared_ptr<Tree>& a, const std::shared_ptr<Tree>& b) {
    return areEqual(a.get(), b.get());
}

template <class Format, class Value>
class Storing : public Runner {
public:
    explicit Storing(const SharedSource& source) : value_(valueOf<Value>(*source)) {}

    void run(std::size_t) override { bytes_ = Format::store(value_); }

private:
    Value value_;
    std::vector<char> bytes_;
};

template <class Format, class Value>
class Loading : public Runner {
public:
    explicit Loading(const SharedSource& source) {
        const Value value = valueOf<Value>(*source);
        bytes_ = Format::store(value);
        run(0);
        if (!isSame(loaded_, value)) {
            throw Disagreement("what is loaded is not what was stored");
        }
    }

    void run(std::size_t) override {
        loaded_ = Value();
        Format::load(bytes_, loaded_);
    }

private:
    std::vector<char> bytes_;
    Value loaded_;
};

template <class Made>
std::unique_ptr<Runner> makeRunner(const SharedSource& source) {
    return std::make_unique<Made>(source);
}

template <class Format>
Contender contender(Role role, std::string name) {
    using SharedTree = std::shared_ptr<Tree>;
    return {role,
            std::move(name),
            &makeRunner<Storing<Format, Patterns>>,
            &makeRunner<Loading<Format, Patterns>>,
            &makeRunner<Storing<Format, SharedTree>>,
            &makeRunner<Loading<Format, SharedTree>>};
}

} // namespace bench::archive

#endif
