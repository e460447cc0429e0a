#pragma once

#include "CatalogueModel.h"
#include "Result.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

/// What the databases do not tell and a new catalogue carries over from the one before. Any thread.
class OldCatalogue final
{
public:
    struct Image {
        std::optional<double> offset; ///< from its date to the catalogue's local form of it
        QString imagePath;
        QString originalPath;
        QVariantList faces;
    };

    struct Album {
        QString type;
        QList<qint64> photos;
        CatalogueAlbumSettings settings;
    };

    /// Of a catalogue that is missing or none at all: nothing, and wasRead() says so.
    [[nodiscard]] static OldCatalogue parse(const QByteArray& bytes);

    [[nodiscard]] bool wasRead() const { return m_read; }

    /// Null where the catalogue has no such key.
    [[nodiscard]] QString text(const QString& key) const;

    [[nodiscard]] const QVariantMap& faces() const { return m_faces; }

    /// Empty for a photo that it does not hold.
    [[nodiscard]] Image image(qint64 id) const { return m_images.value(id); }

    /// By GUID; nothing for an album that it does not hold.
    [[nodiscard]] std::optional<Album> album(const QString& guid) const;

    [[nodiscard]] QString rollName(qint64 id) const { return m_rollNames.value(id); }

    /// Of any photo; nothing when it holds none.
    [[nodiscard]] std::optional<double> offset() const { return m_offset; }

private:
    void addImage(qint64 id, const QVariantMap& image);

    bool m_read{false};
    QVariantMap m_texts;
    QVariantMap m_faces;
    QHash<qint64, Image> m_images;
    QHash<QString, Album> m_albums;
    QHash<qint64, QString> m_rollNames;
    std::optional<double> m_offset;
};
