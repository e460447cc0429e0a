#include "BridgeFixture.h"

using namespace Qt::StringLiterals;

// The bridge's log of photos with incomplete records.

namespace
{

using IssuesTest = BridgeFixture;

TEST_F(IssuesTest, withoutIssuesOnlyTheCountIsWritten)
{
    addRecord(completeRecord());
    ASSERT_TRUE(load({1}));
    EXPECT_EQ(m_log.entries(), (QStringList{u"Building Lists"_s, u"Found 0 images with issues"_s}));
}

TEST_F(IssuesTest, aPhotoIsListedOnceWithItsTextsInTheOrderNoted)
{
    QVariantMap record = completeRecord();
    record.insert(u"originalPath"_s, makeFile(u"a.cr2"_s, 123));
    for (const auto& key : {u"width"_s, u"imagePath"_s, u"date"_s}) {
        record.remove(key);
    }
    addRecord(completeRecord());
    addRecord(record);
    ASSERT_TRUE(load({1, 2}));
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"Building Lists"_s,
                           u"Issue: photo id 2\n-(\n    \"Invalid Path\",\n"
                           "    \"Invalid Date\",\n    \"Invalid Width\"\n)\n"
                           "-IMG_1.cr2 of size 123"_s,
                           u"Found 1 images with issues"_s}));
}

TEST_F(IssuesTest, aRecordThatIsMissingAltogetherCollectsEightTexts)
{
    addRecord(std::nullopt);
    ASSERT_TRUE(load({1}));
    EXPECT_EQ(m_log.entries().at(1),
              u"Issue: photo id 1\n-(\n"
              "    \"Invalid Properties\",\n"
              "    \"Invalid Filename\",\n"
              "    \"Invalid Path\",\n"
              "    \"Invalid Path\",\n"
              "    \"Invalid Date\",\n"
              "    \"Invalid ID\",\n"
              "    \"Invalid Height\",\n"
              "    \"Invalid Width\"\n)\n"
              "- of size 0"_s);
}

TEST_F(IssuesTest, photosAreReportedInTheOrderOfTheirFirstIssue)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    ASSERT_TRUE(load({1, 2}));
    m_log.clear();
    m_bridge.logImageIssue(m_library.photoHandle(2), u"First"_s);
    m_bridge.logImageIssue(m_library.photoHandle(1), u"Second"_s);
    m_bridge.logImageIssue(m_library.photoHandle(2), u"Third"_s);
    m_bridge.reportImageIssues();
    EXPECT_EQ(
        m_log.entries(),
        (QStringList{u"Issue: photo id 2\n-(\n    First,\n    Third\n)\n-IMG_1.cr2 of size 0"_s,
                     u"Issue: photo id 1\n-(\n    Second\n)\n-IMG_1.cr2 of size 0"_s,
                     u"Found 2 images with issues"_s}));
}

TEST_F(IssuesTest, percentSignsInNamesStandAsTheyAre)
{
    QVariantMap record = completeRecord();
    record.insert(u"imageFilename"_s, u"100%4 %2.cr2"_s);
    record.remove(u"id"_s);
    addRecord(record);
    ASSERT_TRUE(load({1}));
    EXPECT_TRUE(m_log.entries().at(1).endsWith(u"-100%4 %2.cr2 of size 0"_s));
}

TEST_F(IssuesTest, aPhotoAndAnAlbumOfTheSameIdAreTwoThings)
{
    addRecord(QVariantMap{{u"imageFilename"_s, u"a.cr2"_s}});
    ASSERT_TRUE(load(QList<qint64>()));
    m_log.clear();
    m_bridge.logImageIssue(m_library.photoHandle(1), u"Photo"_s);
    m_bridge.logImageIssue(m_library.albumHandle(1), u"Album"_s);
    m_bridge.reportImageIssues();
    EXPECT_EQ(m_log.entries().size(), 3);
    EXPECT_TRUE(m_log.entries().at(1).startsWith(u"Issue: album id 1\n-(\n    Album\n)"_s));
}

TEST_F(IssuesTest, aPhotoSelectedTwiceIsReportedOnceByItsFirstPlace)
{
    QVariantMap record = completeRecord();
    record.remove(u"id"_s);
    addRecord(record);
    ASSERT_TRUE(load({1, 1}));
    m_bridge.setFilenameList({u"first"_s, u"second"_s});
    m_log.clear();
    m_bridge.reportImageIssues();
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"Issue: photo id 1\n-(\n    \"Invalid ID\",\n    \"Invalid ID\"\n)\n"
                           "-first of size 0"_s,
                           u"Found 1 images with issues"_s}));
}

} // namespace
