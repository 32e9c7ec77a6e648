#pragma once

#include <QWidget>

class QVBoxLayout;
class StyledLabel;

// One titled group of a settings form: the title above a rounded box that
// holds the rows, separated by thin lines.
class FormSection : public QWidget {
    Q_OBJECT

public:
    explicit FormSection(const QString& title, QWidget* parent = nullptr);

    QString title() const;
    // Adds a row; rows that are hidden take no space and draw no line.
    void addRow(QWidget* row);
    QWidget* box() const { return box_; }

private:
    StyledLabel* title_;
    QWidget* box_;
    QVBoxLayout* rows_;
};
