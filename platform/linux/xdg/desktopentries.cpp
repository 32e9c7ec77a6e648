#include "platform/linux/xdg/desktopentries.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>

namespace {

// Entries bigger than this are not entries (a real one is a few kilobytes).
constexpr qint64 kMaxEntryBytes = 256 * 1024;
constexpr int kMaxEntries = 20000;

// The file name of a command line's program: Exec's first word, past "env" and its settings.
QString programOfCommand(const QString& command)
{
    const QStringList words = command.split(u' ', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < words.size(); ++i) {
        QString word = words[i];
        if (word.startsWith(u'"') && word.endsWith(u'"') && word.size() >= 2)
            word = word.mid(1, word.size() - 2);
        const QString file = QFileInfo(word).fileName();
        if (file == QLatin1String("env") || (word.contains(u'=') && !word.startsWith(u'/')))
            continue;
        return file;
    }
    return {};
}

} // namespace

DesktopEntries::DesktopEntries(QStringList dataFolders, QString locale)
    : folders_(std::move(dataFolders)), locale_(locale.isEmpty() ? QLocale::system().name() : std::move(locale))
{
}

QStringList DesktopEntries::standardDataFolders()
{
    return QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
}

QString DesktopEntries::programOf(qint32 pid)
{
    if (pid <= 0)
        return {};
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(pid))).fileName();
}

std::optional<DesktopEntries::Indexed> DesktopEntries::read(const QString& path, const QString& id) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text) || file.size() > kMaxEntryBytes)
        return std::nullopt;
    // The [Desktop Entry] group's keys; other groups (actions) are not the application.
    QHash<QString, QString> keys;
    bool inEntry = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'[')) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inEntry || line.startsWith(u'#') || equals <= 0)
            continue;
        const QString key = line.left(equals).trimmed();
        if (!keys.contains(key))
            keys.insert(key, line.mid(equals + 1).trimmed());
    }
    if (keys.value(QStringLiteral("Type")) != QLatin1String("Application")
        || keys.value(QStringLiteral("Hidden")) == QLatin1String("true"))
        return std::nullopt;
    // Name[de_DE], else Name[de], else Name.
    const QString language = locale_.section(u'_', 0, 0);
    QString name = keys.value(QStringLiteral("Name[%1]").arg(locale_));
    if (name.isEmpty())
        name = keys.value(QStringLiteral("Name[%1]").arg(language));
    if (name.isEmpty())
        name = keys.value(QStringLiteral("Name"));
    if (name.isEmpty())
        return std::nullopt;
    Indexed indexed{{id, name}, {}, {}};
    if (const QString wmClass = keys.value(QStringLiteral("StartupWMClass")); !wmClass.isEmpty())
        indexed.windowClasses << wmClass.toLower();
    for (const QString& key : {QStringLiteral("Exec"), QStringLiteral("TryExec")}) {
        const QString program = programOfCommand(keys.value(key));
        if (!program.isEmpty() && !indexed.programs.contains(program))
            indexed.programs << program;
    }
    return indexed;
}

void DesktopEntries::load() const
{
    std::call_once(loaded_, [this] {
        for (const QString& folder : folders_) {
            const QDir applications(folder + QStringLiteral("/applications"));
            QDirIterator it(applications.path(), {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext() && entries_.size() < kMaxEntries) {
                const QString path = it.next();
                // "kde/foo.desktop" is known as "kde-foo"; an earlier folder's entry wins.
                QString id = applications.relativeFilePath(path);
                id.chop(int(qstrlen(".desktop")));
                id.replace(u'/', u'-');
                if (byId_.contains(id))
                    continue;
                if (const auto indexed = read(path, id)) {
                    byId_.insert(id, entries_.size());
                    entries_.append(*indexed);
                }
            }
        }
    });
}

std::optional<DesktopEntries::Entry> DesktopEntries::find(const QString& applicationId, const QString& windowClass,
                                                          const QString& program) const
{
    load();
    if (!applicationId.isEmpty()) {
        if (const auto at = byId_.constFind(applicationId); at != byId_.cend())
            return entries_[*at].entry;
    }
    if (!windowClass.isEmpty()) {
        // By StartupWMClass; else the id, or its last part ("org.xfce.mousepad" for "Mousepad").
        const QString wanted = windowClass.toLower();
        for (const Indexed& indexed : entries_) {
            if (indexed.windowClasses.contains(wanted))
                return indexed.entry;
        }
        for (const Indexed& indexed : entries_) {
            const QString id = indexed.entry.id.toLower();
            if (id == wanted || id.section(u'.', -1) == wanted)
                return indexed.entry;
        }
    }
    if (!program.isEmpty()) {
        for (const Indexed& indexed : entries_) {
            if (indexed.programs.contains(program))
                return indexed.entry;
        }
    }
    return std::nullopt;
}
