#include "LargeLibrary.h"

#include "Catalogues.h"
#include "Changes.h"
#include "Clock.h"
#include "EventRows.h"
#include "ImportGroup.h"
#include "ImportRows.h"
#include "LargeLibraryRows.h"
#include "LibraryCreator.h"
#include "LibraryErrors.h"
#include "PictureIntake.h"
#include "Uuid.h"
#include "Writer.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// On the average.
constexpr int kPhotosOfEvent = 50;
constexpr int kPhotosOfAlbum = 200; ///< so many for each album that there is
constexpr int kPhotosOfKeyword = 100;
/// So many are taken in one by one; the others are copies of their rows.
constexpr int kImported = 2000;
/// No file system that a library lies on takes fewer links to one file.
constexpr int kLinksOfFile = 20000;
constexpr QSize kPreviewSize(1024, 683);

QByteArray previewJpeg()
{
    QImage picture(kPreviewSize, QImage::Format_RGB32);
    constexpr int kByte = 256;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            picture.setPixel(x, y, qRgb(x % kByte, y % kByte, (x + y) % kByte));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    picture.save(&buffer, "JPEG");
    return bytes;
}

/// Puts files of one content into the package: copies now and then, links to the last copy between.
class SharedFile final
{
public:
    explicit SharedFile(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }

    [[nodiscard]] bool put(const QString& path)
    {
        if (m_links > 0 && ::link(QFile::encodeName(m_copy).constData(),
                                  QFile::encodeName(path).constData()) == 0) {
            --m_links;
            return true;
        }
        QFile file(path);
        m_copy = path;
        m_links = kLinksOfFile;
        return file.open(QIODevice::WriteOnly) && file.write(m_bytes) == m_bytes.size();
    }

private:
    QByteArray m_bytes;
    QString m_copy;
    int m_links{0};
};

/// One of the two pictures that all photos show.
struct Model {
    explicit Model(PreparedPicture prepared)
        : picture(std::move(prepared))
        , files{SharedFile(picture.bytes),
                SharedFile(picture.preview),
                SharedFile(picture.thumbnail),
                SharedFile(picture.miniature)}
    {
    }

    /// Its files under the names of one photo; all in one folder of the event.
    [[nodiscard]] bool put(const QString& package, const ImportIdentity& identity)
    {
        return files[0].put(package + "/Masters/"_L1 + identity.masterPath(picture)) &&
               (picture.preview.isEmpty() ||
                files[1].put(package + "/Previews/"_L1 + identity.previewPath(picture))) &&
               files[2].put(package + "/Thumbnails/"_L1 + identity.thumbnailPath(picture)) &&
               files[3].put(package + "/Thumbnails/"_L1 + identity.miniaturePath(picture));
    }

    PreparedPicture picture;
    std::array<SharedFile, 4> files;
};

/// How many photos each event holds: the first one most, the n-th an n-th of that.
QList<int> sizesOfEvents(int photos)
{
    const int events = std::max(1, photos / kPhotosOfEvent);
    double shares = 0.0;
    for (int event = 1; event <= events; ++event) {
        shares += 1.0 / event;
    }
    QList<int> sizes;
    int left = photos;
    for (int event = 1; event < events; ++event) {
        sizes += std::max(1, static_cast<int>(photos / shares / event));
        left -= sizes.last();
    }
    return sizes << left;
}

/// Takes photos in, one after another.
class Maker final
{
public:
    Maker(Writer& writer, Model& raw, Model& jpeg, int photos)
        : m_writer(writer)
        , m_raw(raw)
        , m_jpeg(jpeg)
        , m_sizes(sizesOfEvents(photos))
    {
    }

    [[nodiscard]] bool add(int number)
    {
        if (m_left == 0) {
            m_left = m_sizes.takeFirst();
            m_event = EventRows::createEvent(m_writer, u"Event %1"_s.arg(m_events));
            m_stamp = kFirstImport.addDays(m_events++);
        }
        --m_left;
        Model& model = number % 2 == 0 ? m_raw : m_jpeg;
        PreparedPicture& picture = model.picture;
        picture.baseName = u"IMG_%1"_s.arg(number, 6, 10, QLatin1Char('0'));
        picture.fileName = picture.baseName + (picture.raw ? u".dng"_s : u".jpg"_s);
        picture.facts.dateTaken = m_stamp.addSecs(m_left);
        const ImportIdentity identity{
            Uuid::create(), Uuid::create(), Uuid::create(), m_stamp, m_event};
        return makeFolders(identity) && model.put(m_writer.connection.packagePath(), identity) &&
               ImportRows::insert(m_writer, picture, identity) > 0;
    }

private:
    [[nodiscard]] bool makeFolders(const ImportIdentity& identity) const
    {
        const QDir package(m_writer.connection.packagePath());
        const QString group = ImportGroup::folder(m_stamp);
        return package.mkpath("Masters/"_L1 + group) &&
               package.mkpath("Previews/"_L1 + group + u'/' + identity.versionUuid) &&
               package.mkpath("Thumbnails/"_L1 + group + u'/' + identity.versionUuid);
    }

    const QDateTime kFirstImport{QDate(2008, 1, 1), QTime(9, 0)};
    Writer& m_writer;
    Model& m_raw;
    Model& m_jpeg;
    QList<int> m_sizes; ///< of the events to come
    int m_events{0};    ///< that there are
    int m_left{0};      ///< photos that the last one is still to get
    QString m_event;
    QDateTime m_stamp;
};

Result<void> fill(Connection& connection, int photos, Model& raw, Model& jpeg)
{
    Changes changes;
    const double now = SystemClock().now();
    Writer writer{connection, changes, now};
    connection.database().exec("PRAGMA synchronous=OFF");
    connection.beginImmediate();
    const int imported = std::min(photos, kImported);
    Maker maker(writer, raw, jpeg, imported);
    for (int number = 0; number < imported; ++number) {
        if (!maker.add(number)) {
            return Error{
                ErrorCode::NotWritable,
                u"Photo %1 could not be written to %2"_s.arg(number).arg(connection.packagePath())};
        }
    }
    LargeLibraryRows::multiply(writer, photos / imported);
    LargeLibraryRows::assignKeywords(writer, std::max(1, photos / kPhotosOfKeyword));
    LargeLibraryRows::fillAlbums(writer, std::max(1, photos / kPhotosOfAlbum));
    LargeLibraryRows::settle(writer);
    connection.commit();
    const Result<Catalogues::CarriedOver> catalogues = Catalogues::write(connection, now);
    return catalogues.ok() ? Result<void>() : Result<void>(catalogues.error());
}

} // namespace

Result<void> LargeLibrary::make(const QString& package, int photos, const QString& raw)
{
    const QTemporaryDir folder;
    const QByteArray preview = previewJpeg();
    const QString jpeg = folder.filePath(u"picture.jpg"_s);
    QFile file(jpeg);
    if (!file.open(QIODevice::WriteOnly) || file.write(preview) != preview.size()) {
        return Error{ErrorCode::NotWritable, u"%1 could not be written"_s.arg(jpeg)};
    }
    file.close();
    Result<PreparedPicture> rawPicture =
        PictureIntake::raw(raw, QFileInfo(raw).fileName(), preview);
    Result<PreparedPicture> jpegPicture = PictureIntake::jpeg(jpeg, u"picture.jpg"_s);
    if (!rawPicture.ok() || !jpegPicture.ok()) {
        return rawPicture.ok() ? jpegPicture.error() : rawPicture.error();
    }
    if (Result<void> created = LibraryCreator::create(package); !created.ok()) {
        return created;
    }
    Result<std::unique_ptr<Connection>> connection =
        Connection::open(package, Connection::Mode::Write);
    if (!connection.ok()) {
        return connection.error();
    }
    Model rawModel(std::move(rawPicture).value());
    Model jpegModel(std::move(jpegPicture).value());
    return LibraryErrors::caught(
        package, [&] { return fill(*connection.value(), photos, rawModel, jpegModel); });
}
