#include <vxclassifier/classifier_distribution_types.h>

#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <vector>

namespace {

using Types = vxClassifierDistributionTypes;
using Indices = std::vector<long>;
using test::Bytes;
using test::Record;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

const wchar_t* const badLabel = L"Cateogory labels must be >= 0";
const wchar_t* const badIndex = L"Feature measurement indices must be >= 0";
const wchar_t* const dependsAlready =
    L"Cannot override distribution type of a feature measurement that is already part of a dependency set.";
const wchar_t* const typesDiffer =
    L"The distribution types of dependent feature measurements must be the same.";

struct OpenTypes : Types {
    using Types::distOverrideIndex_;
    using Types::Types;
};

Types normals() {
    return Types(Types::eMultivariateNormal);
}

Types dependent(const std::vector<std::pair<long, Indices>>& sets) {
    Types types = normals();
    for (const auto& [label, indices] : sets) {
        types.setDependent(label, indices);
    }
    return types;
}

/// The bytes of a table with these rows, put together by hand.
struct Table {
    long defaultType = 0;
    Indices overrideLabels, overrideIndices, overrideTypes, dependencyLabels;
    std::vector<Indices> dependencySets;

    Bytes bytes(unsigned char version = 0) const {
        return test::recordOf([&](Record& record) {
            record.versions({version})
                .number(defaultType)
                .numbers(overrideLabels)
                .numbers(overrideIndices)
                .numbers(overrideTypes)
                .numbers(dependencyLabels)
                .sets(dependencySets);
        });
    }

    Types types() const {
        Types loaded(Types::eUniform);
        test::load(bytes(), loaded);
        return loaded;
    }
};

TEST(ClassifierDistributionTypes, TheTypesAreFixed32BitNumbers) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Types::DistributionType>, std::int32_t>));
    EXPECT_EQ(Types::eMultivariateNormal, 0);
    EXPECT_EQ(Types::eBinomial, 1);
    EXPECT_EQ(Types::ePoisson, 2);
    EXPECT_EQ(Types::eUniform, 3);
}

TEST(ClassifierDistributionTypes, AFreshObjectAnswersTheDefaultForEveryPair) {
    const Types types(Types::eBinomial);
    EXPECT_EQ(types.defaultDistributionType(), Types::eBinomial);
    EXPECT_EQ(types.distributionType(0, 0), Types::eBinomial);
    EXPECT_EQ(types.distributionType(7, 2000000000), Types::eBinomial);
}

TEST(ClassifierDistributionTypes, LabelsAreCheckedBeforeIndices) {
    const OpenTypes types(Types::eBinomial);
    EXPECT_ERROR(types.distributionType(-1, 0), BadLabel, badLabel);
    EXPECT_ERROR(types.distributionType(-1, -1), BadLabel, badLabel);
    EXPECT_ERROR(types.distributionType(0, -1), BadIndex, badIndex);
    EXPECT_ERROR(types.distOverrideIndex_(-1, -1), BadLabel, badLabel);
    EXPECT_ERROR(types.distOverrideIndex_(0, -1), BadIndex, badIndex);
}

TEST(ClassifierDistributionTypes, AnyTypeIsStoredWithoutBeingChecked) {
    Types types(static_cast<Types::DistributionType>(77));
    EXPECT_EQ(types.defaultDistributionType(), 77);
    types.distributionTypeOverride(0, 0, static_cast<Types::DistributionType>(-5));
    EXPECT_EQ(types.distributionType(0, 0), -5);
}

TEST(ClassifierDistributionTypes, AnOverrideConcernsOnePairOnly) {
    Types types = normals();
    types.distributionTypeOverride(1, 2, Types::eBinomial);
    EXPECT_EQ(types.distributionType(1, 2), Types::eBinomial);
    EXPECT_EQ(types.distributionType(1, 1), Types::eMultivariateNormal);
    EXPECT_EQ(types.distributionType(2, 2), Types::eMultivariateNormal);
}

TEST(ClassifierDistributionTypes, RowsStandInTheOrderInWhichTheyWereFirstMade) {
    OpenTypes types(Types::eMultivariateNormal);
    types.distributionTypeOverride(1, 2, Types::eBinomial);
    types.distributionTypeOverride(0, 3, Types::ePoisson);
    types.distributionTypeOverride(1, 2, Types::eUniform);
    EXPECT_EQ(types.distOverrideIndex_(1, 2), 0);
    EXPECT_EQ(types.distOverrideIndex_(0, 3), 1);
    EXPECT_EQ(types.distOverrideIndex_(2, 1), -1);
    EXPECT_EQ(test::stored<Types>(types), (Table{0, {1, 0}, {2, 3}, {3, 2}, {}, {}}.bytes()));
}

TEST(ClassifierDistributionTypes, OverridingWithTheDefaultDoesNothingAtAll) {
    Types types = dependent({{0, {4, 5}}});
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    const Types before = types;
    types.distributionTypeOverride(0, 1, Types::eMultivariateNormal);
    types.distributionTypeOverride(-1, -1, Types::eMultivariateNormal);
    types.distributionTypeOverride(0, 4, Types::eMultivariateNormal);
    EXPECT_EQ(types, before);
    EXPECT_EQ(types.distributionType(0, 1), Types::eBinomial);
}

TEST(ClassifierDistributionTypes, AnOverrideMayComeToEqualALaterDefault) {
    Types types = normals();
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    types.defaultDistributionType(Types::eBinomial);
    types.distributionTypeOverride(0, 1, Types::eMultivariateNormal);
    EXPECT_EQ(types.distributionType(0, 1), Types::eMultivariateNormal);
    EXPECT_EQ(types.distributionType(0, 2), Types::eBinomial);
}

TEST(ClassifierDistributionTypes, SettingTheDefaultLeavesOverridesAndSetsAlone) {
    Types types = dependent({{0, {4, 5}}});
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    types.defaultDistributionType(Types::eUniform);
    EXPECT_EQ(test::stored(types), (Table{3, {0}, {1}, {1}, {0}, {{4, 5}}}.bytes()));
}

TEST(ClassifierDistributionTypes, AMeasurementOfASetTakesNoOverride) {
    Types types = dependent({{3, {1}}, {0, {4, 5}}});
    const Types before = types;
    EXPECT_ERROR(types.distributionTypeOverride(0, 5, Types::eBinomial), BadParams, dependsAlready);
    EXPECT_ERROR(types.distributionTypeOverride(0, -1, Types::eBinomial), BadIndex, badIndex);
    EXPECT_ERROR(types.distributionTypeOverride(-1, 5, Types::eBinomial), BadLabel, badLabel);
    EXPECT_EQ(types, before);
    types.distributionTypeOverride(1, 5, Types::eBinomial);
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    EXPECT_EQ(types.distributionType(1, 5), Types::eBinomial);
    EXPECT_EQ(types.distributionType(0, 1), Types::eBinomial);
}

TEST(ClassifierDistributionTypes, TheSetsAreLookedAtBeforeTheArguments) {
    const Indices labels{-1};
    Types types = Table{0, {}, {}, {}, labels, {{-2}}}.types();
    EXPECT_ERROR(types.distributionTypeOverride(-1, -2, Types::eBinomial), BadParams, dependsAlready);
}

TEST(ClassifierDistributionTypes, ClearingTheOverridesKeepsTheSetsAndTheDefault) {
    Types types(Types::eUniform);
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    types.distributionTypeOverride(0, 2, Types::eBinomial);
    types.setDependent(0, {1, 2});
    types.clearDistributionOverrides();
    EXPECT_EQ(test::stored(types), (Table{3, {}, {}, {}, {0}, {{1, 2}}}.bytes()));
    EXPECT_TRUE(types.isDependent(0, {1, 2}));
    EXPECT_EQ(types.distributionType(0, 1), Types::eUniform);
}

TEST(ClassifierDistributionTypes, ANewSetDropsRepeatsAndKeepsItsOrder) {
    EXPECT_EQ(test::stored(dependent({{0, {2, 2, 5}}})), (Table{0, {}, {}, {}, {0}, {{2, 5}}}.bytes()));
    EXPECT_EQ(test::stored(dependent({{0, {5, 1, 5, 3, 1}}})),
              (Table{0, {}, {}, {}, {0}, {{5, 1, 3}}}.bytes()));
}

TEST(ClassifierDistributionTypes, AnEmptySetChangesNothing) {
    EXPECT_EQ(dependent({{0, {}}}), normals());
    Types types = normals();
    EXPECT_ERROR(types.setDependent(-1, {}), BadLabel, badLabel);
}

TEST(ClassifierDistributionTypes, DependencyArgumentsAreCheckedBeforeAnythingChanges) {
    Types types = normals();
    EXPECT_ERROR(types.setDependent(-1, {-1}), BadLabel, badLabel);
    EXPECT_ERROR(types.setDependent(0, {1, 2, -1}), BadIndex, badIndex);
    EXPECT_EQ(types, normals());
}

TEST(ClassifierDistributionTypes, TheMembersOfASetHaveOneDistribution) {
    Types types = normals();
    types.distributionTypeOverride(0, 1, Types::eBinomial);
    types.distributionTypeOverride(0, 2, Types::eBinomial);
    const Types before = types;
    EXPECT_ERROR(types.setDependent(0, {1, 3}), BadParams, typesDiffer);
    EXPECT_ERROR(types.setDependent(0, {3, 4, 1}), BadParams, typesDiffer);
    EXPECT_EQ(types, before);
    types.setDependent(0, {1, 2});
    types.setDependent(1, {1, 3});
    EXPECT_TRUE(types.isDependent(0, {1, 2}));
    EXPECT_TRUE(types.isDependent(1, {1, 3}));
}

TEST(ClassifierDistributionTypes, OnlyTheNewMembersMustHaveOneDistribution) {
    Types types = dependent({{0, {1, 2}}});
    types.defaultDistributionType(Types::eBinomial);
    types.distributionTypeOverride(0, 3, Types::eUniform);
    EXPECT_ERROR(types.setDependent(0, {2, 3}), BadParams, typesDiffer);
    types.setDependent(0, {2, 4});
    EXPECT_EQ(test::stored(types), (Table{1, {0}, {3}, {3}, {0}, {{1, 2, 2, 4}}}.bytes()));
}

TEST(ClassifierDistributionTypes, AMergedSetKeepsRepeats) {
    Types types = dependent({{0, {2, 2, 5}}, {0, {}}, {0, {5, 7}}});
    EXPECT_EQ(test::stored(types), (Table{0, {}, {}, {}, {0}, {{2, 5, 5, 7}}}.bytes()));
    EXPECT_TRUE(types.isDependent(0, {2, 7}));
    types.setDependent(0, {7});
    EXPECT_EQ(test::stored(types), (Table{0, {}, {}, {}, {0}, {{2, 5, 5, 7, 7}}}.bytes()));
}

TEST(ClassifierDistributionTypes, MergingKeepsTheFirstRowAndTheOrderOfTheRest) {
    EXPECT_EQ(test::stored(dependent({{0, {1, 2}}, {0, {5, 6}}, {0, {2, 5}}})),
              (Table{0, {}, {}, {}, {0}, {{1, 2, 2, 5, 5, 6}}}.bytes()));
    const Types types = dependent(
        {{9, {1}}, {0, {1, 2}}, {3, {5}}, {0, {5, 6}}, {0, {8}}, {4, {6}}, {0, {10, 11}}, {0, {11, 6, 2}}});
    EXPECT_EQ(test::stored(types),
              (Table{0, {}, {}, {}, {9, 0, 3, 0, 4}, {{1}, {1, 2, 11, 6, 2, 5, 6, 10, 11}, {5}, {8}, {6}}}
                   .bytes()));
}

TEST(ClassifierDistributionTypes, SetsOfDifferentLabelsNeverMerge) {
    const Types types = dependent({{0, {1, 2}}, {1, {2, 3}}});
    EXPECT_FALSE(types.isDependent(0, {1, 3}));
    EXPECT_FALSE(types.isDependent(1, {1, 2}));
    EXPECT_TRUE(types.isDependent(0, {2, 1}));
    EXPECT_TRUE(types.isDependent(1, {2, 3}));
}

TEST(ClassifierDistributionTypes, DependentIsWhatLiesInOneSet) {
    const Types types = dependent({{0, {1, 2, 3}}, {0, {5, 6}}});
    EXPECT_TRUE(types.isDependent(0, {3, 1}));
    EXPECT_TRUE(types.isDependent(0, {2}));
    EXPECT_TRUE(types.isDependent(0, {2, 2, 2}));
    EXPECT_FALSE(types.isDependent(0, {1, 5}));
    EXPECT_FALSE(types.isDependent(0, {5, 6, 7}));
    EXPECT_FALSE(types.isDependent(0, {4}));
    EXPECT_FALSE(types.isDependent(0, {}));
    EXPECT_FALSE(types.isDependent(1, {1}));
}

TEST(ClassifierDistributionTypes, AskingForDependenceChecksLabelThenEmptinessThenIndices) {
    const Types types = dependent({{0, {1, 2, 3}}});
    EXPECT_ERROR(types.isDependent(-1, {}), BadLabel, badLabel);
    EXPECT_ERROR(types.isDependent(-1, {-1}), BadLabel, badLabel);
    EXPECT_ERROR(types.isDependent(0, {4, -1}), BadIndex, badIndex);
}

TEST(ClassifierDistributionTypes, EqualityLooksAtEveryVectorInItsOrder) {
    Types first = normals();
    first.distributionTypeOverride(0, 1, Types::eBinomial);
    first.distributionTypeOverride(0, 2, Types::eBinomial);
    Types second = normals();
    second.distributionTypeOverride(0, 2, Types::eBinomial);
    second.distributionTypeOverride(0, 1, Types::eBinomial);
    EXPECT_NE(first, second);
    EXPECT_EQ(first, Types(first));
    EXPECT_NE(normals(), Types(Types::eBinomial));
    EXPECT_NE(dependent({{0, {1, 2}}}), dependent({{0, {2, 1}}}));
    EXPECT_NE(dependent({{0, {1}}, {1, {1}}}), dependent({{1, {1}}, {0, {1}}}));
    const Table table{0, {1}, {2}, {3}, {4}, {{5}}};
    for (Indices Table::*column :
         {&Table::overrideLabels, &Table::overrideIndices, &Table::overrideTypes, &Table::dependencyLabels}) {
        Table changed = table;
        ++(changed.*column)[0];
        EXPECT_NE(table.types(), changed.types());
        EXPECT_FALSE(table.types() == changed.types());
    }
}

TEST(ClassifierDistributionTypes, ACopyAndAnAssignedOneHoldAllThatTheOtherHolds) {
    const Types types = Table{0, {1}, {2}, {3}, {4}, {{5}}}.types();
    const Types copy(types);
    Types assigned(Types::eUniform);
    assigned = types;
    EXPECT_EQ(copy, types);
    EXPECT_EQ(assigned, types);
}

TEST(ClassifierDistributionTypes, ATypeIsArchivedAsA32BitNumber) {
    const Types::DistributionType type = Types::eUniform;
    EXPECT_EQ(test::stored(type), test::recordOf([](Record& record) { record.number(3); }));
    Types::DistributionType loaded = Types::eMultivariateNormal;
    test::load(test::recordOf([](Record& record) { record.number(-2147483647 - 1); }), loaded);
    EXPECT_EQ(loaded, -2147483647 - 1);
}

/// Lies in memory that ends the program when it is written to.
const Types::DistributionType readOnly = Types::eUniform;

TEST(ClassifierDistributionTypes, StoringATypeOnlyReadsIt) {
    EXPECT_EQ(test::stored(readOnly), test::recordOf([](Record& record) { record.number(3); }));
}

TEST(ClassifierDistributionTypes, ARoundTripGivesAnEqualObject) {
    const Table table{77, {1, 2}, {3, 4}, {-5, 1}, {6, 0}, {{7, 8}, {}}};
    EXPECT_EQ(test::stored(table.types()), table.bytes());
    EXPECT_EQ(table.types().defaultDistributionType(), 77);
}

TEST(ClassifierDistributionTypes, AnotherVersionIsRefusedWithItsSource) {
    Types into = normals();
    EXPECT_UNKNOWN_VERSION(test::load(Table{}.bytes(1), into), "clss/clastool/bayes", 0);
    EXPECT_EQ(into, normals());
}

/// The rules written down once more, as plainly as possible.
class Oracle {
public:
    std::wstring override_(long label, long index, long type) {
        if (type == table.defaultType) {
            return L"";
        }
        for (std::size_t i = 0; i < table.dependencySets.size(); ++i) {
            if (table.dependencyLabels[i] == label && has(table.dependencySets[i], index)) {
                return dependsAlready;
            }
        }
        if (label < 0) {
            return badLabel;
        }
        if (index < 0) {
            return badIndex;
        }
        for (std::size_t i = 0; i < table.overrideLabels.size(); ++i) {
            if (table.overrideLabels[i] == label && table.overrideIndices[i] == index) {
                table.overrideTypes[i] = type;
                return L"";
            }
        }
        table.overrideLabels.push_back(label);
        table.overrideIndices.push_back(index);
        table.overrideTypes.push_back(type);
        return L"";
    }

    std::wstring setDependent(long label, const Indices& indices) {
        if (label < 0) {
            return badLabel;
        }
        for (const long index : indices) {
            if (index < 0) {
                return badIndex;
            }
        }
        Indices fresh;
        for (const long index : indices) {
            if (!has(fresh, index)) {
                fresh.push_back(index);
            }
        }
        if (fresh.empty()) {
            return L"";
        }
        for (const long index : fresh) {
            if (type(label, index) != type(label, fresh[0])) {
                return typesDiffer;
            }
        }
        join(label, fresh);
        return L"";
    }

    long type(long label, long index) const {
        for (std::size_t i = 0; i < table.overrideLabels.size(); ++i) {
            if (table.overrideLabels[i] == label && table.overrideIndices[i] == index) {
                return table.overrideTypes[i];
            }
        }
        return table.defaultType;
    }

    bool isDependent(long label, const Indices& indices) const {
        for (std::size_t i = 0; i < table.dependencySets.size(); ++i) {
            if (table.dependencyLabels[i] == label && has(table.dependencySets[i], indices.at(0))) {
                bool all = true;
                for (const long index : indices) {
                    all = all && has(table.dependencySets[i], index);
                }
                return all;
            }
        }
        return false;
    }

    Table table;

private:
    static bool has(const Indices& set, long index) {
        for (const long member : set) {
            if (member == index) {
                return true;
            }
        }
        return false;
    }

    void join(long label, const Indices& fresh) {
        Indices labels;
        std::vector<Indices> sets;
        std::size_t target = 0;
        bool merged = false;
        for (std::size_t i = 0; i < table.dependencySets.size(); ++i) {
            const Indices& set = table.dependencySets[i];
            bool shares = false;
            for (const long index : fresh) {
                shares = shares || (table.dependencyLabels[i] == label && has(set, index));
            }
            if (shares && merged) {
                sets[target].insert(sets[target].end(), set.begin(), set.end());
                continue;
            }
            labels.push_back(table.dependencyLabels[i]);
            sets.push_back(set);
            if (shares) {
                merged = true;
                target = sets.size() - 1;
                sets[target].insert(sets[target].end(), fresh.begin(), fresh.end());
            }
        }
        if (!merged) {
            labels.push_back(label);
            sets.push_back(fresh);
        }
        table.dependencyLabels = labels;
        table.dependencySets = sets;
    }
};

/// A small generator of its own, so that a failure can be repeated anywhere.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : state_(seed * 2654435761U + 1U) {}
    long below(long bound) {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<long>(state_ >> 8) % bound;
    }

private:
    std::uint32_t state_;
};

template <class Action>
std::wstring outcomeOf(Action action) {
    try {
        action();
    } catch (const vxException& error) {
        return error.message();
    }
    return L"";
}

Indices someIndices(Dice& dice) {
    Indices indices(static_cast<std::size_t>(dice.below(4)));
    for (long& index : indices) {
        index = dice.below(12) - (dice.below(40) == 0 ? 20 : 0);
    }
    return indices;
}

TEST(ClassifierDistributionTypes, AnySequenceOfOperationsFollowsTheRules) {
    long merges = 0;
    long refusals = 0;
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        Oracle oracle;
        Types types = normals();
        for (int step = 0; step < 60; ++step) {
            const long label = dice.below(3) - (dice.below(30) == 0 ? 3 : 0);
            const Indices indices = someIndices(dice);
            std::wstring expected;
            std::wstring actual;
            switch (dice.below(8)) {
            case 0:
                types.clearDistributionOverrides();
                oracle.table.overrideLabels = oracle.table.overrideIndices = oracle.table.overrideTypes = {};
                break;
            case 1:
                oracle.table.defaultType = dice.below(2);
                types.defaultDistributionType(static_cast<Types::DistributionType>(oracle.table.defaultType));
                break;
            case 2:
            case 3: {
                const long type = dice.below(3);
                const long index = dice.below(12) - (dice.below(20) == 0 ? 20 : 0);
                expected = oracle.override_(label, index, type);
                actual = outcomeOf([&] {
                    types.distributionTypeOverride(label, index, static_cast<Types::DistributionType>(type));
                });
                break;
            }
            default: {
                const std::size_t before = oracle.table.dependencySets.size();
                expected = oracle.setDependent(label, indices);
                merges += oracle.table.dependencySets.size() < before ? 1 : 0;
                actual = outcomeOf([&] { types.setDependent(label, indices); });
            }
            }
            ASSERT_EQ(actual, expected);
            ASSERT_EQ(test::stored(types), oracle.table.bytes());
            refusals += expected.empty() ? 0 : 1;
            const long someLabel = dice.below(3);
            const long someIndex = dice.below(12);
            ASSERT_EQ(types.distributionType(someLabel, someIndex), oracle.type(someLabel, someIndex));
            const Indices pair{someIndex, dice.below(12)};
            ASSERT_EQ(types.isDependent(someLabel, pair), oracle.isDependent(someLabel, pair));
        }
    }
    EXPECT_GT(merges, 50);
    EXPECT_GT(refusals, 200);
}

} // namespace
