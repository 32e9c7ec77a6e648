#include "support/testrelease.h"
#include "update/installmarker.h"
#include "update/updateleftovers.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Every entry under `folder`, sorted, with each file's content.
QStringList contents(const QString& folder)
{
    QStringList entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        entries << QDir(folder).relativeFilePath(info.filePath()) + (info.isFile() ? " " + readTestFile(info.filePath()) : "");
    }
    entries.sort();
    return entries;
}

class Leftovers : public testing::Test {
protected:
    QTemporaryDir home;
    QString cache = home.filePath("cache/kestrio");
    QString programs = home.filePath("programs");
    QString installed = programs + "/Kestrio.app";

    // A Kestrio installation with its marker at `folder`.
    static void install(const QString& folder, const QString& version)
    {
        writeTestFile(folder + "/bin/kestrio", "#!/bin/sh\necho " + version.toUtf8() + "\n", true);
        std::get<InstallMarker>(InstallMarker::describe(folder, version)).write(folder);
    }
};

// The swap was cut off after the old installation was moved aside: it comes
// back to its place, and the folder it waited in goes.
TEST_F(Leftovers, AnInstallationLeftAsideByAnInterruptedSwapComesBack)
{
    install(programs + "/.kestrio-update-Ab12Cd/previous", "1.0.0");
    install(programs + "/.kestrio-update-Ab12Cd/Kestrio.app", "2.0.0");
    const QStringList old = contents(programs + "/.kestrio-update-Ab12Cd/previous");
    const auto report = UpdateLeftovers::tidy(cache, installed);
    EXPECT_TRUE(report.recovered);
    EXPECT_EQ(contents(installed), old);
    EXPECT_EQ(QDir(programs).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{"Kestrio.app"});
}

// What the updater's folders may hold and what they may not: only its own
// are taken away, and nothing else is touched.
TEST_F(Leftovers, OnlyFoldersHoldingNothingButKestrioGo)
{
    install(installed, "2.0.0");
    install(programs + "/.kestrio-update-done00/previous", "1.0.0");          // a swap that finished
    install(programs + "/.kestrio-update-fail00/failed", "2.0.0");            // a release that did not start
    QDir().mkpath(programs + "/.kestrio-update-empty0");                       // cut off before unpacking
    install(programs + "/.kestrio-update-mine00/previous", "1.0.0");
    writeTestFile(programs + "/.kestrio-update-mine00/previous/notes.txt", "the user's\n"); // not the release's
    writeTestFile(programs + "/.kestrio-update-file00/todo.txt", "the user's\n");
    install(programs + "/.kestrio-update-else00/other", "1.0.0");              // a name the updater never uses
    install(home.filePath("elsewhere/previous"), "1.0.0");
    ASSERT_TRUE(QFile::link(home.filePath("elsewhere"), programs + "/.kestrio-update-link00"));
    install(programs + "/Other.app", "1.0.0");
    writeTestFile(cache + "/update-x1y2z3/Kestrio-update.tar.gz", "half a download");
    writeTestFile(cache + "/update-a1b2c3/kestrio-updater.sh", "#!/bin/bash\n");
    writeTestFile(cache + "/settings-backup/kept.json", "{}");

    const QStringList keptBefore = contents(programs + "/.kestrio-update-mine00") + contents(home.filePath("elsewhere"));
    const QStringList installedBefore = contents(installed);
    const auto report = UpdateLeftovers::tidy(cache, installed);
    EXPECT_FALSE(report.recovered);
    EXPECT_EQ(contents(installed), installedBefore);
    QStringList removed = report.removed;
    removed.sort();
    EXPECT_EQ(removed, (QStringList{cache + "/update-a1b2c3", cache + "/update-x1y2z3",
                                    programs + "/.kestrio-update-done00", programs + "/.kestrio-update-empty0",
                                    programs + "/.kestrio-update-fail00"}));
    QStringList left = QDir(programs).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    left.sort();
    EXPECT_EQ(left, (QStringList{".kestrio-update-else00", ".kestrio-update-file00", ".kestrio-update-link00",
                                 ".kestrio-update-mine00", "Kestrio.app", "Other.app"}));
    EXPECT_EQ(contents(programs + "/.kestrio-update-mine00") + contents(home.filePath("elsewhere")), keptBefore);
    EXPECT_EQ(QDir(cache).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"settings-backup"});
}

// An installation that is there is never replaced by what lies aside.
TEST_F(Leftovers, AnInstallationInPlaceIsNeverReplacedFromAside)
{
    install(installed, "2.0.0");
    install(programs + "/.kestrio-update-Ab12Cd/previous", "1.0.0");
    const QStringList before = contents(installed);
    EXPECT_FALSE(UpdateLeftovers::tidy(cache, installed).recovered);
    EXPECT_EQ(contents(installed), before);
}

} // namespace
