#include "tests/laws/query_patterns.h"
#include "tests/laws/subject.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/diag_object.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

using laws::Object;
using laws::queryPatterns;
using laws::Subject;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::NotTrained;

/// Parameters of no technique of the library.
struct ForeignParams : vxClassifierTrainParams {
    vxPtrHandle<vxClassifierTrainParams> clone() const override { return nullptr; }
    bool isSameTechnique_(const vxClassifierTrainParams&) const override { return false; }
    vx_Classifier* newClassifier_() const override { return nullptr; }
};

class ClassifierLaws : public testing::TestWithParam<Subject> {
protected:
    static vx_Classifier& classifier(const Object& object) { return dynamic_cast<vx_Classifier&>(*object); }
    static Object untrained() { return laws::own(GetParam().make()); }

    /// Trained ones.
    static std::vector<Object> samples() { return GetParam().samples(); }

    static std::vector<vxClassifierResult> decisionsOf(const vx_Classifier& trained,
                                                       vxDiagObject* diag = nullptr) {
        std::vector<vxClassifierResult> decisions;
        for (const vxFeaturePattern& pattern : queryPatterns()) {
            vxClassifierResult result;
            trained.run(pattern, result, diag, 7);
            decisions.push_back(result);
        }
        return decisions;
    }

    /// Trained with parameters, not by hand.
    static bool hasParams(const vx_Classifier& trained) {
        try {
            return !trained.trainParams().isNull();
        } catch (const BadMethod& error) {
            EXPECT_EQ(error.message(), L"Classifier tool was not automatically trained.");
            return false;
        }
    }

    const vxClassifierResult previous{{{3, 0.5, 1.0, 2.0}}, 4.0};
};
INSTANTIATE_LAWS(ClassifierLaws, laws::subjectsOf<vx_Classifier>());

TEST_P(ClassifierLaws, UntrainedItRefusesWhatNeedsATraining) {
    const Object object = untrained();
    vx_Classifier& fresh = classifier(object);
    const vxFeaturePattern pattern = queryPatterns().front();
    vxClassifierResult result(previous);
    EXPECT_FALSE(fresh.isTrained());
    EXPECT_ERROR(fresh.run(pattern, result), NotTrained, L"Classifier tool must be trained before running.");
    EXPECT_ERROR(fresh.retrain(ForeignParams()), NotTrained,
                 L"Classifier tool must be trained before retraining.");
    EXPECT_ERROR(fresh.trainIncremental(pattern, 1), NotTrained,
                 L"Classifier tool must be trained before incremental training.");
    EXPECT_ERROR(fresh.trainParams(), NotTrained,
                 L"Classifier tool must be trained before requesting the training parameters.");
    fresh.untrain();
    EXPECT_FALSE(fresh.isTrained());
    EXPECT_EQ(result, previous);
}

TEST_P(ClassifierLaws, TheSamplesAreTrainedAndTellPatternsApart) {
    for (const Object& object : samples()) {
        EXPECT_TRUE(classifier(object).isTrained());
    }
    const std::vector<vxClassifierResult> decisions = decisionsOf(classifier(samples().front()));
    EXPECT_NE(decisions.front(), decisions.back()) << "or the other laws would see nothing";
}

TEST_P(ClassifierLaws, AResultIsOrderedNormalisedAndTheSameEachTime) {
    for (const Object& object : samples()) {
        const std::vector<vxClassifierResult> decisions = decisionsOf(classifier(object));
        EXPECT_EQ(decisionsOf(classifier(object)), decisions);
        for (const vxClassifierResult& result : decisions) {
            ASSERT_FALSE(result.categoryResults().empty());
            double sum = 0.0;
            double last = 0.0;
            for (const vxClassifierCategoryResult& category : result.categoryResults()) {
                EXPECT_GE(category.expectedCost(), last);
                last = category.expectedCost();
                sum += category.classScore();
            }
            EXPECT_NEAR(sum, 1.0, 1e-12);
        }
    }
}

TEST_P(ClassifierLaws, RunningChangesNothing) {
    for (const Object& object : samples()) {
        const test::Bytes before = test::stored(*object);
        decisionsOf(classifier(object));
        EXPECT_EQ(test::stored(*object), before);
    }
}

TEST_P(ClassifierLaws, DiagnosticsDoNotChangeADecision) {
    for (const Object& object : samples()) {
        vxDiagObject diag;
        EXPECT_EQ(decisionsOf(classifier(object), &diag), decisionsOf(classifier(object)));
    }
}

TEST_P(ClassifierLaws, CopiesAndClonesDecideAlike) {
    for (const Object& object : samples()) {
        const std::vector<vxClassifierResult> decisions = decisionsOf(classifier(object));
        EXPECT_EQ(decisionsOf(classifier(GetParam().copy(*object))), decisions);
        EXPECT_EQ(decisionsOf(classifier(GetParam().clone(*object))), decisions);
    }
}

TEST_P(ClassifierLaws, LoadedAndRetrainedWithItsOwnParametersItDecidesAlike) {
    for (const Object& object : samples()) {
        const Object loaded = laws::reloaded(*object);
        vx_Classifier& again = classifier(loaded);
        ASSERT_TRUE(again.isTrained());
        ASSERT_EQ(hasParams(again), hasParams(classifier(object)));
        if (hasParams(again)) {
            // Not every technique archives all that its parameters said.
            again.retrain(*again.trainParams());
        }
        EXPECT_EQ(decisionsOf(again), decisionsOf(classifier(object)));
    }
}

TEST_P(ClassifierLaws, UntrainingACopyLeavesTheOriginalTrained) {
    for (const Object& object : samples()) {
        const std::vector<vxClassifierResult> decisions = decisionsOf(classifier(object));
        const Object copy = GetParam().copy(*object);
        const Object clone = GetParam().clone(*object);
        classifier(copy).untrain();
        classifier(clone).untrain();
        EXPECT_FALSE(classifier(copy).isTrained());
        EXPECT_FALSE(classifier(clone).isTrained());
        EXPECT_EQ(decisionsOf(classifier(object)), decisions);
    }
}

TEST_P(ClassifierLaws, UntrainedAgainItIsAsNew) {
    for (const Object& object : samples()) {
        classifier(object).untrain();
        EXPECT_FALSE(classifier(object).isTrained());
        laws::expectEqual(GetParam(), object, untrained());
        EXPECT_EQ(test::stored(*object), test::stored(*untrained()));
        EXPECT_ERROR(classifier(object).trainParams(), NotTrained,
                     L"Classifier tool must be trained before requesting the training parameters.");
    }
}

TEST_P(ClassifierLaws, ATrainedAndAnUntrainedOneAreNotEquivalent) {
    for (const Object& object : samples()) {
        EXPECT_FALSE(classifier(object).isEquivalent(classifier(untrained())));
        EXPECT_FALSE(classifier(untrained()).isEquivalent(classifier(object)));
    }
}

TEST_P(ClassifierLaws, RetrainingWithAnotherTechniqueIsRefusedAndChangesNothing) {
    for (const Object& object : samples()) {
        const test::Bytes before = test::stored(*object);
        EXPECT_ERROR(classifier(object).retrain(ForeignParams()), BadMethod,
                     L"Cannot retrain with a different classification technique.");
        EXPECT_EQ(test::stored(*object), before);
    }
}

TEST_P(ClassifierLaws, RetrainingWithItsOwnParametersKeepsItEquivalent) {
    for (const Object& object : samples()) {
        if (!hasParams(classifier(object))) {
            continue; // trained by hand: nothing to retrain with
        }
        const Object before = GetParam().copy(*object);
        classifier(object).retrain(*classifier(object).trainParams());
        EXPECT_TRUE(GetParam().equal(*before, *object));
        EXPECT_EQ(decisionsOf(classifier(object)), decisionsOf(classifier(before)));
    }
}

TEST_P(ClassifierLaws, AnInterruptedRunLeavesTheResultAndTheClassifierAsTheyWere) {
    vxCancelFlag cancelled;
    cancelled.set();
    for (const Object& object : samples()) {
        const test::Bytes before = test::stored(*object);
        for (const vxFeaturePattern& pattern : queryPatterns()) {
            vxClassifierResult result(previous);
            const vxAttentionScope scope(cancelled);
            EXPECT_THROW(classifier(object).run(pattern, result), vxInterrupted);
            EXPECT_EQ(result, previous);
        }
        EXPECT_EQ(test::stored(*object), before);
    }
}

TEST_P(ClassifierLaws, AFailedRunLeavesTheResultAsItWas) {
    const std::vector<vxFeaturePattern> unusual{vxFeaturePattern({}, {}),
                                                vxFeaturePattern({1.0, 2.0, 3.0}, {}),
                                                vxFeaturePattern({1.0, 2.0}, {0, 1})};
    for (const Object& object : samples()) {
        for (const vxFeaturePattern& pattern : unusual) {
            vxClassifierResult result(previous);
            try {
                classifier(object).run(pattern, result);
            } catch (const vxClassifierDefs::Errors&) {
                EXPECT_EQ(result, previous);
            }
        }
    }
}

TEST_P(ClassifierLaws, AnArchiveThatTracksItLearnsOfAnAssignment) {
    for (const Object& other : samples()) {
        const std::unique_ptr<vxPersistent> own(GetParam().make());
        test::archiveOf([&](vxArchive& archive) {
            vxPersistent* unused = nullptr;
            vxPersistent::serializePointer(archive, own.get(), unused);
            EXPECT_TRUE(own->isTracked_());
            GetParam().assign(*own, *other);
            EXPECT_FALSE(own->isTracked_());
            vxPersistent::serializePointer(archive, own.get(), unused);
        });
    }
}

} // namespace
