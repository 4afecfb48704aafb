#ifndef BENCH_HARNESS_H
#define BENCH_HARNESS_H

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace bench {

/// Does the work of a workload once for each call. What it needs is made before the first call and freed
/// before the next contender's turn.
class Runner {
public:
    Runner() = default;
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;
    virtual ~Runner();

    /// `turn` counts the calls; a runner chooses its query by it, so that all contenders see the same ones.
    virtual void run(std::size_t turn) = 0;
};

/// A contender does not give the answer that it should: its times mean nothing.
class Disagreement : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a contender is compared as.
enum class Role {
    ours,
    rival,   ///< another library, which does the same
    literal, ///< the published formula, spelled out
    floor    ///< the least that has to be done, written by hand
};

/// Makes a runner; throws Disagreement.
using MakeRunner = std::function<std::unique_ptr<Runner>()>;

/// Adds a contender: `workload` is "family/what it is", `who` names the contender.
void add(const std::string& workload, Role role, const std::string& who, MakeRunner make);

/// Says in the output which version of a library was measured.
void nameVersion(const std::string& library, const std::string& version);

/// Whether the sizes are to be kept small (`--quick` on the command line).
bool isQuick();

/// The family's contenders; each program defines it.
void addAll();

/// Keeps what was made last, for contenders that follow each other and share it.
template <class Value>
class LastMade {
public:
    template <class Make>
    std::shared_ptr<Value> get(const std::string& key, Make make) {
        if (value_ == nullptr || key_ != key) {
            value_.reset(); // first, so that the two are not there at the same time
            value_ = make();
            key_ = key;
        }
        return value_;
    }

private:
    std::string key_;
    std::shared_ptr<Value> value_;
};

} // namespace bench

#endif
