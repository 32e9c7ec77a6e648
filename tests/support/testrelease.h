#pragma once

// Release archives and signatures made the way the maker's tooling makes them
// (tar, minisign), for the self-updater's tests.

#include "update/installmarker.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

inline void writeTestFile(const QString& path, const QByteArray& text, bool executable = false)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(text);
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFile::ExeOwner);
}

inline QByteArray readTestFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Runs a tool to its end in the test's own thread; its standard output.
inline QByteArray runTestTool(const QString& program, const QStringList& arguments, const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(30000)) << program.toStdString();
    EXPECT_EQ(process.exitCode(), 0) << program.toStdString() << ": " << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

// A minisign key pair without a password.
class SigningKey {
public:
    SigningKey()
    {
        runTestTool("minisign", {"-G", "-W", "-p", folder_.filePath("key.pub"), "-s", folder_.filePath("key.sec")});
        publicKey = QString::fromUtf8(readTestFile(folder_.filePath("key.pub")).trimmed().split('\n').last());
    }

    // The .minisig file for `data`.
    QByteArray sign(const QByteArray& data) const
    {
        QTemporaryDir work;
        writeTestFile(work.filePath("release"), data);
        runTestTool("minisign", {"-S", "-H", "-s", folder_.filePath("key.sec"), "-m", work.filePath("release"), "-t",
                                 "kestrio release"});
        return readTestFile(work.filePath("release.minisig"));
    }

    QString publicKey; // the "RW…" line

private:
    QTemporaryDir folder_;
};

// A Kestrio.app tree to pack into a release archive.
class ReleaseTree {
public:
    QString bundle() const { return build_.filePath("Kestrio.app"); }
    QString path(const QString& relative) const { return build_.filePath(relative); }

    void add(const QString& relative, const QByteArray& text, bool executable = false)
    {
        writeTestFile(QDir(bundle()).filePath(relative), text, executable);
    }
    void link(const QString& relative, const QString& target)
    {
        const QString at = QDir(bundle()).filePath(relative);
        QDir().mkpath(QFileInfo(at).absolutePath());
        ASSERT_TRUE(QFile::link(target, at));
    }
    // The install marker for what the tree holds now.
    void mark(const QString& version)
    {
        const auto marker = InstallMarker::describe(bundle(), version);
        ASSERT_TRUE(std::holds_alternative<InstallMarker>(marker));
        ASSERT_FALSE(std::get<InstallMarker>(marker).write(bundle()));
    }
    // The gzip-compressed tar archive of `members` (paths below the build folder).
    QByteArray archive(const QStringList& members = {"Kestrio.app"}, const QStringList& options = {}) const
    {
        runTestTool("tar", QStringList{"-czf", build_.filePath("release.tar.gz")} + options + members, build_.path());
        return readTestFile(build_.filePath("release.tar.gz"));
    }

private:
    QTemporaryDir build_;
};
