#include "DamagedLibrary.h"

#include "Connection.h"
#include "PropertyList.h"
#include "Queries.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImage>

using namespace Qt::StringLiterals;

namespace
{

/// A JPEG picture; an orientation other than 1 is told in an EXIF segment.
QByteArray picture(int tone, int orientation)
{
    QImage image(480, 320, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qRgb((x * tone / 40) % 256, (x + tone) % 256, y % 256));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "JPEG", 90));
    if (orientation != 1) {
        // APP1 of 34 bytes: "Exif", a big-endian TIFF head, one entry: tag 0x0112, SHORT, 1
        QByteArray segment = QByteArray::fromHex("ffe10022457869660000"
                                                 "4d4d002a00000008000101120003"
                                                 "000000010000000000000000");
        constexpr qsizetype kBehindTheValue = 6;
        segment[segment.size() - kBehindTheValue - 1] = static_cast<char>(orientation);
        bytes.insert(2, segment);
    }
    return bytes;
}

} // namespace

void DamagedLibrary::SetUp()
{
    WritableLibrary::SetUp();
    qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/state"_s));
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    importPhoto(*library, u"Lake.jpg"_s, 40, 1);
    importPhoto(*library, u"Tower.jpg"_s, 90, 6);
    importPhoto(*library, u"Garden.jpg"_s, 160, 1);
    importPhoto(*library, u"Blurred.jpg"_s, 200, 1);
    const PhotoApplicationPtr photos = application(*library);
    photos->newAlbumName(u"Best"_s);
    const auto named = [&photos](const QString& name) {
        const QList<PhotoPtr> all = photos->photoLibraryAlbum()->photos();
        for (const PhotoPtr& photo : all) {
            if (photo->name() == name) {
                return photo;
            }
        }
        return PhotoPtr();
    };
    const PhotoPtr lake = named(u"Lake"_s);
    const PhotoPtr tower = named(u"Tower"_s);
    const PhotoPtr blurred = named(u"Blurred"_s);
    ASSERT_TRUE(lake && tower && blurred);
    const QList<AlbumPtr> albums = photos->albums();
    for (const AlbumPtr& album : albums) {
        if (album->name() == "Best"_L1) {
            lake->addTo(album);
            tower->addTo(album);
        }
    }
    lake->setRating(5);
    lake->select();
    photos->assignKeywordString(u"Water"_s);
    blurred->removeFrom(photos->photoLibraryAlbum());
    ASSERT_TRUE(library->close().ok());
    ASSERT_EQ(findings(), QStringList());
}

void DamagedLibrary::TearDown()
{
    qunsetenv("XDG_STATE_HOME");
}

void DamagedLibrary::importPhoto(PhotoLibrary& library,
                                 const QString& name,
                                 int tone,
                                 int orientation) const
{
    ImportRequest request;
    request.sourcePath = makeFile(name, picture(tone, orientation));
    request.eventName = name == "Garden.jpg"_L1 ? u"Home"_s : u"Holiday"_s;
    const Result<qint64> imported = library.importPhoto(request);
    ASSERT_TRUE(imported.ok()) << imported.error().message.toStdString();
}

QStringList DamagedLibrary::findings() const
{
    const auto library = open(Access::Read);
    if (library == nullptr) {
        return {u"it does not open"_s};
    }
    const Result<QList<Finding>> found = library->verify();
    EXPECT_TRUE(found.ok()) << found.error().message.toStdString();
    QStringList lines;
    for (const Finding& finding : found.ok() ? found.value() : QList<Finding>()) {
        lines += u"%1 [%2]%3"_s.arg(
            finding.what, finding.where, finding.repairable ? u" *"_s : QString());
    }
    return lines;
}

RepairReport DamagedLibrary::repair() const
{
    auto library = PhotoLibrary::open(package(), {.access = Access::Write, .forRepair = true});
    EXPECT_TRUE(library.ok()) << library.error().message.toStdString();
    if (!library.ok()) {
        return {};
    }
    const Result<RepairReport> report = library.value()->repair();
    EXPECT_TRUE(report.ok()) << report.error().message.toStdString();
    EXPECT_TRUE(library.value()->close().ok());
    return report.ok() ? report.value() : RepairReport();
}

void DamagedLibrary::execute(const QString& sql) const
{
    auto connection = Connection::open(package(), Connection::Mode::Write);
    ASSERT_TRUE(connection.ok());
    connection.value()->database().exec(sql.toStdString());
}

void DamagedLibrary::remove(const QString& relativePath) const
{
    EXPECT_TRUE(QFile::remove(package() + u'/' + relativePath)) << relativePath.toStdString();
}

void DamagedLibrary::write(const QString& relativePath, const QByteArray& bytes) const
{
    const QString path = package() + u'/' + relativePath;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

void DamagedLibrary::replace(const QString& relativePath,
                             const QByteArray& old,
                             const QByteArray& by) const
{
    QFile file(package() + u'/' + relativePath);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    ASSERT_TRUE(bytes.contains(old)) << old.constData();
    write(relativePath, bytes.replace(old, by));
}

void DamagedLibrary::setKey(const QString& relativePath,
                            const QString& key,
                            const QVariant& value) const
{
    const Result<QVariant> read = PropertyList::read(package() + u'/' + relativePath);
    ASSERT_TRUE(read.ok());
    QVariantMap content = read.value().toMap();
    content.insert(key, value);
    write(relativePath, PropertyList::toBinary(content).value());
}

QString DamagedLibrary::fileIn(const QString& folder, const QString& end) const
{
    QStringList files;
    QDirIterator walk(package() + u'/' + folder, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        if (path.endsWith(end)) {
            files += path.mid(package().size() + 1);
        }
    }
    files.sort();
    EXPECT_FALSE(files.isEmpty()) << folder.toStdString();
    return files.value(0);
}

QString DamagedLibrary::ask(const QString& sql) const
{
    auto connection = Connection::open(package(), Connection::Mode::Read);
    EXPECT_TRUE(connection.ok());
    return connection.ok() ? Sql::firstText(*connection.value(), sql.toLatin1().constData())
                           : QString();
}
