// Writes one small valid input for each fuzz target into the folders below the one given.

#include "Bitmap.h"
#include "ImageProperties.h"
#include "JpegDestination.h"
#include "PropertyList.h"
#include "RowIdSet.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

bool write(const QString& folder, const QString& name, const QByteArray& bytes)
{
    QFile file(QDir(folder).filePath(name));
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

QVariantMap list()
{
    return {{u"text"_s, u"Grüße \U0001F4F7"_s},
            {u"number"_s, qlonglong{-1}},
            {u"real"_s, 2.5},
            {u"data"_s, QByteArray("\0\1\2", 3)},
            {u"yes"_s, true},
            {u"date"_s, QVariant::fromValue(PropertyList::Date{717514987.85})},
            {u"list"_s, QVariantList{1, u"two"_s, QVariantMap{{u"three"_s, 3.0}}}}};
}

QByteArray jpeg()
{
    Bitmap bitmap(48, 32, Transfer::Srgb);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        int value = 0;
        for (quint16& sample : bitmap.row(y)) {
            sample = static_cast<quint16>(value * 450 + y * 700);
            ++value;
        }
    }
    ImageProperties properties;
    properties.setGps({33.9, u"S"_s, 151.2, u"E"_s});
    Result<QByteArray> encoded = JpegDestination::encode(bitmap, properties, 0.8);
    return encoded.ok() ? encoded.value() : QByteArray();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fprintf(stderr, "usage: make_seeds FOLDER\n");
        return 2;
    }
    const QDir root(arguments.at(1));
    const Result<QByteArray> xml = PropertyList::toXml(list());
    const Result<QByteArray> binary = PropertyList::toBinary(list());
    const QByteArray ids = RowIdSet({1, 5, 31, 32, 1023, 1024, 99999}).toBlob();
    const QByteArray picture = jpeg();
    const QByteArray form("comments\0It fell\r\nover\0a\"b\r\nc\0\xC3\xA4\0", 32);
    const bool done = xml.ok() && binary.ok() && !picture.isEmpty() &&
                      write(root.filePath(u"PropertyList"_s), u"xml.plist"_s, xml.value()) &&
                      write(root.filePath(u"PropertyList"_s), u"binary.plist"_s, binary.value()) &&
                      write(root.filePath(u"RowIdSet"_s), u"ids"_s, ids) &&
                      write(root.filePath(u"ImageProperties"_s), u"gps.jpg"_s, picture) &&
                      write(root.filePath(u"Jpeg"_s), u"small.jpg"_s, picture) &&
                      write(root.filePath(u"FormData"_s), u"two fields"_s, form);
    return done ? 0 : 1;
}
