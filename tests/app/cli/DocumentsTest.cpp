#include "Documents.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
    const QJsonObject object = Documents::list(u"/L"_s, u"9.6.1"_s, {photo})
                                   .value(u"photos"_s)
                                   .toArray()
                                   .first()
                                   .toObject();
    EXPECT_DOUBLE_EQ(object.value(u"latitude"_s).toDouble(), 51.5);
    EXPECT_TRUE(object.value(u"altitude"_s).isNull());
    EXPECT_TRUE(object.value(u"previewPath"_s).isNull());
    EXPECT_EQ(object.value(u"comment"_s).toString(u"none"_s), QString());
}

TEST(DocumentsTest, whatTheLibraryDoesNotKnowIsNullAndWhatIsZeroIsNot)
{
    const auto objectOf = [](const PhotoFacts& photo) {
        return Documents::list(u"/L"_s, u"9.6.1"_s, {photo})
            .value(u"photos"_s)
            .toArray()
            .first()
            .toObject();
    };
    PhotoFacts known;
    known.rollId = 8;
    known.rollName = u"Import"_s;
    QJsonObject object = objectOf(known);
    for (const QString& key : {u"rating"_s, u"width"_s, u"height"_s}) {
        EXPECT_EQ(object.value(key).toInt(-1), 0) << key.toStdString();
    }
    EXPECT_EQ(object.value(u"date"_s).toString(), u"2001-01-01T00:00:00"_s);
    EXPECT_EQ(object.value(u"roll"_s).toObject().value(u"id"_s).toInt(), 8);

    PhotoFacts photo;
    photo.unknown = {.rating = true, .date = true, .width = true, .height = true};
    object = objectOf(photo);
    for (const QString& key : {u"rating"_s, u"width"_s, u"height"_s, u"date"_s, u"roll"_s}) {
        EXPECT_TRUE(object.value(key).isNull()) << key.toStdString();
    }
}

TEST(DocumentsTest, aListInPiecesReadsAsTheListInOne)
{
    PhotoFacts photo;
    photo.name = u"\n    \"photos\": [\n\u2066"_s;
    photo.keywords = {u"a"_s, u"b"_s};
    const QString library = u"/a\n    \"photos\": [\n"_s;
    QList<PhotoFacts> photos;
    for (const int count : {0, 1, 2, 300}) { // the last one is larger than a piece
        photos.fill(photo, count);
        QByteArray text;
        int pieces = 0;
        Documents::writeList(library, u"9.6.1"_s, photos, [&](const QByteArray& piece) {
            text += piece;
            ++pieces;
        });
        EXPECT_EQ(text, Documents::text(Documents::list(library, u"9.6.1"_s, photos))) << count;
        EXPECT_EQ(pieces > 1, count == 300) << count;
    }
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
