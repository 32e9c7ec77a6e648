// Applications on the accessibility bus that answer as no honest toolkit
// would: they offer bus addresses that run programs or reach elsewhere, and
// menus whose objects hold themselves or hold a hundred thousand children.
// Kestrio must read and press them as far as they are menus, and nothing more.
#include "desktop.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace e2e;

class HostileApplication : public testing::Test {
protected:
    QTemporaryDir folder;
    Applications apps;

    QString log() const { return folder.filePath("presses"); }
    QString marker() const { return folder.filePath("marker"); }

    // Starts the stand-in and waits until its menus read.
    bool start(const QStringList& arguments, const QString& someItem = QStringLiteral("Help → About"))
    {
        return apps.start(QStringLiteral(ATSPI_STANDIN_PATH), QStringList{"--name", "standin", "--log", log()} + arguments,
                          "standin", someItem) == "standin";
    }

    QString presses() const
    {
        QFile file(log());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

// Every address below names something other than a socket the application
// itself listens on. None is dialled: no program runs, and presses go over
// the shared accessibility bus instead.
TEST_F(HostileApplication, ItsBusAddressNeverRunsAProgramAndPressesGoOverTheSharedBus)
{
    // "touch MARKER", escaped as bus addresses escape values.
    const QString touch = QStringLiteral("path=/bin/sh,argv0=sh,argv1=-c,argv2=touch%20") + marker();
    const QString otherProcess = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"); // the bus daemon's socket
    ASSERT_TRUE(otherProcess.startsWith("unix:path=")) << otherProcess.toStdString();
    const QStringList addresses{
        "unixexec:" + touch,
        "unix:path=" + folder.filePath("nothing-here") + ";unixexec:" + touch, // a list: the second is tried
        "unix:path=" + folder.filePath("nothing-here") + ",argv0=sh",          // keys of another transport
        "unix:tmpdir=/tmp",                                                    // makes a server, names no socket
        "tcp:host=127.0.0.1,port=9",
        "nonce-tcp:host=127.0.0.1,port=9,noncefile=" + folder.filePath("nonce"),
        "launchd:env=DISPLAY",
        "autolaunch:",
        otherProcess,
    };
    for (const QString& address : addresses) {
        SCOPED_TRACE(address.toStdString());
        QFile::remove(log());
        Applications one;
        ASSERT_EQ(one.start(QStringLiteral(ATSPI_STANDIN_PATH),
                            {"--name", "standin", "--log", log(), "--bus-address", address}, "standin", "Help → About"),
                  "standin");
        const ProcessResult r = kestrioctl({"press", "--name", "standin", "Help → About"});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        EXPECT_TRUE(eventually([&] { return presses().contains("pressed About via bus"); })) << presses().toStdString();
        EXPECT_FALSE(QFileInfo::exists(marker()));
    }
}

// An application that listens on a socket of its own is pressed there, as
// GTK's bridge offers: a modal dialog then holds only that connection.
TEST_F(HostileApplication, ASocketTheApplicationListensOnIsUsedForPresses)
{
    ASSERT_TRUE(start({"--own-bus"}));
    const ProcessResult r = kestrioctl({"press", "--name", "standin", "File → Save"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(eventually([&] { return presses().contains("pressed Save via peer"); })) << presses().toStdString();
}

// Menus no application has: objects that hold themselves, one menu of a
// hundred thousand items, submenus a thousand deep. Each reading ends, the
// real commands are there, and an item still presses.
TEST_F(HostileApplication, MenusThatHoldThemselvesOrNeverEndAreReadAsFarAsTheyGo)
{
    for (const char* tree : {"self-loop", "wide", "deep"}) {
        SCOPED_TRACE(tree);
        QFile::remove(log());
        Applications one;
        ASSERT_EQ(one.start(QStringLiteral(ATSPI_STANDIN_PATH), {"--name", "standin", "--log", log(), "--tree", tree},
                            "standin", "Help → About"),
                  "standin");
        const QStringList menus = kestrioctl({"menus", "--name", "standin"}).out.split(u'\n', Qt::SkipEmptyParts);
        EXPECT_TRUE(menus.contains("File → Open\tCtrl+O\tenabled")) << menus.mid(0, 10).join('|').toStdString();
        EXPECT_EQ(menus.count("File → Save\t\tenabled"), 1);
        if (QLatin1String(tree) == QLatin1String("wide")) {
            EXPECT_TRUE(menus.contains("Many → Item 0\t\tenabled"));
            EXPECT_LE(menus.size(), 2100); // what one menu may hold, and the rest
        }
        const ProcessResult r = kestrioctl({"press", "--name", "standin", "Help → About"});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        EXPECT_TRUE(eventually([&] { return presses().contains("pressed About"); }));
    }
}

} // namespace

namespace {

// The connection an application offered for presses goes when the
// application leaves the bus, instead of staying open for good.
TEST_F(HostileApplication, AnApplicationsOwnConnectionGoesWithIt)
{
    QProcess standIn;
    standIn.start(QStringLiteral(ATSPI_STANDIN_PATH), {"--name", "standin", "--log", log(), "--own-bus"});
    ASSERT_TRUE(standIn.waitForStarted());
    ReportingProcess probe(QStringLiteral(TRUST_PROBE_PATH), {"--press", "standin", "File → Save"});
    EXPECT_TRUE(probe.reports([](const QJsonObject& s) { return s["peers"] == 1; }));
    EXPECT_TRUE(eventually([&] { return presses().contains("pressed Save via peer"); })) << presses().toStdString();

    standIn.terminate();
    ASSERT_TRUE(standIn.waitForFinished());
    EXPECT_TRUE(probe.reports([](const QJsonObject& s) {
        return s["peers"] == 0 && !s["apps"].toArray().contains(QStringLiteral("standin"));
    }));
}

} // namespace
