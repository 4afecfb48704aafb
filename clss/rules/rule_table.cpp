#include "clss/rules/rule_score.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/rule_table.h>

#include <cstddef>
#include <utility>

namespace {

constexpr long noLabel = -1;

} // namespace

vxClassifierRuleTable::vxClassifierRuleTable() noexcept = default;
vxClassifierRuleTable::vxClassifierRuleTable(const vxClassifierRuleTable&) = default;
vxClassifierRuleTable::vxClassifierRuleTable(vxClassifierRuleTable&&) noexcept = default;
vxClassifierRuleTable& vxClassifierRuleTable::operator=(vxClassifierRuleTable&&) noexcept = default;
vxClassifierRuleTable::~vxClassifierRuleTable() = default;

vxClassifierRuleTable& vxClassifierRuleTable::operator=(const vxClassifierRuleTable& other) {
    std::vector<vxClassifierRule> copy = other.rules_;
    rules_ = std::move(copy);
    return *this;
}

void vxClassifierRuleTable::train(const std::vector<vxClassifierRule>& rules) {
    if (rules.empty()) {
        throw vxClassifierDefs::BadParams(L"rules.size() == 0");
    }
    const std::size_t ruleSize = rules.front().scoringMethods().size();
    for (const vxClassifierRule& rule : rules) {
        if (rule.scoringMethods().size() != ruleSize) {
            throw vxClassifierDefs::BadParams(L"rules[i].scoringMethods().size() != ruleSize");
        }
    }
    // Aside, so that the old rules stay when memory runs out halfway.
    std::vector<vxClassifierRule> copy = rules;
    rules_ = std::move(copy);
}

long vxClassifierRuleTable::classifyHardThreshold(const vxClassifierFeatureVector& featureVector,
                                                  double hardThreshold) const {
    if (!(hardThreshold >= 0.0) || hardThreshold > 1.0) {
        throw vxClassifierDefs::BadParams(L"hardThreshold < 0 || hardThreshold > 1");
    }
    if (rules_.empty()) {
        throw vxClassifierDefs::NotTrained(L"the rule table needs to be trained before it can classify");
    }
    const std::size_t numValues = featureVector.featureValues().size();
    if (numValues == 0) {
        throw vxClassifierDefs::BadParams(L"featureVector.featureValues().size() == 0");
    }
    if (numValues != rules_.front().scoringMethods().size()) {
        throw vxClassifierDefs::BadParams(
            L"featureVector.featureValues().size() != rules_[0].scoringMethods().size())");
    }
    for (const vxClassifierRule& rule : rules_) {
        if (detail::isScoreAbove(rule, featureVector, hardThreshold)) {
            return rule.label();
        }
    }
    return noLabel;
}

bool vxClassifierRuleTable::operator==(const vxClassifierRuleTable& other) const {
    return rules_ == other.rules_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table) {
    return archive || table.rules_;
}
