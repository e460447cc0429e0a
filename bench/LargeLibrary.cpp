#include "LargeLibrary.h"

#include "Changes.h"
#include "EventRows.h"
#include "ImportGroup.h"
#include "ImportRows.h"
#include "LibraryCreator.h"
#include "LibraryErrors.h"
#include "PictureIntake.h"
#include "Queries.h"
#include "RowIdIndexes.h"
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
#include <string>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kPhotosOfEvent = 50;
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

class Maker final
{
public:
    Maker(Writer& writer, Model& raw, Model& jpeg)
        : m_writer(writer)
        , m_raw(raw)
        , m_jpeg(jpeg)
    {
    }

    [[nodiscard]] bool add(int number)
    {
        if (number % kPhotosOfEvent == 0) {
            m_event = EventRows::createEvent(m_writer, u"Event %1"_s.arg(number / kPhotosOfEvent));
            m_stamp = kFirstImport.addDays(number / kPhotosOfEvent);
        }
        Model& model = number % 2 == 0 ? m_raw : m_jpeg;
        PreparedPicture& picture = model.picture;
        picture.baseName = u"IMG_%1"_s.arg(number, 6, 10, QLatin1Char('0'));
        picture.fileName = picture.baseName + (picture.raw ? u".dng"_s : u".jpg"_s);
        picture.facts.dateTaken = m_stamp.addSecs(number % kPhotosOfEvent);
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
    QString m_event;
    QDateTime m_stamp;
};

/// A table of which every photo has rows.
constexpr std::array kTablesOfPhotos{"main.RKMaster",
                                     "main.RKVersion",
                                     "prox.RKImageProxyState",
                                     "prop.RKIptcProperty",
                                     "prop.RKOtherProperty",
                                     "prop.RKExifStringProperty",
                                     "prop.RKExifNumberProperty"};

/// What stands in a copied row in place of the column: ids and uuids of the copy's own. `?1` is the
/// distance of its ids, `?2` what its uuids end in.
std::string copied(const std::string& column)
{
    constexpr std::array kIds{"modelId", "masterId", "versionId"};
    constexpr std::array kUuids{"uuid",
                                "masterUuid",
                                "rawMasterUuid",
                                "nonRawMasterUuid",
                                "originalVersionUuid",
                                "versionUuid"};
    if (std::ranges::find(kIds, column) != kIds.end()) {
        return column + " + ?1";
    }
    return std::ranges::find(kUuids, column) != kUuids.end() ? column + " || ?2" : column;
}

/// Copies every row of the table whose id is at most `last`.
void copyRows(Connection& connection, const std::string& table, qint64 last, int copy)
{
    const std::string schema = table.substr(0, table.find('.'));
    const std::string name = table.substr(table.find('.') + 1);
    std::string columns;
    std::string values;
    SQLite::Statement info(connection.database(),
                           "SELECT name FROM pragma_table_info(?, ?) ORDER BY cid");
    info.bind(1, name);
    info.bind(2, schema);
    while (info.executeStep()) {
        const std::string column = info.getColumn(0).getString();
        columns += (columns.empty() ? "" : ",") + column;
        values += (values.empty() ? "" : ",") + copied(column);
    }
    SQLite::Statement insert(connection.database(),
                             "INSERT INTO " + table + "(" + columns + ") SELECT " + values +
                                 " FROM " + table + " WHERE modelId <= ?3");
    Sql::bind(insert, 1, last * copy);
    insert.bind(2, "~" + std::to_string(copy));
    Sql::bind(insert, 3, last);
    insert.exec();
}

/// Multiplies the photos, all with the files of the first ones. Their events grow with them.
void multiply(Writer& writer, int copies)
{
    Connection& connection = writer.connection;
    qint64 last = 0;
    for (const char* table : kTablesOfPhotos) {
        const std::string highest = std::string("SELECT max(modelId) FROM ") + table;
        last = std::max(last, Sql::firstInteger(connection, highest.c_str()).value_or(0));
    }
    for (const char* table : kTablesOfPhotos) {
        for (int copy = 1; copy < copies; ++copy) {
            copyRows(connection, table, last, copy);
        }
    }
    Sql::execute(connection,
                 "UPDATE RKAdminData SET propertyValue = CAST(? AS TEXT)"
                 " WHERE propertyName = 'nextModelId'",
                 last * copies + 1);
    for (const QString& event :
         Sql::texts(connection, "SELECT uuid FROM RKFolder WHERE folderType = 2 AND isMagic = 0")) {
        EventRows::updateStatistics(writer, event);
    }
    RowIdIndexes::recomputeAll(writer);
}

Result<void> fill(Connection& connection, int photos, Model& raw, Model& jpeg)
{
    Changes changes;
    Writer writer{connection, changes, 0.0};
    connection.database().exec("PRAGMA synchronous=OFF");
    connection.beginImmediate();
    Maker maker(writer, raw, jpeg);
    for (int number = 0; number < std::min(photos, kImported); ++number) {
        if (!maker.add(number)) {
            return Error{
                ErrorCode::NotWritable,
                u"Photo %1 could not be written to %2"_s.arg(number).arg(connection.packagePath())};
        }
    }
    multiply(writer, std::max(1, photos / kImported));
    connection.commit();
    return {};
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
    if (const Result<void> created = LibraryCreator::create(package); !created.ok()) {
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
