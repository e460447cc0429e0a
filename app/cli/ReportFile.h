#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

class Console;

/// Where the report of a scan goes.
class ReportFile final
{
public:
    /// `path`: "-" is standard output, and so are the names that the system has for it.
    explicit ReportFile(QString path);

    [[nodiscard]] bool isStandardOutput() const;
    /// Why the report could not be written there, as a sentence; nothing when it probably can.
    /// `library`: nothing is written into it.
    [[nodiscard]] std::optional<QString> obstacle(const QString& library) const;
    /// Writes the whole document or, on an error, nothing.
    [[nodiscard]] Result<void> write(const QByteArray& document, Console& console) const;

private:
    QString m_path;
};
