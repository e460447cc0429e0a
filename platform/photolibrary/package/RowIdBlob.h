#pragma once

#include "RowIdSet.h"

#include <QByteArray>

#include <optional>

/// Changes a set of row ids in its stored form. A photo's turn changes dozens of sets, each by an
/// id or two, and those of a large library have hundreds of chunks: only the chunks of these ids
/// are read and written anew, the others are stepped over and keep their bytes.
///
/// Nothing for bytes that are no set, as far as they were looked at. A set that is not changed
/// keeps all its bytes; the ids may be of any number, but RowIdSet is faster where they are of many
/// chunks.
namespace RowIdBlob
{

[[nodiscard]] std::optional<QByteArray> united(const QByteArray& blob, const RowIdSet& ids);
[[nodiscard]] std::optional<QByteArray> without(const QByteArray& blob, const RowIdSet& ids);

/// Whether it has no chunk.
[[nodiscard]] bool isEmpty(const QByteArray& blob);

} // namespace RowIdBlob
