#include "CommandFixture.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace
{

using ListCommandTest = CommandFixture;

} // namespace

TEST_F(ListCommandTest, onePhotoALineInColumnsInTheCataloguesOrder)
{
    ASSERT_EQ(run({u"list"_s, library()}), 0);
    QByteArray expected;
    const QByteArray widest = "Garden.jpg";
    for (const PhotoFacts& photo : photos()) {
        expected += QByteArray::number(photo.id) + "  " +
                    photo.fileName.toUtf8().leftJustified(widest.size()) + "  " +
                    photo.rollName.toUtf8().leftJustified(7) + "  320x240  " +
                    QByteArray::number(static_cast<double>(photo.bytes) / 1048576.0, 'f', 2) +
                    " MB\n";
    }
    EXPECT_EQ(m_out, expected);
    EXPECT_EQ(m_out.count('\n'), 3);
}

TEST_F(ListCommandTest, theDocumentHoldsEveryKey)
{
    ASSERT_EQ(run({u"list"_s, library(), u"--json"_s, u"--roll"_s, u"home"_s}), 0);
    EXPECT_EQ(document().value(u"library"_s).toString(), library());
    const QJsonArray listed = document().value(u"photos"_s).toArray();
    ASSERT_EQ(listed.size(), 1);
    const QJsonObject photo = listed.first().toObject();
    EXPECT_EQ(photo.keys(),
              (QStringList{u"albums"_s,   u"altitude"_s,     u"bytes"_s,       u"comment"_s,
                           u"date"_s,     u"edited"_s,       u"filename"_s,    u"guid"_s,
                           u"height"_s,   u"hidden"_s,       u"id"_s,          u"imagePath"_s,
                           u"keywords"_s, u"latitude"_s,     u"longitude"_s,   u"missing"_s,
                           u"name"_s,     u"originalPath"_s, u"previewPath"_s, u"rating"_s,
                           u"raw"_s,      u"roll"_s,         u"rotated"_s,     u"thumbnailPath"_s,
                           u"title"_s,    u"width"_s}));
    EXPECT_EQ(photo.value(u"filename"_s).toString(), u"Garden.jpg"_s);
    EXPECT_TRUE(photo.value(u"latitude"_s).isNull());
    EXPECT_EQ(photo.value(u"roll"_s).toObject().value(u"name"_s).toString(), u"Home"_s);
}

TEST_F(ListCommandTest, nothingToListIsNoError)
{
    EXPECT_EQ(run({u"list"_s, library(), u"--id"_s, u"99999"_s}), 0);
    EXPECT_EQ(m_out, QByteArray());
    EXPECT_EQ(m_err, "No photo with the id 99999 can be selected.\n");
    EXPECT_EQ(run({u"list"_s, library(), u"--raw"_s}), 0);
    EXPECT_EQ(m_out + m_err, QByteArray());
}

TEST_F(ListCommandTest, aMissingMasterIsSaidAndPresentLeavesItOut)
{
    ASSERT_TRUE(QFile::remove(photo(u"Wood.jpg"_s).originalPath));
    ASSERT_EQ(run({u"list"_s, library()}), 0);
    EXPECT_TRUE(m_out.contains("320x240  missing\n")) << m_out.toStdString();
    ASSERT_EQ(run({u"list"_s, library(), u"--present"_s}), 0);
    EXPECT_EQ(m_out.count('\n'), 2);
    EXPECT_EQ(m_err, "1 photo is left out: its master is missing or unreadable.\n");
}
