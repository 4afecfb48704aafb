#ifndef FUZZ_STEPS_H
#define FUZZ_STEPS_H

#include "fuzz/memory_watch.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/pdf_multivariate_normal.h>
#include <vxclassifier/platform/status.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace fuzz {

/// Something that must not happen. Nothing in the fuzzing code catches it: under the fuzzer it ends the
/// program, in a test it fails the test.
struct Finding : std::logic_error {
    using std::logic_error::logic_error;
};

inline void require(bool holds, const std::string& what) {
    if (!holds) {
        throw Finding(what);
    }
}

/// Runs operations on hostile objects, each of which may refuse with an error that it is allowed to, and
/// bounds what they take together: memory, and time through the interruption check, since a few bytes can
/// ask for minutes of honest work. What comes after the time is up is left out.
///
/// Where there are many ways to do much the same, only some are taken, which differ with `picks`: one run
/// stays short, and all runs together take every way.
class Steps {
public:
    explicit Steps(std::uint64_t picks)
        : watch_(memoryLimit), scope_(&check, this), end_(std::clock() + timeLimit), picks_(picks),
          patient_(pick(32) == 0) {}

    /// Whether the operation went through. An exception that is not allowed passes through.
    template <class Action>
    bool step(Action action) {
        if (over_ || (++taken_ % stepsBetweenLooks == 0 && isOver())) {
            return false;
        }
        try {
            action();
            return true;
        } catch (const vxClassifierDefs::Errors&) {
        } catch (const vxArchive::Errors&) {
        } catch (const vxBadPointer&) {
        } catch (const vxStatusFailure& failure) {
            require(vxStatus::module(failure.status()) == vmath_status::pdfMultivariateNormalModule,
                    "a failure status that no input may cause");
        } catch (const vxInterrupted&) {
        } catch (const std::bad_alloc&) {
        } catch (const std::length_error&) {
        }
        return false;
    }

    /// One of 0 .. count - 1.
    std::size_t pick(std::size_t count) {
        picks_ = picks_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(picks_ >> 33) % count;
    }
    template <class T>
    const T& pickOf(const std::vector<T>& all) {
        return all[pick(all.size())];
    }
    /// Whether to ask also for what may take all the time.
    bool isPatient() const { return patient_; }
    /// Whether the time is up, so that the operation before may have been interrupted.
    bool isTimeUp() const { return over_; }

private:
    static constexpr std::size_t memoryLimit = std::size_t{64} << 20;
    static constexpr std::clock_t timeLimit = CLOCKS_PER_SEC / 100;
    static constexpr unsigned stepsBetweenLooks = 16; // looking at the clock takes longer than most steps

    bool isOver() {
        over_ = over_ || std::clock() >= end_;
        return over_;
    }
    static long check(void* steps) {
        return static_cast<Steps*>(steps)->isOver() ? vsys_attention_cancelled : vxStatus::success;
    }

    MemoryWatch watch_;
    vxAttentionScope scope_;
    std::clock_t end_;
    bool over_ = false;
    unsigned taken_ = 0;
    std::uint64_t picks_;
    bool patient_;
};

} // namespace fuzz

#endif
