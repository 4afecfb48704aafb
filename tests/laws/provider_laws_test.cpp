#include "tests/laws/subject.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class ProviderLaws : public testing::TestWithParam<Subject> {
protected:
    static std::vector<Object> objects() { return laws::allObjects(GetParam()); }
};
INSTANTIATE_LAWS(ProviderLaws, laws::subjectsOf<vxClassifierDataProvider>());

TEST_P(ProviderLaws, MadeWithoutDataHasNone) {
    const Object made = laws::own(GetParam().make());
    const auto& provider = as<vxClassifierDataProvider>(*made);
    EXPECT_EQ(provider.numPatterns(), 0);
    EXPECT_EQ(provider.numMeasurements(), 0);
    EXPECT_EQ(provider.name(), L"");
    EXPECT_EQ(provider.description(), L"");
}

TEST_P(ProviderLaws, EveryIndexBelowTheNumberOfPatternsGivesAPatternAndALabel) {
    for (const Object& object : objects()) {
        const auto& provider = as<vxClassifierDataProvider>(*object);
        for (long i = 0; i < provider.numPatterns(); ++i) {
            ASSERT_FALSE(provider.featurePattern(i).isNull());
            EXPECT_EQ(provider.featurePattern(i)->numMeasurements(), provider.numMeasurements());
            EXPECT_EQ(provider.featurePattern(i), provider.featurePattern(i)) << "the same object each time";
            EXPECT_GE(provider.categoryLabel(i), -1);
        }
    }
}

TEST_P(ProviderLaws, EveryOtherIndexIsRefused) {
    for (const Object& object : objects()) {
        const auto& provider = as<vxClassifierDataProvider>(*object);
        for (const long index : {-1L, provider.numPatterns(), std::numeric_limits<long>::max(),
                                 std::numeric_limits<long>::min()}) {
            EXPECT_THROW(provider.featurePattern(index), vxClassifierDefs::BadIndex) << index;
            EXPECT_THROW(provider.categoryLabel(index), vxClassifierDefs::BadIndex) << index;
        }
    }
}

TEST_P(ProviderLaws, ComesBackFromAnArchiveWithTheSameData) {
    for (const Object& object : objects()) {
        const auto& provider = as<vxClassifierDataProvider>(*object);
        const Object again = laws::reloaded(*object);
        const auto& loaded = as<vxClassifierDataProvider>(*again);
        EXPECT_EQ(loaded.name(), provider.name());
        EXPECT_EQ(loaded.description(), provider.description());
        ASSERT_EQ(loaded.numPatterns(), provider.numPatterns());
        for (long i = 0; i < provider.numPatterns(); ++i) {
            EXPECT_EQ(*loaded.featurePattern(i), *provider.featurePattern(i));
            EXPECT_EQ(loaded.categoryLabel(i), provider.categoryLabel(i));
        }
    }
}

} // namespace
