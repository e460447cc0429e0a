#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The kinds of picture files, each with a decoder of its own.
enum class FileType : quint8 {
    Unknown, ///< none whose content is known
    Jpeg,
    Heif,    ///< HEIC and its relatives
    Picture, ///< PNG, TIFF and what else Qt reads
    Raw,     ///< what LibRaw reads
};

/// Tells the kind of a file. Any thread.
namespace FileTypes
{

/// By content; `path` only helps where content alone is ambiguous: RAW formats without a mark of
/// their own, and TIFF files that may be either.
[[nodiscard]] FileType detect(const QByteArray& bytes, const QString& path);

/// Extensions without dot, lower case, sorted.
[[nodiscard]] QStringList rawExtensions();
[[nodiscard]] QStringList otherExtensions();

} // namespace FileTypes
