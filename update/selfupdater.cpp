#include "update/selfupdater.h"

#include "platform/updatepackaging.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QThreadPool>
#include <QUuid>

SelfUpdater& SelfUpdater::shared()
{
    static SelfUpdater* updater = new SelfUpdater(
        UpdatePackaging::current(),
        Environment{QDir::tempPath(), UpdatePackaging::current().installedBundle(), QCoreApplication::applicationPid(),
                    [] { QCoreApplication::quit(); }});
    return *updater;
}

SelfUpdater::SelfUpdater(UpdatePackaging& packaging, Environment environment, QObject* parent)
    : QObject(parent), packaging_(packaging), environment_(std::move(environment))
{
    qRegisterMetaType<SelfUpdater::State>();
}

SelfUpdater::~SelfUpdater()
{
    if (downloadTask_)
        downloadTask_->abort();
}

void SelfUpdater::setState(State state)
{
    if (state_ == state)
        return;
    state_ = std::move(state);
    emit stateChanged(state_);
}

void SelfUpdater::startUpdate(const QUrl& url)
{
    if (state_.kind == State::Kind::downloading || state_.kind == State::Kind::installing)
        return;
    // A system package is the package manager's to update, not ours.
    if (!environment_.installedBundle) {
        setState(State::failed(QStringLiteral("Kestrio is not running from an installation it can update.")));
        return;
    }
    const QFileInfo installed(*environment_.installedBundle);
    if (!installed.isWritable() || !QFileInfo(installed.absolutePath()).isWritable()) {
        setState(State::failed(QStringLiteral("Kestrio is installed in %1, which you cannot change; "
                                              "update it with your system's package manager.")
                                   .arg(installed.absoluteFilePath())));
        return;
    }
    setState(State::downloading(0.0));

    if (!network_)
        network_ = new QNetworkAccessManager(this);
    download_ = std::make_unique<QFile>(QDir(environment_.temporaryFolder)
                                            .filePath(QStringLiteral("Kestrio-download-%1.part")
                                                          .arg(QUuid::createUuid().toString(QUuid::WithoutBraces))));
    if (!download_->open(QIODevice::WriteOnly)) {
        handleDownloadFinished(std::nullopt, download_->errorString());
        return;
    }
    QNetworkReply* reply = network_->get(QNetworkRequest(url));
    downloadTask_ = reply;
    QPointer<SelfUpdater> self(this);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] {
        if (download_)
            download_->write(reply->readAll());
    });
    connect(reply, &QNetworkReply::downloadProgress, this, [self](qint64 received, qint64 total) {
        if (self && total > 0 && self->downloadTask_)
            self->setState(State::downloading(double(received) / double(total)));
    });
    connect(reply, &QNetworkReply::finished, this, [self, reply] {
        reply->deleteLater();
        if (!self)
            return;
        // Only the transport counts: an error page is saved like a package and
        // fails when it is opened.
        const bool answered = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
        std::optional<QString> location;
        std::optional<QString> error;
        if (self->download_) {
            self->download_->write(reply->readAll());
            self->download_->close();
            location = self->download_->fileName();
        }
        if (!answered && reply->error() != QNetworkReply::NoError)
            error = reply->errorString();
        self->handleDownloadFinished(location, error);
    }, Qt::QueuedConnection); // a cancelled download reports after cancelUpdate has returned
}

void SelfUpdater::cancelUpdate()
{
    if (downloadTask_)
        downloadTask_->abort(); // reported to the completion like any download error
    downloadTask_ = nullptr;
    setState(State::idle());
}

void SelfUpdater::handleDownloadFinished(const std::optional<QString>& location, const std::optional<QString>& error)
{
    downloadTask_ = nullptr;
    download_.reset();
    if (error) {
        if (location)
            QFile::remove(*location);
        setState(State::failed(*error));
        return;
    }
    if (!location) {
        setState(State::failed(QStringLiteral("Download completed but no file received.")));
        return;
    }
    const QString image = QDir(environment_.temporaryFolder).filePath(QLatin1String(kImageName));
    QFile::remove(image);
    QFile saved(*location);
    if (!saved.rename(image)) {
        setState(State::failed(QStringLiteral("Failed to save download: ") + saved.errorString()));
        return;
    }
    setState(State::installing());

    QPointer<SelfUpdater> self(this);
    const Environment environment = environment_;
    UpdatePackaging* packaging = &packaging_;
    QThreadPool::globalInstance()->start([self, environment, packaging, image] {
        const std::optional<QString> failure = installUpdate(*packaging, environment, image);
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self, failure, terminate = environment.terminate] {
            if (failure) {
                if (self)
                    self->setState(State::failed(*failure));
            } else if (terminate) {
                terminate();
            }
        }, Qt::QueuedConnection);
    });
}

std::optional<QString> SelfUpdater::installUpdate(const UpdatePackaging& packaging, const Environment& environment,
                                                  const QString& image)
{
    const QDir temporary(environment.temporaryFolder);
    const QString mountPoint =
        temporary.filePath(QStringLiteral("Kestrio-mount-") + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper());
    QDir().mkpath(mountPoint);

    const ToolResult mounted = runTool(packaging.mountProgram(), packaging.mountArguments(image, mountPoint));
    if (mounted.status != 0)
        return QStringLiteral("Failed to mount DMG: ") + mounted.output;

    const QString newBundle = QDir(mountPoint).filePath(QStringLiteral("Kestrio.app"));
    if (!QFileInfo::exists(newBundle)) {
        packaging.detach(mountPoint);
        return QStringLiteral("Kestrio.app not found in DMG.");
    }

    const QString scriptPath = temporary.filePath(QLatin1String(kScriptName));
    const QString script = updaterScript(packaging, environment.processIdentifier, environment.installedBundle.value_or(QString()),
                                         newBundle, mountPoint, image, scriptPath);
    QSaveFile file(scriptPath);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(script.toUtf8()) >= 0 && file.commit()
        && QFile::setPermissions(scriptPath, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup
                                                 | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    if (!written) {
        packaging.detach(mountPoint);
        return QStringLiteral("Failed to create updater script: ") + file.errorString();
    }

    QProcess bash;
    bash.setProgram(QStringLiteral("/bin/bash"));
    bash.setArguments({scriptPath});
    bash.setStandardOutputFile(QProcess::nullDevice());
    bash.setStandardErrorFile(QProcess::nullDevice());
    if (!bash.startDetached()) {
        packaging.detach(mountPoint);
        return QStringLiteral("Failed to launch updater: ") + bash.errorString();
    }
    return std::nullopt;
}

SelfUpdater::ToolResult SelfUpdater::runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {-1, process.errorString()};
    // Read as it comes, so that a talkative tool never fills the pipe and stalls.
    QByteArray output;
    while (process.state() != QProcess::NotRunning) {
        process.waitForReadyRead(100);
        output += process.readAll();
    }
    output += process.readAll();
    auto decode = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(output);
    if (decode.hasError())
        text.clear();
    const int status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {status, text};
}

QString SelfUpdater::shellQuoted(const QString& text)
{
    // Inside single quotes every character is itself; a quote ends the word,
    // is escaped, and a new quoted word begins.
    QString quoted = text;
    quoted.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + quoted + u'\'';
}

QString SelfUpdater::updaterScript(const UpdatePackaging& packaging, qint64 pid, const QString& installed,
                                   const QString& newBundle, const QString& mountPoint, const QString& image,
                                   const QString& script)
{
    const QString a = shellQuoted(installed);
    return QStringLiteral("#!/bin/bash\n# Wait for the current app to quit\nwhile kill -0 ") + QString::number(pid)
        + QStringLiteral(" 2>/dev/null; do\n    sleep 0.2\ndone\n# Replace the app\nrm -rf ") + a
        + QStringLiteral("\ncp -R ") + shellQuoted(newBundle) + u' ' + a
        + QStringLiteral("\n# Unmount and clean up\n") + packaging.detachLine(shellQuoted(mountPoint))
        + QStringLiteral("\nrm -f ") + shellQuoted(image) + QStringLiteral("\nrm -f ") + shellQuoted(script)
        + QStringLiteral("\n# Relaunch\n") + packaging.relaunchLine(a);
}
