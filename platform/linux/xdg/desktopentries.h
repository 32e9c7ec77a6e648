#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <mutex>
#include <optional>

// The applications installed on this system, as their desktop entries
// describe them: the id the desktop knows an application by and the name
// it shows. Windows and processes name themselves however they like; the
// entry is what the desktop (and Kestrio's usage events) call them.
class DesktopEntries {
public:
    struct Entry {
        QString id;   // "org.xfce.mousepad", from the file's path below applications/
        QString name; // "Mousepad", in the user's language where the entry has it

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    // `dataFolders` in order of precedence ($XDG_DATA_HOME, then $XDG_DATA_DIRS).
    explicit DesktopEntries(QStringList dataFolders = standardDataFolders(), QString locale = {});

    // The entry of an application known by its desktop application id, its
    // X11 window class, or the file name of its program; the first that matches.
    std::optional<Entry> find(const QString& applicationId, const QString& windowClass, const QString& program) const;

    // The file name of the program a process runs, where it can be told.
    static QString programOf(qint32 pid);
    static QStringList standardDataFolders();

private:
    struct Indexed {
        Entry entry;
        QStringList windowClasses; // StartupWMClass, lower case
        QStringList programs;      // Exec's and TryExec's file names
    };
    void load() const; // once, on first use
    std::optional<Indexed> read(const QString& path, const QString& id) const;

    QStringList folders_;
    QString locale_;
    mutable std::once_flag loaded_;
    mutable QList<Indexed> entries_;
    mutable QHash<QString, qsizetype> byId_;
};
