#pragma once

#include "Bitmap.h"
#include "RawPhoto.h"
#include "Result.h"

#include <QImage>
#include <QList>
#include <QString>

#include <optional>
#include <variant>

/// A picture file that was read, decoded and found whole; its picture is made for a size. What
/// ImageSource tells of types, errors and damage holds here. Any one thread at a time.
class SourcePicture final
{
public:
    [[nodiscard]] static Result<SourcePicture> open(const QString& path);

    /// In pixels, as they lie in the file.
    [[nodiscard]] QSize size() const;

    /// What the file shows of its picture beside it, as ImageSource::embeddedPreview gives it.
    [[nodiscard]] const std::optional<QImage>& preview() const { return m_preview; }

    /// The decoded picture: linear light for RAW.
    [[nodiscard]] Bitmap decoded() &&;

    /// The picture in `size`, each side at least 1, sRGB encoded, Format_RGB888. RAW photos are
    /// rendered to look like the largest of the `references` that shows them, which guides colour
    /// and tone and nothing else; where there is none, in a neutral way. Errors: OutOfSpace,
    /// Internal.
    [[nodiscard]] Result<QImage> rendered(QSize size, const QList<QImage>& references) &&;

private:
    using Content = std::variant<Bitmap, RawPhoto>;

    SourcePicture(Content content, std::optional<QImage> preview);

    /// A clause that says what is wrong with the picture, judged by the preview.
    [[nodiscard]] std::optional<QString> complaint() const;

    Content m_content;
    std::optional<QImage> m_preview;
};
