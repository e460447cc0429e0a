#pragma once

#include "CatalogueModel.h"
#include "OldCatalogue.h"

#include <QByteArray>
#include <QString>

/// Lays the catalogues out as the photo application does, byte for byte. Any thread.
class CatalogueWriter final
{
public:
    /// `archivePath`: where the package lies, in words of the catalogue: every path begins with it.
    CatalogueWriter(const CatalogueModel& model, const OldCatalogue& old, QString archivePath);

    /// AlbumData.xml: everything.
    [[nodiscard]] QByteArray full() const;
    /// iLifeShared/AlbumData2.xml: albums and events without photos.
    [[nodiscard]] QByteArray brief() const;

private:
    [[nodiscard]] QString headText(const QString& key, const QString& usual) const;

    const CatalogueModel& m_model;
    const OldCatalogue& m_old;
    QString m_archivePath;
};
