#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_pattern.h>

#include <gtest/gtest.h>

// How a classifier is archived, and what an archive that tracks it learns of its changes.

namespace {

using test::Bytes;
using test::FakeClassifier;
using test::FakeParams;
using test::HookLog;

FakeClassifier trainedWith(long value, HookLog* log = nullptr) {
    FakeClassifier classifier(log);
    classifier.train(vxClassifierDataProviderMemory(), FakeParams(log, value));
    return classifier;
}

void putByte(vxArchive& archive, unsigned char byte) {
    archive || byte;
}

void putPointer(vxArchive& archive, vxPersistent* object) {
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(archive, object, unused);
}

vxPtrHandle<FakeClassifier> loadPointer(vxArchive& archive) {
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    return vxPtrHandle<FakeClassifier>(dynamic_cast<FakeClassifier*>(loaded));
}

/// Reaches what the base keeps for its derived classes.
struct BaseLevel : FakeClassifier {
    void body(vxArchive& archive, unsigned char version) { vx_Classifier::serialize_(archive, version); }

protected:
    void dispatchSerialize(vxArchive& archive) override { vx_Classifier::dispatchSerialize(archive); }
};

struct DoubledLevel : FakeClassifier {
protected:
    void dispatchSerialize(vxArchive& archive) override {
        vx_Classifier::dispatchSerialize(archive);
        vx_Classifier::dispatchSerialize(archive);
    }
};

TEST(ClassifierPersistence, TheBaseWritesItsVersionTheRootAndANullPointerWhenUntrained) {
    const Bytes byHand = test::archiveOf([](vxArchive& archive) {
        putByte(archive, 0); // vx_Classifier
        putByte(archive, 0); // vxPersistent
        putPointer(archive, nullptr);
    });
    EXPECT_EQ(test::stored(BaseLevel()), byHand);
}

TEST(ClassifierPersistence, TheBaseWritesTheParametersAsAPointer) {
    BaseLevel classifier;
    classifier.train(vxClassifierDataProviderMemory(), FakeParams(nullptr, 5));
    FakeParams equalParams(nullptr, 5);
    const Bytes byHand = test::archiveOf([&](vxArchive& archive) {
        putByte(archive, 0);
        putByte(archive, 0);
        putPointer(archive, &equalParams);
    });
    EXPECT_EQ(test::stored(classifier), byHand);
}

TEST(ClassifierPersistence, TheBaseLevelIsExchangedOnceInAPass) {
    EXPECT_EQ(test::stored(DoubledLevel()), test::stored(BaseLevel()));
}

TEST(ClassifierPersistence, ALevelOfAnotherVersionIsRefusedWithoutAPlace) {
    const Bytes sealed = test::archiveOf([](vxArchive& archive) {
        putByte(archive, 0); // the technique
        putByte(archive, 1); // vx_Classifier
        putByte(archive, 0);
        putPointer(archive, nullptr);
    });
    FakeClassifier into;
    EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
}

TEST(ClassifierPersistence, TheBodyChecksTheVersionItself) {
    BaseLevel classifier;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(classifier.body(archive, 1), nullptr, 0); });
    const Bytes body = test::archiveOf([&](vxArchive& archive) { classifier.body(archive, 0); });
    const Bytes byHand = test::archiveOf([](vxArchive& archive) {
        putByte(archive, 0); // vxPersistent
        putPointer(archive, nullptr);
    });
    EXPECT_EQ(body, byHand);
}

TEST(ClassifierPersistence, ALoadedClassifierIsEquivalentAndStoresTheSameBytes) {
    const FakeClassifier classifier = trainedWith(5);
    const Bytes sealed = test::stored(classifier);
    FakeClassifier loaded;
    test::load(sealed, loaded);
    EXPECT_TRUE(classifier.isEquivalent(loaded));
    EXPECT_TRUE(loaded.isEquivalent(classifier));
    EXPECT_EQ(test::stored(loaded), sealed);
}

TEST(ClassifierPersistence, LoadingReleasesTheOldParametersBeforeItReadsTheNew) {
    const Bytes cutShort = test::archiveOf([](vxArchive& archive) {
        putByte(archive, 0);
        putByte(archive, 0);
        putByte(archive, 0);
    });
    HookLog log;
    FakeClassifier classifier = trainedWith(5, &log);
    ASSERT_EQ(log.alive.size(), 2U);
    EXPECT_ERROR_CLASS(test::load(cutShort, classifier), vxArchive::ShortData);
    EXPECT_EQ(log.alive.size(), 1U);
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
}

TEST(ClassifierPersistence, ALoadThatFailsEarlierKeepsTheParameters) {
    const Bytes sealed = test::archiveOf([](vxArchive& archive) {
        putByte(archive, 0);
        putByte(archive, 1);
    });
    FakeClassifier classifier = trainedWith(5);
    EXPECT_UNKNOWN_VERSION(test::load(sealed, classifier), nullptr, 0);
    EXPECT_FALSE(classifier.trainParams().isNull());
}

TEST(ClassifierPersistence, AnObjectThatIsNoParametersLeavesNone) {
    vxFeaturePattern pattern({1.0}, {});
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        putByte(archive, 0);
        putByte(archive, 0);
        putByte(archive, 0);
        putPointer(archive, &pattern);
        putByte(archive, 1); // trained
        long learnt = 3;
        archive || learnt;
    });
    FakeClassifier into = trainedWith(5);
    test::load(sealed, into);
    EXPECT_TRUE(into.isTrained());
    EXPECT_EQ(into.learnt(), 3);
    EXPECT_ERROR(into.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    EXPECT_ERROR(into.retrain(FakeParams()), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
}

/// An untrained classifier that nevertheless has parameters: only an archive brings it.
FakeClassifier untrainedWithParams(long value) {
    FakeParams params(nullptr, value);
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        putByte(archive, 0);
        putByte(archive, 0);
        putByte(archive, 0);
        putPointer(archive, &params);
        putByte(archive, 0);
        long learnt = 0;
        archive || learnt;
    });
    FakeClassifier classifier;
    test::load(sealed, classifier);
    return classifier;
}

TEST(ClassifierPersistence, EquivalenceLooksAtParametersOfUntrainedOnesToo) {
    const FakeClassifier with1 = untrainedWithParams(1);
    EXPECT_TRUE(with1.vx_Classifier::isEquivalent(untrainedWithParams(1)));
    EXPECT_FALSE(with1.vx_Classifier::isEquivalent(untrainedWithParams(2)));
    EXPECT_FALSE(with1.vx_Classifier::isEquivalent(FakeClassifier()));
    EXPECT_FALSE(FakeClassifier().vx_Classifier::isEquivalent(with1));
}

TEST(ClassifierPersistence, AnUntrainedOneWithParametersIsStillUntrained) {
    FakeClassifier classifier = untrainedWithParams(1);
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before requesting the training parameters.");
    EXPECT_ERROR(classifier.retrain(FakeParams()), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before retraining.");
}

TEST(ClassifierPersistence, AFailedTrainingLeavesNoParametersThatAnArchiveBrought) {
    HookLog log;
    FakeClassifier classifier(&log);
    FakeParams params(nullptr, 1);
    const Bytes sealed = test::stored(untrainedWithParams(1));
    for (const bool incremental : {false, true}) {
        test::load(sealed, classifier);
        ASSERT_FALSE(classifier.isTrained());
        log.fail(incremental ? "trainStart_" : "train_", HookLog::Moment::after);
        EXPECT_THROW(incremental ? classifier.trainStart(params)
                                 : classifier.train(vxClassifierDataProviderMemory(), params),
                     test::HookFailure);
        EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                     L"Classifier tool was not automatically trained.");
    }
}

TEST(ClassifierPersistence, TwoClassifiersWithOneParameterObjectShareItAfterLoading) {
    const FakeClassifier first = trainedWith(5);
    const vxPtrHandle<FakeClassifier> a(new FakeClassifier(first));
    const vxPtrHandle<FakeClassifier> b(new FakeClassifier(first));
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        putPointer(archive, a.get());
        putPointer(archive, b.get());
    });
    vxLoadingArchive archive(sealed);
    const vxPtrHandle<FakeClassifier> loadedA = loadPointer(archive);
    const vxPtrHandle<FakeClassifier> loadedB = loadPointer(archive);
    archive.finish();
    ASSERT_FALSE(loadedA.isNull());
    ASSERT_FALSE(loadedB.isNull());
    EXPECT_NE(loadedA, loadedB);
    EXPECT_EQ(loadedA->trainParams(), loadedB->trainParams());
    const auto shared = loadedA->trainParams();
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*shared), 3);
}

TEST(ClassifierAssignment, TellsAnArchiveThatTracksTheAssignedObject) {
    FakeClassifier classifier = trainedWith(5);
    const FakeClassifier other = trainedWith(6);
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        putPointer(archive, &classifier);
        EXPECT_TRUE(classifier.isTracked_());
        classifier = other;
        EXPECT_FALSE(classifier.isTracked_());
        putPointer(archive, &classifier);
        EXPECT_FALSE(other.isTracked_()) << "the assigned-from object is none of the archive's business";
    });
    vxLoadingArchive archive(sealed);
    const vxPtrHandle<FakeClassifier> before = loadPointer(archive);
    const vxPtrHandle<FakeClassifier> after = loadPointer(archive);
    archive.finish();
    ASSERT_FALSE(before.isNull());
    ASSERT_FALSE(after.isNull());
    EXPECT_EQ(before->learnt(), 5);
    EXPECT_EQ(after->learnt(), 6);
}

TEST(ClassifierAssignment, TellsTheArchiveEvenWhenTheParametersAreTheSame) {
    FakeClassifier classifier = trainedWith(5);
    const FakeClassifier copy(classifier);
    test::archiveOf([&](vxArchive& archive) {
        putPointer(archive, &classifier);
        classifier = copy;
        EXPECT_FALSE(classifier.isTracked_());
    });
}

TEST(ClassifierAssignment, WithoutAChangeTheSecondStoreIsAReference) {
    FakeClassifier classifier = trainedWith(5);
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        putPointer(archive, &classifier);
        putPointer(archive, &classifier);
    });
    vxLoadingArchive archive(sealed);
    const vxPtrHandle<FakeClassifier> first = loadPointer(archive);
    const vxPtrHandle<FakeClassifier> second = loadPointer(archive);
    archive.finish();
    EXPECT_EQ(first, second);
}

TEST(ClassifierCopy, IsTrackedByNoArchive) {
    FakeClassifier classifier = trainedWith(5);
    test::archiveOf([&](vxArchive& archive) {
        putPointer(archive, &classifier);
        const FakeClassifier copy(classifier);
        EXPECT_FALSE(copy.isTracked_());
        EXPECT_TRUE(classifier.isTracked_());
    });
}

} // namespace
