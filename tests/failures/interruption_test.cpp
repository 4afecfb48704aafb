#include "tests/failures/faults.h"

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/pdf_binomial.h>

#include <vector>

// The interruption checks that are not those of a tool (see tool_test.cpp).

namespace {

using namespace failures;

vxFeaturePattern single(double value) {
    return vxFeaturePattern({value}, {});
}

/// So many trials that summing up their logarithms takes a while.
struct EvaluateLargeBinomial {
    vx_PDFBinomial density{single(1e7)};
    double value = -1.0;

    EvaluateLargeBinomial() { density.updateWithData({single(5e6 - 2500.0), single(5e6 + 2500.0)}); }
    void attempt() { value = density.logValue(single(5e6)); }
    void expectDone() const {
        EXPECT_GT(density.numTrials(), 1 << 20);
        EXPECT_LT(value, 0.0);
        EXPECT_GT(value, -20.0) << "the most frequent value of a few million";
    }
    void expectFailed() const { EXPECT_EQ(value, -1.0); }
};

TEST(FailingInterruptionCheck, EndsTheSumsOfABinomialDistribution) {
    failEachStepOf<EvaluateLargeBinomial>(interruptionFaults());
}

struct Decide {
    std::vector<vxClassifierCategoryResult> matches{
        {1, 0.5, 0.0, 0.0}, {2, 0.25, 0.0, 0.0}, {3, 1.0, 0.0, 0.0}};
    vxClassifierResult before{{{7, 1.0, 1.0, 0.5}}, 2.0};
    vxClassifierResult result = before;
    void attempt() {
        result = vxClassifierResult(matches, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), 0.0);
    }
    void expectDone() const {
        EXPECT_EQ(result.categoryResults().size(), 3U);
        EXPECT_EQ(result.categoryResults().front().categoryLabel(), 3);
    }
    void expectFailed() const { EXPECT_EQ(result, before); }
};

TEST(FailingInterruptionCheck, EndsADecisionAtEachCategory) {
    for (const Fault& fault : interruptionFaults()) {
        EXPECT_EQ(failEachStep<Decide>(fault), 3);
    }
}

} // namespace
