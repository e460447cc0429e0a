#pragma once

#include "NamedException.h"

#include <QDebug>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>

struct ProvedJpeg;

/// The scripting surface of the photo application: what the scan may ask of it. Two
/// implementations exist: over a library package on disk (folder package/) and the recording fake
/// of the tests.
///
/// Threads: objects may be used from any thread; each thread sees the library through a connection
/// of its own. Errors: every call may raise ScriptingException.

/// What the photo application raises.
class ScriptingException final : public NamedException
{
public:
    using NamedException::NamedException;
};

/// An instant with the name of the time zone it is shown in ("GMT": shown as it is). A photo
/// without a date has one that is not a number; setting that changes nothing.
struct PhotoDate {
    double secondsSince2001{0.0};
    QString zoneName;
    friend bool operator==(const PhotoDate&, const PhotoDate&) = default;
};
Q_DECLARE_METATYPE(PhotoDate)

/// The classes of scripting objects.
enum class ScriptingClass : quint8 { Photo, Album };

/// An object of the photo application; two are equal by class and id.
class ScriptingObject
{
public:
    virtual ~ScriptingObject() = default;
    ScriptingObject() = default;
    ScriptingObject(const ScriptingObject&) = delete;
    ScriptingObject& operator=(const ScriptingObject&) = delete;

    [[nodiscard]] virtual ScriptingClass scriptingClass() const = 0;
    /// Unique within the class; of a photo, its key in the catalogue. No scripting call.
    [[nodiscard]] virtual qint64 id() const = 0;
    /// For the log, such as "photo id 7". No scripting call.
    [[nodiscard]] QString description() const;
};

using ScriptingObjectPtr = std::shared_ptr<ScriptingObject>;
/// Equal by class and id; null equals only null.
[[nodiscard]] bool isSameObject(const ScriptingObjectPtr& left, const ScriptingObjectPtr& right);

struct Keyword {
    QString name;
    friend bool operator==(const Keyword&, const Keyword&) = default;
};

class Album;
using AlbumPtr = std::shared_ptr<Album>;

/// What the library itself knows of a photo and a conversion is judged by. Read without a
/// scripting call.
struct PhotoEvidence {
    QStringList files;   ///< absolute paths of the photo's own image files (masters, preview)
    QString previewPath; ///< largest rendered picture of it, upright; empty when there is none
    bool edited{false};  ///< the rendered picture shows edits that the master lacks, or may be old
    /// Clockwise degrees (0, 90, 180, 270) from the master's stored pixels to the rendered picture.
    int rotation{0};
};

class Photo : public ScriptingObject
{
public:
    [[nodiscard]] ScriptingClass scriptingClass() const final { return ScriptingClass::Photo; }

    /// The whole property record in one request, or nothing. Keys: "imageFilename", "imagePath",
    /// "originalPath" (strings), "date" (PhotoDate), "id", "height", "width" (numbers), and
    /// whatever else the application tells. Key absent, key with a null QVariant and key with a
    /// value are three different things.
    [[nodiscard]] virtual std::optional<QVariantMap> properties() = 0;

    /// Paths are absolute; nothing where the application has none.
    [[nodiscard]] virtual std::optional<QString> originalPath() = 0;
    [[nodiscard]] virtual std::optional<QString> previewPath() = 0;
    [[nodiscard]] virtual std::optional<QString> thumbnailPath() = 0;
    /// Pixels, as shown.
    [[nodiscard]] virtual int height() = 0;
    /// Signed degrees; 0 where the photo has no position.
    [[nodiscard]] virtual double latitude() = 0;
    [[nodiscard]] virtual double longitude() = 0;

    [[nodiscard]] virtual std::optional<double> altitude() = 0; ///< metres
    [[nodiscard]] virtual QString comment() = 0;
    [[nodiscard]] virtual PhotoDate date() = 0;
    [[nodiscard]] virtual QString name() = 0;
    [[nodiscard]] virtual int rating() = 0; ///< 0..5
    [[nodiscard]] virtual QString title() = 0;
    virtual void setAltitude(std::optional<double> metres) = 0;
    virtual void setComment(const QString& comment) = 0;
    virtual void setDate(const PhotoDate& date) = 0;
    virtual void setName(const QString& name) = 0;
    virtual void setRating(int rating) = 0;
    virtual void setTitle(const QString& title) = 0;

    [[nodiscard]] virtual QList<Keyword> keywords() = 0;
    /// Makes this photo the application's selection.
    virtual void select() = 0;
    /// Adds the photo to an album; without an album, or for one that is gone, nothing happens.
    virtual void addTo(const AlbumPtr& album) = 0;
    /// Removes the photo from an album; removing it from the photo-library album moves it to the
    /// library's trash. A photo in the trash stays as it is.
    virtual void removeFrom(const AlbumPtr& album) = 0;

    [[nodiscard]] virtual PhotoEvidence evidence() = 0;
    /// Whether a keyword of it is gone from the library, so that a copy cannot get it. Read without
    /// a scripting call.
    [[nodiscard]] virtual bool losesKeyword() = 0;
};

using PhotoPtr = std::shared_ptr<Photo>;

/// FourCC of a regular album, 'albm'.
inline constexpr quint32 kRegularAlbumType = 0x616C626D;

class Album : public ScriptingObject
{
public:
    [[nodiscard]] ScriptingClass scriptingClass() const final { return ScriptingClass::Album; }

    [[nodiscard]] virtual QString name() = 0;
    /// kRegularAlbumType for a regular album of the user's own; any other value otherwise.
    [[nodiscard]] virtual quint32 type() = 0;
    [[nodiscard]] virtual QList<PhotoPtr> photos() = 0;
    /// Imports the picture file at `path` into `target`, copying it when `forceCopy`. When it
    /// returns, the photo is in the library. An import that did not happen raises.
    virtual void importFrom(const QString& path, bool forceCopy, const AlbumPtr& target) = 0;
};

class PhotoApplication
{
public:
    virtual ~PhotoApplication() = default;

    /// Whether the application runs; every other call may launch it or raise.
    [[nodiscard]] virtual bool isRunning() = 0;
    [[nodiscard]] virtual QString version() = 0;
    /// Photos or albums, in the application's order.
    [[nodiscard]] virtual QList<ScriptingObjectPtr> selection() = 0;
    [[nodiscard]] virtual QList<Keyword> keywords() = 0;
    [[nodiscard]] virtual QList<AlbumPtr> albums() = 0;
    /// The album that stands for the whole library.
    [[nodiscard]] virtual AlbumPtr photoLibraryAlbum() = 0;
    [[nodiscard]] virtual AlbumPtr lastImportAlbum() = 0;
    /// Whether an import is still under way.
    [[nodiscard]] virtual bool importing() = 0;
    /// Assigns the keyword of that name to the selected photos.
    virtual void assignKeywordString(const QString& keyword) = 0;
    virtual void newAlbumName(const QString& name) = 0;
};

using PhotoApplicationPtr = std::shared_ptr<PhotoApplication>;

/// One photo's turn, as a scope on the calling thread: `importFrom` opens a transaction, whatever
/// this thread then changes joins it. commit() makes it durable as a whole; destruction without
/// commit, by an exception say, undoes it as a whole. Without an import in it, a turn is nothing.
class PhotoTurn
{
public:
    virtual ~PhotoTurn() = default;

    /// Tells what the next import in the turn brings, so that its file is not decoded again. An
    /// import of other bytes pays no attention to it. No scripting call.
    virtual void expect(const ProvedJpeg& /*jpeg*/) {}

    /// Raises ScriptingException when it cannot be made durable; it is undone then.
    virtual void commit() = 0;
};

/// Where applications are asked for.
class ScriptingBridge
{
public:
    virtual ~ScriptingBridge() = default;
    /// A proxy of the application with that bundle identifier ("com.apple.iPhoto"); it always
    /// exists, also when the application does not run.
    [[nodiscard]] virtual PhotoApplicationPtr
    applicationWithBundleIdentifier(const QString& identifier) = 0;
    /// Opens a turn on the calling thread; one at a time a thread.
    [[nodiscard]] virtual std::unique_ptr<PhotoTurn> beginPhotoTurn() = 0;
};
