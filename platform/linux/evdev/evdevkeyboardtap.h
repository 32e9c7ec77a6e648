#pragma once

#include "platform/hotkeyplatform.h"
#include "platform/linux/evdev/evdevkeystate.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

class QFileSystemWatcher;
class QSocketNotifier;

// Watches the keyboard through the kernel's input devices (/dev/input/event*),
// where no display server shows a program every key: Wayland. Mice and
// touchpads are read for their buttons and wheels, which cancel a tap. Reading them
// takes membership of the `input` group, which can read every key typed.
// Nothing is grabbed; keys still reach the focused application. Keys held on
// several keyboards count as one; a keyboard unplugged lets go of its keys.
class EvdevKeyboardTap {
public:
    static constexpr const char* kDeviceFolder = "/dev/input";

    explicit EvdevKeyboardTap(QString deviceFolder = QString::fromLatin1(kDeviceFolder));
    ~EvdevKeyboardTap();
    EvdevKeyboardTap(const EvdevKeyboardTap&) = delete;
    EvdevKeyboardTap& operator=(const EvdevKeyboardTap&) = delete;

    // Whether some keyboard of the folder can be read by this user.
    static bool canReadKeyboards(const QString& deviceFolder = QString::fromLatin1(kDeviceFolder));

    // Opens every readable keyboard and pointer and watches for new ones;
    // false when there is none to read.
    bool create(HotkeyPlatform::Callback callback);
    void setEnabled(bool enabled) { enabled_ = enabled; }
    void release();

    // Reads `input_event` records from an open descriptor, which the tap
    // then owns: a device, or in tests a pipe, with the events going to
    // `callback` as create() would send them.
    void setCallback(HotkeyPlatform::Callback callback) { callback_ = std::move(callback); }
    void addDevice(int fd, const QString& path);
    int deviceCount() const { return int(devices_.size()); }

private:
    struct Device {
        QString path;
        std::unique_ptr<QSocketNotifier> notifier;
        QByteArray pending; // a record cut between two reads
        QSet<int> down;
    };

    void scanFolder();
    void readDevice(int fd);
    void removeDevice(int fd);
    void handleRecord(Device& device, quint16 type, quint16 code, qint32 value);
    void key(Device& device, int code, bool pressed);
    void releaseAll(Device& device);

    QString folder_;
    HotkeyPlatform::Callback callback_;
    bool enabled_ = false;
    EvdevKeyState keys_;
    QHash<int, std::shared_ptr<Device>> devices_; // by descriptor
    std::unique_ptr<QFileSystemWatcher> watcher_;
};
