#include "platform/linux/gnome/gnomekeybindings.h"
#include "platform/linux/gnome/gnomeshortcut.h"
#include "support/desktopkeys.h"
#include "support/eventually.h"
#include "support/testrelease.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace GnomeKeybindings;

// GNOME's settings in a folder of the test's own: the schemas Kestrio
// touches (GNOME's own shortcuts, the custom ones) and a key file for their
// values, read and written by the real gsettings.
class GnomeSettings : public testing::Test {
protected:
    QTemporaryDir folder;
    QByteArray oldSchemas = qgetenv("GSETTINGS_SCHEMA_DIR"), oldBackend = qgetenv("GSETTINGS_BACKEND"),
               oldConfig = qgetenv("XDG_CONFIG_HOME");

    void SetUp() override
    {
        writeTestFile(folder.filePath("schemas/kestrio-test.gschema.xml"), R"(<schemalist>
  <schema id="org.gnome.settings-daemon.plugins.media-keys" path="/org/gnome/settings-daemon/plugins/media-keys/">
    <key name="custom-keybindings" type="as"><default>[]</default></key>
    <key name="screensaver" type="as"><default>['&lt;Super&gt;l']</default></key>
  </schema>
  <schema id="org.gnome.settings-daemon.plugins.media-keys.custom-keybinding">
    <key name="name" type="s"><default>''</default></key>
    <key name="command" type="s"><default>''</default></key>
    <key name="binding" type="s"><default>''</default></key>
  </schema>
  <schema id="org.gnome.desktop.wm.keybindings" path="/org/gnome/desktop/wm/keybindings/">
    <key name="switch-input-source" type="as"><default>['&lt;Super&gt;space', 'XF86Keyboard']</default></key>
    <key name="close" type="as"><default>['&lt;Alt&gt;F4']</default></key>
  </schema>
</schemalist>
)");
        QProcess compile;
        compile.start("glib-compile-schemas", {folder.filePath("schemas")});
        ASSERT_TRUE(compile.waitForFinished());
        ASSERT_EQ(compile.exitCode(), 0) << compile.readAllStandardError().toStdString();
        qputenv("GSETTINGS_SCHEMA_DIR", QFile::encodeName(folder.filePath("schemas")));
        qputenv("GSETTINGS_BACKEND", "keyfile");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.filePath("config")));
        // The user's own custom shortcut, which must stay as it is.
        gsettings({"set", QString(kCustomSchema) + ":" + other, "name", "Terminal"});
        gsettings({"set", QString(kCustomSchema) + ":" + other, "command", "xterm"});
        gsettings({"set", QString(kCustomSchema) + ":" + other, "binding", "<Control><Alt>t"});
        gsettings({"set", kMediaKeysSchema, kCustomListKey, printed(QStringList{other})});
    }
    void TearDown() override
    {
        for (const auto& [name, value] : {std::pair{"GSETTINGS_SCHEMA_DIR", oldSchemas}, std::pair{"GSETTINGS_BACKEND", oldBackend},
                                          std::pair{"XDG_CONFIG_HOME", oldConfig}}) {
            if (value.isNull())
                qunsetenv(name);
            else
                qputenv(name, value);
        }
    }

    static QString gsettings(const QStringList& arguments)
    {
        QProcess process;
        process.start("gsettings", arguments);
        process.waitForFinished();
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }
    static QString own(const char* key) { return gsettings({"get", QString(kCustomSchema) + ":" + kOwnPath, key}); }
    static QString list() { return gsettings({"get", kMediaKeysSchema, kCustomListKey}); }

    DesktopShortcutState bind(GnomeShortcut& gnome, const QString& trigger, bool replace = true)
    {
        std::optional<DesktopShortcutState> answer;
        gnome.bind(desktopKeys(trigger), replace, [&](const DesktopShortcutState& state) { answer = state; });
        EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
        return answer.value_or(DesktopShortcutState{});
    }

    const QString other = "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0/";
};

TEST_F(GnomeSettings, AFreeShortcutBecomesKestriosOwnCustomShortcut)
{
    // A build of its own runs by its path, which may need quoting for the shell.
    GnomeShortcut gnome("'/home/ann/o'\\''brien/kestrio' --toggle");
    EXPECT_EQ(bind(gnome, "CTRL+ALT+space"), (DesktopShortcutState{DesktopShortcutState::Kind::bound, "Ctrl+Alt+Space", {}}));
    EXPECT_EQ(own("name"), "'Kestrio'");
    EXPECT_EQ(texts(own("command")), QStringList{"'/home/ann/o'\\''brien/kestrio' --toggle"});
    EXPECT_EQ(own("binding"), "'<Control><Alt>space'");
    EXPECT_EQ(texts(list()), (QStringList{other, kOwnPath}));

    // Changed in Kestrio: the same entry takes the new keys.
    EXPECT_EQ(bind(gnome, "CTRL+SHIFT+k").keys, "Ctrl+Shift+K");
    EXPECT_EQ(own("binding"), "'<Control><Shift>k'");
    EXPECT_EQ(texts(list()), (QStringList{other, kOwnPath}));
}

// A shortcut GNOME already gives to something, or that one of the user's
// custom shortcuts holds, is refused with its holder named; nothing is written.
TEST_F(GnomeSettings, AShortcutTakenElsewhereIsRefusedAndNamed)
{
    GnomeShortcut gnome("kestrio --toggle");
    for (const auto& [trigger, holder] : {std::pair{"LOGO+space", "GNOME's shortcut for “Switch input source”"},
                                          std::pair{"ALT+F4", "GNOME's shortcut for “Close”"},
                                          std::pair{"CTRL+ALT+t", "your custom shortcut “Terminal”"}}) {
        SCOPED_TRACE(trigger);
        const DesktopShortcutState state = bind(gnome, trigger);
        EXPECT_EQ(state.kind, DesktopShortcutState::Kind::refused);
        EXPECT_TRUE(state.problem.contains(holder)) << state.problem.toStdString();
        EXPECT_EQ(texts(list()), QStringList{other});
        EXPECT_EQ(own("binding"), "''");
    }
}

// Keys the user gave Kestrio's entry in GNOME's settings stay at start-up;
// a shortcut recorded in Kestrio replaces them.
TEST_F(GnomeSettings, KeysChangedInGnomesSettingsStayUntilKestrioRecordsOthers)
{
    GnomeShortcut gnome("kestrio --toggle");
    bind(gnome, "CTRL+ALT+space");
    gsettings({"set", QString(kCustomSchema) + ":" + kOwnPath, "binding", "<Super>k"});
    EXPECT_EQ(bind(gnome, "CTRL+ALT+space", false).keys, "Super+K");
    EXPECT_EQ(own("binding"), "'<Super>k'");
    EXPECT_EQ(bind(gnome, "CTRL+ALT+space", true).keys, "Ctrl+Alt+Space");
    EXPECT_EQ(own("binding"), "'<Control><Alt>space'");
}

// Removing it in Kestrio removes Kestrio's entry alone.
TEST_F(GnomeSettings, ForgettingRemovesOnlyKestriosEntry)
{
    GnomeShortcut gnome("kestrio --toggle");
    bind(gnome, "CTRL+ALT+space");
    bool done = false;
    gnome.forget([&](const DesktopShortcutState&) { done = true; });
    ASSERT_TRUE(eventually([&] { return done; }));
    EXPECT_EQ(texts(list()), QStringList{other});
    EXPECT_EQ(own("binding"), "''");
    EXPECT_EQ(gsettings({"get", QString(kCustomSchema) + ":" + other, "binding"}), "'<Control><Alt>t'");
}

} // namespace
