#pragma once

#include "FileType.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// Whether a file is whole, by what its own tables say of where its data lie. Decoders notice a
/// lack late or not at all: LibRaw reads zeros beyond the end of some formats. Any thread.
namespace FileStructure
{

/// A clause that says what is missing ("it ends before its picture does"); nothing where all the
/// ranges that the file states lie in it, and for kinds without such tables.
[[nodiscard]] std::optional<QString> complaint(const QByteArray& bytes, FileType type);

} // namespace FileStructure
