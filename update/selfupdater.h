#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class UpdatePackaging;
struct PlatformWords;

// Installs a newer release in place: downloads it with its signature into a
// private folder, checks the signature and what the archive holds, unpacks it
// beside the installation, and hands over to a script that waits for this
// program to end, swaps the two folders by renaming, starts the new program
// and puts the old one back if that fails. Only an installation that carries
// Kestrio's install marker is ever replaced.
class SelfUpdater : public QObject {
    Q_OBJECT

public:
    struct State {
        enum class Kind { idle, downloading, installing, failed };
        Kind kind = Kind::idle;
        double progress = 0;
        QString message;

        static State idle() { return {}; }
        static State downloading(double progress) { return {Kind::downloading, progress, {}}; }
        static State installing() { return {Kind::installing, 0, {}}; }
        static State failed(QString message) { return {Kind::failed, 0, std::move(message)}; }
        friend bool operator==(const State&, const State&) = default;
    };

    // What the installation works with; the program passes the real ones.
    struct Environment {
        QString workspaceParent;                 // private workspaces are made in here
        std::optional<QString> installedBundle;  // A: the folder the running program came from
        qint64 processIdentifier = 0;            // P
        std::function<void()> terminate;         // ends the program
        QString publicKey;                       // the maker's minisign key
        qint64 maxDownloadBytes = 0;             // a larger release is refused
        std::function<void()> openReleasePage;   // where a copy the updater may not replace sends the user
    };

    static constexpr const char* kScriptName = "kestrio-updater.sh";
    static constexpr qint64 kMaxSignatureBytes = 4096;

    // What the program runs with: the workspaces in the user's cache, the
    // installation it came from, the maker's key and limits built in.
    static Environment builtInEnvironment(UpdatePackaging& packaging);

    // `words` name the release's package in the failures.
    SelfUpdater(UpdatePackaging& packaging, const PlatformWords& words, Environment environment,
                QObject* parent = nullptr);
    ~SelfUpdater() override;

    const State& state() const { return state_; }

    // Clears away, `delayMs` from now, what earlier updates left behind,
    // unless an update has begun in the meantime.
    void tidyLeftoversLater(int delayMs = 30000);

    // `version` is the release the manifest offered; the archive must say the same.
    void startUpdate(const QUrl& url, const QString& version);
    void cancelUpdate();

    // A tool that runs longer than this is stopped: unpacking a release takes seconds.
    static constexpr int kToolTimeLimitMs = 120000;
    struct ToolResult {
        int status = -1;
        QString output;  // for messages: empty where it is not UTF-8
        QByteArray bytes; // as the tool wrote it
    };
    // Runs a program to its end, or until `timeLimitMs` has passed, reading its
    // output as it comes, in the C locale so that its words are the same
    // everywhere. Never on the UI thread.
    static ToolResult runTool(const QString& program, const QStringList& arguments, int timeLimitMs = kToolTimeLimitMs);
    // A word the shell reads back as exactly `text`.
    static QString shellQuoted(const QString& text);

    struct ScriptPaths {
        qint64 processIdentifier = 0;
        QString installed;  // the installation that is replaced
        QString staging;    // beside it: the new Kestrio.app, later the old one
        QString workspace;  // the private folder with the download and the script
        QStringList ours;   // every entry the installation's release put there
    };
    static QString updaterScript(const UpdatePackaging& packaging, const ScriptPaths& paths);

signals:
    void stateChanged(const SelfUpdater::State& state);

private:
    struct Attempt;
    struct InstallRequest;

    void setState(State state);
    // Why this update cannot even start; `packageManaged` says whether the copy
    // is not ours to replace.
    std::optional<QString> refusal(const QUrl& url, bool& packageManaged) const;
    QNetworkReply* receive(const QUrl& url, qint64 limit);
    void handleSignatureFinished(QNetworkReply& reply);
    void handleDownloadFinished(const std::optional<QString>& error);
    // Off the main thread; the failure text, or nothing once the script runs.
    static std::optional<QString> installUpdate(const InstallRequest& request);

    UpdatePackaging& packaging_;
    const PlatformWords& words_;
    Environment environment_;
    State state_;
    QNetworkAccessManager* network_ = nullptr;
    std::unique_ptr<Attempt> attempt_;
    quint64 generation_ = 0;
};

Q_DECLARE_METATYPE(SelfUpdater::State)
