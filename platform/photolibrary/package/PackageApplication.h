#pragma once

#include "PhotoLibraryPrivate.h"
#include "Scripting.h"

#include <memory>

/// The photo application over a library package; see PhotoApplication. Any thread.
class PackageApplication final : public PhotoApplication
{
public:
    /// `isKnown`: whether it is the application that the library stands in for; another one never
    /// runs, and asking anything of it raises.
    PackageApplication(std::shared_ptr<PhotoLibraryPrivate> library, bool isKnown);

    [[nodiscard]] bool isRunning() override;
    [[nodiscard]] QString version() override;
    [[nodiscard]] QList<ScriptingObjectPtr> selection() override;
    [[nodiscard]] QList<Keyword> keywords() override;
    [[nodiscard]] QList<AlbumPtr> albums() override;
    [[nodiscard]] AlbumPtr photoLibraryAlbum() override;
    [[nodiscard]] AlbumPtr lastImportAlbum() override;
    [[nodiscard]] bool importing() override;
    void assignKeywordString(const QString& keyword) override;
    void newAlbumName(const QString& name) override;

private:
    void requireRunning();

    std::shared_ptr<PhotoLibraryPrivate> m_library;
    bool m_isKnown;
};
