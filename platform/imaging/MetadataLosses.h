#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>

/// What the system log says of metadata that do not reach a JPEG: one line each, with the file's
/// name, the first ten parts, and how many there are more. Nothing where no part is lost. Any
/// thread.
namespace MetadataLosses
{

/// `block`: "Exif", "XMP"; `name`: the file's.
void logTooLarge(const QString& block, const QString& name, const QStringList& parts);
/// `most`: how many properties, or fields of one of them, are written.
void logTooMany(const QString& block,
                const QString& name,
                std::size_t most,
                const QStringList& parts);
void logUnwritable(const QString& block, const QString& name, const QStringList& parts);

} // namespace MetadataLosses
