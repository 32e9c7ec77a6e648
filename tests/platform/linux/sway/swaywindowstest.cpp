#include "platform/linux/sway/swaywindows.h"
#include "support/eventually.h"

#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

QByteArray treeWith(const QString& focusedTitle, qint64 focusedId)
{
    return QStringLiteral(R"({"id":1,"type":"root","nodes":[{"id":4,"type":"workspace","nodes":[
        {"id":5,"type":"con","name":"Document","app_id":"editor","pid":100,"focused":false,"rect":{"x":0,"y":0,"width":800,"height":600}},
        {"id":%2,"type":"con","name":"%1","app_id":"viewer","pid":200,"focused":true,"rect":{"x":800,"y":0,"width":480,"height":600}}
    ]}]})")
        .arg(focusedTitle)
        .arg(focusedId)
        .toUtf8();
}

// Plays sway's part: answers the subscription and tree requests, and sends
// what the test tells it to.
class FakeSway {
public:
    FakeSway() : path_(dir_.filePath("sway-ipc.sock"))
    {
        server_.listen(path_);
        QObject::connect(&server_, &QLocalServer::newConnection, [this] {
            client_ = server_.nextPendingConnection();
            ++connections_;
            QObject::connect(client_, &QLocalSocket::readyRead, [this] { answer(); });
        });
    }

    QString path() const { return path_; }
    int connections() const { return connections_; }
    int treeRequests() const { return treeRequests_; }
    QByteArray subscription() const { return subscription_; }
    void setTree(QByteArray tree) { tree_ = std::move(tree); }
    void send(quint32 type, const QByteArray& payload) { sendRaw(SwayIpc::encode(type, payload)); }
    void sendRaw(const QByteArray& bytes)
    {
        if (client_) {
            client_->write(bytes);
            client_->flush();
        }
    }
    void hangUp()
    {
        if (client_)
            client_->disconnectFromServer();
    }

private:
    void answer()
    {
        decoder_.append(client_->readAll());
        while (auto message = decoder_.next()) {
            if (message->type == SwayIpc::subscribe) {
                subscription_ = message->payload;
                send(SwayIpc::subscribe, R"({"success":true})");
            } else if (message->type == SwayIpc::getTree) {
                ++treeRequests_;
                send(SwayIpc::getTree, tree_);
            }
        }
    }

    QTemporaryDir dir_;
    QString path_;
    QLocalServer server_;
    QPointer<QLocalSocket> client_;
    SwayIpc::Decoder decoder_;
    QByteArray tree_ = treeWith("Picture", 6);
    QByteArray subscription_;
    int connections_ = 0;
    int treeRequests_ = 0;
};

TEST(SwayWindows, KnowsTheFocusedWindowFromTheTreeAndFollowsFocusEvents)
{
    FakeSway sway;
    SwayWindows windows(sway.path());
    QSignalSpy focusChanges(&windows, &SwayWindows::focusChanged);

    ASSERT_TRUE(eventually([&] { return windows.activeWindow() == 6u; }));
    EXPECT_EQ(focusChanges.size(), 1);
    EXPECT_EQ(QJsonDocument::fromJson(sway.subscription()).toVariant().toStringList(),
              QStringList({"window", "workspace"}));
    EXPECT_EQ(windows.windowOfProcess(100), 5u);
    EXPECT_EQ(windows.window(5)->frame, QRect(0, 0, 800, 600));

    // The event tells the focus before the next tree arrives.
    sway.setTree(treeWith("Picture", 6).replace(R"("focused":true)", R"("focused":false)")
                     .replace(R"("pid":100,"focused":false)", R"("pid":100,"focused":true)"));
    sway.send(SwayIpc::windowEvent, R"({"change":"focus","container":{"id":5,"type":"con","name":"Document",
                                       "app_id":"editor","pid":100,"focused":true}})");
    ASSERT_TRUE(eventually([&] { return windows.activeWindow() == 5u; }));
    EXPECT_TRUE(eventually([&] { return sway.treeRequests() >= 2; }));
    EXPECT_EQ(focusChanges.size(), 2); // the tree that followed agreed: no second signal

    // Events of other kinds refresh the tree without claiming a focus change.
    sway.setTree(treeWith("Picture renamed", 6).replace(R"("focused":true)", R"("focused":false)")
                     .replace(R"("pid":100,"focused":false)", R"("pid":100,"focused":true)"));
    sway.send(SwayIpc::windowEvent, R"({"change":"title","container":{"id":6}})");
    EXPECT_TRUE(eventually([&] { return windows.window(6) && windows.window(6)->title == "Picture renamed"; }));
    EXPECT_EQ(focusChanges.size(), 2);
}

TEST(SwayWindows, ARestartedOrGarbledCompositorIsConnectedAgain)
{
    FakeSway sway;
    SwayWindows windows(sway.path());
    ASSERT_TRUE(eventually([&] { return windows.activeWindow() == 6u; }));

    sway.hangUp();
    sway.setTree(treeWith("Another", 16));
    ASSERT_TRUE(eventually([&] { return sway.connections() == 2 && windows.activeWindow() == 16u; }));

    // A peer that stops speaking the protocol is dropped and asked again.
    sway.sendRaw("garbage that is no message at all");
    sway.setTree(treeWith("Third", 26));
    EXPECT_TRUE(eventually([&] { return sway.connections() == 3 && windows.activeWindow() == 26u; }));
}

TEST(SwayWindows, NoCompositorMeansNoWindows)
{
    QTemporaryDir dir;
    SwayWindows windows(dir.filePath("nobody-listens.sock"));
    EXPECT_FALSE(windows.activeWindow());
    EXPECT_FALSE(windows.windowOfProcess(100));
    windows.focus(5); // sent nowhere, harmlessly
}

// The compositor answers at once, from a thread of its own; the questions
// are still answered from what has arrived, never by waiting for it: the
// tree is there only once this thread's events have run.
TEST(SwayWindows, QuestionsNeverWaitForTheCompositor)
{
#ifdef __SANITIZE_THREAD__
    // The stand-in's thread is handed its work through Qt's own locks, which
    // ThreadSanitizer cannot see in an uninstrumented Qt.
    GTEST_SKIP() << "Qt's thread hand-offs are invisible to ThreadSanitizer";
#endif
    QThread compositor;
    compositor.start();
    QObject inThread;
    inThread.moveToThread(&compositor);
    std::unique_ptr<FakeSway> sway;
    QMetaObject::invokeMethod(&inThread, [&] { sway = std::make_unique<FakeSway>(); }, Qt::BlockingQueuedConnection);

    SwayWindows windows(sway->path());
    EXPECT_FALSE(windows.activeWindow());
    EXPECT_FALSE(windows.windowOfProcess(100));
    EXPECT_TRUE(eventually([&] { return windows.activeWindow() == 6u; }));

    QMetaObject::invokeMethod(&inThread, [&] { sway.reset(); }, Qt::BlockingQueuedConnection);
    compositor.quit();
    compositor.wait();
}

} // namespace
