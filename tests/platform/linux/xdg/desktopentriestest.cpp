#include "platform/linux/xdg/desktopentries.h"
#include "support/testrelease.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Entries as Debian installs them, in the user's folder and the system's.
class Entries : public testing::Test {
protected:
    QTemporaryDir home, system;

    Entries()
    {
        auto entry = [](const QString& folder, const QString& file, const QByteArray& text) {
            writeTestFile(folder + "/applications/" + file, text);
        };
        entry(system.path(), "org.xfce.mousepad.desktop",
              "[Desktop Entry]\nType=Application\nName=Mousepad\nName[de]=Mousepad (de)\nExec=mousepad %U\n"
              "[Desktop Action new]\nName=New Window\nExec=other-program\n");
        entry(system.path(), "featherpad.desktop", "[Desktop Entry]\nName=FeatherPad\nType=Application\nExec=featherpad %U\n");
        entry(system.path(), "libreoffice-writer.desktop",
              "[Desktop Entry]\nType=Application\nName=LibreOffice Writer\nExec=libreoffice --writer %U\n"
              "TryExec=oowriter\nStartupWMClass=libreoffice-writer\n");
        entry(system.path(), "gimp.desktop",
              "[Desktop Entry]\nType=Application\nName=GNU Image Manipulation Program\nExec=gimp-2.10 %U\n"
              "StartupWMClass=gimp-2.10\n");
        entry(system.path(), "kde/org.kde.kate.desktop",
              "[Desktop Entry]\nType=Application\nName=Kate\nExec=env QT_X=1 /usr/bin/kate -b %U\n");
        entry(system.path(), "hidden.desktop", "[Desktop Entry]\nType=Application\nName=Gone\nHidden=true\nExec=gone\n");
        entry(system.path(), "link.desktop", "[Desktop Entry]\nType=Link\nName=A web page\nURL=https://example.org\n");
        // The user's own entry for mousepad overrides the system's.
        entry(home.path(), "org.xfce.mousepad.desktop", "[Desktop Entry]\nType=Application\nName=My Editor\nExec=mousepad\n");
    }
};

TEST_F(Entries, AnApplicationIsFoundByItsIdItsWindowClassOrItsProgram)
{
    const DesktopEntries entries({home.path(), system.path()}, "en_GB");
    using Entry = DesktopEntries::Entry;
    struct Case {
        const char* applicationId;
        const char* windowClass;
        const char* program;
        std::optional<Entry> expected;
    };
    const Case cases[] = {
        {"org.xfce.mousepad", "", "", Entry{"org.xfce.mousepad", "My Editor"}},
        {"", "Mousepad", "", Entry{"org.xfce.mousepad", "My Editor"}},       // the id's last part
        {"", "FeatherPad", "", Entry{"featherpad", "FeatherPad"}},            // the id, in any case
        {"", "libreoffice-writer", "", Entry{"libreoffice-writer", "LibreOffice Writer"}}, // StartupWMClass and id
        {"", "gimp-2.10", "", Entry{"gimp", "GNU Image Manipulation Program"}},             // StartupWMClass alone
        {"", "", "oowriter", Entry{"libreoffice-writer", "LibreOffice Writer"}},        // TryExec
        {"", "", "kate", Entry{"kde-org.kde.kate", "Kate"}},                  // past env and its settings
        {"no.such.app", "", "featherpad", Entry{"featherpad", "FeatherPad"}}, // the next clue
        {"", "", "gone", std::nullopt},                                       // hidden entries are not applications
        {"", "", "other-program", std::nullopt},                              // an action is not the application
        {"", "", "", std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.applicationId) + "|" + c.windowClass + "|" + c.program);
        EXPECT_EQ(entries.find(c.applicationId, c.windowClass, c.program), c.expected);
    }
}

TEST_F(Entries, TheNameIsInTheUsersLanguageWhereTheEntryHasIt)
{
    EXPECT_EQ(DesktopEntries({system.path()}, "de_AT").find("org.xfce.mousepad", "", "")->name, "Mousepad (de)");
    EXPECT_EQ(DesktopEntries({system.path()}, "fr_FR").find("org.xfce.mousepad", "", "")->name, "Mousepad");
}

} // namespace
