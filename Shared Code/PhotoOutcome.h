#pragma once

#include <QMetaType>
#include <QSize>
#include <QString>

/// What became of one selected photo in a scan; for reports.
struct PhotoOutcome {
    enum class Kind : quint8 {
        NotReached,  ///< the scan ended before its turn
        Converted,   ///< its turn is committed: the copy is in the library
        Unsupported, ///< skipped: extension not readable or height 0
        Failed,      ///< no copy was made: the conversion failed, or the copy would lack a keyword
        Missing,     ///< its file was missing; the scan stopped there
    };

    Kind kind{Kind::NotReached};
    qint64 photoId{0};
    int selectionIndex{0};   ///< place in the selection
    QString source;          ///< file its turn read
    QString reason;          ///< why it failed or was skipped
    qint64 newPhotoId{0};    ///< 0 when the import did not yield exactly one photo
    QString importedAs;      ///< file name of the JPEG
    QString album;           ///< name of the album it was filed into, empty when it was not
    qint64 originalBytes{0}; ///< counted for it in the originals total
    qint64 jpegBytes{0};
    QSize pixels; ///< of the JPEG
};
Q_DECLARE_METATYPE(PhotoOutcome)
