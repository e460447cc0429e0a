#pragma once

#include <QLocale>
#include <QString>

/// How figures of photos are written in the desktop program. Any thread.
namespace PhotoTexts
{

/// "11.1 MB"; a megabyte is 1,048,576 bytes, as in the summary of a scan.
[[nodiscard]] inline QString size(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

/// On one line, without line ends, tabs and other control characters: titles come from anywhere.
[[nodiscard]] inline QString oneLine(const QString& text)
{
    QString line = text.simplified();
    line.removeIf([](QChar c) { return c.category() == QChar::Other_Control; });
    return line;
}

} // namespace PhotoTexts
