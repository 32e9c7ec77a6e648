#pragma once

#include "platform/hotkeyplatform.h"
#include "platform/linux/xkb/desktopkeys.h"

#include <QObject>

#include <functional>
#include <memory>

class QProcess;

// Kestrio's shortcut as one of GNOME's custom shortcuts, written with
// `gsettings`: it shows in GNOME Settings → Keyboard → Custom Shortcuts,
// where the user can change or remove it, and runs the toggle command. Only
// Kestrio's own entry is ever written or removed, and a shortcut GNOME
// already gives to something else is refused. Every step runs `gsettings`
// as a process of its own; nothing waits for one.
class GnomeShortcut : public QObject {
    Q_OBJECT

public:
    // `command`: what the shortcut runs ("kestrio --toggle").
    explicit GnomeShortcut(QString command, QObject* parent = nullptr);

    // Whether GNOME's settings can be written here.
    static bool isAvailable();

    using Done = std::function<void(const DesktopShortcutState&)>;
    // Makes `keys` open Kestrio; with `replace`, also where Kestrio's entry
    // holds other keys the user gave it in GNOME.
    void bind(const DesktopKeys& keys, bool replace, Done done);
    // Takes Kestrio's entry out; the user's other shortcuts stay.
    void forget(Done done = {});

private:
    struct Request;
    // Runs gsettings with `arguments` and hands `then` its exit status and output.
    void run(const QStringList& arguments, std::function<void(bool ok, const QString& output)> then);
    bool isCurrent(const Request& request) const;
    void readSchema(const std::shared_ptr<Request>& request, qsizetype at);
    void readCustom(const std::shared_ptr<Request>& request, qsizetype at);
    void decide(const std::shared_ptr<Request>& request);
    void write(const std::shared_ptr<Request>& request, const QList<QStringList>& steps, qsizetype at);

    QString command_;
    quint64 generation_ = 0; // a newer request makes older answers moot
};
