#pragma once

#include "PhotoLibraryPrivate.h"
#include "Scripting.h"

#include <memory>

/// A photo of a library package, known by its row; see Photo. Any thread. A photo that is gone
/// raises.
class PackagePhoto final : public Photo
{
public:
    PackagePhoto(std::shared_ptr<PhotoLibraryPrivate> library, qint64 id);

    [[nodiscard]] qint64 id() const override { return m_id; }

    [[nodiscard]] std::optional<QVariantMap> properties() override;
    [[nodiscard]] std::optional<QString> originalPath() override;
    [[nodiscard]] std::optional<QString> previewPath() override;
    [[nodiscard]] std::optional<QString> thumbnailPath() override;
    [[nodiscard]] int height() override;
    [[nodiscard]] double latitude() override;
    [[nodiscard]] double longitude() override;
    [[nodiscard]] std::optional<double> altitude() override;
    [[nodiscard]] QString comment() override;
    [[nodiscard]] PhotoDate date() override;
    [[nodiscard]] QString name() override;
    [[nodiscard]] int rating() override;
    [[nodiscard]] QString title() override;
    void setAltitude(std::optional<double> metres) override;
    void setComment(const QString& comment) override;
    void setDate(const PhotoDate& date) override;
    void setName(const QString& name) override;
    void setRating(int rating) override;
    void setTitle(const QString& title) override;
    [[nodiscard]] QList<Keyword> keywords() override;
    void select() override;
    void addTo(const AlbumPtr& album) override;
    void removeFrom(const AlbumPtr& album) override;
    [[nodiscard]] PhotoEvidence evidence() override;
    [[nodiscard]] bool losesKeyword() override;

private:
    /// Value of a column of the photo's row.
    [[nodiscard]] QVariant column(const char* sql);

    std::shared_ptr<PhotoLibraryPrivate> m_library;
    qint64 m_id;
};
