#include "Assertion.h"
#include "BridgeFixture.h"

#include <functional>

using namespace Qt::StringLiterals;

// The record lists of the bridge.

namespace
{

class RecordsTest : public BridgeFixture
{
protected:
    [[nodiscard]] QList<qsizetype> lengths() const
    {
        return {m_bridge.sizeList().size(),
                m_bridge.idList().size(),
                m_bridge.filenameList().size(),
                m_bridge.dimsList().size(),
                m_bridge.dateList().size(),
                m_bridge.hashList().size(),
                m_bridge.pathList().size(),
                m_bridge.originalsPathList().size(),
                m_bridge.heights().size()};
    }

    /// Loads one photo with the record, changed at one key.
    void loadWith(const QString& key, const QVariant& value)
    {
        QVariantMap record = completeRecord();
        record.insert(key, value);
        ASSERT_TRUE(load({addRecord(record)}));
    }

    void loadWithout(const QString& key)
    {
        QVariantMap record = completeRecord();
        record.remove(key);
        ASSERT_TRUE(load({addRecord(record)}));
    }
};

TEST_F(RecordsTest, anEmptySelectionIsCompleteWithNineEmptyLists)
{
    EXPECT_TRUE(load(QList<qint64>()));
    EXPECT_EQ(lengths(), QList<qsizetype>(9, 0));
    EXPECT_EQ(m_delegate.linesOf(u"cfgProgressBarMaxValue"_s),
              QStringList{u"cfgProgressBarMaxValue 0"_s});
    EXPECT_TRUE(m_library.calls().isEmpty());
    EXPECT_EQ(m_log.entries(), (QStringList{u"Building Lists"_s, u"Found 0 images with issues"_s}));
}

TEST_F(RecordsTest, everyPropertyGoesIntoItsListInTheOrderOfTheSelection)
{
    const QString shown = makeFile(u"a.jpg"_s, 7);
    const QString original = makeFile(u"a.cr2"_s, 21);
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, shown);
    record.insert(u"originalPath"_s, original);
    addRecord(completeRecord());
    addRecord(record);
    ASSERT_TRUE(load({2, 1}));
    EXPECT_EQ(lengths(), QList<qsizetype>(9, 2));
    EXPECT_EQ(m_bridge.filenameList(), QVariantList(2, u"IMG_1.cr2"_s));
    EXPECT_EQ(m_bridge.pathList(), (QVariantList{shown, u"/nowhere/IMG_1.jpg"_s}));
    EXPECT_EQ(m_bridge.originalsPathList(), (QVariantList{original, u"/nowhere/IMG_1.cr2"_s}));
    EXPECT_EQ(m_bridge.dateList().first().value<PhotoDate>(), (PhotoDate{5.0, u"GMT"_s}));
    EXPECT_EQ(m_bridge.idList(), QVariantList(2, qint64{4294967303}));
    EXPECT_EQ(m_bridge.heights(), QVariantList(2, 3000));
    EXPECT_EQ(m_bridge.dimsList().first(), QVariant(static_cast<float>(4000.0 / 3000.0)));
    EXPECT_EQ(m_bridge.dimsList().first().typeId(), QMetaType::Float);
    EXPECT_EQ(m_bridge.sizeList(), (QVariantList{qint64{21}, qint64{0}}));
    EXPECT_EQ(m_bridge.sizeList().first().typeId(), QMetaType::LongLong);
    EXPECT_EQ(m_bridge.hashList(), QStringList(2, u""_s));
}

TEST_F(RecordsTest, eachPhotoCostsExactlyOneRequest)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    ASSERT_TRUE(load({1, 2}));
    EXPECT_EQ(m_library.calls(), (QStringList{u"photo 1.properties"_s, u"photo 2.properties"_s}));
}

TEST_F(RecordsTest, theControllerIsToldBeforeAndAtEachPhoto)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    ASSERT_TRUE(load({1, 2}));
    EXPECT_EQ(m_delegate.journal->lines(),
              (QStringList{u"cfgInfoText WARNING: Do not use iPhoto while a scan is in progress "
                           "except to respond to iPhoto dialog messages."_s,
                           u"cfgProgressBarDeterminate"_s,
                           u"cfgProgressBarMaxValue 2"_s,
                           u"cfgProgressBarCurrentValue 0"_s,
                           u"cfgProgressBarCurrentValue 1"_s,
                           u"cfgProgressBarCurrentValue 2"_s}));
    EXPECT_EQ(m_delegate.mainCallThreads, QList<QThread*>(5, QThread::currentThread()));
}

TEST_F(RecordsTest, aPhotoWithoutIdGetsTheEmptyString)
{
    loadWithout(u"id"_s);
    EXPECT_EQ(m_bridge.idList().first(), QVariant(u""_s));
    EXPECT_EQ(m_bridge.idList().first().typeId(), QMetaType::QString);
    EXPECT_TRUE(m_log.entries().at(1).contains(u"\"Invalid ID\""_s));
}

TEST_F(RecordsTest, missingTextsBecomeEmptyOnes)
{
    loadWithout(u"imageFilename"_s);
    EXPECT_EQ(m_bridge.filenameList(), QVariantList{u""_s});
    loadWithout(u"imagePath"_s);
    EXPECT_EQ(m_bridge.pathList(), QVariantList{u""_s});
    loadWithout(u"originalPath"_s);
    EXPECT_EQ(m_bridge.originalsPathList(), QVariantList{u""_s});
}

TEST_F(RecordsTest, aPhotoWithoutDateGetsTheMomentOfItsRecord)
{
    loadWithout(u"date"_s);
    EXPECT_EQ(m_bridge.dateList().first().value<PhotoDate>().secondsSince2001, 700000000.5);
}

TEST_F(RecordsTest, eachFallbackDateIsTheMomentAtWhichItsOwnRecordWasBuilt)
{
    QVariantMap record = completeRecord();
    record.remove(u"date"_s);
    addRecord(record);
    addRecord(record);
    m_library.whenCalled(u"photo 1.properties"_s, [&] { m_clock.advance(10.0); });
    m_library.whenCalled(u"photo 2.properties"_s, [&] { m_clock.advance(20.0); });
    ASSERT_TRUE(load({1, 2}));
    m_clock.advance(40.0);
    ASSERT_EQ(m_bridge.dateList().size(), 2);
    EXPECT_EQ(m_bridge.dateList().at(0).value<PhotoDate>(), (PhotoDate{700000010.5, u"GMT"_s}));
    EXPECT_EQ(m_bridge.dateList().at(1).value<PhotoDate>(), (PhotoDate{700000030.5, u"GMT"_s}));
}

TEST_F(RecordsTest, missingSidesBecomeZero)
{
    loadWithout(u"height"_s);
    EXPECT_EQ(m_bridge.heights(), QVariantList{0});
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F});
    loadWithout(u"width"_s);
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F});
}

TEST_F(RecordsTest, aPropertyThatIsEmptyIsStoredAsNullWithoutAnIssue)
{
    const QList<std::pair<QString, const QVariantList& (SBUtils::*)() const>> lists{
        {u"imageFilename"_s, &SBUtils::filenameList},
        {u"imagePath"_s, &SBUtils::pathList},
        {u"originalPath"_s, &SBUtils::originalsPathList},
        {u"date"_s, &SBUtils::dateList},
        {u"id"_s, &SBUtils::idList},
        {u"height"_s, &SBUtils::heights}};
    for (const auto& [emptyKey, emptyList] : lists) {
        loadWith(emptyKey, QVariant());
        EXPECT_EQ(m_log.entries().last(), u"Found 0 images with issues"_s);
        for (const auto& [key, list] : lists) {
            const QVariantList& entries = (m_bridge.*list)();
            ASSERT_EQ(entries.size(), 1);
            EXPECT_EQ(entries.first().isNull(), key == emptyKey)
                << qPrintable(key) << " where empty is " << qPrintable(emptyKey);
        }
    }
}

TEST_F(RecordsTest, aWidthThatIsEmptyCountsAsZeroWithoutAnIssue)
{
    loadWith(u"width"_s, QVariant());
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F});
    EXPECT_EQ(m_log.entries().last(), u"Found 0 images with issues"_s);
}

TEST_F(RecordsTest, sidesAreReadInThirtyTwoBits)
{
    constexpr qint64 kTwoTo32 = 4294967296;
    loadWith(u"height"_s, kTwoTo32);
    EXPECT_EQ(m_bridge.heights(), QVariantList{kTwoTo32});
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F}); // nothing is divided by a height of 0
    loadWith(u"width"_s, kTwoTo32 + 6000);
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{2.0F});
}

TEST_F(RecordsTest, aHeightOfZeroGivesNoRatio)
{
    loadWith(u"height"_s, 0);
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F});
    loadWith(u"height"_s, QVariant());
    EXPECT_EQ(m_bridge.dimsList(), QVariantList{0.0F});
}

TEST_F(RecordsTest, theSizeIsThatOfTheOriginalWhereItIsOnDisk)
{
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, makeFile(u"shown.jpg"_s, 7));
    record.insert(u"originalPath"_s, makeFile(u"original.cr2"_s, 21));
    ASSERT_TRUE(load({addRecord(record)}));
    EXPECT_EQ(m_bridge.imagefs(0), 21U);
    ASSERT_TRUE(QFile::remove(m_folder.filePath(u"original.cr2"_s)));
    EXPECT_EQ(m_bridge.imagefs(0), 7U);
    ASSERT_TRUE(QFile::remove(m_folder.filePath(u"shown.jpg"_s)));
    EXPECT_EQ(m_bridge.imagefs(0), 0U);
}

TEST_F(RecordsTest, theSizeLoadedIsThatOfTheImageShownWhereTheOriginalIsGone)
{
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, makeFile(u"shown.jpg"_s, 7));
    record.insert(u"originalPath"_s, m_folder.filePath(u"gone.cr2"_s));
    ASSERT_TRUE(load({addRecord(record)}));
    EXPECT_EQ(m_bridge.sizeList(), QVariantList{qint64{7}});
}

TEST_F(RecordsTest, theSizeIsThatOfTheImageShownWhereTheOriginalHasNoPath)
{
    const QString shown = makeFile(u"shown.jpg"_s, 7);
    for (const QVariant& nowhere : {QVariant(), QVariant(u""_s)}) {
        QVariantMap record = completeRecord();
        record.insert(u"imagePath"_s, shown);
        record.insert(u"originalPath"_s, nowhere);
        ASSERT_TRUE(load({addRecord(record)}));
        EXPECT_EQ(m_bridge.sizeList(), QVariantList{qint64{7}});
        record.insert(u"imagePath"_s, nowhere);
        ASSERT_TRUE(load({addRecord(record)}));
        EXPECT_EQ(m_bridge.sizeList(), QVariantList{qint64{0}});
    }
}

TEST_F(RecordsTest, cancellingAtAPhotoShowsItAndEndsWithoutAReport)
{
    addRecord(completeRecord());
    addRecord(QVariantMap());
    addRecord(completeRecord());
    m_delegate.cancelAtPoll = 3;
    EXPECT_FALSE(load({1, 2, 3}));
    EXPECT_EQ(m_delegate.journal->lines().last(), u"cfgProgressBarCurrentValue 3"_s);
    EXPECT_EQ(m_library.calls(), (QStringList{u"photo 1.properties"_s, u"photo 2.properties"_s}));
    EXPECT_EQ(m_bridge.filenameList().size(), 2);
    EXPECT_TRUE(m_bridge.sizeList().isEmpty());
    EXPECT_TRUE(m_bridge.dimsList().isEmpty());
    EXPECT_TRUE(m_bridge.hashList().isEmpty());
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(RecordsTest, aNewLoadForgetsTheListsAndIssuesOfTheLast)
{
    ASSERT_TRUE(load({addRecord(QVariantMap())}));
    m_log.clear();
    ASSERT_TRUE(load({addRecord(completeRecord())}));
    EXPECT_EQ(lengths(), QList<qsizetype>(9, 1));
    EXPECT_EQ(m_log.entries().last(), u"Found 0 images with issues"_s);
}

TEST_F(RecordsTest, whatTheApplicationRaisesPassesThrough)
{
    addRecord(completeRecord());
    m_library.failOn(u"photo 1.properties"_s, ScriptingException(u"Gone"_s, u"It is gone."_s));
    bool raised = false;
    runOnWorker([&] {
        try {
            std::ignore = m_bridge.loadData(photos({1}));
        } catch (const ScriptingException& exception) {
            raised = exception.name() == u"Gone"_s;
        }
    });
    EXPECT_TRUE(raised);
}

TEST_F(RecordsTest, anAlbumAmongThePhotosHasARecordOfFallbacks)
{
    const qint64 album = m_library.addAlbum(u"Trip"_s);
    ASSERT_TRUE(loadObjects({m_library.albumHandle(album)}));
    EXPECT_EQ(lengths(), QList<qsizetype>(9, 1));
    EXPECT_EQ(m_bridge.filenameList(), QVariantList{u""_s});
    EXPECT_EQ(m_log.entries().last(), u"Found 1 images with issues"_s);
}

struct LostEntry {
    const char* description;
    std::function<void(SBUtils&)> lose;
};

void PrintTo(const LostEntry& entry, std::ostream* stream)
{
    *stream << entry.description;
}

class LengthsTest : public BridgeFixture, public testing::WithParamInterface<LostEntry>
{
};

TEST_P(LengthsTest, aListThatDiffersInLengthIsAFailureThatNamesIt)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    // The first photo's entry is lost while the second one is read.
    m_library.whenCalled(u"photo 2.properties"_s, [&] { GetParam().lose(m_bridge); });
    QString description;
    QString function;
    QString file;
    runOnWorker([&] {
        try {
            std::ignore = m_bridge.loadData(photos({1, 2}));
        } catch (const AssertionFailure& failure) {
            description = failure.description();
            function = failure.function();
            file = failure.file();
        }
    });
    EXPECT_EQ(description, QString::fromLatin1(GetParam().description));
    EXPECT_EQ(function,
              u"loadData of SBUtils 0x%1"_s.arg(reinterpret_cast<quintptr>(&m_bridge), 0, 16));
    EXPECT_EQ(file, u"Shared Code/SBUtils-iPhoto"_s);
    EXPECT_TRUE(m_log.entries().isEmpty());
}

void loseAll(SBUtils& bridge)
{
    bridge.setFilenameList({});
    bridge.setIdList({});
    bridge.setPathList({});
    bridge.setDateList({});
    bridge.setHeights({});
}

INSTANTIATE_TEST_SUITE_P(EveryList,
                         LengthsTest,
                         testing::Values(LostEntry{"Missing filenames", loseAll},
                                         LostEntry{"Missing image ids",
                                                   [](SBUtils& bridge) {
                                                       loseAll(bridge);
                                                       bridge.setFilenameList({u"a"_s});
                                                   }},
                                         LostEntry{"Missing file paths",
                                                   [](SBUtils& bridge) {
                                                       bridge.setPathList({});
                                                       bridge.setDateList({});
                                                       bridge.setHeights({});
                                                   }},
                                         LostEntry{"Missing image dates",
                                                   [](SBUtils& bridge) {
                                                       bridge.setDateList({});
                                                       bridge.setHeights({});
                                                   }},
                                         LostEntry{"Missing image heights", [](SBUtils& bridge) {
                                                       bridge.setHeights({});
                                                   }}));

INSTANTIATE_TEST_SUITE_P(EveryListThatIsTooLong,
                         LengthsTest,
                         testing::Values(LostEntry{"Missing filenames",
                                                   [](SBUtils& bridge) {
                                                       bridge.setFilenameList({1, 2});
                                                   }},
                                         LostEntry{"Missing image ids",
                                                   [](SBUtils& bridge) {
                                                       bridge.setIdList({1, 2});
                                                   }},
                                         LostEntry{"Missing file paths",
                                                   [](SBUtils& bridge) {
                                                       bridge.setPathList({1, 2});
                                                   }},
                                         LostEntry{"Missing image dates",
                                                   [](SBUtils& bridge) {
                                                       bridge.setDateList({1, 2});
                                                   }},
                                         LostEntry{"Missing image heights", [](SBUtils& bridge) {
                                                       bridge.setHeights({1, 2});
                                                   }}));

TEST_F(RecordsTest, theListOfOriginalsIsNotCheckedForItsLength)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    m_library.whenCalled(u"photo 2.properties"_s, [&] { m_bridge.setOriginalsPathList({}); });
    EXPECT_TRUE(load({1, 2}));
}

} // namespace
