#include "WritableLibrary.h"

#include "Bitmap.h"
#include "Connection.h"
#include "ImageProperties.h"
#include "IntegrityCheck.h"
#include "JpegDestination.h"
#include "LibraryCreator.h"
#include "Queries.h"

#include <QDirIterator>
#include <QFile>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kWidth = 96;
constexpr int kHeight = 64;

/// A picture with a ramp of grey in it.
QByteArray pictureBytes()
{
    Bitmap bitmap(kWidth, kHeight, Transfer::Srgb);
    for (int y = 0; y < kHeight; ++y) {
        quint16 value = 0;
        for (quint16& sample : bitmap.row(y)) {
            sample = value;
            value = static_cast<quint16>(value + 200);
        }
    }
    const Result<QByteArray> bytes = JpegDestination::encode(bitmap, ImageProperties(), 0.9);
    return bytes.ok() ? bytes.value() : QByteArray();
}

} // namespace

void WritableLibrary::SetUp()
{
    ASSERT_TRUE(m_folder.isValid());
    const Result<void> made = LibraryCreator::create(package());
    ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
}

QString WritableLibrary::package() const
{
    return m_folder.path() + "/Test.photolibrary"_L1;
}

std::unique_ptr<PhotoLibrary> WritableLibrary::open(Access access) const
{
    auto library = PhotoLibrary::open(package(), {access, false});
    EXPECT_TRUE(library.ok()) << library.error().message.toStdString();
    return library.ok() ? std::move(library).value() : nullptr;
}

PhotoApplicationPtr WritableLibrary::application(PhotoLibrary& library)
{
    return library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
}

QString WritableLibrary::makePicture(const QString& name) const
{
    return makeFile(name, pictureBytes());
}

QString WritableLibrary::makeFile(const QString& name, const QByteArray& bytes) const
{
    QString path = m_folder.path() + u'/' + name;
    QFile file(path);
    EXPECT_FALSE(bytes.isEmpty());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return path;
}

QStringList WritableLibrary::filesBelow(const QStringList& folders) const
{
    QStringList files;
    for (const QString& folder : folders) {
        QDirIterator walk(package() + u'/' + folder,
                          QDir::Files | QDir::Hidden | QDir::System,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            files << walk.next().mid(package().size() + 1);
        }
    }
    files.sort();
    return files;
}

QStringList WritableLibrary::pictureFiles() const
{
    return filesBelow({u"Masters"_s, u"Thumbnails"_s, u"Previews"_s});
}

QStringList WritableLibrary::versionSidecars() const
{
    return filesBelow({u"Database/Versions"_s});
}

qint64 WritableLibrary::rows(const QString& table) const
{
    auto connection = Connection::open(package(), Connection::Mode::Read);
    EXPECT_TRUE(connection.ok()) << connection.error().message.toStdString();
    if (!connection.ok()) {
        return -1;
    }
    const QByteArray sql = "SELECT count(*) FROM " + table.toLatin1();
    return Sql::firstInteger(*connection.value(), sql.constData()).value_or(-1);
}

void WritableLibrary::expectSound() const
{
    auto connection = Connection::open(package(), Connection::Mode::Read);
    ASSERT_TRUE(connection.ok()) << connection.error().message.toStdString();
    const QStringList problems = IntegrityCheck::problems(*connection.value(), {});
    EXPECT_EQ(problems.join('\n'_L1).toStdString(), "");
}

void WritableLibrary::import(PhotoLibrary& library, const QString& path)
{
    const AlbumPtr album = application(library)->photoLibraryAlbum();
    album->importFrom(path, true, album);
}

PhotoPtr WritableLibrary::lastImported(PhotoLibrary& library)
{
    const QList<PhotoPtr> photos = application(library)->lastImportAlbum()->photos();
    return photos.size() == 1 ? photos.first() : nullptr;
}
