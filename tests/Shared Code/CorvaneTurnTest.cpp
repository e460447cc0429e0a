#include "ScanFixture.h"
#include "Texts.h"

using namespace Qt::StringLiterals;

// What a scan does with each photo.

namespace
{

class TurnTest : public ScanFixture
{
protected:
    /// Gives a photo an original of that many bytes beside the image that is converted.
    void setOriginalSize(qint64 id, int bytes)
    {
        QFile file(m_folder.filePath(u"original %1"_s.arg(id)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(QByteArray(bytes, 'x')), bytes);
        m_library.photo(id).properties->insert(u"originalPath"_s, file.fileName());
    }

    [[nodiscard]] QStringList importedNames() const
    {
        QStringList names;
        for (const FakeImport& import : m_library.imports()) {
            names.append(QFileInfo(import.path).fileName());
        }
        return names;
    }

    [[nodiscard]] QList<PhotoOutcome::Kind> kinds() const
    {
        QList<PhotoOutcome::Kind> kinds;
        for (const PhotoOutcome& outcome : m_delegate.finished) {
            kinds.append(outcome.kind);
        }
        return kinds;
    }

    [[nodiscard]] QStringList unsupported() const
    {
        return m_log.entries().filter(u"Unsupported file "_s);
    }

    static constexpr int kMegabyte = 1048576;
    using Kind = PhotoOutcome::Kind;
};

TEST_F(TurnTest, aCompletedRunTellsTheControllerInThisOrder)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    scan({1, 2});
    EXPECT_EQ(told({u"status"_s}),
              (QStringList{u"status Loading Data"_s,
                           u"status Converting"_s,
                           u"status Importing"_s,
                           u"status Propagating Metadata"_s,
                           u"status Converting"_s,
                           u"status Importing"_s,
                           u"status Propagating Metadata"_s,
                           u"status Ready"_s}));
    EXPECT_EQ(told({u"count"_s}), (QStringList{u"count a.jpg"_s, u"count b.jpg"_s, u"count "_s}));
    EXPECT_EQ(after(told({u"bar."_s}), u"bar.max"_s),
              (QStringList{u"bar.value 1"_s, u"bar.value 2"_s, u"bar.value 0"_s}));
    // Labels are set whenever the main thread comes to it, but the last two are waited for.
    EXPECT_EQ(after(told({u"power.release"_s, u"timeRemaining"_s}), u"power.release"_s).first(),
              u"timeRemaining 00:00:00"_s);
    EXPECT_EQ(m_told->lines().last(6),
              (QStringList{u"count "_s,
                           u"status Ready"_s,
                           u"bar.value 0"_s,
                           u"timeRemaining --:--:--"_s,
                           u"button YES"_s,
                           u"nowProcessing NO"_s}));
    EXPECT_EQ(
        told({u"power"_s}),
        (QStringList{u"power.create NoIdleSleepAssertion 255 Corvane conversion in progress"_s,
                     u"power.release 4711"_s}));
}

TEST_F(TurnTest, theNotificationIsDeliveredWithTheDefaultSoundBeforeTheSummary)
{
    addPicture(u"a.jpg"_s);
    qsizetype deliveredAtSummary = 0;
    m_delegate.onAlert = [&](const QString&) {
        deliveredAtSummary = m_notifications.delivered().size();
    };
    scan({1});
    const UserNotification expected{.title = u"Conversion Complete"_s,
                                    .informativeText = u"Corvane has finished processing."_s,
                                    .defaultSound = true};
    EXPECT_EQ(m_notifications.delivered(), QList<UserNotification>{expected});
    EXPECT_EQ(deliveredAtSummary, 1);
}

TEST_F(TurnTest, theSummaryCountsOriginalsAndImportedBytes)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    setOriginalSize(1, 3 * kMegabyte);
    setOriginalSize(2, 2 * kMegabyte + kMegabyte / 2);
    scan({1, 2});
    const qint64 converted =
        m_library.imports().at(0).bytes.size() + m_library.imports().at(1).bytes.size();
    EXPECT_GT(converted, 0);
    EXPECT_EQ(alerts(),
              QStringList{u"alert All Done: "_s +
                          Texts::finished(5 * kMegabyte + kMegabyte / 2, converted)});
}

TEST_F(TurnTest, jpegsLargerThanTheOriginalsGiveNegativeSavings)
{
    addPicture(u"a.jpg"_s);
    setOriginalSize(1, 10);
    m_delegate.quality = 1.0;
    m_delegate.scale = 20.0F;
    scan({1});
    EXPECT_EQ(statistics().first(), u"Originals: 0.00 MB"_s);
    EXPECT_TRUE(statistics().last().startsWith(u"Savings: -"_s));
    EXPECT_EQ(m_delegate.finished.first().pixels, QSize(1920, 1280));
}

TEST_F(TurnTest, eachTurnIsToldWhatItsImportWillHold)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.quality = 0.5;
    scan({1, 2});
    ASSERT_EQ(m_library.imports().size(), 2);
    for (const FakeImport& import : m_library.imports()) {
        EXPECT_FALSE(import.bytes.isEmpty());
        EXPECT_EQ(import.expected, import.bytes);
    }
}

TEST_F(TurnTest, extensionsAreComparedExactly)
{
    addPicture(u"a.JPG"_s);
    addPicture(u"b.jpg"_s);
    ASSERT_TRUE(QFile::rename(m_folder.filePath(u"b.jpg"_s), m_folder.filePath(u"b.JpG"_s)));
    const QString mixed = m_folder.filePath(u"b.JpG"_s);
    m_library.photo(2).properties->insert(u"imagePath"_s, mixed);
    scan({1, 2});
    EXPECT_EQ(unsupported(), QStringList{u"Unsupported file "_s + mixed});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Converted, Kind::Unsupported}));
    EXPECT_EQ(importedNames(), QStringList{u"a.jpg"_s});
}

TEST_F(TurnTest, aPhotoOfNoHeightIsSkippedAndCountedNowhere)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    setOriginalSize(1, kMegabyte);
    setOriginalSize(2, 2 * kMegabyte);
    m_library.photo(1).height = 0;
    scan({1, 2});
    EXPECT_EQ(unsupported(), QStringList{u"Unsupported file "_s + m_folder.filePath(u"a.jpg"_s)});
    EXPECT_EQ(importedNames(), QStringList{u"b.jpg"_s});
    EXPECT_EQ(statistics().first(), u"Originals: 2.00 MB"_s);
    EXPECT_EQ(m_library.turns(), QStringList({u"begin"_s, u"commit"_s, u"begin"_s, u"commit"_s}));
}

TEST_F(TurnTest, anAlbumAmongPhotosHasNoFileWhichStopsTheScan)
{
    const qint64 album = m_library.addAlbum(u"Trip"_s);
    addPicture(u"a.jpg"_s);
    m_library.setSelection({m_library.photoHandle(1), m_library.albumHandle(album)});
    scanSelection();
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Converted, Kind::Missing}));
    EXPECT_EQ(alerts(),
              QStringList{u"alert Conversion Aborted: "_s + Texts::imageMissing(u""_s, u""_s)});
}

TEST_F(TurnTest, afterAFailedConversionTheNextPhotoMeetsTheSameListEntries)
{
    addBroken(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    addPicture(u"c.jpg"_s);
    setOriginalSize(1, kMegabyte);
    setOriginalSize(2, 2 * kMegabyte);
    setOriginalSize(3, 4 * kMegabyte);
    set(u"ProcessingOption"_s, true); // each photo converts its own original
    scan({1, 2, 3});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Converted, Kind::Converted}));
    EXPECT_EQ(told({u"count"_s}),
              (QStringList{u"count a.jpg"_s, u"count a.jpg"_s, u"count b.jpg"_s, u"count "_s}));
    EXPECT_EQ(importedNames(), (QStringList{u"a.jpg"_s, u"b.jpg"_s}));
    // 1 MB of the failed one stays, 1 MB again and then the second entry's 2 MB.
    EXPECT_EQ(statistics().first(), u"Originals: 4.00 MB"_s);
    EXPECT_EQ(
        after(told({u"bar."_s}), u"bar.max"_s),
        (QStringList{u"bar.value 1"_s, u"bar.value 1"_s, u"bar.value 2"_s, u"bar.value 0"_s}));
    EXPECT_EQ(
        m_library.turns(),
        (QStringList{u"begin"_s, u"rollback"_s, u"begin"_s, u"commit"_s, u"begin"_s, u"commit"_s}));
}

TEST_F(TurnTest, afterAFailedConversionThePathsOfTheListAreThoseOfAnotherPhoto)
{
    addBroken(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    setOriginalSize(1, kMegabyte);
    setOriginalSize(2, 2 * kMegabyte);
    scan({1, 2});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Failed}));
    EXPECT_EQ(m_delegate.finished.at(1).source, m_folder.filePath(u"a.jpg"_s));
    EXPECT_TRUE(m_library.imports().isEmpty());
    EXPECT_EQ(statistics().first(), u"Originals: 2.00 MB"_s);
    EXPECT_EQ(after(m_library.calls(), u"album 2.type"_s).mid(0, 2),
              (QStringList{u"photo 1.originalPath"_s, u"photo 1.height"_s}));
    EXPECT_EQ(after(m_library.calls(), u"photo 1."_s),
              (QStringList{u"photo 2.originalPath"_s, u"photo 2.height"_s}));
    expectNoTemporaryFile();
}

TEST_F(TurnTest, aSourceThatFailedOnceFailsForTheRestOfThatScan)
{
    addPicture(u"a.jpg"_s);
    const QString source = m_folder.filePath(u"a.jpg"_s);
    setOriginalSize(1, kMegabyte);
    m_delegate.scale = 0.0F; // leaves no pixels
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) { m_delegate.scale = 1.0F; };
    scan({1, 1});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Failed}));
    EXPECT_EQ(m_delegate.finished.last().reason, source + u" failed earlier in this scan"_s);
    EXPECT_TRUE(m_library.imports().isEmpty());
    // It is not even tried again.
    EXPECT_EQ(after(m_library.calls(), u"photo 1.longitude"_s),
              (QStringList{u"photo 1.originalPath"_s, u"photo 1.height"_s}));
    // It counts each time, and is said nowhere but in the outcomes.
    EXPECT_EQ(alerts(),
              QStringList{u"alert All Done: "_s + Texts::finished(qint64{2} * kMegabyte, 0)});
    EXPECT_EQ(m_log.entries(),
              (QStringList{u"iPhoto Version 9.6.1"_s,
                           u"Building Lists"_s,
                           u"Found 0 images with issues"_s}));
    scan({1});
    EXPECT_EQ(kinds().last(), Kind::Converted);
}

TEST_F(TurnTest, anotherFileOfAPhotoThatFailedIsTriedAllTheSame)
{
    addPicture(u"a.jpg"_s);
    const QString other = makePicture(u"other.jpg"_s);
    m_library.photo(1).evidence.files.append(other);
    set(u"ProcessingOption"_s, true);
    m_delegate.scale = 0.0F;
    bool failed = false;
    m_delegate.onPhotoFinished = [this, &failed](const PhotoOutcome&) {
        m_delegate.scale = 1.0F;
        failed = true;
    };
    // Within the second turn: what is changed in the first goes with it.
    m_library.journal().setBeforeLine([this, &failed, other](const QString& line) {
        if (failed && line == u"photo 1.originalPath"_s) {
            m_library.photo(1).originalPath = other;
        }
    });
    scan({1, 1});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Converted}));
}

TEST_F(TurnTest, aSourceThatWasSkippedHasNotFailed)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).height = 0;
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) { m_library.photo(1).height = 64; };
    scan({1, 1});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Unsupported, Kind::Converted}));
}

TEST_F(TurnTest, aPhotoWhoseKeywordIsGoneFailsAndTheNextMeetsItsOwnListEntries)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_library.photo(1).losesKeyword = true;
    setOriginalSize(1, kMegabyte);
    setOriginalSize(2, 2 * kMegabyte);
    scan({1, 2});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Converted}));
    EXPECT_TRUE(m_delegate.finished.first().reason.startsWith(
        u"No copy of %1 is made, since a keyword of the photo is gone"_s.arg(
            m_folder.filePath(u"a.jpg"_s))))
        << m_delegate.finished.first().reason.toStdString();
    EXPECT_EQ(importedNames(), QStringList{u"b.jpg"_s});
    EXPECT_EQ(statistics().first(), u"Originals: 2.00 MB"_s);
    EXPECT_EQ(m_library.turns(), QStringList({u"begin"_s, u"commit"_s, u"begin"_s, u"commit"_s}));
}

TEST_F(TurnTest, ofTwoPhotosOfOneFileOnlyTheOneWhoseKeywordIsGoneFails)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).losesKeyword = true;
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) {
        m_library.photo(1).losesKeyword = false;
    };
    scan({1, 1});
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Failed, Kind::Converted}));
}

TEST_F(TurnTest, aPictureOfAnotherPhotoIsAFailedConversion)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).evidence.files = QStringList{m_folder.filePath(u"other.jpg"_s)};
    scan({1});
    EXPECT_EQ(kinds(), QList<Kind>{Kind::Failed});
    EXPECT_TRUE(m_library.imports().isEmpty());
}

TEST_F(TurnTest, theProcessingOptionDecidesWhichFileIsConverted)
{
    addPicture(u"shown.jpg"_s);
    const QString master = makePicture(u"master.jpg"_s);
    m_library.photo(1).originalPath = master;
    m_library.photo(1).evidence.files.append(master);
    scan({1});
    EXPECT_EQ(m_delegate.finished.last().source, m_folder.filePath(u"shown.jpg"_s));
    set(u"ProcessingOption"_s, true);
    scan({1});
    EXPECT_EQ(m_delegate.finished.last().source, master);
    EXPECT_EQ(importedNames(), QStringList(2, u"shown.jpg"_s));
}

TEST_F(TurnTest, withoutTagsNoKeywordIsAddedButTheOriginalsAreCopied)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).keywords = QStringList{u"Sea"_s, u"Corvane Original"_s, u"Family"_s};
    scan({1});
    EXPECT_FALSE(m_library.calls().contains(u"application.keywords"_s));
    EXPECT_EQ(m_library.photo(2).keywords, (QStringList{u"Sea"_s, u"Family"_s}));
    EXPECT_EQ(m_library.photo(1).keywords.size(), 3);
}

TEST_F(TurnTest, anImportOfTwoPhotosFilesNothingButTagsAndRemovesTheOriginal)
{
    addPicture(u"a.jpg"_s);
    set(u"TagEnabled"_s, true);
    set(u"TrashEnabled"_s, true);
    m_library.setPhotosPerImport(2);
    scan({1});
    EXPECT_EQ(after(m_library.calls(), u"application.importing"_s),
              (QStringList{u"application.lastImportAlbum"_s,
                           u"lastImportAlbum.photos"_s,
                           u"photo 1.keywords"_s,
                           u"photo 1.select"_s,
                           u"application.assignKeywordString Corvane Original"_s,
                           u"photo 1.removeFrom album 1 \"Photos\""_s}));
    EXPECT_TRUE(m_library.photo(1).inTrash);
    EXPECT_EQ(m_delegate.finished.first().newPhotoId, 0);
    EXPECT_EQ(m_library.turns().last(), u"commit"_s);
}

TEST_F(TurnTest, anImportOfNoPhotoFilesNothingButTagsAndRemovesTheOriginal)
{
    addPicture(u"a.jpg"_s);
    set(u"TagEnabled"_s, true);
    set(u"TrashEnabled"_s, true);
    m_library.setPhotosPerImport(0);
    scan({1});
    EXPECT_EQ(after(m_library.calls(), u"application.importing"_s),
              (QStringList{u"application.lastImportAlbum"_s,
                           u"lastImportAlbum.photos"_s,
                           u"photo 1.keywords"_s,
                           u"photo 1.select"_s,
                           u"application.assignKeywordString Corvane Original"_s,
                           u"photo 1.removeFrom album 1 \"Photos\""_s}));
    EXPECT_TRUE(m_library.photo(1).inTrash);
}

TEST_F(TurnTest, removalIsReadAnewForEveryPhotoTaggingOnlyOnce)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    set(u"TagEnabled"_s, true);
    set(u"TrashEnabled"_s, true);
    m_delegate.onPhotoFinished = [this](const PhotoOutcome&) {
        set(u"TagEnabled"_s, false);
        set(u"TrashEnabled"_s, false);
    };
    scan({1, 2});
    EXPECT_TRUE(m_library.photo(1).inTrash);
    EXPECT_FALSE(m_library.photo(2).inTrash);
    EXPECT_EQ(m_library.photo(2).keywords, QStringList{u"Corvane Original"_s});
}

TEST_F(TurnTest, theTemporaryFileIsThereUntilTheImportIsOver)
{
    addPicture(u"a.b.jpg"_s);
    m_library.setImportingAnswers(2);
    QList<bool> there;
    m_library.whenCalled(u"application.importing"_s,
                         [&] { there.append(QFileInfo::exists(m_library.imports().last().path)); });
    m_library.whenCalled(u"application.lastImportAlbum"_s,
                         [&] { there.append(QFileInfo::exists(m_library.imports().last().path)); });
    scan({1});
    EXPECT_EQ(there, (QList<bool>{true, true, true, false}));
    EXPECT_EQ(m_clock.sleeps(), (QList<double>{0.1, 0.1}));
    EXPECT_EQ(importedNames(), QStringList{u"a.b.jpg"_s});
    expectNoTemporaryFile();
}

TEST_F(TurnTest, outcomesAreToldInOrderOnceTheSelectionIsKnown)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    scan({2, 1});
    ASSERT_EQ(m_delegate.selected.size(), 2);
    EXPECT_EQ(m_delegate.selected.at(0).photoId, 2);
    EXPECT_EQ(m_delegate.selected.at(1).selectionIndex, 1);
    ASSERT_EQ(m_delegate.finished.size(), 2);
    const PhotoOutcome& outcome = m_delegate.finished.first();
    EXPECT_EQ(outcome.kind, Kind::Converted);
    EXPECT_EQ(outcome.photoId, 2);
    EXPECT_EQ(outcome.newPhotoId, 3);
    EXPECT_EQ(outcome.importedAs, u"b.jpg"_s);
    EXPECT_EQ(outcome.album, u"Corvane For iPhoto"_s);
    EXPECT_EQ(outcome.jpegBytes, m_library.imports().first().bytes.size());
    EXPECT_EQ(outcome.originalBytes, QFileInfo(m_folder.filePath(u"b.jpg"_s)).size());
    EXPECT_EQ(outcome.pixels, QSize(96, 64));
}

TEST_F(TurnTest, anAssertionThatIsRefusedDoesNotStopTheScan)
{
    addPicture(u"a.jpg"_s);
    m_power.result = -1;
    scan({1});
    EXPECT_EQ(kinds(), QList<Kind>{Kind::Converted});
    EXPECT_TRUE(told({u"power.release"_s}).isEmpty());
}

} // namespace
