#pragma once

// Readable failure messages for Qt values; included into every test file.
#include <QDebug>
#include <QString>
#include <QVariant>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QVariant& value, std::ostream* os)
{
    QString text;
    QDebug(&text).nospace() << value;
    *os << text.toStdString();
}
