#include "platform/linux/tarupdatepackaging.h"
#include "support/eventually.h"
#include "support/loopbackhttpserver.h"
#include "update/selfupdater.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <iostream>

namespace {

using State = SelfUpdater::State;

void write(const QString& path, const QByteArray& text, bool executable = false)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFile::ExeOwner);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A release archive: `top`/bin/kestrio, a program that leaves a marker when started.
QByteArray releaseArchive(const QString& top, const QString& marker)
{
    QTemporaryDir build;
    write(build.filePath(top + "/bin/kestrio"), ("#!/bin/sh\necho started > '" + marker + "'\n").toUtf8(), true);
    write(build.filePath(top + "/share/version"), "2.0.0\n");
    QProcess tar;
    tar.setWorkingDirectory(build.path());
    tar.start("tar", {"-czf", "release.tar.gz", top});
    tar.waitForFinished();
    return read(build.filePath("release.tar.gz"));
}

class Updater : public testing::Test {
protected:
    LoopbackHttpServer site;
    QTemporaryDir temporary; // T
    QTemporaryDir home;
    QString installed;       // A, an awkward name on purpose
    QString marker;
    QProcess running;        // plays the running program
    TarUpdatePackaging packaging;
    int terminations = 0;
    std::unique_ptr<SelfUpdater> updater;
    QList<State> states;

    Updater()
    {
        installed = home.filePath("Pro'gram $HOME `x` \\ Files\n/Kestrio.app");
        marker = home.filePath("relaunched");
        write(installed + "/bin/kestrio", "#!/bin/sh\necho old\n", true);
        running.start("sleep", {"3"});
        running.waitForStarted();
        updater = std::make_unique<SelfUpdater>(
            packaging, SelfUpdater::Environment{temporary.path(), installed, running.processId(), [this] { ++terminations; }});
        QObject::connect(updater.get(), &SelfUpdater::stateChanged, [this](const State& s) { states << s; });
    }
    ~Updater() override
    {
        running.kill();
        running.waitForFinished();
    }

    QString failure()
    {
        EXPECT_TRUE(eventually([&] { return updater->state().kind == State::Kind::failed; }));
        return updater->state().message;
    }
};

TEST_F(Updater, ReplacesTheInstallationOnlyAfterTheProgramEnds)
{
    site.body = releaseArchive("Kestrio.app", marker);
    updater->startUpdate(site.url("/kestrio-2.0.0.tar.gz"));
    ASSERT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
    EXPECT_EQ(states.first(), State::downloading(0.0));
    EXPECT_TRUE(states.contains(State::downloading(1.0)));
    EXPECT_EQ(states.last(), State::installing());

    const QString script = temporary.filePath("kestrio-updater.sh");
    std::cout << "updater script:\n" << read(script).toStdString() << "\n--- end of script" << std::endl;
    // 0755: owner rwx, group and others r-x (Qt adds "user" bits that mirror the owner's).
    EXPECT_EQ(QFile::permissions(script) & 0x7077, QFile::Permissions(0x7055));

    // The program still runs: nothing is replaced yet.
    QThread::msleep(600);
    EXPECT_EQ(read(installed + "/bin/kestrio"), "#!/bin/sh\necho old\n");
    running.waitForFinished(10000);

    EXPECT_TRUE(eventually([&] { return QFile::exists(marker); })); // the new program was started
    EXPECT_TRUE(read(installed + "/bin/kestrio").contains("started"));
    EXPECT_EQ(read(installed + "/share/version"), "2.0.0\n");
    EXPECT_TRUE(eventually([&] { return !QFile::exists(script); }));
    EXPECT_FALSE(QFile::exists(temporary.filePath("Kestrio-update.dmg")));
    EXPECT_TRUE(QDir(temporary.path()).entryList({"Kestrio-mount-*"}, QDir::Dirs).isEmpty());
}

TEST_F(Updater, TheScriptQuotesEveryPathForTheShell)
{
    const QString script = SelfUpdater::updaterScript(packaging, 4242, installed, "/tmp/m/Kestrio.app", "/tmp/m",
                                                      "/tmp/Kestrio-update.dmg", "/tmp/kestrio-updater.sh");
    EXPECT_TRUE(script.startsWith("#!/bin/bash\n# Wait for the current app to quit\nwhile kill -0 4242 2>/dev/null; do\n"
                                  "    sleep 0.2\ndone\n# Replace the app\nrm -rf "));
    EXPECT_FALSE(script.endsWith('\n'));
    // The shell reads each quoted path back exactly.
    QProcess shell;
    shell.start("/bin/bash", {"-c", "printf '%s' " + SelfUpdater::shellQuoted(installed)});
    shell.waitForFinished();
    EXPECT_EQ(QString::fromUtf8(shell.readAllStandardOutput()), installed);
}

TEST_F(Updater, AnErrorPageFailsToMount)
{
    site.status = 404;
    site.body = "<html><body>Not Found</body></html>";
    updater->startUpdate(site.url("/missing.tar.gz"));
    EXPECT_TRUE(failure().startsWith("Failed to mount DMG: ")) << updater->state().message.toStdString();
    EXPECT_TRUE(QFile::exists(temporary.filePath("Kestrio-update.dmg"))); // left for the next attempt
    EXPECT_EQ(terminations, 0);
}

TEST_F(Updater, AnArchiveWithoutKestrioAppIsRefusedAndLeavesNothingMounted)
{
    site.body = releaseArchive("Other.app", marker);
    updater->startUpdate(site.url("/other.tar.gz"));
    EXPECT_EQ(failure(), "Kestrio.app not found in DMG.");
    EXPECT_TRUE(QDir(temporary.path()).entryList({"Kestrio-mount-*"}, QDir::Dirs).isEmpty());
}

TEST_F(Updater, AnUnwritableScriptIsAFailure)
{
    QDir().mkpath(temporary.filePath("kestrio-updater.sh/in-the-way"));
    site.body = releaseArchive("Kestrio.app", marker);
    updater->startUpdate(site.url("/kestrio.tar.gz"));
    EXPECT_TRUE(failure().startsWith("Failed to create updater script: "));
    EXPECT_TRUE(QDir(temporary.path()).entryList({"Kestrio-mount-*"}, QDir::Dirs).isEmpty());
    EXPECT_EQ(read(installed + "/bin/kestrio"), "#!/bin/sh\necho old\n");
}

TEST_F(Updater, ADownloadErrorAndARetry)
{
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost, 0);
    const QUrl nowhere(QStringLiteral("http://127.0.0.1:%1/k.tar.gz").arg(closed.serverPort()));
    closed.close();
    updater->startUpdate(nowhere);
    EXPECT_FALSE(failure().isEmpty());
    site.body = releaseArchive("Kestrio.app", marker);
    updater->startUpdate(site.url("/kestrio.tar.gz")); // from failed: starts over
    EXPECT_TRUE(eventually([&] { return terminations == 1; }));
}

TEST_F(Updater, CancelAndStartsWhileBusy)
{
    site.answer = false; // the download never ends by itself
    updater->startUpdate(site.url("/slow.tar.gz"));
    ASSERT_TRUE(site.waitForRequests(1));
    updater->startUpdate(site.url("/other.tar.gz")); // ignored while downloading
    EXPECT_TRUE(site.staysQuiet());
    updater->cancelUpdate();
    EXPECT_EQ(updater->state(), State::idle());
    // The cancelled download then reports its cancellation like any error.
    EXPECT_FALSE(failure().isEmpty());
}

TEST_F(Updater, AProgramNotRunFromAnInstallationIsNotUpdated)
{
    SelfUpdater notInstalled(packaging, SelfUpdater::Environment{temporary.path(), std::nullopt, 1, [] {}});
    notInstalled.startUpdate(site.url("/k.tar.gz"));
    EXPECT_EQ(notInstalled.state().kind, State::Kind::failed);
    EXPECT_TRUE(site.staysQuiet());
}

TEST(RunTool, CollectsAllOutputAndTheStatus)
{
    const auto result = SelfUpdater::runTool("/bin/bash", {"-c", "head -c 300000 /dev/zero | tr '\\0' x; echo; echo err >&2; exit 3"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output.size(), 300000 + 1 + 4);
    const auto missing = SelfUpdater::runTool("/no/such/tool", {});
    EXPECT_EQ(missing.status, -1);
    EXPECT_FALSE(missing.output.isEmpty());
}

} // namespace
