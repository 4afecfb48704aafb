#include "tests/laws/query_patterns.h"
#include "tests/laws/subject.h"

#include <gtest/gtest.h>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class PredicateLaws : public testing::TestWithParam<Subject> {
protected:
    /// Patterns with invalid measurements and of other sizes are decided too.
    static std::vector<bool> outcomesOf(const vxPersistent& predicate) {
        std::vector<vxFeaturePattern> patterns = laws::queryPatterns();
        patterns.emplace_back(std::vector<double>{}, std::vector<long>{});
        patterns.emplace_back(std::vector<double>{1.0, 2.0, 3.0}, std::vector<long>{1});
        patterns.emplace_back(std::vector<double>{1.0, 2.0}, std::vector<long>{0, 1});
        std::vector<bool> outcomes;
        for (const vxFeaturePattern& pattern : patterns) {
            outcomes.push_back(as<vxPredicateFunction>(predicate).outcome(pattern));
        }
        return outcomes;
    }
};
INSTANTIATE_LAWS(PredicateLaws, laws::subjectsOf<vxPredicateFunction>());

TEST_P(PredicateLaws, SaysTheSameEachTime) {
    for (const Object& object : laws::allObjects(GetParam())) {
        EXPECT_EQ(outcomesOf(*object), outcomesOf(*object));
    }
}

TEST_P(PredicateLaws, TheSamplesTellPatternsApart) {
    const std::vector<Object> samples = GetParam().samples();
    EXPECT_NE(outcomesOf(*samples[0]), outcomesOf(*samples[1])) << "or the other laws would see nothing";
}

TEST_P(PredicateLaws, ACopyACloneAndALoadedOneDecideAlike) {
    for (const Object& object : laws::allObjects(GetParam())) {
        const std::vector<bool> outcomes = outcomesOf(*object);
        EXPECT_EQ(outcomesOf(*GetParam().copy(*object)), outcomes);
        EXPECT_EQ(outcomesOf(*GetParam().clone(*object)), outcomes);
        EXPECT_EQ(outcomesOf(*laws::reloaded(*object)), outcomes);
    }
}

} // namespace
