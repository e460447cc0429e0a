#pragma once

#include "LibraryActions.h"
#include "LibraryCopyFixture.h"
#include "LibrarySession.h"
#include "LibraryWindow.h"
#include "PhotoGrid.h"
#include "RecentLibraries.h"
#include "UserDefaults.h"

#include <QLabel>
#include <QStatusBar>

/// The library window alone over a copy of a small sample library.
class LibraryWindowFixture : public LibraryCopyFixture
{
protected:
    void SetUp() override
    {
        LibraryCopyFixture::SetUp();
        m_window.show();
    }

    void open(const QString& path)
    {
        m_window.openLibrary(path);
        ASSERT_TRUE(waitUntil([this] { return !m_session.isBusy(); }));
    }

    [[nodiscard]] PhotoGrid& grid()
    {
        return *m_window.findChild<PhotoGrid*>(QStringLiteral("photoGrid"));
    }

    template <typename Widget>
    [[nodiscard]] Widget& part(const QString& name)
    {
        auto* const found = m_window.findChild<Widget*>(name);
        EXPECT_NE(found, nullptr) << name.toStdString();
        return *found;
    }

    [[nodiscard]] QString figures()
    {
        return part<QLabel>(QStringLiteral("selectionFigures")).text();
    }

    /// File names of the photos to be seen, in their order.
    [[nodiscard]] QStringList names()
    {
        QStringList names;
        const auto* const photos = static_cast<const PhotoFilter*>(grid().model());
        for (int row = 0; row < photos->rowCount(); ++row) {
            names += photos->photo(photos->index(row, 0)).fileName;
        }
        return names;
    }

    UserDefaults m_defaults{m_folder.filePath(QStringLiteral("settings.plist"))};
    RecentLibraries m_recent{m_defaults};
    LibrarySession m_session;
    LibraryWindow m_window{m_session, m_recent};
};
