#include "MainThread.h"
#include "ScanFixture.h"
#include "Texts.h"

using namespace Qt::StringLiterals;

// What a scan asks of the library, tells the controller and writes to the log, as one sequence.

namespace
{

const QString kAssertion =
    u"power.create NoIdleSleepAssertion 255 Corvane conversion in progress"_s;

class OrderTest : public ScanFixture
{
protected:
    OrderTest()
        : ScanFixture(std::make_shared<Journal>())
    {
        // A line of the scan's thread waits for what that thread sent to the main one before, so
        // that the sequence is the one in which the scan does things and sends them.
        m_told->setBeforeLine([](const QString&) { performOnMainThread([] {}, Wait::Yes); });
        m_log.setOnEntry([this](const QString& entry) { m_told->add(u"log "_s + entry); });
        m_notifications.setShouldPresent([this](const UserNotification& notification) {
            m_told->add(u"notification "_s + notification.title);
            return true;
        });
        // Each stage takes time, so that the rates that are learnt are numbers.
        for (const QString& call : {u"application.keywords"_s,
                                    u"photo 1.properties"_s,
                                    u"application.albums"_s,
                                    u"album 1.importFrom"_s}) {
            m_library.whenCalled(call, [this] { m_clock.advance(2.0); });
        }
    }

    void setAll(bool value)
    {
        for (const QString& key : {u"TagEnabled"_s, u"TrashEnabled"_s, u"ProcessingOption"_s}) {
            set(key, value);
        }
    }

    /// What follows the last line that starts so.
    [[nodiscard]] QStringList linesAfter(const QString& start) const
    {
        return after(m_told->lines(), start);
    }

    /// Up to the end of the loading of two photos, with tags.
    [[nodiscard]] static QStringList loadingOfTwo()
    {
        return {u"button NO"_s,
                u"nowProcessing YES"_s,
                u"application.version"_s,
                u"log iPhoto Version 9.6.1"_s,
                u"application.selection"_s,
                u"timeRemaining 00:00:26"_s, // 2 + 2 + 2 + 20 s
                u"application.keywords"_s,
                u"timeRemaining 00:00:24"_s,
                u"timeRemaining 00:00:24"_s,
                u"status Loading Data"_s,
                u"bar.max 2"_s,
                u"cfgInfoText "_s + Texts::keepAwayFromPhotoApplication(),
                u"cfgProgressBarDeterminate"_s,
                u"cfgProgressBarMaxValue 2"_s,
                u"cfgProgressBarCurrentValue 0"_s,
                u"cfgProgressBarCurrentValue 1"_s,
                u"photo 1.properties"_s,
                u"cfgProgressBarCurrentValue 2"_s,
                u"photo 2.properties"_s,
                u"log Building Lists"_s,
                u"log Found 0 images with issues"_s,
                u"timeRemaining 00:00:22"_s};
    }

    /// A photo's turn up to its import, at the list position that `value` of the bar stands for.
    [[nodiscard]] static QStringList
    conversion(const QString& remaining, int value, const QString& photo, const QString& file)
    {
        return {u"timeRemaining "_s + remaining,
                u"bar.value %1"_s.arg(value),
                photo + u".originalPath"_s,
                u"count "_s + file,
                photo + u".height"_s,
                u"status Converting"_s,
                photo + u".latitude"_s,
                photo + u".longitude"_s,
                u"status Importing"_s,
                u"album 1.importFrom %1 YES album 1"_s.arg(file),
                u"application.importing"_s,
                u"status Propagating Metadata"_s,
                u"application.lastImportAlbum"_s,
                u"lastImportAlbum.photos"_s};
    }

    [[nodiscard]] static QStringList tagsAndRemoval(const QString& original, const QString& copy)
    {
        return {copy + u".keywords"_s,
                copy + u".select"_s,
                u"application.assignKeywordString Corvane Processed"_s,
                original + u".keywords"_s,
                original + u".select"_s,
                u"application.assignKeywordString Corvane Original"_s,
                original + u".removeFrom album 1 \"Photos\""_s};
    }

    [[nodiscard]] static QStringList completion(qint64 originalBytes, qint64 convertedBytes)
    {
        return {u"power.release 4711"_s,
                u"timeRemaining 00:00:00"_s,
                u"notification Conversion Complete"_s,
                u"alert All Done: "_s + Texts::finished(originalBytes, convertedBytes),
                u"count "_s,
                u"status Ready"_s,
                u"bar.value 0"_s,
                u"timeRemaining --:--:--"_s,
                u"button YES"_s,
                u"nowProcessing NO"_s};
    }

    [[nodiscard]] static QStringList reset(bool assertionIsHeld)
    {
        QStringList lines{u"button YES"_s, u"count "_s, u"status Ready"_s, u"nowProcessing NO"_s};
        if (assertionIsHeld) {
            lines += u"power.release 4711"_s;
        }
        return lines + QStringList{u"timeRemaining --:--:--"_s};
    }

    [[nodiscard]] qint64 sizeOf(const QString& name) const
    {
        return QFileInfo(m_folder.filePath(name)).size();
    }

    [[nodiscard]] qint64 importedBytes() const
    {
        qint64 bytes = 0;
        for (const FakeImport& import : m_library.imports()) {
            bytes += import.bytes.size();
        }
        return bytes;
    }
};

TEST_F(OrderTest, twoPhotosWithEverythingOn)
{
    addPicturesOfRolls({u"Beach"_s, u"Snow"_s});
    m_library.photo(1).keywords = QStringList{u"Sea"_s};
    setAll(true);
    scan({1, 2});

    const QStringList albums{u"timeRemaining 00:00:22"_s,
                             u"application.albums"_s,
                             u"application.photoLibraryAlbum"_s,
                             u"photo 1.previewPath"_s,
                             u"photo 2.previewPath"_s,
                             u"timeRemaining 00:00:20"_s,
                             kAssertion};
    const QStringList filingOfFirst{u"application.newAlbumName Beach"_s,
                                    u"application.albums"_s,
                                    u"album 2.name"_s,
                                    u"album 2.type"_s,
                                    u"photo 3.addTo album 2 \"Beach\""_s};
    const QStringList filingOfSecond{u"album 2.name"_s,
                                     u"application.newAlbumName Snow"_s,
                                     u"application.albums"_s,
                                     u"album 2.name"_s,
                                     u"album 3.name"_s,
                                     u"album 3.type"_s,
                                     u"photo 4.addTo album 3 \"Snow\""_s};
    const QStringList expected =
        loadingOfTwo() + albums + conversion(u"00:00:20"_s, 1, u"photo 1"_s, u"1.jpg"_s) +
        filingOfFirst + propagation(u"photo 1"_s, u"photo 3"_s, u"1"_s) +
        QStringList{u"photo 3.select"_s, u"application.assignKeywordString Sea"_s} +
        tagsAndRemoval(u"photo 1"_s, u"photo 3"_s) +
        conversion(u"00:00:10"_s, 2, u"photo 2"_s, u"2.jpg"_s) + filingOfSecond +
        propagation(u"photo 2"_s, u"photo 4"_s, u"2"_s) +
        tagsAndRemoval(u"photo 2"_s, u"photo 4"_s) +
        completion(sizeOf(u"1.jpg"_s) + sizeOf(u"2.jpg"_s), importedBytes());
    EXPECT_EQ(m_told->lines(), expected);
}

TEST_F(OrderTest, aConversionThatFailsIsPassedOverWhereItFailed)
{
    addBroken(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    setAll(true);
    scan({1, 2});

    const QStringList album{u"timeRemaining 00:00:22"_s,
                            u"application.albums"_s,
                            u"application.photoLibraryAlbum"_s,
                            u"application.newAlbumName Corvane For iPhoto"_s,
                            u"application.albums"_s,
                            u"album 2.name"_s,
                            u"album 2.type"_s,
                            u"timeRemaining 00:00:20"_s,
                            kAssertion};
    const QStringList failure{u"timeRemaining 00:00:20"_s,
                              u"bar.value 1"_s,
                              u"photo 1.originalPath"_s,
                              u"count a.jpg"_s,
                              u"photo 1.height"_s,
                              u"status Converting"_s};
    // The second photo is converted at the first one's place in the lists, under its name.
    const QStringList expected = loadingOfTwo() + album + failure +
                                 conversion(u"00:00:20"_s, 1, u"photo 2"_s, u"a.jpg"_s) +
                                 QStringList{u"photo 3.addTo album 2 \"Corvane For iPhoto\""_s} +
                                 propagation(u"photo 2"_s, u"photo 3"_s, u"b"_s) +
                                 tagsAndRemoval(u"photo 2"_s, u"photo 3"_s) +
                                 completion(2 * sizeOf(u"a.jpg"_s), importedBytes());
    EXPECT_EQ(m_told->lines(), expected);
}

TEST_F(OrderTest, aPhotoThatIsNotSupportedIsPassedOverAfterItsLogLine)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_library.photo(1).height = 0;
    scan({1, 2});
    EXPECT_EQ(linesAfter(kAssertion).mid(0, 8),
              (QStringList{u"timeRemaining 00:00:20"_s,
                           u"bar.value 1"_s,
                           u"photo 1.originalPath"_s,
                           u"count a.jpg"_s,
                           u"photo 1.height"_s,
                           u"log Unsupported file "_s + m_folder.filePath(u"a.jpg"_s),
                           u"timeRemaining 00:00:10"_s,
                           u"bar.value 2"_s}));
}

TEST_F(OrderTest, aPhotoWithoutASourceIsSaidBeforeTheReset)
{
    addPicture(u"a.jpg"_s);
    m_library.photo(1).name = u"The name"_s;
    m_library.photo(1).properties->insert(u"imagePath"_s, QVariant());
    scan({1});
    EXPECT_EQ(linesAfter(kAssertion),
              (QStringList{u"timeRemaining 00:00:10"_s,
                           u"bar.value 1"_s,
                           u"photo 1.originalPath"_s,
                           u"count a.jpg"_s,
                           u"photo 1.name"_s,
                           u"alert Conversion Aborted: "_s + Texts::imageMissing(u"The name"_s)} +
               reset(true)));
}

TEST_F(OrderTest, aPhotoWhoseFileIsGoneIsSaidBeforeTheReset)
{
    addPicture(u"a.jpg"_s);
    const QString gone = m_folder.filePath(u"a.jpg"_s);
    ASSERT_TRUE(QFile::remove(gone));
    scan({1});
    EXPECT_EQ(
        linesAfter(kAssertion),
        (QStringList{u"timeRemaining 00:00:10"_s,
                     u"bar.value 1"_s,
                     u"photo 1.originalPath"_s,
                     u"count a.jpg"_s,
                     u"photo 1.height"_s,
                     u"alert Conversion Aborted: "_s + Texts::imageMissing(u"a.jpg"_s, gone)} +
         reset(true)));
}

TEST_F(OrderTest, nothingSelectedIsSaidBeforeTheReset)
{
    scan({});
    EXPECT_EQ(m_told->lines(),
              (QStringList{u"button NO"_s,
                           u"nowProcessing YES"_s,
                           u"application.version"_s,
                           u"log iPhoto Version 9.6.1"_s,
                           u"application.selection"_s,
                           u"timeRemaining 00:00:00"_s,
                           u"alert Unable To Process: "_s + Texts::nothingSelected()} +
               reset(false)));
}

TEST_F(OrderTest, aLoadThatIsCancelledIsResetWithoutAWord)
{
    addPicture(u"a.jpg"_s);
    addPicture(u"b.jpg"_s);
    m_delegate.cancelAtPoll = 2;
    scan({1, 2});
    EXPECT_EQ(linesAfter(u"photo 1.properties"_s),
              QStringList{u"cfgProgressBarCurrentValue 2"_s} + reset(false));
}

TEST_F(OrderTest, whatTheLibraryRaisesIsSaidAfterTheReset)
{
    addPicture(u"a.jpg"_s);
    m_library.failOn(u"application.importing"_s,
                     ScriptingException(u"ImportFailed"_s, u"The disk is full."_s));
    scan({1});
    EXPECT_EQ(linesAfter(u"application.importing"_s),
              reset(true) + QStringList{u"alert Conversion Aborted: The disk is full."_s});
}

} // namespace
