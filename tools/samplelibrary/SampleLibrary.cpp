#include "SampleLibrary.h"

#include "AtomicFile.h"
#include "LibraryCreator.h"
#include "PhotoLibrary.h"
#include "Photographer.h"
#include "SamplePlan.h"
#include "TemporaryDirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMostPhotos = 1000;
constexpr double kFewestMegapixels = 0.05;
constexpr double kMostMegapixels = 100.0;
/// Megapixels that are rendered at the same time, so that memory suffices.
constexpr double kMegapixelsAtOnce = 60.0;
constexpr int kMostThreads = 8;

constexpr QLatin1StringView kPackageName = "Sample.photolibrary"_L1;

int threadsFor(double megapixels)
{
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    const auto inMemory = static_cast<int>(kMegapixelsAtOnce / megapixels);
    return std::clamp(std::min(processors, inMemory), 1, kMostThreads);
}

/// What the caller is told and asked while the photos are made; both may be empty.
struct Talk {
    const std::function<void(int done, int total)>& progress;
    const std::function<bool()>& shouldStop;

    void tell(qsizetype done, qsizetype total) const
    {
        if (progress) {
            progress(static_cast<int>(done), static_cast<int>(total));
        }
    }

    [[nodiscard]] bool isStopWanted() const { return shouldStop && shouldStop(); }
};

Error stopped()
{
    return {ErrorCode::Interrupted, u"The sample library was not finished"_s};
}

/// Imports all photos; returns their ids in the same order.
Result<QList<qint64>> importAll(PhotoLibrary& library,
                                const QList<PlannedPhoto>& photos,
                                double megapixels,
                                const Talk& talk)
{
    const auto folder = TemporaryDirectory::create();
    if (!folder.ok()) {
        return folder.error();
    }
    Photographer photographer(photos, threadsFor(megapixels));
    QList<qint64> ids;
    for (const PlannedPhoto& photo : photos) {
        if (talk.isStopWanted()) {
            return stopped();
        }
        const auto rendered = photographer.next();
        if (!rendered.ok()) {
            return rendered.error();
        }
        const QString path = folder.value().path() + photo.fileName;
        if (const auto written = AtomicFile::write(path, rendered.value().dng); !written.ok()) {
            return written.error();
        }
        ImportRequest request;
        request.sourcePath = path;
        request.fileName = photo.fileName;
        request.eventName = photo.event;
        request.preview = rendered.value().preview;
        if (photo.place) {
            request.latitude = photo.place->latitude;
            request.longitude = photo.place->longitude;
        }
        const auto id = library.importPhoto(request);
        QFile::remove(path);
        if (!id.ok()) {
            return id.error();
        }
        ids.append(id.value());
        talk.tell(ids.size(), photos.size());
    }
    return ids;
}

/// What a person would have typed in. Raises ScriptingException.
void describe(PhotoApplication& application, const PlannedPhoto& planned, Photo& photo)
{
    if (!planned.name.isEmpty()) {
        photo.setName(planned.name);
    }
    if (!planned.comment.isEmpty()) {
        photo.setComment(planned.comment);
    }
    if (planned.rating > 0) {
        photo.setRating(planned.rating);
    }
    if (planned.place) {
        photo.setAltitude(planned.place->altitude);
    }
    if (!planned.keywords.isEmpty()) {
        photo.select();
        for (const QString& keyword : planned.keywords) {
            application.assignKeywordString(keyword);
        }
    }
}

/// Makes the albums and describes the photos. Raises ScriptingException.
void arrange(PhotoApplication& application,
             const QList<PlannedPhoto>& planned,
             const QList<qint64>& ids)
{
    for (const QString& name : SamplePlan::albums()) {
        application.newAlbumName(name);
    }
    QHash<QString, AlbumPtr> albums;
    for (const AlbumPtr& album : application.albums()) {
        if (album->type() == kRegularAlbumType) {
            albums.insert(album->name(), album);
        }
    }
    QHash<qint64, PhotoPtr> photos;
    for (const PhotoPtr& photo : application.photoLibraryAlbum()->photos()) {
        photos.insert(photo->id(), photo);
    }
    for (qsizetype i = 0; i < planned.size(); ++i) {
        const PhotoPtr photo = photos.value(ids.at(i));
        if (!photo) {
            throw ScriptingException(
                u"PhotoMissing"_s,
                u"\"%1\" did not arrive in the library"_s.arg(planned.at(i).fileName));
        }
        describe(application, planned.at(i), *photo);
        for (const QString& name : planned.at(i).albums) {
            photo->addTo(albums.value(name));
        }
    }
}

/// Fills a library that was just created.
Result<void> fill(const QString& package, const SampleOptions& options, const Talk& talk)
{
    auto library = PhotoLibrary::open(package, {.access = Access::Write});
    if (!library.ok()) {
        return library.error();
    }
    const QList<PlannedPhoto> planned = SamplePlan::photos(options);
    const auto ids = importAll(*library.value(), planned, options.megapixels, talk);
    if (!ids.ok()) {
        return ids.error();
    }
    if (talk.isStopWanted()) {
        return stopped();
    }
    try {
        const auto application =
            library.value()->applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
        arrange(*application, planned, ids.value());
    } catch (const ScriptingException& exception) {
        return Error{ErrorCode::Internal, exception.reason()};
    }
    return library.value()->close();
}

/// Which folder it is, whatever its name.
struct FolderIdentity {
    dev_t device{0};
    ino_t number{0};

    bool operator==(const FolderIdentity&) const = default;
};

/// Nothing where there is no folder of that name, or only a link to one.
std::optional<FolderIdentity> identityOf(const QString& folder)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(folder).constData(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    return FolderIdentity{status.st_dev, status.st_ino};
}

/// The library that a folder is or lies in, links resolved; empty when there is none.
QString libraryAround(const QString& folder)
{
    QString path = QFileInfo(folder).canonicalFilePath();
    while (!path.isEmpty()) {
        if (QFileInfo(path + "/Database/apdb/Library.apdb"_L1).isFile()) {
            return path;
        }
        path = path.section(u'/', 0, -2);
    }
    return {};
}

/// Makes an empty library; nothing stays where that fails. Making the folder tells atomically
/// whether the name is free: from then on the package is this call's own.
Result<FolderIdentity> makePackage(const QString& package)
{
    if (::mkdir(QFile::encodeName(package).constData(), 0777) != 0) {
        if (errno == EEXIST) {
            return Error{
                ErrorCode::NotWritable,
                u"\"%1\" exists already: name another folder, or move it away"_s.arg(package)};
        }
        return AtomicFile::errorFromErrno(errno, u"create"_s, package);
    }
    const std::optional<FolderIdentity> made = identityOf(package);
    if (!made) {
        return Error{ErrorCode::Internal, u"\"%1\" was taken away"_s.arg(package)};
    }
    if (const auto created = LibraryCreator::create(package); !created.ok()) {
        ::rmdir(QFile::encodeName(package).constData());
        return created.error();
    }
    return *made;
}

/// Deletes a package that this call has made, and nothing but that: another one may have been put
/// in its place.
void removePackage(const QString& package, const FolderIdentity& made)
{
    const QFileInfo info(package);
    if (info.isAbsolute() && info.fileName() == kPackageName && identityOf(package) == made) {
        QDir(package).removeRecursively();
    }
}

Result<void> checkOptions(const SampleOptions& options)
{
    if (options.photos < 1 || options.photos > kMostPhotos) {
        return Error{ErrorCode::Unsupported, u"A sample library holds 1 to 1000 RAW photos"_s};
    }
    // Put this way round, no number at all is refused too.
    if (!(options.megapixels >= kFewestMegapixels && options.megapixels <= kMostMegapixels)) {
        return Error{ErrorCode::Unsupported, u"Sample photos have 0.05 to 100 megapixels"_s};
    }
    return {};
}

} // namespace

Result<QString> SampleLibrary::write(const QString& directory,
                                     const SampleOptions& options,
                                     const std::function<void(int done, int total)>& progress,
                                     const std::function<bool()>& shouldStop)
{
    if (const auto checked = checkOptions(options); !checked.ok()) {
        return checked.error();
    }
    const QFileInfo folder(directory);
    if (directory.isEmpty() || !folder.isDir()) {
        return Error{
            ErrorCode::NotFound,
            u"There is no folder \"%1\": make it, or name one that is there"_s.arg(directory)};
    }
    if (const QString library = libraryAround(directory); !library.isEmpty()) {
        return Error{ErrorCode::NotWritable,
                     u"\"%1\" lies inside the library \"%2\": name a folder outside it"_s.arg(
                         directory, library)};
    }
    const QString package = QDir(QDir::cleanPath(folder.absoluteFilePath())).filePath(kPackageName);
    const auto made = makePackage(package);
    if (!made.ok()) {
        return made.error();
    }
    const auto filled = fill(package, options, {.progress = progress, .shouldStop = shouldStop});
    if (!filled.ok()) {
        removePackage(package, made.value());
        return filled.error();
    }
    return package;
}
