#include <vxclassifier/category_model.h>

#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/vtable_slots.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using test::Record;

/// Leaves everything that the base has to the base.
struct PlainModel : vx_CategoryModel {
    PlainModel() = default;
    PlainModel(long label, long number) {
        categoryLabel(label);
        numMeasurements(number);
    }
    double matchScore(const vxFeaturePattern&, vxDiagObject*, unsigned long) const override { return 0.0; }
    void adapt(const vxFeaturePattern&, vxDiagObject*, unsigned long) override {}
    using vx_CategoryModel::serialize_;
    static std::size_t serializeSlot() { return test::slotOf(&PlainModel::dispatchSerialize); }
};

TEST(CategoryModel, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(PlainModel::serializeSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vx_CategoryModel::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vx_CategoryModel::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&vx_CategoryModel::matchScore), 5U);
    EXPECT_EQ(test::slotOf(&vx_CategoryModel::adapt), 6U);
    EXPECT_TRUE(std::is_abstract_v<vx_CategoryModel>);
}

TEST(CategoryModel, StartsWithLabel0AndNoMeasurements) {
    EXPECT_EQ(PlainModel().categoryLabel(), 0);
    EXPECT_EQ(PlainModel().numMeasurements(), 0);
}

TEST(CategoryModel, TakesAnyLabelAndNumber) {
    const PlainModel model(-7, -8);
    EXPECT_EQ(model.categoryLabel(), -7);
    EXPECT_EQ(model.numMeasurements(), -8);
}

TEST(CategoryModel, EqualityTakesBoth) {
    EXPECT_EQ(PlainModel(1, 2), PlainModel(1, 2));
    EXPECT_NE(PlainModel(1, 2), PlainModel(3, 2));
    EXPECT_NE(PlainModel(1, 2), PlainModel(1, 3));
    EXPECT_FALSE(PlainModel(1, 2) == PlainModel(1, 3));
}

TEST(CategoryModel, CopiesAndAssignsBoth) {
    const PlainModel model(1, 2);
    PlainModel assigned;
    assigned = model;
    EXPECT_EQ(PlainModel(model), model);
    EXPECT_EQ(assigned, model);
}

TEST(CategoryModel, ARecordHoldsLabelAndNumber) {
    const test::Bytes byHand = test::recordOf([](Record& record) {
        record.versions({0, 0}).number(5).number(-6);
    });
    EXPECT_EQ(test::stored(PlainModel(5, -6)), byHand);
    PlainModel loaded;
    test::load(byHand, loaded);
    EXPECT_EQ(loaded, PlainModel(5, -6));
}

TEST(CategoryModel, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 2; ++level) {
        const test::Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 2; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            record.number(5).number(6);
        });
        PlainModel into;
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
    }
    PlainModel model;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(model.serialize_(archive, 1), nullptr, 0); });
}

} // namespace
