#include "platform/linux/xdg/xdgautostartloginitem.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString execLine(const QString& entry)
{
    for (const QString& line : entry.split(u'\n')) {
        if (line.startsWith("Exec="))
            return line.mid(5);
    }
    return {};
}

TEST(XdgAutostartLoginItem, RegisterWritesTheEntryAndUnregisterRemovesIt)
{
    QTemporaryDir config;
    XdgAutostartLoginItem item(config.filePath("autostart"), "/opt/kestrio/bin/kestrio");
    EXPECT_EQ(item.unregisterItem(), std::nullopt); // nothing there is no failure
    EXPECT_EQ(item.registerItem(), std::nullopt);
    EXPECT_EQ(item.entryPath(), config.filePath("autostart/kestrio.desktop"));
    const QString entry = read(item.entryPath());
    EXPECT_TRUE(entry.startsWith("[Desktop Entry]\nType=Application\nName=Kestrio\n"));
    EXPECT_EQ(execLine(entry), "/opt/kestrio/bin/kestrio");
    EXPECT_EQ(item.registerItem(), std::nullopt); // again: replaced, not doubled
    EXPECT_EQ(read(item.entryPath()), entry);
    EXPECT_EQ(item.unregisterItem(), std::nullopt);
    EXPECT_FALSE(QFile::exists(item.entryPath()));
}

TEST(XdgAutostartLoginItem, ProgramPathsAreQuotedByTheDesktopEntryRules)
{
    struct Case {
        const char* program;
        const char* exec;
    };
    const Case cases[] = {
        {"/home/a b/kestrio", R"("/home/a b/kestrio")"},
        {"/x/100%/kestrio", R"("/x/100%%/kestrio")"},
        {"/x/$HOME/`k`/\"q\"", R"("/x/\\$HOME/\\`k\\`/\\"q\\"")"},
        {"/x/back\\slash", R"("/x/back\\\\slash")"},
    };
    QTemporaryDir config;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.program);
        EXPECT_EQ(execLine(XdgAutostartLoginItem(config.path(), QString::fromUtf8(c.program)).entry()),
                  QString::fromUtf8(c.exec));
    }
}

TEST(XdgAutostartLoginItem, AFolderThatCannotBeMadeIsAFailure)
{
    QTemporaryDir config;
    QFile blocker(config.filePath("autostart"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly)); // a file where the folder should be
    blocker.close();
    XdgAutostartLoginItem item(config.filePath("autostart"), "/usr/bin/kestrio");
    const std::optional<QString> error = item.registerItem();
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->isEmpty());
}

} // namespace
