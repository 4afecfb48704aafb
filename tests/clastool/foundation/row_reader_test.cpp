#include "clss/clastool/foundation/row_reader.h"

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_pattern.h>

#include <gtest/gtest.h>

namespace {

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;
using Store = vxClassifierDataProviderMemory;

PatternHandle patternOf(double value) {
    return PatternHandle(new vxFeaturePattern({value}, {}));
}

/// Exactly the provider in memory is read directly, one that is derived from it is asked.
struct Derived : Store {
    long categoryLabel(long index) const override { return 10 + Store::categoryLabel(index); }
};

template <class Provider>
Provider twoRows() {
    Provider provider;
    provider.addData(patternOf(1.0), 5);
    provider.addData(patternOf(2.0), 6);
    return provider;
}

TEST(RowReader, GivesTheRowsOfAProvider) {
    const Store store = twoRows<Store>();
    detail::RowReader rows(store);
    for (long i = 0; i < 2; ++i) {
        EXPECT_EQ(rows.pattern(i), store.featurePattern(i));
        EXPECT_EQ(rows.label(i), store.categoryLabel(i));
    }
    const Derived derived = twoRows<Derived>();
    detail::RowReader asking(derived);
    EXPECT_EQ(asking.pattern(1), derived.featurePattern(1));
    EXPECT_EQ(asking.label(1), 16);
}

TEST(RowReader, LeavesARowThatIsNotThereToTheProvider) {
    Store store = twoRows<Store>();
    detail::RowReader rows(store);
    for (const long index : {-1L, 2L}) {
        EXPECT_ERROR_CLASS(rows.pattern(index), vxClassifierDefs::BadIndex);
        EXPECT_ERROR_CLASS(rows.label(index), vxClassifierDefs::BadIndex);
    }
    store.addData(patternOf(3.0), 7);
    EXPECT_EQ(rows.label(2), 7);
    store.data({patternOf(4.0)}, {8}); // as an interruption check may do
    EXPECT_EQ(rows.label(0), 8);
    EXPECT_ERROR_CLASS(rows.pattern(1), vxClassifierDefs::BadIndex);
    EXPECT_ERROR_CLASS(rows.label(1), vxClassifierDefs::BadIndex);
}

} // namespace
