#pragma once

#include "Texts.h"

#include <QStringList>

/// What a photo's keywords say of an earlier scan, in whatever letters the library has them. Any
/// thread.
namespace PhotoMarks
{

/// A copy of it was made.
[[nodiscard]] inline bool isConvertedOriginal(const QStringList& keywords)
{
    return keywords.contains(Texts::originalKeyword(), Qt::CaseInsensitive);
}

/// It is such a copy.
[[nodiscard]] inline bool isProcessedCopy(const QStringList& keywords)
{
    return keywords.contains(Texts::processedKeyword(), Qt::CaseInsensitive);
}

} // namespace PhotoMarks
