#include "BridgeFixture.h"
#include "UnreadableFile.h"

using namespace Qt::StringLiterals;

// What the bridge asks of the photo application.

namespace
{

const QStringList kRequired{u"Corvane Original"_s, u"Corvane Processed"_s};

const QString kMissingBoth = u"modal Missing Keywords: iPhoto is missing the following keywords:"
                             "\n\n\tCorvane Original\n\tCorvane Processed\n\nTo add keywords"_s;

class OperationsTest : public BridgeFixture
{
protected:
    /// What the alert of an unreachable application says.
    [[nodiscard]] QStringList modals() const { return m_delegate.linesOf(u"modal "_s); }

    [[nodiscard]] qsizetype picturesImported()
    {
        return m_library.journal().linesWith(u"importFrom"_s).size();
    }
};

TEST_F(OperationsTest, theApplicationIsAskedForByItsIdentifier)
{
    EXPECT_EQ(m_library.identifiersAsked(), QStringList{u"com.apple.iPhoto"_s});
}

TEST_F(OperationsTest, theSelectionIsTakenInTheApplicationsOrder)
{
    addRecord(completeRecord());
    addRecord(completeRecord());
    const qint64 album = m_library.addAlbum(u"Trip"_s);
    m_library.setSelection(
        {m_library.photoHandle(2), m_library.albumHandle(album), m_library.photoHandle(1)});
    const QList<ScriptingObjectPtr> selection = m_bridge.getSelection();
    ASSERT_EQ(selection.size(), 3);
    EXPECT_TRUE(isSameObject(selection.at(0), m_library.photoHandle(2)));
    EXPECT_TRUE(isSameObject(selection.at(1), m_library.albumHandle(album)));
    EXPECT_TRUE(isSameObject(selection.at(2), m_library.photoHandle(1)));
    EXPECT_EQ(m_library.calls(), QStringList{u"application.selection"_s});
}

TEST_F(OperationsTest, everyVersionNinePasses)
{
    for (const QString& version : {u"9.6.1"_s, u"9"_s, u"9.0"_s, u"09.1.2"_s}) {
        m_library.setVersion(version);
        EXPECT_EQ(m_bridge.getVersion(), version);
        EXPECT_FALSE(m_bridge.versionCheck(true));
        EXPECT_EQ(m_log.entries().last(), u"iPhoto Version "_s + version);
    }
    EXPECT_TRUE(modals().isEmpty());
}

TEST_F(OperationsTest, anyOtherMajorVersionIsUnsupported)
{
    const QStringList versions{u"10.0"_s, u"8.1.2"_s, u"96"_s, u"v9"_s, u""_s, QString()};
    for (const QString& version : versions) {
        m_library.setVersion(version);
        EXPECT_TRUE(m_bridge.versionCheck(false));
    }
    EXPECT_EQ(modals(),
              QStringList(versions.size(),
                          u"modal Unsupported Version: This version of Corvane is compatible with "
                          "iPhoto '11 Versions 9.x.y only."_s));
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"iPhoto Version 10.0"_s,
                           u"iPhoto Version 8.1.2"_s,
                           u"iPhoto Version 96"_s,
                           u"iPhoto Version v9"_s,
                           u"iPhoto Version "_s,
                           u"iPhoto Version (null)"_s}));
}

TEST_F(OperationsTest, anApplicationThatCannotBeReachedIsAnError)
{
    m_library.failOn(u"application.version"_s,
                     ScriptingException(u"NotRunning"_s, u"No library is open."_s));
    EXPECT_TRUE(m_bridge.versionCheck(true));
    EXPECT_EQ(modals(),
              QStringList{u"modal Error: A serious error has occurred in communicating with "
                          "iPhoto.\nNotRunning\nNo library is open."_s});
    EXPECT_TRUE(m_log.entries().isEmpty());
}

TEST_F(OperationsTest, keywordsInAnyLetterCaseAreAccepted)
{
    m_library.setKeywords({u"Sea"_s, u"corvane processed"_s, u"CORVANE ORIGINAL"_s});
    EXPECT_FALSE(m_bridge.verifyKeywords(kRequired, u"Corvane"_s));
    EXPECT_EQ(m_library.calls(), QStringList{u"application.keywords"_s});
    EXPECT_TRUE(modals().isEmpty());
}

TEST_F(OperationsTest, aMissingKeywordImportsThePictureThatDefinesIt)
{
    m_library.setKeywords({u"Corvane Original"_s});
    m_library.setImportingAnswers(2);
    m_library.setKeywordsOfImport(u"iPhoto Keywords.jpg"_s, {u"Corvane Processed"_s});
    EXPECT_FALSE(m_bridge.verifyKeywords(kRequired, u"Corvane"_s));
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"application.keywords"_s,
                           u"application.photoLibraryAlbum"_s,
                           u"album 1.importFrom iPhoto Keywords.jpg YES album 1"_s,
                           u"application.importing"_s,
                           u"application.importing"_s,
                           u"application.importing"_s,
                           u"application.keywords"_s}));
    EXPECT_EQ(m_clock.sleeps(), (QList<double>{0.1, 0.1}));
    EXPECT_FALSE(m_library.imports().first().bytes.isEmpty());
    EXPECT_TRUE(modals().isEmpty());
}

TEST_F(OperationsTest, keywordsThatStayMissingAreAskedForUntilTheyAreThere)
{
    m_library.setKeywordsOfImport(u"iPhoto Keywords.jpg"_s, kRequired, 3);
    EXPECT_FALSE(m_bridge.verifyKeywords(kRequired, u"Corvane"_s));
    ASSERT_EQ(modals().size(), 2);
    EXPECT_TRUE(modals().first().startsWith(kMissingBoth));
    EXPECT_EQ(modals().first(), modals().last());
    EXPECT_EQ(picturesImported(), 3);
}

TEST_F(OperationsTest, theAlertListsOnlyTheKeywordThatIsMissing)
{
    m_library.setKeywords({u"corvane original"_s});
    m_delegate.onAlert = [this](const QString&) {
        m_library.setKeywords({u"corvane original"_s, u"Corvane Processed"_s});
    };
    EXPECT_FALSE(m_bridge.verifyKeywords(kRequired, u"Product"_s));
    ASSERT_EQ(modals().size(), 1);
    EXPECT_TRUE(modals().first().contains(u"keywords:\n\n\tCorvane Processed\n\nTo add"_s));
    EXPECT_TRUE(modals().first().contains(u"click on okay and Product will check"_s));
    // The user has added it: the second pass imports nothing.
    EXPECT_EQ(picturesImported(), 1);
}

TEST_F(OperationsTest, anEmptyListOfKeywordsImportsThePictureOnce)
{
    m_library.setKeywords(kRequired);
    EXPECT_FALSE(m_bridge.verifyKeywords({}, u"Corvane"_s));
    EXPECT_EQ(picturesImported(), 1);
    EXPECT_TRUE(modals().isEmpty());
}

TEST_F(OperationsTest, whatRaisesInTheKeywordCheckPassesThrough)
{
    m_library.failOn(u"album 1.importFrom"_s, ScriptingException(u"ImportFailed"_s, u"No."_s));
    EXPECT_THROW(m_bridge.verifyKeywords(kRequired, u"Corvane"_s), ScriptingException);
}

TEST_F(OperationsTest, aPhotoThatCarriesTheKeywordIsLeftAlone)
{
    m_library.addPhoto({.keywords = {u"Sea"_s, u"Corvane Original"_s}});
    m_bridge.tagImage(m_library.photoHandle(1), u"Corvane Original"_s);
    EXPECT_EQ(m_library.calls(), QStringList{u"photo 1.keywords"_s});
}

TEST_F(OperationsTest, aPhotoThatCarriesItInAnotherLetterCaseIsTagged)
{
    m_library.addPhoto({.keywords = {u"corvane original"_s}});
    m_bridge.tagImage(m_library.photoHandle(1), u"Corvane Original"_s);
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"photo 1.keywords"_s,
                           u"photo 1.select"_s,
                           u"application.assignKeywordString Corvane Original"_s}));
}

TEST_F(OperationsTest, aKeywordKnownInAnotherLetterCaseIsTheOneThatThePhotoGets)
{
    m_library.setKeywords({u"Sea"_s, u"CORVANE ORIGINAL"_s});
    m_library.addPhoto({});
    m_bridge.tagImage(m_library.photoHandle(1), u"Corvane Original"_s);
    EXPECT_EQ(m_library.calls().last(), u"application.assignKeywordString Corvane Original"_s);
    EXPECT_EQ(m_library.photo(1).keywords, QStringList{u"CORVANE ORIGINAL"_s});
}

TEST_F(OperationsTest, exportingLocatesTheFileThatTheApplicationShows)
{
    const QString shown = makeFile(u"shown 1.jpg"_s, 7);
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, shown);
    addRecord(completeRecord());
    addRecord(record);
    ASSERT_TRUE(load({1, 2}));
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(2), true), QUrl::fromLocalFile(shown));
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(2), false), QUrl::fromLocalFile(shown));
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(1), false), std::nullopt);
}

TEST_F(OperationsTest, exportingAPhotoWithoutAPathOrOutsideTheSelectionFindsNothing)
{
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, QVariant());
    addRecord(record);
    addRecord(record);
    ASSERT_TRUE(load({1}));
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(1), false), std::nullopt);
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(2), false), std::nullopt);
    EXPECT_TRUE(m_delegate.linesOf(u"userSelectedFiles"_s).isEmpty());
}

TEST_F(OperationsTest, exportingAFileThatMayNotBeReadAsksForAccess)
{
    const QString shown = makeFile(u"shown.jpg"_s, 7);
    UnreadableFile::openFolder(m_folder.path());
    QVariantMap record = completeRecord();
    record.insert(u"imagePath"_s, shown);
    addRecord(record);
    ASSERT_TRUE(load({1}));
    const UnreadableFile unreadable(shown);
    EXPECT_EQ(m_bridge.exportImage(m_library.photoHandle(1), false), std::nullopt);
    EXPECT_EQ(m_delegate.linesOf(u"userSelectedFiles"_s),
              QStringList{u"userSelectedFiles "_s + shown});
}

} // namespace
