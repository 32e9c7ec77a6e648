#pragma once

#include <QWidget>

// The floating window of a search: above normal windows, without a title
// bar, dragged by its background, taking the keyboard focus without becoming
// a main window. Keys that reach it unhandled are dropped quietly.
class SearchPanel : public QWidget {
    Q_OBJECT

public:
    explicit SearchPanel(QWidget* content, bool compositor);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    bool compositor_;
    QPoint dragOffset_;
    bool dragging_ = false;
};
