#include "support/tempsettings.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

TEST(SettingsStore, EmptyStoreReadsTheDefaults)
{
    TempSettings settings;
    const SettingsStore& store = settings.store();
    EXPECT_FALSE(store.hasLaunchedBefore());
    EXPECT_FALSE(store.hideMenuBarIcon());
    EXPECT_FALSE(store.launchAtLogin());
    EXPECT_EQ(store.appearance(), "system");
    EXPECT_EQ(store.hotkeyModeText(), std::nullopt);
    EXPECT_FALSE(store.contains(SettingsKey::customHotkeyKeyCode));
    EXPECT_FALSE(store.analyticsEnabled());
    EXPECT_TRUE(store.autoUpdateCheck());
    EXPECT_EQ(store.lastUpdateCheckDate(), std::nullopt);
    EXPECT_EQ(store.dictionaryValue(SettingsKey::menuItemUsage), std::nullopt);
}

TEST(SettingsStore, ValuesSurviveTheNextLaunchWithTheirTypes)
{
    TempSettings settings;
    SettingsStore& store = settings.store();
    const QDateTime checked = QDateTime::fromString("2026-11-20T08:15:30.250Z", Qt::ISODateWithMs);
    store.setBool(SettingsKey::hideMenuBarIcon, true);
    store.setString(SettingsKey::appearance, "dark");
    store.setInteger(SettingsKey::customHotkeyModifiers, 0x140000);
    store.setDate(SettingsKey::lastUpdateCheckDate, checked);
    store.setObject(SettingsKey::menuItemUsage, QVariantMap{{"org.a", QVariantMap{{"File → Save", 3}}}});

    const auto next = settings.reopened();
    EXPECT_TRUE(next->hideMenuBarIcon());
    EXPECT_EQ(next->appearance(), "dark");
    EXPECT_EQ(next->integerValue(SettingsKey::customHotkeyModifiers), 0x140000);
    EXPECT_EQ(next->lastUpdateCheckDate(), checked);
    const auto usage = next->dictionaryValue(SettingsKey::menuItemUsage);
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->value("org.a").toMap().value("File → Save").toLongLong(), 3);
}

TEST(SettingsStore, AutoUpdateCheckIsOffOnlyForAStoredFalse)
{
    TempSettings settings;
    SettingsStore& store = settings.store();
    store.setBool(SettingsKey::autoUpdateCheck, false);
    EXPECT_FALSE(store.autoUpdateCheck());
    EXPECT_FALSE(settings.reopened()->autoUpdateCheck());
    store.remove(SettingsKey::autoUpdateCheck);
    EXPECT_TRUE(store.autoUpdateCheck());
    store.setString(SettingsKey::autoUpdateCheck, "false"); // not a Boolean
    EXPECT_TRUE(store.autoUpdateCheck());
}

TEST(SettingsStore, TypedReadsConvertLikeTheNativeStore)
{
    TempSettings settings;
    writeFile(settings.path(), R"({"b1": "YES", "b2": 1, "b3": "0", "b4": {}, "i1": "42", "i2": 7.9,
                                   "i3": true, "i4": "x", "i5": 1e300, "s1": 5, "d1": "yesterday"})");
    const auto store = settings.reopened();
    EXPECT_TRUE(store->boolValue("b1"));
    EXPECT_TRUE(store->boolValue("b2"));
    EXPECT_FALSE(store->boolValue("b3"));
    EXPECT_FALSE(store->boolValue("b4"));
    EXPECT_EQ(store->integerValue("i1"), 42);
    EXPECT_EQ(store->integerValue("i2"), 7);
    EXPECT_EQ(store->integerValue("i3"), 1);
    EXPECT_EQ(store->integerValue("i4"), 0);
    EXPECT_EQ(store->integerValue("i5"), 0);
    EXPECT_EQ(store->stringValue("s1"), "5");
    EXPECT_EQ(store->dateValue("d1"), std::nullopt);
}

TEST(SettingsStore, AnUnreadableFileIsSetAsideNotLost)
{
    TempSettings settings;
    writeFile(settings.path(), "{ this is not json");
    auto store = settings.reopened();
    EXPECT_FALSE(store->hideMenuBarIcon());
    store->setBool(SettingsKey::hasLaunchedBefore, true);

    QDir dir = QFileInfo(settings.path()).dir();
    const QStringList aside = dir.entryList({"settings.json.unreadable-*"});
    ASSERT_EQ(aside.size(), 1);
    QFile kept(dir.filePath(aside.first()));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), "{ this is not json");
    EXPECT_TRUE(settings.reopened()->hasLaunchedBefore());
}

// The file holds the usage history, with the menu commands the user runs:
// only the user may read it, new or written by an earlier version.
TEST(SettingsStore, TheFileIsTheUsersAlone)
{
    const QFileDevice::Permissions mine = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    TempSettings settings;
    settings.store().setObject(SettingsKey::menuItemUsage, QVariantMap{{"org.editor", QVariantMap{{"File → Save", 3}}}});
    EXPECT_EQ(QFile::permissions(settings.path()), mine);

    // As an earlier version left it: readable by everyone.
    QFile::setPermissions(settings.path(), QFile::permissions(settings.path()) | QFile::ReadOther | QFile::ReadGroup);
    const auto next = settings.reopened();
    EXPECT_EQ(QFile::permissions(settings.path()), mine);
    next->setBool(SettingsKey::analyticsEnabled, true);
    EXPECT_EQ(QFile::permissions(settings.path()), mine);
    EXPECT_TRUE(next->object(SettingsKey::menuItemUsage).isValid());
}

TEST(SettingsStore, FileIsPlainJson)
{
    TempSettings settings;
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    settings.store().setInteger(SettingsKey::customHotkeyKeyCode, 40);
    QFile file(settings.path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_EQ(object.value("analyticsEnabled"), QJsonValue(true));
    EXPECT_EQ(object.value("customHotkeyKeyCode"), QJsonValue(40));
}

} // namespace
