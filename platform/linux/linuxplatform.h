#pragma once

#include "platform/linux/displaysession.h"

#include <QProcessEnvironment>

#include <memory>

class AtspiAccessibility;
class DesktopWindows;
class HotkeyPlatform;
class KeyboardLayout;
class LoginItem;
class RemoteControl;
class SwayWindows;
class SystemInfo;
class UpdatePackaging;
class WindowDirectory;
class Workspace;
class X11Windows;

// Every Linux backend of one process, made by its root (main, kestrioctl, a
// harness) and handed down from there; which backend stands behind each
// interface depends on the session (X11, sway, GNOME, KDE). Each is made on
// first use, on the UI thread, and goes with this object, the last made
// first.
class LinuxPlatform {
public:
    explicit LinuxPlatform(const DisplaySession& session = DisplaySession::fromEnvironment(
                               QProcessEnvironment::systemEnvironment()));
    ~LinuxPlatform();
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    const DisplaySession& session() const { return session_; }

    // The windows of the session, where the display tells of them.
    WindowDirectory& windowDirectory();
    // Menus and trust over AT-SPI (the Accessibility interface).
    AtspiAccessibility& accessibility();
    DesktopWindows& desktopWindows();
    Workspace& workspace();
    HotkeyPlatform& hotkeys();
    KeyboardLayout& keyboardLayout();
    LoginItem& loginItem();
    RemoteControl& remoteControl();
    UpdatePackaging& updatePackaging();
    const SystemInfo& systemInfo();

private:
    // sway's IPC connection, shared by the window directory, the workspace
    // and the focus requests; null outside sway.
    SwayWindows* sway();
    // The X server's windows, shared by the window directory, the workspace
    // and the window operations: one thread follows them all.
    X11Windows& x11();

    const DisplaySession session_;
    // In the order they are made on: each goes before what it uses.
    std::unique_ptr<X11Windows> x11_;
    std::unique_ptr<SwayWindows> sway_;
    bool swayAsked_ = false;
    std::unique_ptr<WindowDirectory> noWindows_;
    std::unique_ptr<SystemInfo> systemInfo_;
    std::unique_ptr<AtspiAccessibility> accessibility_;
    std::unique_ptr<DesktopWindows> desktopWindows_;
    std::unique_ptr<Workspace> workspace_;
    std::unique_ptr<KeyboardLayout> keyboardLayout_;
    std::unique_ptr<HotkeyPlatform> hotkeys_;
    std::unique_ptr<LoginItem> loginItem_;
    std::unique_ptr<RemoteControl> remoteControl_;
    std::unique_ptr<UpdatePackaging> updatePackaging_;
};
