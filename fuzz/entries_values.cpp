#include "fuzz/entries.h"
#include "fuzz/round_trip.h"
#include "fuzz/uses.h"

#include <cmath>
#include <utility>

namespace fuzz {

namespace {

using Types = vxClassifierDistributionTypes;
using Score = vxPtrHandle<vxClsFtSc>;

template <class T>
bool same(const T& a, const T& b) {
    return a == b;
}
bool same(const Score& a, const Score& b) {
    return *a == *b;
}
bool same(const vxClassifierFeatureVector& a, const vxClassifierFeatureVector& b) {
    return a.featureValues() == b.featureValues();
}

/// What the value is stored as, or nothing if it holds a null score function, which cannot be stored.
template <class T>
test::Bytes storedIfPossible(const T& value) {
    try {
        return test::stored(value);
    } catch (const vxBadPointer&) {
        return {};
    }
}

struct Mixed;

/// Whether a copy is stored as the same bytes. A copy of a tool leaves an untrained classifier out, which
/// makes no other difference.
template <class T>
constexpr bool copiesEverything = true;
template <>
constexpr bool copiesEverything<vxClassifierTool> = false;
template <>
constexpr bool copiesEverything<Mixed> = false;

/// What holds for a value that was accepted, and for one that a refused load has filled partly.
template <class T>
void checkValue(const T& value, const T& fresh, std::uint64_t picks) {
    const auto equal = [](const T& a, const T& b) { return same(a, b); };
    const test::Bytes stored = storedIfPossible(value);
    const T copy(value);
    T assigned(fresh);
    assigned = value;
    for (const T& other : {copy, assigned}) {
        require(!copiesEverything<T> || storedIfPossible(other) == stored, "a copy is stored as other bytes");
        requireCopy(equal, value, other, stored);
    }
    if (!stored.empty()) {
        T again(fresh);
        test::load(stored, again);
        require(test::stored(again) == stored, "a reloaded value is stored as other bytes");
        requireCopy(equal, value, again, stored);
    }
    useAll(value, picks);
    require(storedIfPossible(value) == stored, "using a value has changed it");
}

/// A value type, the form in which it is built (archive_builder.h), an object to load into, and seeds.
template <class T>
Entry value(const char* name, const char* form, const T& fresh, const std::vector<T>& samples) {
    Entry entry;
    entry.name = name;
    entry.check = [fresh](const test::Bytes& sealed) {
        T loaded(fresh);
        const bool accepted = accepts(sealed, [&] { test::load(sealed, loaded); });
        checkValue<T>(loaded, fresh, picksOf(sealed));
        return accepted;
    };
    entry.build = [form](ArchiveBuilder& builder) { builder.append(form); };
    entry.seeds = [samples] {
        std::vector<test::Bytes> all;
        for (const T& sample : samples) {
            all.push_back(test::stored(sample));
        }
        return all;
    };
    return entry;
}

vxClassifierFrequencies frequencies() {
    vxClassifierFrequencies made(1.0);
    made.categoryFrequencyOverride(7, 0.25);
    made.categoryFrequencyOverride(2, 3.0);
    return made;
}

vxClassifierCosts costs() {
    vxClassifierCosts made(2.0);
    made.misclassificationCostOverride(2, 7, 0.5);
    made.misclassificationCostOverride(7, 2, 0.0);
    return made;
}

Types types() {
    Types made(Types::eMultivariateNormal);
    made.distributionTypeOverride(2, 1, Types::eBinomial);
    made.setDependent(7, {0, 1});
    return made;
}

vxClassifierTool tool(const vxClassifierTrainParams& params) {
    vxClassifierDataProviderMemory data;
    for (const double x : {0.5, 1.0, 2.5, 4.0}) {
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, x * x}, {})),
                     x < 2.0 ? 2 : 7);
    }
    vxClassifierTool trained;
    trained.train(data, params);
    return trained;
}

std::vector<vxClassifierTool> tools() {
    const vxDecisionTreeLeaf leaf(vxClassifierResult({{1, 0.5, 0.75, 0.25}, {3, 0.25, 0.25, 0.75}}, -1.5));
    vxClassifierTool ofTree;
    ofTree.train(vxDecisionTreeNode(vxRangePredicate(vxRange(-1.0, 1.0), {0}), leaf, leaf));
    return {vxClassifierTool(), ofTree,
            tool(vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(1.5), costs())),
            tool(vxClassifierTrainParamsBayesian(types(), frequencies(), costs(),
                                                 vxFeaturePattern({10.0, 20.0}, {})))};
}

std::vector<Score> scores() {
    vxClassifierFeatureScoreTwoSided middle;
    middle.init(1.0, 2.0, 3.0, 5.0, 4.0, 3.0, 0.1, 0.9, 0.2, 0.8);
    return {Score(vxClassifierFeatureScoreIgnore().clone()),
            Score(vxClassifierFeatureScoreOneSided().clone()), Score(middle.clone())};
}

vxClassifierRule rule() {
    vxClassifierRule made;
    std::vector<Score> methods = scores();
    made.init(methods, 3);
    return made;
}

vxClassifierRuleTable ruleTable() {
    vxClassifierRuleTable made;
    made.train({rule(), rule()});
    return made;
}

/// One of everything, for what objects share across the pointers of an archive.
struct Mixed {
    long number = 0;
    vxPtrHandle_const<vxFeaturePattern> pattern;
    vxPtrHandle<vx_Classifier> classifier;
    vxClassifierTool tool;
    std::vector<vxPtrHandle_const<vxDecisionTree>> trees;
    vxClassifierRuleTable table;
    vxPtrHandle<vx_Classifier> another;
    vxClassifierDataProviderMemory data;
    std::wstring text;
};

vxArchive& operator||(vxArchive& archive, Mixed& mixed) {
    archive || mixed.number || mixed.pattern || mixed.classifier || mixed.tool || mixed.trees || mixed.table;
    return archive || mixed.another || static_cast<vxPersistent&>(mixed.data) || mixed.text;
}

template <class Handle>
bool bothNullOr(const Handle& a, const Handle& b, bool (*compare)(const Handle&, const Handle&)) {
    return a.get() == nullptr || b.get() == nullptr ? a.get() == b.get() : compare(a, b);
}

bool same(const Mixed& a, const Mixed& b) {
    using Classifier = vxPtrHandle<vx_Classifier>;
    using Pattern = vxPtrHandle_const<vxFeaturePattern>;
    const auto equalPatterns = [](const Pattern& x, const Pattern& y) { return *x == *y; };
    const auto equivalent = [](const Classifier& x, const Classifier& y) { return x->isEquivalent(*y); };
    bool all = a.number == b.number && a.text == b.text && a.table == b.table && a.tool == b.tool &&
               a.data == b.data && a.trees.size() == b.trees.size() &&
               bothNullOr<Pattern>(a.pattern, b.pattern, equalPatterns) &&
               bothNullOr<Classifier>(a.classifier, b.classifier, equivalent) &&
               bothNullOr<Classifier>(a.another, b.another, equivalent);
    for (std::size_t i = 0; all && i < a.trees.size(); ++i) {
        all = a.trees[i]->isEqual(*b.trees[i]);
    }
    return all;
}

void use(Steps& steps, const Mixed& mixed) {
    // One part, or a run would take as long as those of all the parts' own entries.
    switch (steps.pick(7)) {
    case 0:
        steps.step([&] { fuzz::use(steps, *mixed.pattern); });
        break;
    case 1:
        steps.step([&] { fuzz::use(steps, static_cast<const vxPersistent&>(*mixed.classifier)); });
        break;
    case 2:
        steps.step([&] { fuzz::use(steps, static_cast<const vxPersistent&>(*mixed.another)); });
        break;
    case 3:
        fuzz::use(steps, mixed.tool);
        break;
    case 4:
        fuzz::use(steps, mixed.table);
        break;
    case 5:
        fuzz::use(steps, static_cast<const vxPersistent&>(mixed.data));
        break;
    default:
        for (const vxPtrHandle_const<vxDecisionTree>& tree : mixed.trees) {
            steps.step([&] { fuzz::use(steps, static_cast<const vxPersistent&>(*tree)); });
        }
    }
}

Mixed mixed() {
    Mixed made;
    made.number = 7;
    made.pattern.reset(new vxFeaturePattern({1.0, 2.0}, {}));
    auto* classifier = new vx_ClassifierKNN;
    made.classifier.reset(classifier);
    made.data.addData(made.pattern, 2);
    made.data.addData(made.pattern, 4);
    classifier->train(made.data, vxClassifierTrainParamsKNN(1));
    made.tool = tools()[1];
    made.trees = {made.tool.decisionTree(), made.tool.decisionTree()};
    made.table = ruleTable();
    made.another = made.classifier;
    made.text = L"x\u2265";
    return made;
}

} // namespace

void addValueEntries(std::vector<Entry>& all) {
    using Reals = std::vector<double>;
    using Wholes = std::vector<long>;
    vxNMMatrix matrix(2, 3);
    matrix(1, 2) = -0.5;
    const vxClassifierCategoryResult category(2, 0.5, 0.25, 0.75);
    all.push_back(value<vxClassifierFrequencies>("Frequencies", "F", vxClassifierFrequencies(1.0),
                                                 {vxClassifierFrequencies(2.0), frequencies()}));
    all.push_back(value<vxClassifierCosts>("Costs", "C", vxClassifierCosts(1.0), {costs()}));
    all.push_back(value<vxClassifierCategoryResult>("CategoryResult", "K", category, {category}));
    all.push_back(value<vxClassifierResult>("Result", "R", vxClassifierResult(),
                                            {vxClassifierResult(), vxClassifierResult({category}, -1.5)}));
    all.push_back(
        value<Types::DistributionType>("DistributionType", "i", Types::eUniform, {Types::eBinomial}));
    all.push_back(value<Types>("DistributionTypes", "D", Types(Types::eUniform), {types()}));
    all.push_back(value<vxClassifierTool>("Tool", "T", vxClassifierTool(), tools()));
    all.push_back(value<vxClassifierFeatureScoreIgnore>("ScoreIgnore", "", {}, {{}}));
    all.push_back(value<vxClassifierFeatureScoreOneSided>("ScoreOneSided", "1", {}, {{}}));
    all.push_back(value<vxClassifierFeatureScoreTwoSided>("ScoreTwoSided", "2", {}, {{}}));
    all.push_back(value<Score>("Score", "h", Score(), scores()));
    all.push_back(value<vxClassifierFeatureVector>("FeatureVector", "vd", Reals{},
                                                   {vxClassifierFeatureVector(Reals{0.5, 1.5})}));
    all.push_back(value<vxClassifierRule>("Rule", "U", vxClassifierRule(), {rule()}));
    all.push_back(value<vxClassifierRuleTable>("RuleTable", "vU", vxClassifierRuleTable(), {ruleTable()}));
    all.push_back(value<vxRange>("Range", "r", vxRange(), {vxRange(-1.0, 1.0)}));
    all.push_back(value<vxNMMatrix>("Matrix", "x", vxNMMatrix(), {vxNMMatrix(), matrix}));
    all.push_back(value<Reals>("VectorOfDouble", "vd", {}, {{}, {0.5, -1.5}}));
    all.push_back(value<Wholes>("VectorOfLong", "vi", {}, {{}, {0, -1}}));
    all.push_back(value<std::vector<bool>>("VectorOfBool", "vt", {}, {{}, {true, false}}));
    all.push_back(value<std::vector<Wholes>>("VectorOfVectors", "vvi", {}, {{}, {{}, {1}}}));
    all.push_back(value<std::vector<std::wstring>>("VectorOfTexts", "vs", {}, {{}, {L"", L"a\u2265"}}));
    all.push_back(value<std::wstring>("Text", "s", {}, {L"", L"a\u2265"}));
    all.push_back(value<long>("Long", "i", 0, {-1}));
    all.push_back(value<unsigned long>("UnsignedLong", "u", 0, {7}));
    all.push_back(value<double>("Double", "d", 0.0, {0.5}));
    all.push_back(value<unsigned char>("Byte", "b", 0, {7}));
}

void addMixedEntry(std::vector<Entry>& all) {
    Entry entry = value<Mixed>("Mixed", "i>f>cTv>tvU>c=ds", Mixed(), {mixed()});
    all.push_back(std::move(entry));
}

} // namespace fuzz
