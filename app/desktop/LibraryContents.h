#pragma once

#include "LibraryFacts.h"

#include <QList>
#include <QMetaType>
#include <QSet>
#include <QString>
#include <QStringList>

/// What an open library holds, read in one go: a copy that holds nothing open. Any thread.
struct LibraryContents {
    QString path;             ///< absolute
    QString version;          ///< of the photo application, "9.6.1"
    QString whyReadOnly;      ///< why nothing can be written to it; empty when it can
    QString caution;          ///< what to know before anything is written; empty without any
    bool inUse{false};        ///< it cannot, since another program has it open
    bool checking{false};     ///< it is being checked before anything may be written to it
    QList<PhotoFacts> photos; ///< out of the trash, in the catalogue's order; hidden ones marked
    QList<PhotoFacts> trash;
    QStringList albums;      ///< names of the user's regular albums, in the library's order
    QSet<qint64> lastImport; ///< ids of the photos of the last import

    [[nodiscard]] bool isWritable() const { return !checking && whyReadOnly.isEmpty(); }

    /// What stands above the photos.
    [[nodiscard]] const QString& notice() const
    {
        return whyReadOnly.isEmpty() ? caution : whyReadOnly;
    }

    bool operator==(const LibraryContents&) const = default;
};
Q_DECLARE_METATYPE(LibraryContents)
