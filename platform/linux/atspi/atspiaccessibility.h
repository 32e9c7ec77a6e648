#pragma once

#include "platform/accessibility.h"
#include "platform/linux/atspi/atspibus.h"
#include "platform/linux/x11/x11windows.h"

#include <QHash>
#include <QMutex>

// Other applications' menus over AT-SPI2, the active window from the X11
// window manager's hints.
class AtspiAccessibility final : public Accessibility {
public:
    // How long a press waits for an error before it counts as done: an item
    // that opens a modal dialog answers only when the dialog closes.
    static constexpr int kPressReplyMs = 300;
    // Enabled states read with the menus are trusted this long; later the
    // application is asked again.
    static constexpr double kStateFreshSeconds = 1.0;

    AtspiAccessibility();
    ~AtspiAccessibility() override;

    AccessibilityElementRef applicationElement(qint32 pid) override;
    AttributeRead copyAttributeValue(const AccessibilityElementRef& element, const QString& attribute) override;
    AccessibilityError performAction(const AccessibilityElementRef& element, const QString& action) override;
    bool isProcessTrusted() override;
    void requestTrust() override;
    std::optional<RunningApplication> frontmostApplication() override;
    void openAccessibilitySettings() override;
    int skippedLeadingMenus() const override { return 0; } // Linux menu bars hold only the application's menus

    struct ApplicationInfo {
        qint32 pid = 0;
        QString name;
        QString toolkit;
        AtspiRef root;
    };
    // Every application on the accessibility bus.
    QList<ApplicationInfo> applications();
    std::optional<ApplicationInfo> application(qint32 pid);

    // The running application behind an X11 window, named as the usage history keys it.
    std::optional<RunningApplication> runningApplication(unsigned long window);
    // The same, found through the process's first top-level window.
    std::optional<RunningApplication> runningApplicationOf(qint32 pid);

private:
    // The applications with their processes, unnamed; this process left out.
    QList<ApplicationInfo> applicationProcesses();
    QList<ApplicationInfo> named(QList<ApplicationInfo> apps);
    QDBusConnection pressConnection(const AtspiRef& application, bool& peer);

    X11Windows windows_;
    AtspiBus bus_;
    QMutex mutex_;
    QHash<QString, std::optional<QDBusConnection>> peers_; // by application bus name
};
