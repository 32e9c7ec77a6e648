#include "platform/linux/evdev/evdevkeyboardtap.h"

#include <QDir>
#include <QFileSystemWatcher>
#include <QSocketNotifier>

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr qsizetype kRecordSize = sizeof(input_event);

bool testBit(const unsigned long* bits, int bit)
{
    constexpr int perLong = int(sizeof(unsigned long) * 8);
    return (bits[bit / perLong] >> (bit % perLong)) & 1UL;
}

// A keyboard has letters and Ctrl; mice and power buttons report keys too.
bool isKeyboard(int fd)
{
    unsigned long keys[(KEY_MAX + 1) / (sizeof(unsigned long) * 8) + 1] = {};
    if (ioctl(fd, EVIOCGBIT(EV_KEY, sizeof keys), keys) < 0)
        return false;
    return testBit(keys, KEY_A) && testBit(keys, KEY_Z) && testBit(keys, KEY_LEFTCTRL);
}

// A mouse or touchpad has a left button or a wheel.
bool isPointer(int fd)
{
    unsigned long keys[(KEY_MAX + 1) / (sizeof(unsigned long) * 8) + 1] = {};
    unsigned long axes[(REL_MAX + 1) / (sizeof(unsigned long) * 8) + 1] = {};
    const bool button = ioctl(fd, EVIOCGBIT(EV_KEY, sizeof keys), keys) >= 0 && testBit(keys, BTN_LEFT);
    const bool wheel = ioctl(fd, EVIOCGBIT(EV_REL, sizeof axes), axes) >= 0 && testBit(axes, REL_WHEEL);
    return button || wheel;
}

bool isPointerButton(int code)
{
    return code >= BTN_MOUSE && code < BTN_JOYSTICK;
}

bool isWheel(int code)
{
    return code == REL_WHEEL || code == REL_HWHEEL || code == REL_WHEEL_HI_RES || code == REL_HWHEEL_HI_RES;
}

QStringList eventDevices(const QString& folder)
{
    QStringList paths;
    for (const QString& name : QDir(folder).entryList({QStringLiteral("event*")}, QDir::System | QDir::Files))
        paths.append(folder + u'/' + name);
    return paths;
}

// The device at `path` when it is a keyboard (or, with `orPointer`, a mouse
// or touchpad): the descriptor; else -1.
int openDevice(const QString& path, bool orPointer)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return -1;
    if (!isKeyboard(fd) && !(orPointer && isPointer(fd))) {
        ::close(fd);
        return -1;
    }
    return fd;
}

} // namespace

EvdevKeyboardTap::EvdevKeyboardTap(QString deviceFolder) : folder_(std::move(deviceFolder)) {}

EvdevKeyboardTap::~EvdevKeyboardTap()
{
    release();
}

bool EvdevKeyboardTap::canReadKeyboards(const QString& deviceFolder)
{
    for (const QString& path : eventDevices(deviceFolder)) {
        const int fd = openDevice(path, false);
        if (fd >= 0) {
            ::close(fd);
            return true;
        }
    }
    return false;
}

bool EvdevKeyboardTap::create(HotkeyPlatform::Callback callback)
{
    release();
    if (!canReadKeyboards(folder_))
        return false; // mice alone see no keys
    callback_ = std::move(callback);
    scanFolder();
    if (devices_.isEmpty()) {
        release();
        return false;
    }
    // Keyboards plugged in later appear as new event devices.
    watcher_ = std::make_unique<QFileSystemWatcher>(QStringList{folder_});
    QObject::connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, [this] { scanFolder(); });
    return true;
}

void EvdevKeyboardTap::release()
{
    // Nothing is announced while letting go: the detector is the one leaving.
    callback_ = nullptr;
    enabled_ = false;
    watcher_.reset();
    for (int fd : devices_.keys())
        removeDevice(fd);
    keys_.clear();
}

void EvdevKeyboardTap::scanFolder()
{
    QSet<QString> open;
    for (const auto& device : std::as_const(devices_))
        open.insert(device->path);
    for (const QString& path : eventDevices(folder_)) {
        if (open.contains(path))
            continue;
        // Mice too: Ctrl held for a click or a zoom is not a tap.
        const int fd = openDevice(path, true);
        if (fd >= 0)
            addDevice(fd, path);
    }
}

void EvdevKeyboardTap::addDevice(int fd, const QString& path)
{
    // Reads drain what is there and stop; they never wait for a key.
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    auto device = std::make_shared<Device>();
    device->path = path;
    device->notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(device->notifier.get(), &QSocketNotifier::activated, [this, fd] { readDevice(fd); });
    devices_.insert(fd, std::move(device));
}

void EvdevKeyboardTap::removeDevice(int fd)
{
    const auto device = devices_.take(fd);
    if (!device)
        return;
    device->notifier.reset();
    releaseAll(*device);
    ::close(fd);
}

void EvdevKeyboardTap::readDevice(int fd)
{
    const auto device = devices_.value(fd); // keeps it alive while its events are handled
    if (!device)
        return;
    char buffer[64 * kRecordSize];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0) {
            device->pending.append(buffer, n);
            qsizetype at = 0;
            for (; device->pending.size() - at >= kRecordSize; at += kRecordSize) {
                input_event event;
                std::memcpy(&event, device->pending.constData() + at, kRecordSize);
                handleRecord(*device, event.type, event.code, event.value);
            }
            device->pending.remove(0, at);
            if (!devices_.contains(fd))
                return;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && errno == EAGAIN)
            return;
        // End of file or ENODEV: the keyboard is gone.
        removeDevice(fd);
        return;
    }
}

void EvdevKeyboardTap::handleRecord(Device& device, quint16 type, quint16 code, qint32 value)
{
    if (type == EV_SYN && code == SYN_DROPPED) {
        // The kernel lost events: what is held is unknown, so nothing is.
        releaseAll(device);
        return;
    }
    if ((type == EV_KEY && isPointerButton(code) && value == 1) || (type == EV_REL && isWheel(code) && value != 0)) {
        if (enabled_ && callback_)
            callback_(keys_.pointerInput());
        return;
    }
    // 0 release, 1 press, 2 auto-repeat (a key held, not pressed again).
    if (type != EV_KEY || value < 0 || value > 1 || code > KEY_MAX || isPointerButton(code))
        return;
    key(device, code, value == 1);
}

void EvdevKeyboardTap::key(Device& device, int code, bool pressed)
{
    if (pressed == device.down.contains(code))
        return;
    if (pressed)
        device.down.insert(code);
    else
        device.down.remove(code);
    // A key still held on another keyboard stays down.
    for (const auto& other : std::as_const(devices_)) {
        if (other.get() != &device && other->down.contains(code))
            return;
    }
    const std::optional<KeyEvent> event = keys_.translate(code, pressed);
    if (event && enabled_ && callback_)
        callback_(*event);
}

void EvdevKeyboardTap::releaseAll(Device& device)
{
    const QSet<int> held = device.down;
    for (int code : held)
        key(device, code, false);
}
