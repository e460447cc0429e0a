#include "RollCatalogue.h"

#include "FakeDelegate.h"
#include "FakePhotoApplication.h"
#include "LogRecorder.h"
#include "QtPrinters.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QVariantMap image(const QString& guid, const QVariant& roll)
{
    return {{u"GUID"_s, guid}, {u"Roll"_s, roll}};
}

QVariantMap roll(int id, const QString& name)
{
    return {{u"RollID"_s, id}, {u"RollName"_s, name}};
}

QVariantMap catalogue(const QVariantMap& images, const QVariantList& rolls)
{
    return {{u"Master Image List"_s, images}, {u"List of Rolls"_s, rolls}};
}

QString xmlRecord(const QString& key, const QString& guid, int roll)
{
    return u"<key>%1</key><dict><key>GUID</key><string>%2</string>"
           "<key>Roll</key><integer>%3</integer></dict>"_s.arg(key, guid)
               .arg(roll);
}

class RollCatalogueTest : public testing::Test
{
protected:
    qint64 addPhoto(const std::optional<QString>& previewPath,
                    const std::optional<QString>& thumbnailPath = std::nullopt)
    {
        FakePhotoRecord record;
        record.properties = QVariantMap{{u"id"_s, 1}};
        record.previewPath = previewPath;
        record.thumbnailPath = thumbnailPath;
        return m_application.addPhoto(record);
    }

    void writeCatalogue(const QString& images, const QString& rolls)
    {
        QFile file(m_library.filePath(u"AlbumData.xml"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write((u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                    "<key>List of Rolls</key><array>"_s +
                    rolls + u"</array><key>Master Image List</key><dict>"_s + images +
                    u"</dict></dict></plist>"_s)
                       .toUtf8());
    }

    void writeTwoRolls()
    {
        writeCatalogue(xmlRecord(u"1"_s, u"guidA"_s, 10) + xmlRecord(u"2"_s, u"guidB"_s, 20),
                       u"<dict><key>RollID</key><integer>10</integer>"
                       "<key>RollName</key><string>Beach</string></dict>"
                       "<dict><key>RollID</key><integer>20</integer>"
                       "<key>RollName</key><string>Sn\u00f6w &amp; Ice</string></dict>"_s);
    }

    [[nodiscard]] QStringList namesOf(const QList<qint64>& ids)
    {
        QList<ScriptingObjectPtr> selection;
        for (const qint64 id : ids) {
            selection.append(m_application.photoHandle(id));
        }
        m_application.journal().clear();
        return RollCatalogue::albumNames(selection, m_library.path(), m_delegate);
    }

    QTemporaryDir m_library;
    LogRecorder m_log;
    FakePhotoApplication m_application;
    FakeDelegate m_delegate;
};

TEST_F(RollCatalogueTest, eachPhotoGetsTheNameOfItsRollInTheOrderOfTheSelection)
{
    writeTwoRolls();
    addPhoto(u"/l/Previews/guidA/a.jpg"_s);
    addPhoto(u"/l/Previews/guidB/b.jpg"_s);
    addPhoto(u"/l/Previews/guidX/c.jpg"_s);
    EXPECT_EQ(
        namesOf({2, 1, 3, 2}),
        (QStringList{
            u"Sn\u00f6w & Ice"_s, u"Beach"_s, u"Corvane For iPhoto"_s, u"Sn\u00f6w & Ice"_s}));
    EXPECT_TRUE(m_log.entries().isEmpty());
    EXPECT_EQ(m_application.calls(),
              (QStringList{u"photo 2.previewPath"_s,
                           u"photo 1.previewPath"_s,
                           u"photo 3.previewPath"_s,
                           u"photo 2.previewPath"_s}));
}

TEST_F(RollCatalogueTest, withoutACatalogueEveryPhotoGetsTheDefaultAlbum)
{
    addPhoto(u"/l/Previews/guidA/a.jpg"_s);
    addPhoto(u"/l/Previews/guidB/b.jpg"_s);
    EXPECT_EQ(namesOf({1, 2}), QStringList(2, u"Corvane For iPhoto"_s));
    EXPECT_EQ(m_log.entries(), QStringList{u"Unable to find AlbumData.xml"_s});
    EXPECT_TRUE(m_application.calls().isEmpty());
}

TEST_F(RollCatalogueTest, aPreviewDirectlyUnderTheRootFallsBackToTheThumbnail)
{
    writeTwoRolls();
    addPhoto(u"/a.jpg"_s, u"/guidB/t.jpg"_s);
    EXPECT_EQ(namesOf({1}), QStringList{u"Sn\u00f6w & Ice"_s});
    EXPECT_EQ(m_log.entries(),
              QStringList{u"Unable to determine GUID from previewPath. {\n    id = 1;\n}"_s});
    EXPECT_EQ(m_application.calls(),
              (QStringList{
                  u"photo 1.previewPath"_s, u"photo 1.properties"_s, u"photo 1.thumbnailPath"_s}));
}

TEST_F(RollCatalogueTest, aPhotoWithNeitherPathGetsTheDefaultAlbumAndTwoLogLines)
{
    writeTwoRolls();
    const qint64 id = addPhoto(std::nullopt, u"t/t.jpg"_s);
    m_application.photo(id).properties = std::nullopt;
    EXPECT_EQ(namesOf({id}), QStringList{u"Corvane For iPhoto"_s});
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"Unable to determine GUID from previewPath. (null)"_s,
                           u"Also unable to determine GUID from thumbnail path"_s}));
}

TEST_F(RollCatalogueTest, aCatalogueThatCannotBeParsedKnowsNoPhoto)
{
    QFile file(m_library.filePath(u"AlbumData.xml"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\"?><plist><dict><key>List of");
    file.close();
    addPhoto(u"/l/Previews/guidA/a.jpg"_s);
    EXPECT_EQ(namesOf({1}), QStringList{u"Corvane For iPhoto"_s});
}

TEST(RollNameTest, ofTwoRecordsWithTheSameGuidTheFirstWhoseRollExistsWins)
{
    const RollCatalogue rolls(catalogue(
        {{u"1"_s, image(u"g"_s, 99)}, {u"2"_s, image(u"g"_s, 20)}, {u"3"_s, image(u"g"_s, 10)}},
        {roll(10, u"Ten"_s), roll(20, u"Twenty"_s)}));
    EXPECT_EQ(rolls.rollName(u"g"_s), u"Twenty"_s);
}

TEST(RollNameTest, aRollThatDoesNotExistGivesNoName)
{
    const RollCatalogue rolls(catalogue({{u"1"_s, image(u"g"_s, 99)}}, {roll(10, u"Ten"_s)}));
    EXPECT_EQ(rolls.rollName(u"g"_s), std::nullopt);
}

TEST(RollNameTest, ofTwoRollsWithTheSameIdTheFirstCounts)
{
    const RollCatalogue rolls(
        catalogue({{u"1"_s, image(u"g"_s, 10)}}, {roll(10, u"Ten"_s), roll(10, u"Other"_s)}));
    EXPECT_EQ(rolls.rollName(u"g"_s), u"Ten"_s);
}

TEST(RollNameTest, guidsAreComparedCaseSensitively)
{
    const RollCatalogue rolls(catalogue({{u"1"_s, image(u"guida"_s, 10)}}, {roll(10, u"Ten"_s)}));
    EXPECT_EQ(rolls.rollName(u"guidA"_s), std::nullopt);
}

TEST(RollNameTest, aRollWithoutANameRaises)
{
    const RollCatalogue rolls(
        catalogue({{u"1"_s, image(u"g"_s, 10)}}, {QVariantMap{{u"RollID"_s, 10}}}));
    EXPECT_THROW(std::ignore = rolls.rollName(u"g"_s), ScriptingException);
}

TEST(RollNameTest, anEmptyCatalogueKnowsNoRoll)
{
    EXPECT_EQ(RollCatalogue(QVariant()).rollName(u""_s), std::nullopt);
    EXPECT_EQ(RollCatalogue(QVariantMap()).rollName(u"g"_s), std::nullopt);
}

} // namespace
