#pragma once

#include "platform/accessibility.h"

#include <QHash>
#include <QMutex>

#include <initializer_list>
#include <memory>

// An element of a made-up application, with attributes a test sets.
class FakeElement final : public AccessibilityElement {
public:
    QHash<QString, AttributeRead> attributes;
    AccessibilityError pressResult = AccessibilityError::success;
    bool vanished = false; // every read and action fails as for a quit application
    mutable int pressCount = 0;

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
    int leadingMenus = 2;
    std::optional<RunningApplication> frontmost;
    int settingsOpened = 0;
    int trustRequests = 0;
    int attributeReads = 0;

    // The application element for `pid`, whose "AXMenuBar" is `menuBar`.
    void addApplication(qint32 pid, std::shared_ptr<FakeElement> menuBar);
    std::shared_ptr<FakeElement> application(qint32 pid) const;

    AccessibilityElementRef applicationElement(qint32 pid) override;
    AttributeRead copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute) override;
    AccessibilityError performAction(const AccessibilityElementRef& element, const QString& action) override;
    bool isProcessTrusted() override { return trusted; }
    void requestTrust() override { ++trustRequests; }
    std::optional<RunningApplication> frontmostApplication() override { return frontmost; }
    void openAccessibilitySettings() override { ++settingsOpened; }
    int skippedLeadingMenus() const override { return leadingMenus; }

private:
    mutable QMutex mutex_;
    QHash<qint32, std::shared_ptr<FakeElement>> applications_;
};
