#pragma once

#include <QEvent>
#include <QObject>
#include <QTimer>

#include <functional>

// Runs `onPaint` once a watched window has drawn an update.
struct PaintWatch : QObject {
    std::function<void()> onPaint;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::UpdateRequest && onPaint)
            QTimer::singleShot(0, this, onPaint); // after the update has been drawn
        return false;
    }
};
