#pragma once

#include "Writer.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

/// Libraries of the kinds that people have, made by the program itself and then changed to what
/// iPhoto would have written. What stands of a kind in its databases is known from public readers
/// of the format where no library at hand has it; each such kind says so. A step that fails ends
/// the test program.
class LibraryBuilder final
{
public:
    /// Makes an empty library; no writer is open on it while a method runs.
    explicit LibraryBuilder(QString package);

    /// Imports a picture, a JPEG or a RAW one, into an event; the photo's id.
    [[nodiscard]] qint64 addPhoto(const QString& fileName, const QString& event);
    [[nodiscard]] qint64 addRaw(const QString& fileName, const QString& event);
    /// "NAME.dng" and "NAME.JPG" as one photo: two masters that name each other, each with a
    /// version as imported, and one visible version that names both. Seen in libraries of newer
    /// programs with the same columns, in none of iPhoto's. `active`: the one that is shown.
    enum class Active : quint8 { Raw, Jpeg };
    [[nodiscard]] qint64 addPair(const QString& name, const QString& event, Active active);

    /// Moves a photo's master to `path` below a folder that stands for a disk of the Mac's, and
    /// makes it a reference to that. Known from public readers; an empty `volume` is the Mac's own
    /// disk, which is concluded.
    void
    makeReference(qint64 photo, const QString& volume, const QString& root, const QString& path);
    /// The user edited it: its rendered preview lies in the library, at the returned path.
    QString makeEdited(qint64 photo);
    void makeMovie(qint64 photo);
    void setHidden(qint64 photo);
    void setFlagged(qint64 photo);
    void moveToTrash(qint64 photo);

    /// A regular album of the user's with these photos; its id.
    qint64 addAlbum(const QString& name, const QList<qint64>& photos);
    /// A folder of the user's, and an album in it; the album's id.
    qint64
    addAlbumInFolder(const QString& folder, const QString& name, const QList<qint64>& photos);
    void addEmptyEvent(const QString& name);

    /// Changes columns of a row, "isHidden=1"; indexes follow.
    void set(const QString& table, qint64 modelId, const QString& assignments);
    /// Changes anything; indexes follow.
    void edit(const std::function<void(Writer&)>& change);

    [[nodiscard]] const QString& package() const { return m_package; }

    /// Path of the photo's master as its row has it, below Masters.
    [[nodiscard]] QString imagePath(qint64 photo);

private:
    [[nodiscard]] qint64
    import(const QString& fileName, const QByteArray& bytes, const QString& event);
    /// Turns a photo into the partner of another one.
    static void dissolve(Writer& writer, qint64 photo);

    QString m_package;
    int m_pictures{0};
};
