#include "clss/clastool/knn/compact_patterns.h"

#include "clss/clastool/knn/cell_coder.h"
#include "tests/clastool/knn/compact_fixtures.h"
#include "tests/clastool/knn/loaded_objects.h"
#include "tests/support/archives.h"
#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using detail::CompactPatterns;
using test::Measurements;
using Store = vxClassifierDataProviderMemory;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::size_t cellOf(const CompactPatterns& compact, std::size_t pattern, std::size_t measurement) {
    const std::size_t place = pattern % CompactPatterns::blockSize;
    const std::uint8_t* row =
        compact.codes(pattern / CompactPatterns::blockSize) + measurement * CompactPatterns::rowBytes;
    const std::uint8_t code = row[place % CompactPatterns::rowBytes];
    return place < CompactPatterns::rowBytes ? code % 16U : code / 16U;
}

/// Expects every measurement to lie between the ends of its cell.
void expectCellsToHold(const CompactPatterns& compact, const Store& store) {
    ASSERT_EQ(compact.numPatterns(), static_cast<std::size_t>(store.numPatterns()));
    for (std::size_t i = 0; i < compact.numPatterns(); ++i) {
        const auto pattern = store.featurePattern(static_cast<long>(i));
        for (std::size_t j = 0; j < compact.width(); ++j) {
            const double* lows = compact.cells() + j * CompactPatterns::cellDoubles;
            const double* highs = lows + CompactPatterns::numCells;
            const std::size_t cell = cellOf(compact, i, j);
            const double value = pattern->featureMeasurement(static_cast<long>(j), true);
            ASSERT_LE(lows[cell], value) << "pattern " << i << ", measurement " << j;
            ASSERT_GE(highs[cell], value) << "pattern " << i << ", measurement " << j;
        }
    }
}

TEST(CompactPatterns, HoldEveryMeasurementInItsCell) {
    std::mt19937_64 engine(1);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        for (const std::size_t count : {193u, 256u, 3000u}) {
            const Store store = test::storeOf(test::draw(data, engine, count, 3));
            const auto compact = CompactPatterns::describe(store);
            ASSERT_NE(compact, nullptr);
            EXPECT_TRUE(compact->describes(store));
            expectCellsToHold(*compact, store);
        }
    }
}

/// Expects the ends of the cells to be values that lie in them, and the places behind the last pattern empty.
void expectNarrowCells(const CompactPatterns& compact, const Store& store) {
    for (std::size_t j = 0; j < compact.width(); ++j) {
        std::vector<double> ends(CompactPatterns::cellDoubles, infinity);
        for (std::size_t i = 0; i < compact.numBlocks() * CompactPatterns::blockSize; ++i) {
            const std::size_t cell = cellOf(compact, i, j);
            if (i >= compact.numPatterns()) {
                ASSERT_EQ(cell, 0U);
                continue;
            }
            const double value =
                store.featurePattern(static_cast<long>(i))->featureMeasurement(static_cast<long>(j), true);
            double& high = ends[CompactPatterns::numCells + cell];
            high = high == infinity ? value : std::max(high, value);
            ends[cell] = std::min(ends[cell], value);
        }
        EXPECT_TRUE(std::equal(ends.begin(), ends.end(), compact.cells() + j * CompactPatterns::cellDoubles))
            << "measurement " << j;
    }
}

TEST(CompactPatterns, HaveTheSameNarrowCellsByAllCoders) {
    std::mt19937_64 engine(4);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        for (const std::size_t width : {3u, 21u}) {
            for (const std::size_t count : {193u, 512u, 700u}) {
                const Store store = test::storeOf(test::draw(data, engine, count, width));
                const auto portable = CompactPatterns::describe(store, detail::portableCellCoder());
                const auto best = CompactPatterns::describe(store, detail::bestCellCoder());
                ASSERT_NE(portable, nullptr);
                ASSERT_NE(best, nullptr);
                expectNarrowCells(*portable, store);
                expectNarrowCells(*best, store);
                EXPECT_TRUE(std::equal(portable->codes(0), portable->codes(portable->numBlocks()),
                                       best->codes(0), best->codes(best->numBlocks())));
            }
        }
    }
}

TEST(CompactPatterns, GiveEachOfFewValuesItsOwnCell) {
    std::mt19937_64 engine(2);
    const test::Data sixteen{"", [](auto& random) { return static_cast<double>(random() % 16) * 1.5; }};
    const auto compact = CompactPatterns::describe(test::storeOf(test::draw(sixteen, engine, 2000, 1)));
    ASSERT_NE(compact, nullptr);
    for (std::size_t cell = 0; cell < CompactPatterns::numCells; ++cell) {
        EXPECT_EQ(compact->cells()[cell], static_cast<double>(cell) * 1.5);
        EXPECT_EQ(compact->cells()[CompactPatterns::numCells + cell], static_cast<double>(cell) * 1.5);
    }
}

/// How many of the patterns lie in each cell of a measurement.
std::vector<std::size_t> numInCells(const CompactPatterns& compact, std::size_t measurement) {
    std::vector<std::size_t> numbers(CompactPatterns::numCells);
    for (std::size_t i = 0; i < compact.numPatterns(); ++i) {
        ++numbers[cellOf(compact, i, measurement)];
    }
    return numbers;
}

TEST(CompactPatterns, HaveAboutEquallyManyOfManyValuesInEachCell) {
    const std::size_t count = 1600;
    for (const double shift : {0.0, 1.0, -2000.0}) { // all signs
        std::vector<Measurements> patterns;
        for (std::size_t i = 0; i < count; ++i) {
            const double value = static_cast<double>(i * 601 % count) + shift;
            patterns.push_back({value, std::ldexp(1.0, static_cast<int>(value) / 16), -value});
        }
        const auto compact = CompactPatterns::describe(test::storeOf(patterns));
        ASSERT_NE(compact, nullptr);
        for (std::size_t j = 0; j < compact->width(); ++j) {
            for (const std::size_t number : numInCells(*compact, j)) {
                EXPECT_GE(number, count / 16 / 2) << "measurement " << j << ", from " << shift;
                EXPECT_LE(number, count / 16 * 2) << "measurement " << j << ", from " << shift;
            }
        }
    }
}

TEST(CompactPatterns, HaveCodesOnceThereAreMoreThanAFew) {
    for (const std::size_t count : {1u, 192u, 193u}) {
        const auto compact = CompactPatterns::describe(test::storeOf({count, Measurements{1.0}}));
        ASSERT_NE(compact, nullptr);
        EXPECT_EQ(compact->hasCodes(), count > 192);
    }
}

TEST(CompactPatterns, HaveNoCodesForPatternsThatStandInManyRows) {
    const test::PatternHandle shared = test::pattern({1.0});
    const auto withShared = [&](std::size_t numShared, std::size_t numOthers) {
        Store store = test::storeOf({numOthers, Measurements{2.0}});
        for (std::size_t i = 0; i < numShared; ++i) {
            store.addData(shared, 0);
        }
        return store;
    };
    EXPECT_TRUE(CompactPatterns::describe(withShared(201, 199))->hasCodes());
    EXPECT_FALSE(CompactPatterns::describe(withShared(202, 198))->hasCodes());

    Store store = withShared(300, 0);
    auto compact = CompactPatterns::describe(store);
    for (int i = 0; i < 300; ++i) {
        store.addData(test::pattern({3.0}), 0);
        EXPECT_FALSE(compact->hasCodes());
        CompactPatterns::follow(compact, store);
        ASSERT_TRUE(compact->describes(store));
    }
    EXPECT_TRUE(compact->hasCodes()); // twice as many as before, and half of them differ
}

TEST(CompactPatterns, RefuseWhatIsOdd) {
    const auto refuses = [](const Store& store) { return CompactPatterns::describe(store) == nullptr; };
    const test::PatternHandle good = test::pattern({1.0});
    EXPECT_FALSE(refuses(test::loadedStore({good}, {0})));
    EXPECT_TRUE(refuses(Store()));
    EXPECT_TRUE(refuses(test::loadedStore({test::PatternHandle()}, {0})));
    EXPECT_TRUE(refuses(test::loadedStore({good, test::PatternHandle()}, {0, 0})));
    EXPECT_TRUE(refuses(test::loadedStore({good, test::pattern({1.0, 2.0})}, {0, 0})));
    EXPECT_TRUE(refuses(test::loadedStore({good, test::pattern({1.0}, {0})}, {0, 0})));
    EXPECT_TRUE(refuses(test::storeOf({{}, {}})));
    for (const double odd : {notANumber, infinity, -infinity, 1e141, -1e141}) {
        EXPECT_TRUE(refuses(test::storeOf({{1.0, 1.0}, {1.0, odd}}))) << odd;
    }
    struct Derived : Store {
        using Store::Store;
    } derived;
    derived.addData(good, 0);
    EXPECT_TRUE(refuses(derived));
}

TEST(CompactPatterns, RefuseOneOddPatternAmongManyWhereverItStands) {
    const std::vector<test::PatternHandle> odd{
        test::PatternHandle(),
        test::pattern({1.0}),
        test::pattern({1.0, 2.0, 3.0}),
        test::pattern({1.0, 2.0}, {1}),
        test::pattern({1.0, notANumber}),
        test::pattern({1.1 * CompactPatterns::largest, 1.0}),
    };
    std::vector<test::PatternHandle> patterns;
    for (std::size_t i = 0; i < 300; ++i) {
        patterns.push_back(test::pattern({static_cast<double>(i), 2.0}));
    }
    const std::vector<long> labels(patterns.size(), 0);
    EXPECT_NE(CompactPatterns::describe(test::loadedStore(patterns, labels)), nullptr);
    for (const test::PatternHandle& pattern : odd) {
        for (const std::size_t place : {0u, 1u, 63u, 64u, 149u, 150u, 151u, 298u, 299u}) {
            std::vector<test::PatternHandle> changed = patterns;
            changed[place] = pattern;
            EXPECT_EQ(CompactPatterns::describe(test::loadedStore(changed, labels)), nullptr) << place;
        }
    }
}

/// The sample of 600 patterns takes only the wide one, which the archive has once.
TEST(CompactPatterns, RefuseNarrowPatternsBetweenTheRowsOfAWideOne) {
    for (const std::size_t width : {2u, 64u, 65u, 3000u}) {
        const test::PatternHandle wide = test::pattern(Measurements(width, 1.0));
        std::vector<test::PatternHandle> patterns;
        for (std::size_t i = 0; i < 600; ++i) {
            patterns.push_back(test::pattern({static_cast<double>(i)}));
        }
        for (std::size_t i = 0; i < 256; ++i) {
            patterns[i * 600 / 256] = wide;
        }
        const Store store = test::loadedStore(patterns, std::vector<long>(600, 0));
        EXPECT_EQ(CompactPatterns::describe(store), nullptr) << width;
    }
}

TEST(CompactPatterns, DescribeTheRowsThatPatternsAndLabelsBothHave) {
    const test::PatternHandle good = test::pattern({1.0});
    const Store store = test::loadedStore({good, good, test::PatternHandle()}, {0, 0});
    const auto compact = CompactPatterns::describe(store);
    ASSERT_NE(compact, nullptr);
    EXPECT_EQ(compact->numPatterns(), 2U);
}

TEST(CompactPatterns, FollowPatternsThatAreAppended) {
    std::mt19937_64 engine(3);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        Store store = test::storeOf(test::draw(data, engine, 150, 3));
        auto compact = CompactPatterns::describe(store);
        for (int i = 0; i < 700; ++i) {
            Measurements measurements = test::draw(data, engine, 3);
            measurements[0] *= i % 100 == 0 ? -3.0 : 0.3; // beyond what was there
            store.addData(test::pattern(measurements), 0);
            EXPECT_FALSE(compact->describes(store));
            CompactPatterns::follow(compact, store);
            if (data.name == "up to the largest" && compact == nullptr) {
                break;
            }
            ASSERT_NE(compact, nullptr);
            ASSERT_TRUE(compact->describes(store));
        }
        if (compact != nullptr) {
            EXPECT_TRUE(compact->hasCodes());
            expectCellsToHold(*compact, store);
        }
    }
}

TEST(CompactPatterns, EndWithAnOddPattern) {
    for (const test::PatternHandle& odd :
         {test::pattern({notANumber}), test::pattern({1e200}), test::pattern({1.0}, {0})}) {
        for (const std::size_t count : {3u, 300u}) {
            Store store = test::storeOf({count, Measurements{1.0}});
            auto compact = CompactPatterns::describe(store);
            store.addData(odd, 0);
            CompactPatterns::follow(compact, store);
            EXPECT_EQ(compact, nullptr);
        }
    }
}

TEST(CompactPatterns, DoNotOutliveAChangeOfTheStore) {
    const auto isOverAfter = [](const auto& change) {
        Store store = test::storeOf({{1.0}, {2.0}});
        const auto compact = CompactPatterns::describe(store);
        change(store);
        return !compact->describes(store);
    };
    EXPECT_FALSE(isOverAfter([](Store& store) { store.setName(L"another"); }));
    EXPECT_TRUE(isOverAfter([](Store& store) { store.addData(test::pattern({1.0}), 0); }));
    EXPECT_TRUE(isOverAfter([](Store& store) { store.data({test::pattern({1.0})}, {0}); }));
    EXPECT_TRUE(isOverAfter([](Store& store) { store = Store(); }));
    EXPECT_TRUE(isOverAfter([](Store& store) {
        test::load(test::archiveOf([](vxArchive& archive) {
                       Store other;
                       archive || other;
                   }),
                   store);
    }));
}

TEST(CompactPatterns, DoNotOutliveAChangeOfAPattern) {
    const vxPtrHandle<vxFeaturePattern> changing(new vxFeaturePattern({1.0}, {}));
    Store store;
    store.addData(test::pattern({2.0}), 0);
    store.addData(changing, 0);
    const auto compact = CompactPatterns::describe(store);
    vxFeaturePattern another({3.0}, {});
    another = vxFeaturePattern({4.0}, {}); // in no store
    EXPECT_TRUE(compact->describes(store));
    *changing = another;
    EXPECT_FALSE(compact->describes(store));

    const auto anew = CompactPatterns::describe(store);
    EXPECT_TRUE(anew->describes(store));
    const test::Bytes record = test::archiveOf([&](vxArchive& archive) { archive || another; });
    test::load(record, *changing);
    EXPECT_FALSE(anew->describes(store));
}

TEST(CompactPatterns, DoNotOutliveAChangeOfAPatternThatWasAppended) {
    const vxPtrHandle<vxFeaturePattern> changing(new vxFeaturePattern({1.0}, {}));
    Store store;
    store.addData(test::pattern({2.0}), 0);
    auto compact = CompactPatterns::describe(store);
    store.addData(changing, 0);
    CompactPatterns::follow(compact, store);
    ASSERT_NE(compact, nullptr);
    ASSERT_TRUE(compact->describes(store));
    *changing = vxFeaturePattern({3.0}, {});
    EXPECT_FALSE(compact->describes(store));
}

TEST(CompactPatterns, TakeLittleMemoryBesideTheMeasurements) {
    for (const std::size_t width : {1u, 4u, 16u, 64u}) {
        for (const std::size_t count : {100u, 193u, 250u, 257u, 1000u, 5000u}) {
            Store store = test::storeOf({count, Measurements(width, 1.0)});
            auto compact = CompactPatterns::describe(store);
            for (std::size_t now = count;; ++now) {
                ASSERT_LE(static_cast<double>(compact->numBytes()),
                          0.3 * static_cast<double>(now * width * sizeof(double)))
                    << now << " patterns of " << width;
                if (now == count + 200) {
                    break;
                }
                store.addData(test::pattern(Measurements(width, 1.0)), 0);
                CompactPatterns::follow(compact, store);
            }
        }
    }
}

TEST(CompactPatterns, AreDoneWithoutWhereMemoryIsShort) {
    const Store store = test::storeOf({300, Measurements(4, 1.0)});
    bool wentWithout = false;
    for (long number = 1;; ++number) {
        const test::FailingAllocation failing(number);
        if (CompactPatterns::describe(store) != nullptr) {
            break;
        }
        wentWithout = true;
    }
    EXPECT_TRUE(wentWithout);
    const auto compact = CompactPatterns::describe(store);
    const test::FailingAllocation failing(1);
    EXPECT_EQ(CompactPatterns::copyOf(compact), nullptr);
}

/// Fails each allocation of following one pattern more than `count`; returns how many there are.
long failEachAllocationOfFollowing(std::size_t count) {
    const Store before = test::storeOf({count, Measurements(4, 1.0)});
    Store after = before;
    after.addData(test::pattern({1.0, 2.0, 3.0, 4.0}), 0);
    for (long number = 1;; ++number) {
        const long held = test::liveAllocations();
        // Patterns are shared, and the copy changes as the original did.
        Store store = before;
        auto compact = CompactPatterns::describe(store);
        store.addData(after.featurePattern(static_cast<long>(count)), 0);
        bool happened = false;
        {
            const test::FailingAllocation failing(number);
            CompactPatterns::follow(compact, store);
            happened = test::FailingAllocation::happened();
        }
        EXPECT_EQ(compact == nullptr, happened) << count << " patterns, allocation " << number;
        if (compact != nullptr) {
            EXPECT_TRUE(compact->describes(store));
        }
        compact.reset();
        store = Store();
        EXPECT_EQ(test::liveAllocations(), held) << count << " patterns, allocation " << number;
        if (!happened) {
            return number - 1;
        }
    }
}

TEST(CompactPatterns, AreGivenUpWhereMemoryIsShortForAPatternThatIsAppended) {
    EXPECT_EQ(failEachAllocationOfFollowing(100), 0);
    EXPECT_EQ(failEachAllocationOfFollowing(250), 0);
    EXPECT_EQ(failEachAllocationOfFollowing(256), 1); // for the codes of a further block
    EXPECT_GT(failEachAllocationOfFollowing(192), 1); // the first codes
}

TEST(CompactPatterns, AreNotMadeOfPatternsThatAreTooWide) {
    const auto describeOne = [](std::size_t width) {
        return CompactPatterns::describe(test::storeOf({1, Measurements(width, 1.0)}));
    };
    EXPECT_NE(describeOne(CompactPatterns::widest), nullptr);
    EXPECT_EQ(describeOne(CompactPatterns::widest + 1), nullptr);
}

TEST(CompactPatterns, AreCopiedWithWhatTheyDescribe) {
    const Store store = test::storeOf({300, Measurements(4, 1.0)});
    const auto copy = CompactPatterns::copyOf(CompactPatterns::describe(store));
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->describes(Store(store)));
    expectCellsToHold(*copy, store);
    EXPECT_EQ(CompactPatterns::copyOf(nullptr), nullptr);
}

} // namespace
