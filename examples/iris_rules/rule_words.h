#ifndef EXAMPLES_IRIS_RULES_RULE_WORDS_H
#define EXAMPLES_IRIS_RULES_RULE_WORDS_H

#include <vxclassifier/rule.h>

#include <string>

namespace iris {

/// A rule as a sentence that someone who knows flowers can judge.
std::string inWords(const vxClassifierRule& rule);

} // namespace iris

#endif
