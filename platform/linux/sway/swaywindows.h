#pragma once

#include "platform/linux/sway/swayipc.h"
#include "platform/linux/sway/swaytree.h"
#include "platform/linux/windows/windowdirectory.h"

#include <QObject>
#include <QTimer>

#include <mutex>

class QLocalSocket;

// sway's windows over its IPC socket: the layout tree, kept up to date from
// window and workspace events. Nothing here waits on sway: questions are
// answered from the last tree, commands are sent and their answers ignored.
class SwayWindows final : public QObject, public WindowDirectory {
    Q_OBJECT

public:
    // A compositor that went away is looked for again this often.
    static constexpr int kReconnectMs = 2000;

    explicit SwayWindows(QString socketPath, QObject* parent = nullptr);
    ~SwayWindows() override;

    std::optional<quint64> activeWindow() override;
    std::optional<DesktopWindow> window(quint64 id) override;
    std::optional<quint64> windowOfProcess(qint32 pid) override;

    // Asks sway to give the window the focus.
    void focus(quint64 id);
    // Waits until the first tree has arrived: command-line tools only.
    bool waitForTree(int timeoutMs);

signals:
    // The focused window changed (or was first learned).
    void focusChanged();

private:
    void connectToSway();
    void connected();
    void readAnswers();
    void handle(const SwayIpc::Message& message);
    void requestTree();
    void send(quint32 type, const QByteArray& payload);
    void adoptTree(SwayTree tree);
    void setFocused(std::optional<quint64> focused);

    QString path_;
    QLocalSocket* socket_;
    QTimer reconnect_;
    SwayIpc::Decoder decoder_;
    // A tree request is in flight; events meanwhile ask for one more afterwards.
    bool treeRequested_ = false;
    bool treeStale_ = false;

    mutable std::mutex mutex_; // the tree is read from the readers' threads
    SwayTree tree_;
    bool haveTree_ = false;
};
