#pragma once

#include "ImageProperties.h"
#include "Result.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// The border to Exiv2: its set-up and the one place where its exceptions end. Any thread.
namespace MetadataAdapter
{

/// Runs `work`, which may call Exiv2, one caller at a time: the XMP toolkit beneath Exiv2 keeps
/// tables for the whole process. False when Exiv2 threw; what `work` had changed until then stays
/// changed. May be nested: an inner failure ends there. std::bad_alloc passes: memory that is too
/// short must not pass for metadata that are not there.
[[nodiscard]] bool attempt(const std::function<void()>& work);

/// Reads all metadata into `content`. Damage in one block leaves the others, and is noted there.
/// Throws std::bad_alloc. Errors: NotFound, Unreadable, Unsupported.
[[nodiscard]] Result<void> readFile(const QString& path, ImageProperties::Content& content);
[[nodiscard]] Result<void> readBytes(const QByteArray& bytes, ImageProperties::Content& content);

} // namespace MetadataAdapter
