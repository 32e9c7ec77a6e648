#pragma once

#include <QTimer>
#include <QWidget>

// A small indeterminate progress spinner.
class BusySpinner : public QWidget {
    Q_OBJECT

public:
    explicit BusySpinner(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {28, 28}; }

protected:
    void paintEvent(QPaintEvent*) override;
    void showEvent(QShowEvent*) override { timer_.start(); }
    void hideEvent(QHideEvent*) override { timer_.stop(); }

private:
    QTimer timer_;
    int angle_ = 0;
};
