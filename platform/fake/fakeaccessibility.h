#pragma once

#include "platform/accessibility.h"

#include <QHash>
#include <QPointer>

#include <atomic>
#include <condition_variable>
#include <mutex>

#include <initializer_list>
#include <memory>

// Holds back whoever passes until a test opens it: an application that does
// not answer, until it does.
class Gate {
public:
    void open()
    {
        std::lock_guard lock(mutex_);
        open_ = true;
        opened_.notify_all();
    }
    void pass()
    {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

// A command of a made-up application, answering as a test sets it.
class FakeMenuItem final : public MenuHandle {
public:
    // Whether it is enabled when asked again; nothing: gone, or not answering.
    std::optional<bool> enabled = true;
    bool pressResult = true;
    mutable std::atomic<int> pressCount = 0;
    // When set, asking or pressing it waits until the test releases it: an
    // application that does not answer.
    std::shared_ptr<Gate> frozen;
};

// Building blocks of a made-up application's menus.
namespace FakeMenus {
MenuTree menuBar(std::initializer_list<MenuNode> menus, bool complete = true);
// A menu of the bar, or a submenu, holding `entries`.
MenuNode menu(const QString& title, std::initializer_list<MenuNode> entries);
MenuNode item(const QString& title, bool enabled = true);
MenuNode separator();
MenuNode withShortcut(MenuNode item, const KeyChord& shortcut);
// How the item made above answers when asked again or pressed.
FakeMenuItem& handleOf(const MenuNode& item);
} // namespace FakeMenus

class FakeAccessibility final : public Accessibility {
public:
    bool trusted = true;
    bool trustKnown = true; // false: afterTrustIsKnown waits for announceTrust
    std::optional<RunningApplication> frontmost;
    int settingsOpened = 0;
    int trustRequests = 0;
    std::atomic<int> readings = 0; // menus read
    std::atomic<int> trustChecks = 0;

    // The menus of `pid`; with a window, of that window only. Nothing: the
    // application shows no menus.
    void addApplication(qint32 pid, std::optional<MenuTree> menus, std::optional<quint64> window = std::nullopt);
    // The application answers no reading until `gate` opens.
    void freeze(qint32 pid, std::shared_ptr<Gate> gate);
    // The first answer about trust comes in.
    void announceTrust();

    std::optional<MenuTree> readMenus(qint32 pid, std::optional<quint64> window = std::nullopt) override;
    std::optional<bool> isEnabled(const MenuHandleRef& item) override;
    bool press(const MenuHandleRef& item) override;
    // As platforms that find out in the background answer: what the previous
    // question found, while askTrust answers afresh.
    bool answersLate = false;

    bool isProcessTrusted() override
    {
        ++trustChecks;
        if (answersLate)
            return std::exchange(lastAnswer_, trusted);
        return trusted;
    }
    void askTrust(QObject* context, std::function<void(bool)> answered) override;
    void afterTrustIsKnown(QObject* context, std::function<void()> then) override;
    void requestTrust() override { ++trustRequests; }
    std::optional<RunningApplication> frontmostApplication() override { return frontmost; }
    void openAccessibilitySettings() override { ++settingsOpened; }
    // Frozen applications give their readings up, as the platform's do.
    void stopReadings() override;

private:
    bool lastAnswer_ = false;
    std::mutex mutex_;
    QHash<std::pair<qint32, quint64>, std::optional<MenuTree>> applications_; // window 0: the application's own
    QHash<qint32, std::shared_ptr<Gate>> frozen_;
    QList<std::pair<QPointer<QObject>, std::function<void()>>> trustWaiters_;
};
