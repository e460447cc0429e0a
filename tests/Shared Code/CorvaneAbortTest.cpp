#include "ScanFixture.h"
#include "Texts.h"

#include <functional>

using namespace Qt::StringLiterals;

// Every way in which a scan ends early.

namespace
{

const QString kNothingSelected =
    u"alert Unable To Process: You need to select the photos you want me to process"_s;

class AbortTest : public ScanFixture
{
protected:
    /// The controller's calls of a reset, in order; labels are set on the main thread meanwhile.
    [[nodiscard]] QStringList resetAfter(const QString& alert) const
    {
        return after(
            told({u"alert"_s, u"button"_s, u"nowProcessing"_s, u"power"_s, u"timeRemaining"_s}),
            alert);
    }

    static QStringList reset(bool assertionIsHeld)
    {
        QStringList calls{u"button YES"_s, u"nowProcessing NO"_s};
        if (assertionIsHeld) {
            calls += u"power.release 4711"_s;
        }
        return calls + QStringList{u"timeRemaining --:--:--"_s};
    }

    /// Scans a photo that is selected twice, with a list of the bridge changed once it is complete.
    void scanWithList(const std::function<void(SBUtils&)>& change)
    {
        addPicture(u"a.jpg"_s);
        m_library.selectPhotos({1, 1});
        Corvane engine(services());
        m_log.setOnEntry([&](const QString& entry) {
            if (entry.startsWith(u"Found "_s)) { // the last line of its report
                change(engine.sbutils());
            }
        });
        runOnWorker([&] { engine.corvaneScan(m_delegate); });
        m_log.setOnEntry({});
    }

    void expectListsRefused()
    {
        EXPECT_EQ(alerts(),
                  QStringList{u"alert Unable To Continue: You need to deal with the item(s) that "
                              "iPhoto could not open because the original referenced item could "
                              "not be found."_s});
        EXPECT_EQ(m_library.calls().last(), u"photo 1.properties"_s);
        EXPECT_EQ(resetAfter(u"alert"_s), reset(false));
        expectResetWithoutNotification();
    }

    [[nodiscard]] bool assertionWasTaken() const { return !told({u"power.create"_s}).isEmpty(); }
};

TEST_F(AbortTest, aVersionCheckThatStopsTheScanResetsNothing)
{
    addPicture(u"a.jpg"_s);
    m_library.setVersion(u"10.0"_s);
    scan({1});
    EXPECT_EQ(m_library.calls(), QStringList{u"application.version"_s});
    EXPECT_EQ(m_told->lines(),
              (QStringList{u"button NO"_s,
                           u"nowProcessing YES"_s,
                           u"modal Unsupported Version: "_s + Texts::unsupportedVersion()}));
    EXPECT_FALSE(m_delegate.selectionScanButton().isEnabled());
    EXPECT_TRUE(m_delegate.nowProcessing);
}

TEST_F(AbortTest, anUnreachableApplicationStopsTheScanWithoutAResetToo)
{
    m_library.failOn(u"application.version"_s, ScriptingException(u"Gone"_s, u"It is gone."_s));
    scan({});
    EXPECT_EQ(m_library.calls(), QStringList{u"application.version"_s});
    EXPECT_TRUE(m_delegate.nowProcessing);
    EXPECT_EQ(alerts().size(), 1);
}

TEST_F(AbortTest, aRunWhereNobodyCanAnswerForKeywordsEndsResetWithTheReason)
{
    addPicture(u"a.jpg"_s);
    set(u"TagEnabled"_s, true);
    m_library.setKeywords({u"Corvane Original"_s});
    m_delegate.onAlert = [](const QString& title) {
        if (title == u"Missing Keywords"_s) {
            throw ScriptingException(u"NobodyAnswers"_s, u"Nobody can answer."_s);
        }
    };
    scan({1});
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"application.version"_s,
                           u"application.selection"_s,
                           u"application.keywords"_s,
                           u"application.photoLibraryAlbum"_s,
                           u"album 1.importFrom iPhoto Keywords.jpg YES album 1"_s,
                           u"application.importing"_s,
                           u"application.keywords"_s}));
    EXPECT_EQ(alerts().last(), u"alert Conversion Aborted: Nobody can answer."_s);
    expectResetWithoutNotification();
}

TEST_F(AbortTest, nothingSelectedIsSaidAfterTheKeywordsWereVerified)
{
    set(u"TagEnabled"_s, true);
    scan({});
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"application.version"_s,
                           u"application.selection"_s,
                           u"application.keywords"_s}));
    EXPECT_EQ(alerts(), QStringList{kNothingSelected});
    EXPECT_EQ(resetAfter(u"alert"_s), reset(false));
    EXPECT_FALSE(assertionWasTaken());
    expectResetWithoutNotification();
}

TEST_F(AbortTest, oneAlbumSelectedCountsAsNothingSelected)
{
    const qint64 album = m_library.addAlbum(u"Trip"_s);
    m_library.setSelection({m_library.albumHandle(album)});
    scanSelection();
    EXPECT_EQ(m_library.calls(),
              (QStringList{u"application.version"_s,
                           u"application.selection"_s,
                           u"application.photoLibraryAlbum"_s}));
    EXPECT_EQ(alerts(), QStringList{kNothingSelected});
    expectResetWithoutNotification();
}

TEST_F(AbortTest, onePhotoSelectedProceeds)
{
    addPicture(u"a.jpg"_s);
    scan({1});
    EXPECT_EQ(m_library.calls().mid(0, 4),
              (QStringList{u"application.version"_s,
                           u"application.selection"_s,
                           u"application.photoLibraryAlbum"_s,
                           u"photo 1.properties"_s}));
    EXPECT_TRUE(alerts().last().startsWith(u"alert All Done: "_s));
}

TEST_F(AbortTest, cancellingWhileLoadingResetsWithoutAnAlert)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.cancelAtPoll = 2;
    scan({1, 2});
    EXPECT_EQ(m_library.calls(),
              (QStringList{
                  u"application.version"_s, u"application.selection"_s, u"photo 1.properties"_s}));
    EXPECT_TRUE(alerts().isEmpty());
    EXPECT_EQ(resetAfter(u"timeRemaining 00:"_s), reset(false));
    EXPECT_FALSE(assertionWasTaken());
    expectResetWithoutNotification();
}

TEST_F(AbortTest, cancellingLaterIsNotLookedAt)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) { m_delegate.isCancelled = true; };
    scan({1, 2});
    EXPECT_EQ(m_library.imports().size(), 2);
    EXPECT_TRUE(m_delegate.isCancelled);
}

TEST_F(AbortTest, aListOfPathsThatDiffersFromTheSelectionStopsTheScan)
{
    scanWithList([](SBUtils& bridge) { bridge.setPathList({u"/only/one"_s}); });
    expectListsRefused();
}

TEST_F(AbortTest, aListOfFileNamesThatDiffersFromTheSelectionStopsTheScan)
{
    scanWithList([](SBUtils& bridge) { bridge.setFilenameList({u"one"_s, u"two"_s, u"three"_s}); });
    expectListsRefused();
}

TEST_F(AbortTest, aListOfSizesThatDiffersFromTheSelectionIsTakenAsItIs)
{
    scanWithList([](SBUtils& bridge) { bridge.setSizeList({}); });
    EXPECT_EQ(m_library.imports().size(), 2);
    ASSERT_EQ(m_delegate.finished.size(), 2);
    EXPECT_EQ(m_delegate.finished.first().originalBytes, 0);
}

TEST_F(AbortTest, aPhotoWithoutASourceStopsTheWholeScan)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).name = u"The name"_s;
    m_library.photo(1).properties->insert(u"imagePath"_s, QVariant());
    addPicture(u"b.jpg"_s);
    scan({1, 2});
    EXPECT_EQ(m_library.calls().mid(9),
              (QStringList{u"album 2.type"_s, u"photo 1.originalPath"_s, u"photo 1.name"_s}));
    EXPECT_EQ(alerts(),
              QStringList{u"alert Conversion Aborted: "_s + Texts::imageMissing(u"The name"_s)});
    EXPECT_EQ(resetAfter(u"alert"_s), reset(true));
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"rollback"_s}));
    ASSERT_EQ(m_delegate.finished.size(), 1);
    EXPECT_EQ(m_delegate.finished.first().kind, PhotoOutcome::Kind::Missing);
    expectResetWithoutNotification();
}

TEST_F(AbortTest, aPhotoWithoutAnOriginalStopsTheScanWhereOriginalsAreConverted)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).name = u"The name"_s;
    m_library.photo(1).originalPath = std::nullopt;
    addPicture(u"b.jpg"_s);
    set(u"ProcessingOption"_s, true);
    scan({1, 2});
    EXPECT_EQ(after(m_library.calls(), u"album 2.type"_s),
              (QStringList{u"photo 1.originalPath"_s, u"photo 1.name"_s}));
    EXPECT_EQ(alerts(),
              QStringList{u"alert Conversion Aborted: "_s + Texts::imageMissing(u"The name"_s)});
    EXPECT_EQ(resetAfter(u"alert"_s), reset(true));
    expectResetWithoutNotification();
}

TEST_F(AbortTest, onlyTheFileThatIsConvertedNeedsAPath)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).originalPath = std::nullopt;
    scan({1});
    EXPECT_EQ(m_library.imports().size(), 1);

    addPicture(u"b.jpg"_s);
    m_library.photo(3).properties->insert(u"imagePath"_s, QVariant());
    set(u"ProcessingOption"_s, true);
    scan({3});
    EXPECT_EQ(m_library.imports().size(), 2);
    EXPECT_TRUE(alerts().filter(u"Aborted"_s).isEmpty());
}

TEST_F(AbortTest, anEmptyPathIsOneAtWhichNoFileIs)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).properties->remove(u"imagePath"_s);
    scan({1});
    EXPECT_EQ(
        alerts(),
        QStringList{u"alert Conversion Aborted: "_s + Texts::imageMissing(u"a.jpg"_s, u""_s)});
    expectResetWithoutNotification();
}

TEST_F(AbortTest, aPhotoWhoseFileIsGoneStopsTheScanAfterTheOnesBeforeIt)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    const QString gone = m_folder.filePath(u"b.jpg"_s);
    ASSERT_TRUE(QFile::remove(gone));
    scan({1, 2});
    EXPECT_EQ(after(m_library.calls(), u"photo 1."_s),
              (QStringList{u"photo 2.originalPath"_s, u"photo 2.height"_s}));
    EXPECT_EQ(alerts(),
              QStringList{u"alert Conversion Aborted: "_s + Texts::imageMissing(u"b.jpg"_s, gone)});
    EXPECT_EQ(resetAfter(u"alert"_s), reset(true));
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"commit"_s, u"begin"_s, u"rollback"_s}));
    EXPECT_EQ(m_library.album(2).photos, QList<qint64>{3});
    expectResetWithoutNotification();
    expectNoTemporaryFile();
}

TEST_F(AbortTest, whatWasLearntIsForgottenWhenAScanStops)
{
    addPicture(u"a.jpg"_s);
    ASSERT_TRUE(QFile::remove(m_folder.filePath(u"a.jpg"_s)));
    scan({1});
    EXPECT_FALSE(m_defaults.value(u"estConversionRate"_s).isValid());
}

} // namespace
