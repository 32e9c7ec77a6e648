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

// An element of a made-up application, with attributes a test sets.
class FakeElement final : public AccessibilityElement {
public:
    QHash<QString, AttributeRead> attributes;
    AccessibilityError pressResult = AccessibilityError::success;
    bool vanished = false; // every read and action fails as for a quit application
    mutable std::atomic<int> pressCount = 0;
    // When set, every read of this element waits until the test releases it:
    // an application that does not answer.
    std::shared_ptr<Gate> frozen;

    void set(const QString& attribute, AccessibilityValue value);

    // Building blocks of a menu bar in the platform's shape.
    static std::shared_ptr<FakeElement> menuBar(std::initializer_list<std::shared_ptr<FakeElement>> menus);
    // A menu-bar entry whose menu holds `items`.
    static std::shared_ptr<FakeElement> barMenu(const QString& title, std::initializer_list<std::shared_ptr<FakeElement>> items);
    static std::shared_ptr<FakeElement> item(const QString& title, bool enabled = true);
    static std::shared_ptr<FakeElement> submenu(const QString& title, std::initializer_list<std::shared_ptr<FakeElement>> items);
    static std::shared_ptr<FakeElement> separator();
    static std::shared_ptr<FakeElement> withRole(const QString& role, const QString& title);
};

class FakeAccessibility final : public Accessibility {
public:
    bool trusted = true;
    bool trustKnown = true; // false: afterTrustIsKnown waits for announceTrust
    int leadingMenus = 2;
    std::optional<RunningApplication> frontmost;
    int settingsOpened = 0;
    int trustRequests = 0;
    int attributeReads = 0;
    std::atomic<int> trustChecks = 0;

    // The application element for `pid`, whose "AXMenuBar" is `menuBar`; with
    // a window, the element the application has for that window only.
    void addApplication(qint32 pid, std::shared_ptr<FakeElement> menuBar, std::optional<quint64> window = std::nullopt);
    std::shared_ptr<FakeElement> application(qint32 pid, std::optional<quint64> window = std::nullopt) const;
    // The first answer about trust comes in.
    void announceTrust();

    AccessibilityElementRef applicationElement(qint32 pid, std::optional<quint64> window = std::nullopt) override;
    AttributeRead copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute) override;
    AccessibilityError performAction(const AccessibilityElementRef& element, const QString& action) override;
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
    int skippedLeadingMenus() const override { return leadingMenus; }

private:
    bool lastAnswer_ = false;
    mutable std::mutex mutex_;
    QHash<std::pair<qint32, quint64>, std::shared_ptr<FakeElement>> applications_; // window 0: the application's own
    QList<std::pair<QPointer<QObject>, std::function<void()>>> trustWaiters_;
};
