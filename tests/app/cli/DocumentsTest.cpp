#include "Documents.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QByteArray textOfList(const QString& library, const QList<PhotoFacts>& photos)
{
    QByteArray text;
    Documents::writeList(
        library, u"9.6.1"_s, photos, [&text](const QByteArray& piece) { text += piece; });
    return text;
}

QJsonObject inList(const PhotoFacts& photo)
{
    return QJsonDocument::fromJson(textOfList(u"/L"_s, {photo}))
        .object()
        .value(u"photos"_s)
        .toArray()
        .first()
        .toObject();
}

} // namespace

TEST(DocumentsTest, everyCharacterSurvivesAndNoneSteersATerminal)
{
    const QString title =
        u"a\u2066b\u2069\u202e\u0001\u001b\u007f\u0085\u2028\"\\\u00e4\U0001F4F7"_s;
    const QByteArray text = Documents::text({{u"title"_s, title}});
    EXPECT_EQ(QJsonDocument::fromJson(text).object().value(u"title"_s).toString(), title);
    EXPECT_TRUE(text.contains("a\\u2066b\\u2069\\u202e\\u0001\\u001b\\u007f\\u0085\\u2028"))
        << text.toStdString();
    EXPECT_TRUE(text.contains("\u00e4\U0001F4F7"));
}

TEST(DocumentsTest, numbersAndPathsThatDoNotExistAreNull)
{
    PhotoFacts photo;
    photo.latitude = 51.5;
    const QJsonObject object = inList(photo);
    EXPECT_DOUBLE_EQ(object.value(u"latitude"_s).toDouble(), 51.5);
    EXPECT_TRUE(object.value(u"altitude"_s).isNull());
    EXPECT_TRUE(object.value(u"previewPath"_s).isNull());
    EXPECT_EQ(object.value(u"comment"_s).toString(u"none"_s), QString());
}

TEST(DocumentsTest, whatTheLibraryDoesNotKnowIsNullAndWhatIsZeroIsNot)
{
    PhotoFacts known;
    known.rollId = 8;
    known.rollName = u"Import"_s;
    QJsonObject object = inList(known);
    for (const QString& key : {u"rating"_s, u"width"_s, u"height"_s}) {
        EXPECT_EQ(object.value(key).toInt(-1), 0) << key.toStdString();
    }
    EXPECT_EQ(object.value(u"date"_s).toString(), u"2001-01-01T00:00:00"_s);
    EXPECT_EQ(object.value(u"roll"_s).toObject().value(u"id"_s).toInt(), 8);

    PhotoFacts photo;
    photo.unknown = {.rating = true, .date = true, .width = true, .height = true};
    object = inList(photo);
    for (const QString& key : {u"rating"_s, u"width"_s, u"height"_s, u"date"_s, u"roll"_s}) {
        EXPECT_TRUE(object.value(key).isNull()) << key.toStdString();
    }
}

TEST(DocumentsTest, aListStandsAsEveryOtherDocumentDoes)
{
    PhotoFacts photo;
    photo.id = 19;
    photo.name = u"\n    \"photos\": [\n\u2066\u0007\\"_s;
    photo.comment = u"\u00e4\U0001F4F7 \u0085"_s;
    photo.rollName = u"\u201cx\u201d"_s;
    photo.latitude = -51.123456789012345;
    photo.longitude = 7.0;
    photo.altitude = 1e300;
    photo.keywords = {u"a"_s, u"b"_s};
    photo.albums = {u"\u2028"_s};
    photo.previewPath = u"/a b/c.jpg"_s;
    photo.bytes = 5000000000;
    photo.raw = true;
    PhotoFacts inRoll = photo;
    inRoll.rollId = 3;
    inRoll.keywords.clear();
    inRoll.unknown = {.rating = true, .date = true, .width = true, .height = true};
    const QString library = u"/a\n    \"photos\": [\n"_s;
    for (const QList<PhotoFacts>& photos : {QList<PhotoFacts>{}, {photo}, {photo, inRoll}}) {
        const QByteArray text = textOfList(library, photos);
        const QJsonObject read = QJsonDocument::fromJson(text).object();
        EXPECT_EQ(read.value(u"photos"_s).toArray().size(), photos.size());
        EXPECT_EQ(text, Documents::text(read));
    }
    const QJsonObject object = inList(inRoll);
    EXPECT_EQ(object.value(u"title"_s).toString(), photo.name);
    EXPECT_EQ(object.value(u"comment"_s).toString(), photo.comment);
}

TEST(DocumentsTest, aListOfManyIsHandedOnInPieces)
{
    int pieces = 0;
    const auto count = [&pieces](const QByteArray& /*piece*/) { ++pieces; };
    Documents::writeList(u"/L"_s, u"9.6.1"_s, QList<PhotoFacts>(300), count);
    EXPECT_GT(pieces, 1);
}

TEST(DocumentsTest, theTrashIsSummedUp)
{
    PhotoFacts photo;
    photo.id = 19;
    photo.fileName = u"a.jpg"_s;
    photo.bytes = 1588123;
    EXPECT_EQ(QJsonDocument(Documents::trash({photo, photo})).toJson(QJsonDocument::Compact),
              R"({"bytes":3176246,"photos":[{"bytes":1588123,"filename":"a.jpg","id":19},)"
              R"({"bytes":1588123,"filename":"a.jpg","id":19}]})");
    EXPECT_EQ(QJsonDocument(Documents::trash({})).toJson(QJsonDocument::Compact),
              R"({"bytes":0,"photos":[]})");
}
