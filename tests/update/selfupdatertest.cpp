#include "base/platformwords.h"
#include "platform/linux/tarupdatepackaging.h"
#include "support/eventually.h"
#include "support/loopbackhttpserver.h"
#include "support/testrelease.h"
#include "update/selfupdater.h"
#include "update/updatearchive.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QRandomGenerator>
#include <QThread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

namespace {

using State = SelfUpdater::State;
using Ending = LoopbackAnswer::Ending;

const QString kOffered = "2.0.0";

// Everything under `folder`: each entry with its content's hash or its link's target.
QStringList snapshot(const QString& folder)
{
    QStringList entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        QString entry = QDir(folder).relativeFilePath(info.filePath());
        if (info.isSymLink())
            entry += " -> " + info.symLinkTarget();
        else if (info.isFile())
            entry += " " + QCryptographicHash::hash(readTestFile(info.filePath()), QCryptographicHash::Sha256).toHex();
        entries << entry;
    }
    entries.sort();
    return entries;
}

QStringList besideEntries(const QString& path)
{
    return QDir(QFileInfo(path).absolutePath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

const SigningKey& makerKey()
{
    static const SigningKey key;
    return key;
}

// A release whose program, once started, says so in `startedFile`.
void addProgram(ReleaseTree& tree, const QString& startedFile)
{
    tree.add("bin/kestrio", "#!/bin/sh\necho new > '" + startedFile.toUtf8() + "'\n", true);
    tree.add("share/kestrio/notes.txt", "release notes\n");
}

class Updater : public testing::Test {
protected:
    LoopbackHttpServer site{LoopbackHttpServer::Scheme::https};
    QTemporaryDir home;
    QString cache;     // where the updater makes its private workspaces
    QString installed; // A, an awkward name on purpose
    QString started;   // written by whichever program the script starts
    QProcess running;  // plays the running program
    TarUpdatePackaging packaging;
    int terminations = 0;
    int releasePagesOpened = 0;
    SelfUpdater::Environment environment;
    std::unique_ptr<SelfUpdater> updater;
    QList<State> states;

    Updater()
    {
        cache = home.filePath("cache/kestrio");
        QDir().mkpath(cache);
        installed = home.filePath("Pro'gram $HOME `x` \\ Files\n/Kestrio.app");
        started = home.filePath("started");
        writeTestFile(installed + "/bin/kestrio", "#!/bin/sh\necho old > '" + started.toUtf8() + "'\n", true);
        std::get<InstallMarker>(InstallMarker::describe(installed, "1.0.0")).write(installed);
        running.start("sleep", {"3"});
        running.waitForStarted();
        environment = SelfUpdater::Environment{cache,
                                               installed,
                                               running.processId(),
                                               [this] { ++terminations; },
                                               makerKey().publicKey,
                                               1 << 20,
                                               [this] { ++releasePagesOpened; }};
    }
    ~Updater() override
    {
        running.kill();
        running.waitForFinished();
    }

    void start(const QUrl& url, const QString& version = kOffered)
    {
        updater = std::make_unique<SelfUpdater>(packaging, PlatformWords::linuxDesktop(), environment);
        QObject::connect(updater.get(), &SelfUpdater::stateChanged, [this](const State& s) { states << s; });
        updater->startUpdate(url, version);
    }

    // Serves `archive` at /kestrio.tar.gz and `signature` beside it.
    QUrl publish(const QByteArray& archive, const QByteArray& signature)
    {
        site.paths["/kestrio.tar.gz"] = {200, archive};
        site.paths["/kestrio.tar.gz.minisig"] = {200, signature};
        return site.url("/kestrio.tar.gz");
    }
    QUrl publish(const QByteArray& archive) { return publish(archive, makerKey().sign(archive)); }

    QByteArray goodRelease(const QString& version = kOffered)
    {
        ReleaseTree tree;
        addProgram(tree, started);
        tree.mark(version);
        return tree.archive();
    }

    QString failure()
    {
        EXPECT_TRUE(eventually([&] { return updater->state().kind == State::Kind::failed; }));
        return updater->state().message;
    }
};

TEST_F(Updater, ReplacesTheInstallationOnlyAfterTheProgramEnds)
{
    const QStringList beside = besideEntries(installed);
    start(publish(goodRelease()));
    ASSERT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
    EXPECT_EQ(states.first(), State::downloading(0.0));
    EXPECT_TRUE(states.contains(State::downloading(1.0)));
    EXPECT_EQ(states.last(), State::installing());

    const QStringList workspaces = QDir(cache).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(workspaces.size(), 1);
    const QString workspace = QDir(cache).filePath(workspaces.first());
    EXPECT_EQ(QFile::permissions(workspace) & 0x0077, QFile::Permissions()); // nobody else may enter
    const QString script = QDir(workspace).filePath("kestrio-updater.sh");
    std::cout << "updater script:\n" << readTestFile(script).toStdString() << "\n--- end of script" << std::endl;

    // The program still runs: nothing is replaced yet.
    QThread::msleep(600);
    EXPECT_TRUE(readTestFile(installed + "/bin/kestrio").contains("old"));
    running.waitForFinished(10000);

    EXPECT_TRUE(eventually([&] { return readTestFile(started) == "new\n"; }));
    EXPECT_TRUE(eventually([&] { return !QFile::exists(workspace); })); // download, script and all
    EXPECT_EQ(std::get<InstallMarker>(InstallMarker::read(installed)).version, kOffered);
    EXPECT_EQ(readTestFile(installed + "/share/kestrio/notes.txt"), "release notes\n");
    // The old installation is gone once the new one runs; nothing else is left beside it.
    EXPECT_EQ(besideEntries(installed), beside);
    EXPECT_EQ(releasePagesOpened, 0);
}

// The user puts a file of their own into the installation while the update
// waits for the program to quit: replacing it would delete the file, so the
// old installation stays and starts again, and the update's folders go.
TEST_F(Updater, AFileAddedWhileTheUpdateWaitsKeepsTheOldInstallation)
{
    const QStringList beside = besideEntries(installed);
    start(publish(goodRelease()));
    ASSERT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
    writeTestFile(installed + "/share/notes/mine.txt", "the user's\n");
    const QStringList before = snapshot(installed);
    running.kill();
    EXPECT_TRUE(eventually([&] { return readTestFile(started) == "old\n"; }));
    EXPECT_TRUE(eventually([&] { return QDir(cache).isEmpty() && besideEntries(installed) == beside; }));
    EXPECT_EQ(snapshot(installed), before);
}

TEST_F(Updater, ANewProgramThatDoesNotStartGivesWayToTheOldOne)
{
    ReleaseTree tree;
    tree.add("bin/kestrio", "#!/bin/sh\nexit 1\n", true);
    tree.mark(kOffered);
    const QStringList before = snapshot(installed);
    start(publish(tree.archive()));
    ASSERT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
    running.kill();
    EXPECT_TRUE(eventually([&] { return readTestFile(started) == "old\n"; }));
    EXPECT_TRUE(eventually([&] { return QDir(cache).isEmpty(); }));
    EXPECT_EQ(snapshot(installed), before);
    EXPECT_EQ(besideEntries(installed), QStringList{"Kestrio.app"});
}

// Each hostile input fails, the installation stays as it was, and nothing is
// left outside the private workspace, which goes too.
TEST_F(Updater, HostileInputsAreRefused)
{
    struct Case {
        const char* name;
        std::function<QUrl()> setUp;
        QString expected;            // the start of the failure message
        bool transferBroken = false; // never gets as far as installing
    };
    const QString verify = "Failed to verify the update: ";
    const QString unpack = "Failed to unpack the update archive: ";
    const std::vector<Case> table{
        {"signed with another key",
         [this] {
             const QByteArray archive = goodRelease();
             return publish(archive, SigningKey().sign(archive));
         },
         verify + "it was signed with another key than the maker's."},
        {"one flipped byte",
         [this] {
             QByteArray archive = goodRelease();
             const QByteArray signature = makerKey().sign(archive);
             archive[archive.size() / 2] = char(archive[archive.size() / 2] ^ 0x01);
             return publish(archive, signature);
         },
         verify + "the signature does not match the archive."},
        {"altered trusted comment",
         [this] {
             const QByteArray archive = goodRelease();
             QByteArray signature = makerKey().sign(archive);
             signature.replace("trusted comment: kestrio release", "trusted comment: kestrio release 9");
             return publish(archive, signature);
         },
         verify + "the signature's trusted comment was altered."},
        {"missing signature",
         [this] {
             const QUrl url = publish(goodRelease());
             site.paths["/kestrio.tar.gz.minisig"] = {404, "Not Found"};
             return url;
         },
         verify + "no signature was found at https://127.0.0.1"},
        {"garbled signature",
         [this] { return publish(goodRelease(), "untrusted comment: x\nnot base64\n"); },
         verify + "the signature is not in minisign's format."},
        {"http address",
         [this] {
             auto* plain = new LoopbackHttpServer;
             plain->setParent(&site);
             plain->body = goodRelease();
             return plain->url("/kestrio.tar.gz");
         },
         "Failed to download the update: its address does not use https (http://127.0.0.1"},
        {"file address",
         [this] {
             writeTestFile(home.filePath("release.tar.gz"), goodRelease());
             return QUrl::fromLocalFile(home.filePath("release.tar.gz"));
         },
         "Failed to download the update: its address does not use https (file://"},
        {"archive over the size cap",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             QByteArray noise(2 << 20, Qt::Uninitialized); // does not compress
             QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
             tree.add("share/kestrio/large.bin", noise);
             tree.mark(kOffered);
             return publish(tree.archive());
         },
         "Failed to download the update: it is larger than the 1048576 bytes allowed.", true},
        {"member with ..",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.mark(kOffered);
             writeTestFile(tree.path("escaped"), "outside\n");
             return publish(tree.archive({"Kestrio.app", "Kestrio.app/../escaped"}, {"--absolute-names"}));
         },
         unpack + "it holds Kestrio.app/../escaped, outside Kestrio.app."},
        {"absolute member",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.mark(kOffered);
             writeTestFile(home.filePath("planted"), "outside\n");
             return publish(tree.archive({"Kestrio.app", home.filePath("planted")}, {"--absolute-names"}));
         },
         unpack + "it holds /"},
        {"link pointing outside",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.link("lib/libc.so", "../../../../etc/passwd");
             tree.mark(kOffered);
             return publish(tree.archive());
         },
         unpack + "the link Kestrio.app/lib/libc.so points outside its own folder."},
        {"chain of links that climbs out",
         [this] {
             // Each link alone names a place inside; followed in turn they reach /etc/passwd.
             ReleaseTree tree;
             addProgram(tree, started);
             tree.link("d/up", "..");
             tree.link("t", "d/up/d/up/../../etc/passwd");
             tree.mark(kOffered);
             return publish(tree.archive());
         },
         unpack + "the link Kestrio.app/"},
        {"hard link",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             EXPECT_EQ(::link(QFile::encodeName(tree.bundle() + "/bin/kestrio").constData(),
                              QFile::encodeName(tree.bundle() + "/bin/again").constData()), 0);
             tree.mark(kOffered);
             return publish(tree.archive());
         },
         unpack + "Kestrio.app/bin/"},
        {"named pipe",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             EXPECT_EQ(::mkfifo(QFile::encodeName(tree.bundle() + "/pipe").constData(), 0600), 0);
             return publish(tree.archive());
         },
         unpack + "Kestrio.app/pipe is not a plain file, folder or link."},
        {"member name that is not UTF-8",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.mark(kOffered);
             const QByteArray name = QFile::encodeName(tree.bundle()) + "/bad\xff";
             const int file = ::creat(name.constData(), 0600);
             EXPECT_GE(file, 0);
             ::close(file);
             return publish(tree.archive());
         },
         unpack + "its list of files cannot be read."},
        {"marker of another version",
         [this] { return publish(goodRelease("3.0.0")); },
         verify + "the archive holds version 3.0.0, not the offered 2.0.0."},
        {"no marker",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             return publish(tree.archive());
         },
         verify + "the archive carries no install marker (no kestrio-install.json)."},
        {"files the marker does not list",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.mark(kOffered);
             tree.add("bin/extra", "#!/bin/sh\n", true);
             return publish(tree.archive());
         },
         verify + "the archive does not match its own list of files (bin/extra)."},
        {"no Kestrio.app",
         [this] {
             ReleaseTree tree;
             addProgram(tree, started);
             tree.mark(kOffered);
             QDir().rename(tree.bundle(), tree.path("Other.app"));
             return publish(tree.archive({"Other.app"}));
         },
         unpack + "it holds Other.app/, outside Kestrio.app."},
        {"not an archive", [this] { return publish("<html><body>Not Found</body></html>"); }, unpack},
        {"empty download", [this] { return publish({}); }, "Download completed but no file received.", true},
        {"connection reset mid-body",
         [this] {
             const QUrl url = publish(goodRelease());
             site.paths["/kestrio.tar.gz"].ending = Ending::resetMidBody;
             return url;
         },
         "", true},
    };
    const QString parent = QFileInfo(installed).absolutePath();
    for (const Case& c : table) {
        SCOPED_TRACE(c.name);
        const QStringList installation = snapshot(parent);
        site.paths.clear();
        states.clear();
        start(c.setUp());
        const QString message = failure();
        EXPECT_TRUE(message.startsWith(c.expected)) << message.toStdString();
        EXPECT_FALSE(message.isEmpty());
        if (c.transferBroken) {
            EXPECT_FALSE(states.contains(State::installing()));
        }
        std::cout << "| " << c.name << " | failed: " << message.toStdString() << " |" << std::endl;
        EXPECT_TRUE(eventually([&] { return QDir(cache).isEmpty(); }))
            << "left in the cache: " << QDir(cache).entryList().join(' ').toStdString();
        EXPECT_EQ(snapshot(parent), installation);
        EXPECT_EQ(terminations, 0);
        EXPECT_EQ(releasePagesOpened, 0);
    }
}

TEST_F(Updater, CancelAfterTheHeadersKeepsNothing)
{
    const QUrl url = publish(goodRelease());
    site.paths["/kestrio.tar.gz"].ending = Ending::stalled;
    start(url);
    ASSERT_TRUE(site.waitForRequests(2));
    // Half the body came.
    ASSERT_TRUE(eventually([&] { return updater->state().progress > 0.45; })) << updater->state().progress;
    EXPECT_LT(updater->state().progress, 0.55);
    updater->startUpdate(url, kOffered); // ignored while downloading
    EXPECT_TRUE(site.staysQuiet());
    updater->cancelUpdate();
    EXPECT_EQ(updater->state(), State::idle());
    // The cancelled transfer then reports its cancellation like any download error.
    EXPECT_EQ(failure(), "Operation canceled");
    EXPECT_FALSE(states.contains(State::installing()));
    EXPECT_TRUE(QDir(cache).isEmpty());
    EXPECT_EQ(terminations, 0);

    site.paths["/kestrio.tar.gz"].ending = Ending::whole;
    updater->startUpdate(url, kOffered); // from failed: starts over
    EXPECT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
}

// A link planted at any name the updater once used, or might use, is never
// written through.
TEST_F(Updater, PlantedLinksAreNeverFollowed)
{
    const QString victim = home.filePath("bashrc");
    writeTestFile(victim, "the user's own\n");
    const QStringList names{"Kestrio-update.dmg", "Kestrio-update.tar.gz", "kestrio-updater.sh"};
    QStringList planted;
    for (const QString& folder : {QDir::tempPath(), cache}) {
        for (const QString& name : names) {
            if (QFile::link(victim, QDir(folder).filePath(name)))
                planted << QDir(folder).filePath(name);
        }
    }
    const QStringList cacheBefore = snapshot(cache);
    start(publish(goodRelease()));
    ASSERT_TRUE(eventually([&] { return terminations == 1; })) << updater->state().message.toStdString();
    running.kill();
    EXPECT_TRUE(eventually([&] { return readTestFile(started) == "new\n"; }));
    EXPECT_EQ(readTestFile(victim), "the user's own\n");
    EXPECT_TRUE(eventually([&] { return snapshot(cache) == cacheBefore; }));
    for (const QString& link : planted)
        QFile::remove(link);
}

// Installations that are not Kestrio's own to replace: the update opens the
// release page instead, asks the server nothing and touches no file.
TEST_F(Updater, WhatIsNotAMarkedInstallationIsLeftToItsPackageManager)
{
    const QString local = home.filePath(".local");
    writeTestFile(local + "/bin/kestrio", "#!/bin/sh\n", true);
    writeTestFile(local + "/bin/other-tool", "#!/bin/sh\n", true);
    writeTestFile(local + "/share/other-program/data.db", "precious\n");
    writeTestFile(local + "/share/applications/other.desktop", "[Desktop Entry]\n");
    const QString marked = home.filePath("marked-but-shared");
    writeTestFile(marked + "/bin/kestrio", "#!/bin/sh\n", true);
    std::get<InstallMarker>(InstallMarker::describe(marked, "1.0.0")).write(marked);
    writeTestFile(marked + "/share/notes/mine.txt", "the user's\n"); // added after the release

    struct Case {
        const char* name;
        std::optional<QString> installation;
    };
    for (const Case& c : {Case{"a system package (no installation found)", std::nullopt},
                          Case{"a ~/.local-like prefix without the marker", local},
                          Case{"a marked prefix holding files the release did not put there", marked}}) {
        SCOPED_TRACE(c.name);
        const QStringList before = snapshot(home.path());
        environment.installedBundle = c.installation;
        releasePagesOpened = 0;
        start(publish(goodRelease()));
        EXPECT_EQ(updater->state(), State::failed("This copy of Kestrio is updated by its package manager, not by "
                                                  "Kestrio itself. The release page opens in your browser."));
        EXPECT_EQ(releasePagesOpened, 1);
        EXPECT_TRUE(site.staysQuiet(100));
        EXPECT_TRUE(site.requests.isEmpty());
        EXPECT_EQ(snapshot(home.path()), before);
    }
}

TEST_F(Updater, TheScriptQuotesEveryPathForTheShell)
{
    const QStringList ours{"bin/kestrio", "it's $odd\n`name` @STAGING@"};
    const QString script = SelfUpdater::updaterScript(packaging, {4242, installed, "/tmp/s't'", "/tmp/$w", ours});
    EXPECT_TRUE(script.startsWith("#!/bin/bash\n# Wait for the current app to quit\nwhile kill -0 4242 2>/dev/null; do\n"
                                  "    sleep 0.2\ndone\n"));
    EXPECT_TRUE(script.contains("\nstaging='/tmp/s'\\''t'\\'''\n"));
    // The entries come back exactly, one each, placeholders in them untouched.
    QProcess listing;
    const QString function = script.mid(script.indexOf("\nours() "));
    listing.start("/bin/bash", {"-c", function.left(function.indexOf("; }\n") + 4) + "ours"});
    listing.waitForFinished();
    EXPECT_EQ(listing.readAllStandardOutput(), QByteArray("bin/kestrio") + '\0' + "it's $odd\n`name` @STAGING@" + '\0');
    // The shell reads each quoted path back exactly.
    QProcess shell;
    shell.start("/bin/bash", {"-c", "printf '%s' " + SelfUpdater::shellQuoted(installed)});
    shell.waitForFinished();
    EXPECT_EQ(QString::fromUtf8(shell.readAllStandardOutput()), installed);
    // And the script as a whole is valid shell.
    QProcess check;
    check.start("/bin/bash", {"-n"});
    check.write(script.toUtf8());
    check.closeWriteChannel();
    check.waitForFinished();
    EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardError().toStdString();
}

// tar's verbose listing with C-quoted names: each member's kind, name and
// a link's target, whatever bytes the names hold; anything else is refused
// whole rather than read as fewer members.
TEST(TarListing, MembersWithTheirKindsAndTargets)
{
    using Kind = ArchiveMember::Kind;
    const TarUpdatePackaging tar;
    const QByteArray listing = "drwxr-xr-x 0/0               0 2026-11-25 06:01 \"Kestrio.app/\"\n"
                               "-rw-r--r-- 0/0               2 2026-11-25 06:01 \"Kestrio.app/h -> \\\"q\\\"\"\n"
                               "hrw-r--r-- 0/0               0 2026-11-25 06:01 \"Kestrio.app/f\" link to \"Kestrio.app/x\"\n"
                               "prw-r--r-- 0/0               0 2026-11-25 06:01 \"Kestrio.app/p\"\n"
                               "-rw-r--r-- 0/0               0 2026-11-25 06:01 \"Kestrio.app/caf\\303\\251\\n\\t\"\n"
                               "lrwxrwxrwx 0/0               0 2026-11-25 06:01 \"Kestrio.app/d/up\" -> \"..\"\n";
    EXPECT_EQ(tar.readListing(listing), (QList<ArchiveMember>{
        {"Kestrio.app/", Kind::folder, {}},
        {"Kestrio.app/h -> \"q\"", Kind::file, {}},
        {"Kestrio.app/f", Kind::hardLink, "Kestrio.app/x"},
        {"Kestrio.app/p", Kind::other, {}},
        {QString::fromUtf8("Kestrio.app/caf\xc3\xa9\n\t"), Kind::file, {}},
        {"Kestrio.app/d/up", Kind::link, ".."},
    }));
    EXPECT_EQ(tar.readListing(""), QList<ArchiveMember>{});
    for (const QByteArray& bad : {QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 \"Kestrio.app/bad\\377\"\n"),   // not UTF-8
                                 QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 \"Kestrio.app/open\n"),          // no closing quote
                                 QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 Kestrio.app/bare\n"),             // not quoted
                                 QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 \"a\" trailing\n"),                // more after the name
                                 QByteArray("lrwxrwxrwx 0/0 0 2026-11-25 06:01 \"Kestrio.app/l\"\n"),           // a link without a target
                                 QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 \"Kestrio.app/nul\\000\"\n"),  // a NUL in a name
                                 QByteArray("-rw-r--r-- 0/0 0 2026-11-25 06:01 \"Kestrio.app/x\\q\"\n")}) {   // no such escape
        SCOPED_TRACE(bad.toStdString());
        EXPECT_FALSE(tar.readListing(bad));
    }
}

TEST(UpdateArchive, LinksPointOnlyIntoTheirOwnFolder)
{
    for (const auto& [target, safe] : {std::pair{"kestrio", true}, std::pair{"lib/libkestrio.so.1", true},
                                       std::pair{"./x", true}, std::pair{"..", false}, std::pair{"../lib/x", false},
                                       std::pair{"a/../../x", false}, std::pair{"/etc/passwd", false}, std::pair{"", false}})
        EXPECT_EQ(UpdateArchive::isSafeLinkTarget(target), safe) << target;
}

TEST(RunTool, CollectsAllOutputAndTheStatus)
{
    const auto result = SelfUpdater::runTool("/bin/bash", {"-c", "head -c 300000 /dev/zero | tr '\\0' x; echo; echo err >&2; exit 3"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output.size(), 300000 + 1 + 4);
    const auto missing = SelfUpdater::runTool("/no/such/tool", {});
    EXPECT_EQ(missing.status, -1);
    EXPECT_FALSE(missing.output.isEmpty());
    // In the C locale, whatever the user's: the tool's words are the same everywhere.
    EXPECT_EQ(SelfUpdater::runTool("/bin/sh", {"-c", "printf %s \"$LC_ALL\""}).output, "C");
}

TEST(RunTool, AToolThatNeverEndsIsStoppedAtTheTimeLimit)
{
    const auto result = SelfUpdater::runTool("/bin/sh", {"-c", "echo started; exec sleep 60"}, 300);
    EXPECT_EQ(result.status, -1);
    EXPECT_EQ(result.output, "sh did not finish within 0 seconds.");
    EXPECT_EQ(result.bytes, "started\n");
}

} // namespace
