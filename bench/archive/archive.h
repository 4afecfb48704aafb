#ifndef BENCH_ARCHIVE_ARCHIVE_H
#define BENCH_ARCHIVE_ARCHIVE_H

#include "bench/archive/model.h"
#include "bench/harness.h"

#include <functional>
#include <memory>
#include <string>

/// Storing into memory, and loading from there.
namespace bench::archive {

using SharedSource = std::shared_ptr<const Source>;
using Make = std::function<std::unique_ptr<Runner>(const SharedSource&)>;

struct Contender {
    Role role;
    std::string name;
    Make storingPatterns;
    Make loadingPatterns;
    Make storingTree;
    Make loadingTree;
};

// Each of these files has one contender.
Contender ours();
Contender byHand();
Contender cereal();
Contender boost();

} // namespace bench::archive

#endif
