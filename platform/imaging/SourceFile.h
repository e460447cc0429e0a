#pragma once

#include "FileType.h"
#include "PreviewFinder.h"
#include "Result.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <optional>

/// The bytes of a picture file and what kind they are. Any thread.
struct SourceFile {
    QByteArray bytes;
    FileType type{FileType::Unknown};

    /// Errors: NotFound, Unreadable, Unsupported (too large), OutOfSpace.
    [[nodiscard]] static Result<SourceFile> read(const QString& path);

    /// An error that names the file; `reason` is a clause.
    [[nodiscard]] static Error errorOf(const QString& path, ErrorCode code, const QString& reason);

    /// What the file shows of its picture beside it, in sRGB: a RAW file's largest preview that is
    /// wanted (PreviewFinder), as stored; a HEIF file's thumbnail, as it is to be shown.
    [[nodiscard]] std::optional<Preview>
    preview(const PreviewFinder::Predicate& isWanted = PreviewFinder::isAny) const;

    /// The Exif thumbnail of a JPEG file whose picture has `size`, as stored. (Its colours may be
    /// those of an earlier state of the picture.)
    [[nodiscard]] std::optional<QImage> thumbnail(QSize size) const;

    /// Whether nothing but the pixels themselves tells that its data were overwritten: those of
    /// HEIF files, and of TIFF files that hold red, green and blue of 8 bits or more.
    [[nodiscard]] bool mayHideNoise() const;
};
