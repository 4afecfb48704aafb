#ifndef CLSS_CLASTOOL_FRAME_SPARE_RESULT_H
#define CLSS_CLASTOOL_FRAME_SPARE_RESULT_H

#include <vxclassifier/classifier_result.h>

#include <memory>

namespace detail {

/// An empty result for a run to build in. Swapped with the caller's when the run has succeeded, it leaves
/// the memory of the caller's old entries to the next run of the thread; so runs that give the same number of
/// categories allocate nothing, and still change nothing if they throw.
///
/// Runs may nest (a technique can run another classifier): the inner one then has a result of its own.
class SpareResult {
public:
    SpareResult();
    ~SpareResult();
    SpareResult(const SpareResult&) = delete;
    SpareResult& operator=(const SpareResult&) = delete;

    vxClassifierResult& operator*() const noexcept { return *result_; }

private:
    std::unique_ptr<vxClassifierResult> result_;
};

} // namespace detail

#endif
