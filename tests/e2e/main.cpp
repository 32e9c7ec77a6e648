#include "desktop.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

// Each session starts with the desktop's accessibility switch off, as a
// user's does. The user of most tests turned it on long ago; the tests of
// the switch itself find it as the session left it.
class SwitchedOnDesktop : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& test) override
    {
        if (std::string_view(test.test_suite_name()) != "AccessibilitySwitch")
            e2e::setAccessibilitySwitch(true);
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new SwitchedOnDesktop);
    return RUN_ALL_TESTS();
}
