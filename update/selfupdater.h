#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class QFile;
class QNetworkAccessManager;
class QNetworkReply;
class UpdatePackaging;

// Installs a newer release in place: downloads it, opens it, checks that it
// holds Kestrio.app, writes a script that waits for this program to end,
// replaces the installation and starts it again, then ends the program.
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
        QString temporaryFolder;                 // T
        std::optional<QString> installedBundle;  // A
        qint64 processIdentifier = 0;            // P
        std::function<void()> terminate;         // ends the program
    };

    static constexpr const char* kImageName = "Kestrio-update.dmg";
    static constexpr const char* kScriptName = "kestrio-updater.sh";

    static SelfUpdater& shared();

    SelfUpdater(UpdatePackaging& packaging, Environment environment, QObject* parent = nullptr);
    ~SelfUpdater() override;

    const State& state() const { return state_; }

    void startUpdate(const QUrl& url);
    void cancelUpdate();

    struct ToolResult {
        int status = -1;
        QString output;
    };
    // Runs a program to its end, reading its output as it comes.
    static ToolResult runTool(const QString& program, const QStringList& arguments);
    // A word the shell reads back as exactly `text`.
    static QString shellQuoted(const QString& text);
    // The updater script for these paths.
    static QString updaterScript(const UpdatePackaging& packaging, qint64 pid, const QString& installed,
                                 const QString& newBundle, const QString& mountPoint, const QString& image,
                                 const QString& script);

signals:
    void stateChanged(const SelfUpdater::State& state);


private:
    void setState(State state);
    void handleDownloadFinished(const std::optional<QString>& location, const std::optional<QString>& error);
    // Runs off the main thread; the failure text, or nothing once the script runs.
    static std::optional<QString> installUpdate(const UpdatePackaging& packaging, const Environment& environment,
                                                const QString& image);

    UpdatePackaging& packaging_;
    Environment environment_;
    State state_;
    QNetworkAccessManager* network_ = nullptr;
    QPointer<QNetworkReply> downloadTask_;
    std::unique_ptr<QFile> download_;
};

Q_DECLARE_METATYPE(SelfUpdater::State)
