#pragma once

#include <QDebug>
#include <QString>
#include <QVariant>

#include <optional>
#include <ostream>

// How GoogleTest shows Qt's values in a failure.

inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << (text.isNull() ? std::string("null") : '"' + text.toStdString() + '"');
}

inline void PrintTo(const QVariant& value, std::ostream* stream)
{
    QString text;
    QDebug(&text).nospace() << value;
    *stream << text.toStdString();
}
