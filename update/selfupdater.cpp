#include "update/selfupdater.h"

#include "base/platformwords.h"
#include "buildconfig.h"
#include "platform/crossthread.h"
#include "platform/updatepackaging.h"
#include "update/installmarker.h"
#include "update/networkfailure.h"
#include "update/updatearchive.h"
#include "update/updateleftovers.h"
#include "update/updatesignature.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

const QString kVerifyFailed = QStringLiteral("Failed to verify the update: ");
const QString kDownloadFailed = QStringLiteral("Failed to download the update: ");
const QString kSaveFailed = QStringLiteral("Failed to save download: ");

QString packageManagedMessage()
{
    return QStringLiteral("This copy of Kestrio is updated by its package manager, not by Kestrio itself. "
                          "The release page opens in your browser.");
}

// A fresh folder only this user can enter, made beside `path`.
std::optional<QString> makePrivateFolderBeside(const QString& path, QString& error)
{
    QByteArray pattern = QFile::encodeName(QFileInfo(path).absolutePath() + u'/'
                                         + QLatin1String(UpdateLeftovers::kStagingPrefix) + QStringLiteral("XXXXXX"));
    if (!::mkdtemp(pattern.data())) {
        error = QString::fromLocal8Bit(std::strerror(errno));
        return std::nullopt;
    }
    return QFile::decodeName(pattern);
}

// Why the transfer that just ended did not deliver, if it did not.
std::optional<QString> transferFailure(const std::optional<QString>& stopReason, QNetworkReply& reply)
{
    if (stopReason)
        return stopReason;
    if (isTransportFailure(reply.error()))
        return reply.errorString();
    return std::nullopt;
}

} // namespace

// One download and installation, from the press of the button to its end.
struct SelfUpdater::Attempt {
    quint64 generation = 0;
    QUrl url;
    QString version;
    std::unique_ptr<QTemporaryDir> workspace;
    QPointer<QNetworkReply> reply;
    QByteArray signature;
    QFile archive;
    qint64 received = 0;
    std::optional<QString> stopReason; // set when the updater itself stopped the transfer
};

// What the installation step needs, copied so the background task owns it.
struct SelfUpdater::InstallRequest {
    const UpdatePackaging* packaging = nullptr;
    const PlatformWords* words = nullptr;
    QString archive;
    QByteArray signature;
    QString publicKey;
    QString version;
    QString installed;
    QString workspace;
    qint64 processIdentifier = 0;
};

SelfUpdater::Environment SelfUpdater::builtInEnvironment(UpdatePackaging& packaging)
{
    QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (cache.isEmpty())
        cache = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString workspaces = cache + QStringLiteral("/kestrio");
    QDir().mkpath(workspaces);
    QFile::setPermissions(workspaces, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QUrl releasePage(QStringLiteral("https://%1/apps/kestrio/").arg(QStringLiteral(KESTRIO_WEBSITE_HOST)));
    return Environment{workspaces, packaging.installedBundle(), QCoreApplication::applicationPid(),
                       [] { QCoreApplication::quit(); }, QStringLiteral(KESTRIO_UPDATE_PUBLIC_KEY),
                       KESTRIO_UPDATE_MAX_BYTES, [releasePage] { QDesktopServices::openUrl(releasePage); }};
}

SelfUpdater::SelfUpdater(UpdatePackaging& packaging, const PlatformWords& words, Environment environment,
                         QObject* parent)
    : QObject(parent), packaging_(packaging), words_(words), environment_(std::move(environment))
{
    qRegisterMetaType<SelfUpdater::State>();
}

SelfUpdater::~SelfUpdater()
{
    // Nothing is reported any more: the transfer just stops.
    if (attempt_ && attempt_->reply) {
        attempt_->reply->disconnect(this);
        attempt_->reply->abort();
    }
}

void SelfUpdater::tidyLeftoversLater(int delayMs)
{
    // Later, not at once: a script that just started this program still
    // cleans up after itself for a few seconds.
    QTimer::singleShot(delayMs, this, [this] {
        if (generation_ != 0)
            return; // an update of this run makes folders of the same names
        CrossThread::start(*QThreadPool::globalInstance(), [workspaces = environment_.workspaceParent,
                                                            installed = environment_.installedBundle] {
            UpdateLeftovers::tidy(workspaces, installed);
        });
    });
}

void SelfUpdater::setState(State state)
{
    if (state_ == state)
        return;
    state_ = std::move(state);
    emit stateChanged(state_);
}

std::optional<QString> SelfUpdater::refusal(const QUrl& url, bool& packageManaged) const
{
    packageManaged = true;
    if (!environment_.installedBundle)
        return packageManagedMessage();
    const QString installed = *environment_.installedBundle;
    const auto marker = InstallMarker::read(installed);
    if (!std::holds_alternative<InstallMarker>(marker))
        return packageManagedMessage();
    // Replacing a folder that holds anything else would delete it.
    if (std::get<InstallMarker>(marker).foreignEntry(installed))
        return packageManagedMessage();
    packageManaged = false;

    const QFileInfo info(installed);
    if (!info.isWritable() || !QFileInfo(info.absolutePath()).isWritable())
        return QStringLiteral("Kestrio is installed in %1, which you cannot change.").arg(info.absoluteFilePath());
    if (!UpdateSignature::parsePublicKey(environment_.publicKey))
        return kVerifyFailed + QStringLiteral("this copy of Kestrio has no valid key to check updates with.");
    if (url.scheme() != QLatin1String("https") || url.host().isEmpty())
        return kDownloadFailed + QStringLiteral("its address does not use https (%1).").arg(url.toDisplayString());
    return std::nullopt;
}

void SelfUpdater::startUpdate(const QUrl& url, const QString& version)
{
    if (state_.kind == State::Kind::downloading || state_.kind == State::Kind::installing)
        return;
    bool packageManaged = false;
    if (const std::optional<QString> refused = refusal(url, packageManaged)) {
        setState(State::failed(*refused));
        if (packageManaged && environment_.openReleasePage)
            environment_.openReleasePage();
        return;
    }

    if (attempt_ && attempt_->reply)
        attempt_->reply->abort();
    attempt_ = std::make_unique<Attempt>();
    attempt_->generation = ++generation_;
    attempt_->url = url;
    attempt_->version = version;
    // Created anew and private (0700), so nobody else can plant or read anything in it.
    attempt_->workspace = std::make_unique<QTemporaryDir>(environment_.workspaceParent + u'/'
                                                       + QLatin1String(UpdateLeftovers::kWorkspacePrefix)
                                                       + QStringLiteral("XXXXXX"));
    if (!attempt_->workspace->isValid()) {
        setState(State::failed(kSaveFailed + attempt_->workspace->errorString()));
        attempt_.reset();
        return;
    }
    setState(State::downloading(0.0));

    if (!network_) {
        network_ = new QNetworkAccessManager(this);
        // Never from https to anything less.
        network_->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    QUrl signatureUrl = url;
    signatureUrl.setPath(url.path() + QStringLiteral(".minisig"));
    QNetworkReply* reply = receive(signatureUrl, kMaxSignatureBytes);
    const quint64 generation = attempt_->generation;
    connect(reply, &QNetworkReply::finished, this, [this, reply, generation] {
        reply->deleteLater();
        if (attempt_ && attempt_->generation == generation)
            handleSignatureFinished(*reply);
    }, Qt::QueuedConnection); // a cancel reports after cancelUpdate has returned
}

QNetworkReply* SelfUpdater::receive(const QUrl& url, qint64 limit)
{
    Attempt& attempt = *attempt_;
    attempt.received = 0;
    attempt.stopReason.reset();
    QNetworkReply* reply = network_->get(QNetworkRequest(url));
    attempt.reply = reply;
    const bool toFile = attempt.archive.isOpen();
    auto stop = [reply, &attempt](QString reason) {
        if (!attempt.stopReason)
            attempt.stopReason = std::move(reason);
        reply->abort();
    };
    connect(reply, &QNetworkReply::metaDataChanged, this, [reply, limit, stop] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > limit)
            stop(kDownloadFailed + QStringLiteral("it is larger than the %1 bytes allowed.").arg(limit));
    });
    connect(reply, &QNetworkReply::readyRead, this, [this, reply, limit, stop, toFile, &attempt] {
        if (attempt.stopReason)
            return;
        const QByteArray data = reply->readAll();
        attempt.received += data.size();
        if (attempt.received > limit) {
            stop(kDownloadFailed + QStringLiteral("it is larger than the %1 bytes allowed.").arg(limit));
            return;
        }
        if (!toFile) {
            attempt.signature += data;
            return;
        }
        if (attempt.archive.write(data) != data.size()) {
            stop(kSaveFailed + attempt.archive.errorString());
            return;
        }
        // Counted here rather than from Qt's progress signal, which holds back
        // what arrives in the first 150 ms.
        const qint64 total = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (total > 0 && state_.kind == State::Kind::downloading) {
            const double fraction = double(std::min(attempt.received, total)) / double(total);
            setState(State::downloading(std::floor(fraction * 1000) / 1000)); // a change a view can show
        }
    });
    return reply;
}

void SelfUpdater::handleSignatureFinished(QNetworkReply& reply)
{
    if (std::optional<QString> failure = transferFailure(attempt_->stopReason, reply)) {
        handleDownloadFinished(failure);
        return;
    }
    if (reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() != 200) {
        handleDownloadFinished(kVerifyFailed + QStringLiteral("no signature was found at %1.").arg(reply.url().toDisplayString()));
        return;
    }
    // The release itself goes straight into the private workspace, into a file
    // that did not exist before (never through a planted link).
    attempt_->archive.setFileName(QDir(attempt_->workspace->path()).filePath(packaging_.archiveName()));
    if (!attempt_->archive.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        handleDownloadFinished(kSaveFailed + attempt_->archive.errorString());
        return;
    }
    QNetworkReply* download = receive(attempt_->url, environment_.maxDownloadBytes);
    const quint64 generation = attempt_->generation;
    connect(download, &QNetworkReply::finished, this, [this, download, generation] {
        download->deleteLater();
        if (attempt_ && attempt_->generation == generation)
            handleDownloadFinished(transferFailure(attempt_->stopReason, *download));
    }, Qt::QueuedConnection);
}

void SelfUpdater::cancelUpdate()
{
    // The transfer reports its cancellation to its completion like any error.
    if (attempt_ && attempt_->reply)
        attempt_->reply->abort();
    setState(State::idle());
}

void SelfUpdater::handleDownloadFinished(const std::optional<QString>& error)
{
    // Whatever happens next, nothing of a failed transfer is kept.
    std::unique_ptr<Attempt> attempt = std::move(attempt_);
    attempt->reply = nullptr;
    if (error) {
        setState(State::failed(*error));
        return;
    }
    if (attempt->received == 0) {
        setState(State::failed(QStringLiteral("Download completed but no file received.")));
        return;
    }
    if (!attempt->archive.flush()) {
        setState(State::failed(kSaveFailed + attempt->archive.errorString()));
        return;
    }
    attempt->archive.close();
    setState(State::installing());

    // From here the background task owns the workspace: the script removes it
    // after a success, the task after a failure.
    attempt->workspace->setAutoRemove(false);
    const InstallRequest request{&packaging_,
                                 &words_,
                                 attempt->archive.fileName(),
                                 attempt->signature,
                                 environment_.publicKey,
                                 attempt->version,
                                 *environment_.installedBundle,
                                 attempt->workspace->path(),
                                 environment_.processIdentifier};
    QPointer<SelfUpdater> self(this);
    CrossThread::start(*QThreadPool::globalInstance(), [self, request, terminate = environment_.terminate] {
        const std::optional<QString> failure = installUpdate(request);
        CrossThread::post(QCoreApplication::instance(), [self, failure, terminate] {
            if (failure) {
                if (self)
                    self->setState(State::failed(*failure));
            } else if (terminate) {
                terminate();
            }
        });
    });
}

std::optional<QString> SelfUpdater::installUpdate(const InstallRequest& request)
{
    const PlatformWords& words = *request.words;
    std::optional<QString> staging;
    auto fail = [&](const QString& message) -> std::optional<QString> {
        if (staging)
            QDir(*staging).removeRecursively();
        QDir(request.workspace).removeRecursively();
        return message;
    };

    if (const auto problem = UpdateSignature::check(request.archive, request.signature, request.publicKey))
        return fail(kVerifyFailed + *problem + u'.');

    // The member names first: nothing is unpacked that would land elsewhere.
    const UpdatePackaging& packaging = *request.packaging;
    const ToolResult listed = runTool(packaging.unpackProgram(), packaging.listArguments(request.archive));
    if (listed.status != 0)
        return fail(words.unpackFailedPrefix + listed.output);
    const std::optional<QList<ArchiveMember>> members = packaging.readListing(listed.bytes);
    if (!members)
        return fail(words.unpackFailedPrefix + QStringLiteral("its list of files cannot be read."));
    if (const auto problem = UpdateArchive::listingProblem(*members))
        return fail(words.unpackFailedPrefix + *problem + u'.');

    // Beside the installation, so that the swap is a rename on one file system.
    QString error;
    staging = makePrivateFolderBeside(request.installed, error);
    if (!staging)
        return fail(words.unpackFailedPrefix
                    + QStringLiteral("no folder can be made beside %1: %2").arg(request.installed, error));
    const ToolResult unpacked = runTool(packaging.unpackProgram(), packaging.unpackArguments(request.archive, *staging));
    if (unpacked.status != 0)
        return fail(words.unpackFailedPrefix + unpacked.output);
    const QString bundle = QDir(*staging).filePath(QLatin1String(UpdateArchive::kTopFolder));
    if (!QFileInfo(bundle).isDir())
        return fail(words.bundleMissing);
    if (const auto problem = UpdateArchive::treeProblem(*staging))
        return fail(words.unpackFailedPrefix + *problem + u'.');

    const auto marker = InstallMarker::read(bundle);
    if (const auto* why = std::get_if<QString>(&marker))
        return fail(kVerifyFailed + QStringLiteral("the archive carries no install marker (%1).").arg(*why));
    const InstallMarker& release = std::get<InstallMarker>(marker);
    if (release.version != request.version)
        return fail(kVerifyFailed
                    + QStringLiteral("the archive holds version %1, not the offered %2.").arg(release.version, request.version));
    const std::optional<QString> foreign = release.foreignEntry(bundle);
    const std::optional<QString> missing = release.missingFile(bundle);
    if (foreign || missing)
        return fail(kVerifyFailed + QStringLiteral("the archive does not match its own list of files (%1).")
                                        .arg(foreign.value_or(missing.value_or(QString()))));
    if (!QFileInfo(QDir(bundle).filePath(packaging.programInBundle())).isExecutable())
        return fail(words.bundleMissing);

    // The installation as it is now: the update replaces exactly what its
    // release put there (the script looks again just before it swaps).
    const auto current = InstallMarker::read(request.installed);
    if (!std::holds_alternative<InstallMarker>(current) || std::get<InstallMarker>(current).foreignEntry(request.installed))
        return fail(packageManagedMessage());

    const QString scriptPath = QDir(request.workspace).filePath(QLatin1String(kScriptName));
    QFile file(scriptPath);
    const QByteArray script = updaterScript(packaging, {request.processIdentifier, request.installed, *staging,
                                                        request.workspace, std::get<InstallMarker>(current).entries()})
                                  .toUtf8();
    const bool written = file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write(script) == script.size()
        && file.flush()
        && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup
                               | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    if (!written)
        return fail(QStringLiteral("Failed to create updater script: ") + file.errorString());
    file.close();

    QProcess bash;
    bash.setProgram(QStringLiteral("/bin/bash"));
    bash.setArguments({scriptPath});
    bash.setStandardOutputFile(QProcess::nullDevice());
    bash.setStandardErrorFile(QProcess::nullDevice());
    if (!bash.startDetached())
        return fail(QStringLiteral("Failed to launch updater: ") + bash.errorString());
    return std::nullopt;
}

SelfUpdater::ToolResult SelfUpdater::runTool(const QString& program, const QStringList& arguments, int timeLimitMs)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {-1, process.errorString(), {}};
    // Read as it comes, so that a talkative tool never fills the pipe and stalls.
    QByteArray output;
    QDeadlineTimer deadline(timeLimitMs);
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired()) {
            process.kill();
            process.waitForFinished();
            return {-1, QStringLiteral("%1 did not finish within %2 seconds.").arg(QFileInfo(program).fileName()).arg(timeLimitMs / 1000), output};
        }
        process.waitForReadyRead(100);
        output += process.readAll();
    }
    output += process.readAll();
    auto decode = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(output);
    if (decode.hasError())
        text.clear();
    const int status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {status, text, output};
}

QString SelfUpdater::shellQuoted(const QString& text)
{
    // Inside single quotes every character is itself; a quote ends the word,
    // is escaped, and a new quoted word begins.
    QString quoted = text;
    quoted.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + quoted + u'\'';
}

QString SelfUpdater::updaterScript(const UpdatePackaging& packaging, const ScriptPaths& paths)
{
    static const bool loaded = [] {
        Q_INIT_RESOURCE(update); // a static library's resources load themselves only when asked
        return true;
    }();
    Q_UNUSED(loaded);
    QFile file(QStringLiteral(":/update/kestrio-updater.sh"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    QStringList ours;
    for (const QString& entry : paths.ours)
        ours << shellQuoted(entry);
    const QHash<QString, QString> values{
        {QStringLiteral("PID"), QString::number(paths.processIdentifier)},
        {QStringLiteral("INSTALLED"), shellQuoted(paths.installed)},
        {QStringLiteral("STAGING"), shellQuoted(paths.staging)},
        {QStringLiteral("WORKSPACE"), shellQuoted(paths.workspace)},
        {QStringLiteral("PROGRAM"), shellQuoted(packaging.programInBundle())},
        {QStringLiteral("OURS"), ours.join(u' ')},
    };
    // In one pass, so that a value holding "@…@" stays as it is.
    static const QRegularExpression placeholder(QStringLiteral("@([A-Z]+)@"));
    QString script;
    qsizetype from = 0;
    for (const QRegularExpressionMatch& match : placeholder.globalMatch(text)) {
        script += text.mid(from, match.capturedStart() - from);
        script += values.value(match.captured(1), match.captured(0));
        from = match.capturedEnd();
    }
    script += text.mid(from);
    return script;
}
