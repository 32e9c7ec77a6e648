#include "platform/linux/kde/kdeglobalshortcut.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QHash>
#include <QKeySequence>

#include <xkbcommon/xkbcommon.h>

namespace {

const QString kPath = QStringLiteral("/kglobalaccel");
const QString kInterface = QStringLiteral("org.kde.KGlobalAccel");
const QString kComponentInterface = QStringLiteral("org.kde.kglobalaccel.Component");
// The service answers at once; one that does not is given up on.
constexpr int kCallTimeoutMs = 5000;

// setShortcut's flags: the action is there to be pressed; the keys given
// replace the ones the user saved for it.
constexpr uint kSetPresent = 2;
constexpr uint kNoAutoloading = 4;

DesktopShortcutState refused(const QString& problem)
{
    return {DesktopShortcutState::Kind::refused, {}, problem};
}

// A list of numbers in a reply (D-Bus "ai"), as QtDBus hands it over.
QList<int> numbersOf(const QVariant& value)
{
    if (value.canConvert<QDBusArgument>()) {
        const QDBusArgument argument = value.value<QDBusArgument>();
        return argument.currentSignature() == QLatin1String("ai") ? qdbus_cast<QList<int>>(argument) : QList<int>();
    }
    return value.value<QList<int>>();
}

} // namespace

KdeGlobalShortcut::KdeGlobalShortcut(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {}

KdeGlobalShortcut::~KdeGlobalShortcut()
{
    stopListening();
}

int KdeGlobalShortcut::keyOf(const DesktopKeys& keys)
{
    // Keys that type nothing, by their keysym names.
    static const QHash<QString, int> named{
        {QStringLiteral("space"), Qt::Key_Space},       {QStringLiteral("Return"), Qt::Key_Return},
        {QStringLiteral("KP_Enter"), Qt::Key_Enter},    {QStringLiteral("Tab"), Qt::Key_Tab},
        {QStringLiteral("BackSpace"), Qt::Key_Backspace}, {QStringLiteral("Escape"), Qt::Key_Escape},
        {QStringLiteral("Delete"), Qt::Key_Delete},     {QStringLiteral("Home"), Qt::Key_Home},
        {QStringLiteral("End"), Qt::Key_End},           {QStringLiteral("Page_Up"), Qt::Key_PageUp},
        {QStringLiteral("Page_Down"), Qt::Key_PageDown}, {QStringLiteral("Left"), Qt::Key_Left},
        {QStringLiteral("Right"), Qt::Key_Right},       {QStringLiteral("Up"), Qt::Key_Up},
        {QStringLiteral("Down"), Qt::Key_Down},         {QStringLiteral("Help"), Qt::Key_Help},
    };
    const QString& name = keys.keysym;
    int key = named.value(name);
    if (!key) {
        // Any other key by what it types: Qt numbers letters as their capitals.
        const xkb_keysym_t keysym = xkb_keysym_from_name(name.toUtf8().constData(), XKB_KEYSYM_NO_FLAGS);
        const uint32_t typed = keysym == XKB_KEY_NoSymbol ? 0 : xkb_keysym_to_utf32(keysym);
        if (typed > 0x20 && typed < 0xFFFF && QChar(char16_t(typed)).isPrint())
            key = QChar(char16_t(typed)).toUpper().unicode();
    }
    if (!key && name.size() >= 2 && name.size() <= 3 && name[0] == u'F') {
        const int number = name.mid(1).toInt();
        key = number >= 1 && number <= 35 ? Qt::Key_F1 + number - 1 : 0;
    }
    if (!key)
        return 0;
    if (keys.modifiers.testFlag(Modifier::ctrl))
        key |= Qt::ControlModifier;
    if (keys.modifiers.testFlag(Modifier::alt))
        key |= Qt::AltModifier;
    if (keys.modifiers.testFlag(Modifier::shift))
        key |= Qt::ShiftModifier;
    if (keys.modifiers.testFlag(Modifier::super))
        key |= Qt::MetaModifier;
    return key;
}

QString KdeGlobalShortcut::readable(int key)
{
    // Plasma calls the logo key Meta; Kestrio says Super everywhere.
    return QKeySequence(key).toString(QKeySequence::PortableText).replace(QStringLiteral("Meta+"), QStringLiteral("Super+"));
}

QString KdeGlobalShortcut::describeHolder(const QStringList& holder)
{
    if (holder.size() < 4)
        return {};
    const QString action = holder[3].isEmpty() ? holder[1] : holder[3];
    const QString component = holder[2].isEmpty() ? holder[0] : holder[2];
    return QStringLiteral("the shortcut for “%1” (%2)").arg(action, component);
}

QDBusMessage KdeGlobalShortcut::call(const QString& method, const QVariantList& arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, kPath, kInterface, method);
    message.setArguments(arguments);
    // A shortcut service that is not running is not started for Kestrio.
    message.setAutoStartService(false);
    return message;
}

void KdeGlobalShortcut::ask(const QString& method, const QVariantList& arguments,
                            std::function<void(const QDBusMessage&)> then)
{
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call(method, arguments), kCallTimeoutMs), this);
    const quint64 generation = generation_;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, generation, then = std::move(then)] {
        watcher->deleteLater();
        if (generation == generation_)
            then(watcher->reply());
    });
}

void KdeGlobalShortcut::bind(const DesktopKeys& keys, bool replace, std::function<void()> activated, Changed changed)
{
    stopListening();
    ++generation_;
    activated_ = std::move(activated);
    changed_ = std::move(changed);
    const int key = keyOf(keys);
    if (!key) {
        changed_(refused(QStringLiteral("KDE Plasma cannot bind this shortcut; record another one.")));
        return;
    }
    // Registered first, so that Kestrio shows in System Settings even when
    // its keys are refused: the user can give it others there.
    registered_ = true;
    bus_.asyncCall(call(QStringLiteral("doRegister"), {kActionId}), kCallTimeoutMs);
    ask(QStringLiteral("shortcut"), {kActionId}, [this, key, replace](const QDBusMessage& saved) {
        if (saved.type() != QDBusMessage::ReplyMessage) {
            changed_(refused(QStringLiteral("KDE Plasma's shortcut service does not answer.")));
            return;
        }
        const QList<int> savedKeys = numbersOf(saved.arguments().value(0));
        // Keys the user gave Kestrio in System Settings stay, unless they
        // just chose these in Kestrio.
        if (!replace && !savedKeys.isEmpty() && savedKeys.first() != 0) {
            ask(QStringLiteral("setShortcut"), {kActionId, QVariant::fromValue(savedKeys), kSetPresent},
                [this](const QDBusMessage& set) {
                    report(numbersOf(set.arguments().value(0)));
                    listen();
                });
            return;
        }
        take(key);
    });
}

void KdeGlobalShortcut::take(int key)
{
    ask(QStringLiteral("action"), {key}, [this, key](const QDBusMessage& held) {
        const QStringList holder = held.arguments().value(0).toStringList();
        if (holder.size() >= 2 && !(holder[0] == kActionId[0] && holder[1] == kActionId[1])) {
            changed_(refused(QStringLiteral("%1 is already %2. Record another shortcut in Kestrio's settings.")
                                 .arg(readable(key), describeHolder(holder))));
            listen(); // keys the user gives it in System Settings still count
            return;
        }
        ask(QStringLiteral("setShortcut"), {kActionId, QVariant::fromValue(QList<int>{key}), kSetPresent | kNoAutoloading},
            [this](const QDBusMessage& set) {
                report(numbersOf(set.arguments().value(0)));
                listen();
            });
    });
}

void KdeGlobalShortcut::report(const QList<int>& keys)
{
    if (keys.isEmpty() || keys.first() == 0) {
        changed_(refused(QStringLiteral("No keys open Kestrio: give it a shortcut in System Settings → Shortcuts, "
                                        "or record another one here.")));
        return;
    }
    changed_({DesktopShortcutState::Kind::bound, readable(keys.first()), {}});
}

void KdeGlobalShortcut::listen()
{
    if (!listeningForChanges_) {
        listeningForChanges_ = bus_.connect(kService, kPath, kInterface, QStringLiteral("yourShortcutGotChanged"), this,
                                            SLOT(keysChanged(QStringList, QList<int>)));
    }
    if (!componentPath_.isEmpty())
        return;
    ask(QStringLiteral("getComponent"), {kActionId[0]}, [this](const QDBusMessage& component) {
        const QDBusObjectPath path = component.arguments().value(0).value<QDBusObjectPath>();
        if (path.path().isEmpty() || !componentPath_.isEmpty())
            return;
        // Presses count only from the service itself (QtDBus matches the
        // sender against the name's owner), never from another program.
        if (bus_.connect(kService, path.path(), kComponentInterface, QStringLiteral("globalShortcutPressed"), this,
                         SLOT(pressed(QString, QString, qlonglong))))
            componentPath_ = path.path();
    });
}

void KdeGlobalShortcut::stopListening()
{
    if (!componentPath_.isEmpty()) {
        bus_.disconnect(kService, componentPath_, kComponentInterface, QStringLiteral("globalShortcutPressed"), this,
                        SLOT(pressed(QString, QString, qlonglong)));
        componentPath_.clear();
    }
    if (listeningForChanges_) {
        bus_.disconnect(kService, kPath, kInterface, QStringLiteral("yourShortcutGotChanged"), this,
                        SLOT(keysChanged(QStringList, QList<int>)));
        listeningForChanges_ = false;
    }
}

void KdeGlobalShortcut::pressed(const QString& component, const QString& action, qlonglong)
{
    if (component == kActionId[0] && action == kActionId[1] && activated_)
        activated_();
}

void KdeGlobalShortcut::keysChanged(const QStringList& actionId, const QList<int>& keys)
{
    // Keys changed or cleared in System Settings.
    if (actionId.size() >= 2 && actionId[0] == kActionId[0] && actionId[1] == kActionId[1] && changed_)
        report(keys);
}

void KdeGlobalShortcut::release()
{
    ++generation_;
    stopListening();
    if (!std::exchange(registered_, false))
        return;
    // Not pressed while Kestrio does not listen; the keys stay its own.
    bus_.asyncCall(call(QStringLiteral("setInactive"), {kActionId}), kCallTimeoutMs);
}

void KdeGlobalShortcut::forget()
{
    ++generation_;
    stopListening();
    registered_ = false;
    bus_.asyncCall(call(QStringLiteral("unregister"), {kActionId[0], kActionId[1]}), kCallTimeoutMs);
}
