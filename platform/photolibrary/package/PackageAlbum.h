#pragma once

#include "PhotoLibraryPrivate.h"
#include "Scripting.h"

#include <memory>

/// An album of a library package; see Album. Any thread.
class PackageAlbum final : public Album
{
public:
    enum class Kind : quint8 {
        Listed,       ///< one of the application's list
        PhotoLibrary, ///< stands for the whole library
        LastImport,   ///< what the calling thread imported last
    };

    PackageAlbum(std::shared_ptr<PhotoLibraryPrivate> library, qint64 id, Kind kind);

    [[nodiscard]] qint64 id() const override { return m_id; }

    [[nodiscard]] Kind kind() const { return m_kind; }

    [[nodiscard]] QString name() override;
    [[nodiscard]] quint32 type() override;
    [[nodiscard]] QList<PhotoPtr> photos() override;
    void importFrom(const QString& path, bool forceCopy, const AlbumPtr& target) override;

private:
    [[nodiscard]] QList<qint64> photoIds();

    std::shared_ptr<PhotoLibraryPrivate> m_library;
    qint64 m_id;
    Kind m_kind;
};
