#pragma once

#include "Bitmap.h"
#include "RawPhoto.h"
#include "Result.h"
#include "SmallPicture.h"

#include <QImage>
#include <QList>
#include <QString>

#include <optional>
#include <variant>
#include <vector>

struct SourceFile;

/// A picture file that was read, decoded and found whole; its picture is made for a size. What
/// ImageSource tells of types, errors and damage holds here. Any one thread at a time.
class SourcePicture final
{
public:
    [[nodiscard]] static Result<SourcePicture> open(const QString& path);

    /// In pixels, as they lie in the file.
    [[nodiscard]] QSize size() const;

    /// Whether the file holds a finished picture, and no sensor's data.
    [[nodiscard]] bool isFinished() const { return std::holds_alternative<Bitmap>(m_content); }

    /// What the file shows of its picture beside it, in sRGB: of a RAW file's previews the largest
    /// that shows the scene, where none does the largest; a HEIF file's thumbnail.
    [[nodiscard]] const std::optional<Preview>& preview() const { return m_preview; }

    /// A clause that says what is wrong with the picture, judged by what another program made of
    /// the same file, in sRGB and as its rows lie; nothing where it may be right.
    [[nodiscard]] std::optional<QString> complaintBy(const QImage& shown) const;

    /// The decoded picture: linear light for RAW.
    [[nodiscard]] Bitmap decoded() &&;

    /// The picture in `size`, each side at least 1, sRGB encoded, Format_RGB888. RAW photos are
    /// rendered to look like the first of the `references` that shows them, which guides colour
    /// and tone and nothing else; where there is none, in a neutral way. Errors: OutOfSpace,
    /// Internal.
    [[nodiscard]] Result<QImage> rendered(QSize size, const QList<QImage>& references) &&;

private:
    using Content = std::variant<Bitmap, RawPhoto>;

    explicit SourcePicture(Content content);

    /// Takes the file's preview, if it is to be compared with, and gives a clause that says what is
    /// wrong with the picture.
    [[nodiscard]] std::optional<QString> judge(const SourceFile& file);
    [[nodiscard]] std::optional<QString> judgeRaw(const RawPhoto& photo, const SourceFile& file);
    [[nodiscard]] std::optional<QString> breakComplaint(const std::vector<double>& breaks,
                                                        const SmallPicture& small,
                                                        const SourceFile& file) const;

    Content m_content;
    std::optional<Preview> m_preview;
};
