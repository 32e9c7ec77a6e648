#pragma once

#include <QPointer>
#include <QSize>
#include <QString>
#include <QWidget>

#include <functional>

class DesktopWindows;

// Kestrio's own windows: the welcome, the settings and the about window.
// Each is titled, closable, of a fixed size and centred, and there is one of
// each at a time: asking for one that shows brings it forward, one that was
// closed is made anew.
class ProgramWindows {
public:
    explicit ProgramWindows(DesktopWindows& windows);
    ~ProgramWindows();

    void showSettings(const std::function<QWidget*()>& makeContent);
    void showAbout(const std::function<QWidget*()>& makeContent);
    // False when the welcome is not showing; otherwise brings it forward.
    bool bringWelcomeForward();
    // Replaces any earlier welcome. Closed in any way, it goes, and its content with it.
    void showWelcome(QWidget* content, QSize size);
    void closeWelcome();

    QWidget* welcome() const { return welcome_; }
    QWidget* settings() const { return settings_; }
    QWidget* about() const { return about_; }

private:
    void showReused(QPointer<QWidget>& window, const QString& title, QSize size,
                    const std::function<QWidget*()>& makeContent);
    QWidget* make(const QString& title, QSize size, QWidget* content);
    void bringForward(QWidget* window);

    DesktopWindows& windows_;
    QPointer<QWidget> welcome_;
    QPointer<QWidget> settings_;
    QPointer<QWidget> about_;
};
