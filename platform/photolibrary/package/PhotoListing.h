#pragma once

#include "Connection.h"
#include "LibraryFacts.h"

#include <QList>

#include <memory>

/// The photos in or out of the trash. Their rows are read at once, for the snapshot of the caller;
/// their files are found on other threads meanwhile and afterwards, since a slow disk must not keep
/// a writer waiting. Errors: SQLite::Exception.
class PhotoListing final
{
public:
    PhotoListing(Connection& connection, bool inTrash);
    ~PhotoListing();
    PhotoListing(const PhotoListing&) = delete;
    PhotoListing& operator=(const PhotoListing&) = delete;

    /// By event, then by date. Waits for the files; once. Any thread, also while the library
    /// changes.
    [[nodiscard]] QList<PhotoFacts> take();

private:
    class Private;
    std::unique_ptr<Private> m_private;
};
