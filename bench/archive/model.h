#ifndef BENCH_ARCHIVE_MODEL_H
#define BENCH_ARCHIVE_MODEL_H

#include "bench/grown_tree.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What an application would store if it had classifiers of its own: the same content as this library's
/// objects, with shared pointers and virtual classes in the same places. The rivals store and load it.
namespace bench::archive {

struct Pattern {
    std::vector<double> measurements;
    std::vector<bool> validity;
};

struct Patterns {
    std::string name;
    std::string description;
    std::vector<std::shared_ptr<Pattern>> patterns;
    std::vector<std::int32_t> labels;
};

struct Predicate {
    Predicate() = default;
    Predicate(const Predicate&) = delete;
    Predicate& operator=(const Predicate&) = delete;
    virtual ~Predicate();
};

struct RangePredicate : Predicate {
    ~RangePredicate() override;

    double lower = 0.0;
    double upper = 0.0;
    std::vector<std::int32_t> indices;
};

struct Tree {
    Tree() = default;
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    virtual ~Tree();
};

struct Entry {
    std::int32_t label = 0;
    double match = 0.0;
    double posterior = 0.0;
    double cost = 0.0;
};

struct Leaf : Tree {
    ~Leaf() override;

    std::vector<Entry> entries;
    double factorLog = 0.0;
};

struct Node : Tree {
    ~Node() override;

    std::shared_ptr<Predicate> predicate;
    std::shared_ptr<Tree> trueTree;
    std::shared_ptr<Tree> falseTree;
};

/// What is measured: rows with labels, and a tree.
struct Source {
    Source(std::size_t numRows, std::size_t numNodes);

    Rows rows;
    GrownTree tree;
};

constexpr std::int32_t numLabels = 10;

Patterns patternsOf(const Source& source);
std::shared_ptr<Tree> treeOf(const Source& source);

// For checking what was loaded.
bool areEqual(const Patterns& a, const Patterns& b);
bool areEqual(const Tree* a, const Tree* b);

} // namespace bench::archive

#endif
