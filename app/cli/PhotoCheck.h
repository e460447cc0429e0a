#pragma once

#include <QString>

#include <optional>

/// Tries a photo's file.
namespace PhotoCheck
{

/// What is wrong with a photo's file.
struct Problem {
    enum class Kind : quint8 {
        Missing,     ///< not there, or not to be read
        Unsupported, ///< of a type that is not read
        Damaged,     ///< does not decode to its last row
    };
    Kind kind{Kind::Damaged};
    QString sentence;
};

/// Nothing when the file is there, readable, of a readable type and decodes to its last row.
/// `path` is empty where the library names no file, or one on `volume`, a disk that is not at hand.
/// Thread: any; takes as long as decoding.
[[nodiscard]] std::optional<Problem> problemOf(const QString& path, const QString& volume = {});

} // namespace PhotoCheck
