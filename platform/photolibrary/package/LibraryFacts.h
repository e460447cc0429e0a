#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>

/// What the library knows of one photo, as listings show it: a copy that holds nothing open. Any
/// thread.
struct PhotoFacts {
    qint64 id{0}; ///< key in the catalogue; modelId of the visible version
    QString guid; ///< uuid of the visible version; names the folders of preview and thumbnails
    QString masterGuid;              ///< uuid of the active master
    QString fileName;                ///< the master's
    QString name;                    ///< the title; scripting knows it as name and as title
    QString comment;                 ///< empty where there is none
    int rating{0};                   ///< 0..5; see unknown
    double date{0.0};                ///< seconds since 2001-01-01T00:00:00 UTC; see zoneName
    QString zoneName;                ///< the zone the date is shown in; "GMT": shown as it is
    int width{0};                    ///< pixels, as shown
    int height{0};                   ///< pixels, as shown
    std::optional<double> latitude;  ///< signed degrees
    std::optional<double> longitude; ///< signed degrees
    std::optional<double> altitude;  ///< metres
    QStringList keywords;            ///< sorted without regard to case
    bool losesKeyword{false};        ///< one of them is gone from the library
    QStringList albums;              ///< names of the user's regular albums, sorted likewise
    qint64 rollId{0};                ///< the event's modelId; 0 when it has none
    QString rollName;
    QString imagePath;     ///< absolute: the rendered preview, else the master; empty = none
    QString originalPath;  ///< absolute: the master, of a pair the RAW one; empty = out of reach
    QString volume;        ///< of a referenced master: the disk it lies on; else empty
    QString previewPath;   ///< absolute: the rendered preview; empty = none
    QString thumbnailPath; ///< absolute: the 360-pixel thumbnail; empty = none
    bool raw{false};       ///< a master of it is RAW
    bool edited{false};    ///< the user edited it
    bool rotated{false};   ///< the user turned it otherwise than its file says
    bool hidden{false};
    bool movie{false};
    bool missing{false}; ///< its original is no file that exists; one that may not be read is there
    bool unreadable{false}; ///< its original is there, but this user may not read it
    qint64 bytes{0};        ///< of the original on disk, readable or not; 0 when missing

    /// Numbers that the library does not have of this photo; they stand here as 0.
    struct Unknown {
        bool rating{false};
        bool date{false};
        bool width{false};
        bool height{false};

        bool operator==(const Unknown&) const = default;
    };

    Unknown unknown{};

    /// The date as the photo shows it, ISO 8601 without zone: "2018-10-13T09:18:12". Empty where
    /// there is no date.
    [[nodiscard]] QString wallClock() const;

    bool operator==(const PhotoFacts&) const = default;
};

/// What was deleted for good with the trash. Any thread.
struct EmptiedTrash {
    qsizetype photos{0};
    qint64 bytes{0}; ///< that are free again on the disk
};

/// The library in figures. Any thread.
struct LibrarySummary {
    int photos{0};          ///< visible ones: not in the trash, not hidden, no movies
    int rolls{0};           ///< events that have a visible photo
    int albums{0};          ///< the user's regular ones
    int keywords{0};        ///< that the library defines
    int rawPhotos{0};       ///< visible ones with a RAW master
    qint64 rawBytes{0};     ///< of the RAW masters on disk; a pair's counts once
    int processedPhotos{0}; ///< visible copies filed from an original
    int trashedPhotos{0};
    qint64 trashedBytes{0};     ///< of the masters of the trash, both of a pair, no referenced one
    int missing{0};             ///< visible photos whose original is no file that exists
    QStringList offlineVolumes; ///< disks of missing referenced masters that are not at hand
    bool writable{false};
    QString whyReadOnly;  ///< what keeps it from being written to, but for problems; else empty
    QStringList problems; ///< what the integrity check found, one sentence each
};
