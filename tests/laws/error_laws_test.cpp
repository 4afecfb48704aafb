#include "tests/laws/subject.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <set>
#include <typeinfo>

namespace {

using laws::as;
using laws::Object;
using laws::Subject;

class ErrorLaws : public testing::TestWithParam<Subject> {};
INSTANTIATE_LAWS(ErrorLaws, laws::subjectsOf<vxException>());

TEST_P(ErrorLaws, BelongsToTheFamilyOfTheClassifiers) {
    const Object error = laws::own(GetParam().make());
    EXPECT_NE(dynamic_cast<const vxClassifierDefs::Errors*>(error.get()), nullptr);
    EXPECT_NE(dynamic_cast<const vxExceptionWithString*>(error.get()), nullptr);
}

TEST_P(ErrorLaws, MadeWithoutAMessageHasNone) {
    const Object error = laws::own(GetParam().make());
    EXPECT_EQ(as<vxException>(*error).message(), L"");
    EXPECT_STREQ(as<vxException>(*error).what(), "");
}

TEST_P(ErrorLaws, HasTheNumberOfItsClassWhateverItsMessage) {
    const long number = as<vxException>(*laws::own(GetParam().make())).errorNumber();
    for (const Object& sample : GetParam().samples()) {
        EXPECT_EQ(as<vxException>(*sample).errorNumber(), number);
        EXPECT_EQ(as<vxException>(*laws::reloaded(*sample)).errorNumber(), number);
    }
}

TEST_P(ErrorLaws, KeepsItsMessageInAnArchive) {
    for (const Object& sample : GetParam().samples()) {
        const Object loaded = laws::reloaded(*sample);
        EXPECT_EQ(as<vxException>(*loaded).message(), as<vxException>(*sample).message());
        EXPECT_STREQ(as<vxException>(*loaded).what(), as<vxException>(*sample).what());
    }
}

TEST_P(ErrorLaws, IsRethrownAsItsOwnClass) {
    for (const Object& sample : laws::allObjects(GetParam())) {
        // A copy that nobody owns: rethrowing destroys it.
        std::unique_ptr<vxPersistent> onHeap(GetParam().make());
        GetParam().assign(*onHeap, *sample);
        auto* exception = dynamic_cast<vxException*>(onHeap.release());
        ASSERT_NE(exception, nullptr);
        try {
            exception->suicideAndRethrow();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const vxException& thrown) {
            EXPECT_EQ(typeid(thrown), laws::classOf(*sample));
            EXPECT_EQ(thrown.message(), as<vxException>(*sample).message());
        }
    }
}

TEST(ErrorFamilyLaws, NoTwoClassesHaveTheSameNumber) {
    std::set<long> numbers;
    const std::vector<Subject> family = laws::subjectsOf<vxException>();
    for (const Subject& each : family) {
        numbers.insert(as<vxException>(*laws::own(each.make())).errorNumber());
    }
    EXPECT_EQ(numbers.size(), family.size());
    EXPECT_EQ(family.size(), 8U);
}

} // namespace
