#include "desktop.h"
#include "support/loopbackhttpserver.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace e2e;

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Process ids of the programs running from `executable`.
QStringList runningFrom(const QString& executable)
{
    QStringList pids;
    for (const QString& pid : QDir("/proc").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).symLinkTarget() == executable)
            pids << pid;
    }
    return pids;
}

// The maker's side: a key pair, releases made with scripts/release from this
// build, and the site that serves them over https.
class UpdateSite {
public:
    LoopbackHttpServer site{LoopbackHttpServer::Scheme::https};
    QTemporaryDir folder;
    QString publicKey;

    UpdateSite()
    {
        run("minisign", {"-G", "-W", "-p", folder.filePath("key.pub"), "-s", folder.filePath("key.sec")});
        publicKey = QString::fromUtf8(readAll(folder.filePath("key.pub")).trimmed().split('\n').last());
    }

    // Makes the release `version` of this build; the folder that holds it.
    QString release(const QString& version)
    {
        const QString out = folder.filePath(version);
        const ProcessResult made = run(QStringLiteral(SOURCE_DIR "/scripts/release"),
                                       {"--build-dir", BUILD_DIR, "--version", version, "--key",
                                        folder.filePath("key.sec"), "--url", site.url("/downloads").toString(),
                                        "--out", out},
                                       120000);
        EXPECT_EQ(made.exitCode, 0) << made.out.toStdString() << made.err.toStdString();
        std::cout << made.out.toStdString();
        return out;
    }

    // Serves the release in `out` as the latest one; the manifest's address.
    QUrl publish(const QString& out)
    {
        site.paths.clear();
        for (const QString& name : QDir(out).entryList(QDir::Files)) {
            const QByteArray path = name == "latest.json" ? "/apps/kestrio/latest.json" : "/downloads/" + name.toUtf8();
            site.paths[path] = {200, readAll(QDir(out).filePath(name))};
        }
        return site.url("/apps/kestrio/latest.json");
    }

    static QString archiveIn(const QString& out)
    {
        return QDir(out).filePath(QDir(out).entryList({"*.tar.gz"}).value(0));
    }
};

class SelfUpdate : public testing::Test {
protected:
    UpdateSite maker;
    QTemporaryDir apps; // the user's own folder of programs
    QString installed;
    QByteArray settings = R"({"hasLaunchedBefore": true, "hotkeyMode": "doubleTapOption",
        "menuItemUsage": {"org.xfce.mousepad": {"File → Save": 7}}})";

    SelfUpdate()
    {
        installed = apps.filePath("Kestrio.app");
        writeSettings(settings);
    }
    ~SelfUpdate() override
    {
        for (const QString& pid : runningFrom(installed + "/bin/kestrio"))
            run("kill", {pid});
    }

    // Installs `archive` the way a user does: unpacked into their folder.
    void install(const QString& archive)
    {
        ASSERT_EQ(run("tar", {"-xzf", archive, "-C", apps.path()}).exitCode, 0);
    }

    // Runs the update harness to its end while the site keeps serving.
    int update(const QUrl& manifest, QString* output)
    {
        QProcess harness;
        harness.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        harness.start(QStringLiteral(UPDATE_HARNESS_PATH), {manifest.toString(), installed, maker.publicKey});
        QDeadlineTimer deadline(120000);
        while (harness.state() != QProcess::NotRunning && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        *output = QString::fromUtf8(harness.readAllStandardOutput());
        std::cout << output->toStdString();
        return harness.exitStatus() == QProcess::NormalExit ? harness.exitCode() : -1;
    }

    QString installedVersion()
    {
        return QJsonDocument::fromJson(readAll(installed + "/kestrio-install.json")).object().value("version").toString();
    }
};

TEST_F(SelfUpdate, ASignedReleaseReplacesTheInstallationAndStarts)
{
    install(UpdateSite::archiveIn(maker.release("0.1.0")));
    ASSERT_EQ(installedVersion(), "0.1.0");
    const QUrl manifest = maker.publish(maker.release("9.9.9"));

    QString output;
    ASSERT_EQ(update(manifest, &output), 0);
    EXPECT_TRUE(output.contains(R"({"check":"newer","version":"9.9.9"})"));
    EXPECT_TRUE(output.contains(R"({"message":"","state":"installing"})"));

    // The script swaps the folders once the harness has ended, then starts B.
    ASSERT_TRUE(eventually([&] { return !runningFrom(installed + "/bin/kestrio").isEmpty(); }, 60000));
    EXPECT_EQ(installedVersion(), "9.9.9");
    // The old installation goes once the new one runs; nothing else is left.
    EXPECT_TRUE(eventually([&] { return QDir(apps.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                                        == QStringList{"Kestrio.app"}; }));
    EXPECT_TRUE(eventually([&] {
        return QDir(qEnvironmentVariable("HOME") + "/.cache/kestrio").isEmpty();
    }));
    const QJsonObject kept = QJsonDocument::fromJson(readAll(settingsFile())).object();
    const QJsonObject before = QJsonDocument::fromJson(settings).object();
    for (const QString& key : before.keys())
        EXPECT_EQ(kept.value(key), before.value(key)) << key.toStdString();
    std::cout << "running from " << installed.toStdString() << "/bin/kestrio: pid "
              << runningFrom(installed + "/bin/kestrio").join(' ').toStdString() << ", version " << installedVersion().toStdString()
              << std::endl;
}

TEST_F(SelfUpdate, AReleaseThatDoesNotStartLeavesTheOldOneRunning)
{
    const QString a = maker.release("0.1.0");
    install(UpdateSite::archiveIn(a));
    // A signed release whose program fails at once.
    QTemporaryDir broken;
    ASSERT_EQ(run("tar", {"-xzf", UpdateSite::archiveIn(a), "-C", broken.path()}).exitCode, 0);
    QFile program(broken.filePath("Kestrio.app/bin/kestrio"));
    program.remove();
    program.open(QIODevice::WriteOnly);
    program.write("#!/bin/sh\nexit 1\n");
    program.close();
    program.setPermissions(program.permissions() | QFile::ExeOwner);
    ASSERT_EQ(run(QStringLiteral(KESTRIOCTL_PATH), {"mark-install", broken.filePath("Kestrio.app"), "9.9.9"}).exitCode, 0);
    const QString out = maker.folder.filePath("broken");
    QDir().mkpath(out);
    const QString archive = out + "/Kestrio-9.9.9-linux-broken.tar.gz";
    ASSERT_EQ(run("tar", {"-czf", archive, "-C", broken.path(), "Kestrio.app"}).exitCode, 0);
    ASSERT_EQ(run("minisign", {"-S", "-s", maker.folder.filePath("key.sec"), "-m", archive}).exitCode, 0);
    QFile manifest(out + "/latest.json");
    manifest.open(QIODevice::WriteOnly);
    manifest.write(R"({"version": "9.9.9", "downloadUrl": ")" + maker.site.url("/downloads/Kestrio-9.9.9-linux-broken.tar.gz").toEncoded() + "\"}");
    manifest.close();

    QString output;
    ASSERT_EQ(update(maker.publish(out), &output), 0);
    // The new program fails; the old one is put back and started again.
    ASSERT_TRUE(eventually([&] { return !runningFrom(installed + "/bin/kestrio").isEmpty(); }, 60000));
    EXPECT_EQ(installedVersion(), "0.1.0");
    EXPECT_TRUE(eventually([&] { return QDir(apps.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                                        == QStringList{"Kestrio.app"}; }));
    std::cout << "after the failed update, running from " << installed.toStdString() << "/bin/kestrio: version "
              << installedVersion().toStdString() << std::endl;
}

} // namespace
