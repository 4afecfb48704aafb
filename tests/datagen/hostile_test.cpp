#include "tests/support/failing_allocation.h"

#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/total_data_generator.h>

#include <gtest/gtest.h>

#include <vector>

// Memory that runs out while data are made.

namespace {

using Pairs = std::vector<vxPair<double>>;

Pairs somePairs() {
    return {{1.0, 0.5}, {-3.0, 2.0}};
}

vx_TotalDataGenerator someTotal() {
    return vx_TotalDataGenerator(
        {vx_ClassDataGenerator(somePairs(), 4), vx_ClassDataGenerator(somePairs(), 3)});
}

/// Lets every allocation of `generateData` fail on a generator of its own, and expects that each one then
/// still generates as if nothing had happened.
template <class Generator>
void expectAllOrNothing(const Generator& fresh) {
    Generator untouched(fresh);
    const vxClassifierDataProviderMemory expected = untouched.generateData();
    Generator generator(fresh);
    const long failures = test::failEachAllocation([&] { generator.generateData(); },
                                                   [&] {
                                                       EXPECT_EQ(generator.generateData(), expected);
                                                       generator = fresh;
                                                   });
    EXPECT_GT(failures, expected.numPatterns());
}

/// Assigns a generator that has drawn to an empty one, and lets every allocation fail.
template <class Generator>
void expectAssignmentAllOrNothing(Generator original, Generator assigned) {
    const vxClassifierDataProviderMemory expected = original.generateData();
    const long failures = test::failEachAllocation(
        [&] { assigned = original; }, [&] { EXPECT_EQ(assigned.generateData().numPatterns(), 0); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(assigned.generateData(), expected);
}

} // namespace

TEST(HostileGenerators, DrawingWithoutMemoryLeavesTheGeneratorAsItWas) {
    expectAllOrNothing(vx_ClassDataGenerator(somePairs(), 5));
    expectAllOrNothing(someTotal());
}

TEST(HostileGenerators, DrawingWithoutMemoryKeepsWhatWasAppendedBefore) {
    vx_ClassDataGenerator generator({}, 2);
    EXPECT_EQ(generator.generateData().numPatterns(), 2);
    const vx_ClassDataGenerator before(generator);
    test::failEachAllocation([&] { generator.generateData(); },
                             [&] {
                                 EXPECT_EQ(generator.generateData().numPatterns(), 4);
                                 generator = before;
                             });
}

TEST(HostileGenerators, AssigningWithoutMemoryChangesNothing) {
    expectAssignmentAllOrNothing(vx_ClassDataGenerator(somePairs(), 4), vx_ClassDataGenerator({}, 0));
    expectAssignmentAllOrNothing(someTotal(), vx_TotalDataGenerator({}));
}
