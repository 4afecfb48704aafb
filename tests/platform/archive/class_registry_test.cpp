#include "platform/archive/class_registry.h"

#include <vxclassifier/platform/persistent.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

class Registered : public vxPersistent {};
class Other : public vxPersistent {};

vxPersistent* makeRegistered() {
    return new Registered;
}
vxPersistent* makeAnother() {
    return new Registered;
}

const std::string name = "(anonymous namespace)::Registered";

bool isListed() {
    const std::vector<std::string> names = detail::registeredClassNames();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    return std::count(names.begin(), names.end(), name) == 1;
}

TEST(ClassRegistry, AClassIsKnownAsLongAsItsRegistrationLives) {
    EXPECT_FALSE(isListed());
    EXPECT_EQ(detail::findClass(name), nullptr);
    {
        const vx_Instantiator registration(typeid(Registered), &makeRegistered);
        EXPECT_TRUE(isListed());
        EXPECT_EQ(detail::findClass(name), &makeRegistered);
        EXPECT_TRUE(detail::isRegisteredClass(typeid(Registered)));
        EXPECT_FALSE(detail::isRegisteredClass(typeid(Other)));
    }
    EXPECT_FALSE(isListed());
    EXPECT_EQ(detail::findClass(name), nullptr);
    EXPECT_FALSE(detail::isRegisteredClass(typeid(Registered)));
}

TEST(ClassRegistry, TheFirstRegistrationOfANameWins) {
    auto first = std::make_unique<vx_Instantiator>(typeid(Registered), &makeRegistered);
    {
        const vx_Instantiator second(typeid(Registered), &makeAnother);
        EXPECT_EQ(detail::findClass(name), &makeRegistered);
    }
    EXPECT_EQ(detail::findClass(name), &makeRegistered) << "the second had nothing to take back";
    first.reset();
    EXPECT_EQ(detail::findClass(name), nullptr);
}

const std::type_info& oneOfTwoNamesakes(bool second) {
    if (second) {
        class Namesake : public vxPersistent {};
        return typeid(Namesake);
    }
    class Namesake : public vxPersistent {};
    return typeid(Namesake);
}

TEST(ClassRegistry, ANamesakeOfARegisteredClassIsNotRegistered) {
    const std::type_info& first = oneOfTwoNamesakes(false);
    const std::type_info& second = oneOfTwoNamesakes(true);
    ASSERT_NE(first, second);
    ASSERT_EQ(detail::archivedClassName(first), detail::archivedClassName(second));
    const vx_Instantiator registration(first, &makeRegistered);
    EXPECT_TRUE(detail::isRegisteredClass(first));
    EXPECT_FALSE(detail::isRegisteredClass(second)) << "it would come back as the other class";
    const vx_Instantiator tooLate(second, &makeAnother);
    EXPECT_FALSE(detail::isRegisteredClass(second));
}

TEST(ClassRegistry, AClassHasTheNameThatIsWrittenInTheSource) {
    EXPECT_EQ(detail::archivedClassName(typeid(Registered)), name);
    EXPECT_EQ(detail::archivedClassName(typeid(vxPersistent)), "vxPersistent");
    EXPECT_EQ(detail::archivedClassName(typeid(int)), "int");
}

} // namespace
