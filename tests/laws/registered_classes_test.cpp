#include "platform/archive/class_registry.h"
#include "tests/laws/subject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(RegisteredClasses, AreAllHeldToTheLaws) {
    std::vector<std::string> names;
    for (const laws::Subject& subject : laws::subjects()) {
        names.push_back(subject.name);
    }
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(detail::registeredClassNames()));
}

TEST(RegisteredClasses, AreRegisteredWithTheirOwnFactory) {
    for (const laws::Subject& subject : laws::subjects()) {
        const laws::Object made = laws::own(subject.make());
        EXPECT_EQ(detail::archivedClassName(laws::classOf(*made)), subject.name);
        EXPECT_TRUE(detail::isRegisteredClass(laws::classOf(*made))) << subject.name;
        EXPECT_EQ(detail::findClass(subject.name), subject.make);
    }
}

} // namespace
