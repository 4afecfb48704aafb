#include "bench/archive/archive.h"
#include "bench/archive/rival_runners.h"

namespace bench::archive {

namespace {

/// Copies as many bytes as the values themselves take, into new memory.
class Copying : public Runner {
public:
    explicit Copying(std::size_t size) : source_(size, 'x') {}

    void run(std::size_t) override { copy_ = std::vector<char>(source_); }

private:
    std::vector<char> source_;
    std::vector<char> copy_;
};

/// Makes the objects from values that lie ready, which loading cannot do without.
template <class Value>
class Making : public Runner {
public:
    explicit Making(SharedSource source) : source_(std::move(source)) {}

    void run(std::size_t) override {
        made_ = Value();
        made_ = valueOf<Value>(*source_);
    }

private:
    SharedSource source_;
    Value made_;
};

std::unique_ptr<Runner> copyPatterns(const SharedSource& source) {
    const std::size_t bytesPerRow = source->rows.size * sizeof(double) + sizeof(std::int32_t);
    return std::make_unique<Copying>(source->rows.count * bytesPerRow);
}

std::unique_ptr<Runner> copyTree(const SharedSource& source) {
    // A node is two references, a range and an index; a leaf has two entries. There are as many of each.
    constexpr std::size_t bytesPerNode = 2 * 4 + 2 * 8 + 4;
    constexpr std::size_t bytesPerLeaf = 2 * (4 + 3 * 8) + 8;
    return std::make_unique<Copying>(source->tree.nodes().size() * (bytesPerNode + bytesPerLeaf) / 2);
}

} // namespace

Contender byHand() {
    return {Role::floor,   "memcpy, new",
            &copyPatterns, &makeRunner<Making<Patterns>>,
            &copyTree,     &makeRunner<Making<std::shared_ptr<Tree>>>};
}

} // namespace bench::archive
