#pragma once

#include "Corvane.h"
#include "TemporaryDirectory.h"
#include "TemporaryFile.h"

#include <QSet>
#include <QVariantList>

// What the engine's own files share.

/// The stages as the time-remaining estimator numbers them.
namespace ScanStage
{
inline constexpr quint64 kStartUp = 0;
inline constexpr quint64 kDataLoading = 1;
inline constexpr quint64 kAlbumLoading = 2;
inline constexpr quint64 kConversion = 3;
inline constexpr quint64 kEndOfScan = 4;
} // namespace ScanStage

/// What one scan knows.
struct Corvane::Scan {
    QList<ScriptingObjectPtr> selection;
    quint64 count{0};
    bool tagEnabled{false};
    QVariantList filenameList;
    QVariantList pathList;
    QVariantList sizeList;
    AlbumPtr photoLibraryAlbum;
    /// One name per selected photo where photos are filed by roll; else nothing.
    std::optional<QStringList> albumNames;
    AlbumPtr defaultAlbum;
    std::optional<TemporaryDirectory> temporaryDirectory;
    QStringList readableExtensions;
    bool processingOption{false};
    /// Index into the lists. It lags behind the selection by the conversions that failed.
    quint64 position{0};
    qint64 originalsTotal{0}; ///< bytes
    qint64 convertedTotal{0}; ///< bytes
    QSet<QString> failedSources;

    [[nodiscard]] QVariant at(const QVariantList& list) const
    {
        return list.value(static_cast<qsizetype>(position));
    }
};

/// One selected photo's turn in the loop. The transaction ends before the file is deleted.
struct Corvane::Turn {
    ScriptingObjectPtr object;
    PhotoPtr photo; ///< null where the selected object is an album
    int height{0};  ///< pixels
    PhotoOutcome outcome;
    TemporaryFile jpegFile;
    std::unique_ptr<PhotoTurn> transaction;
};
