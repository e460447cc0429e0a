#include "ScanFixture.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

// What the photo application raises in a scan.

namespace
{

class RaiseTest : public ScanFixture
{
protected:
    RaiseTest()
    {
        addPicture(u"a.jpg"_s);
        addPicture(u"b.jpg"_s);
    }

    /// Notes when a turn was undone and whether the temporary file was there, as seen when the
    /// controls are reset and when the alert is shown.
    void watchAlert()
    {
        m_delegate.onAlert = [this](const QString&) {
            m_turnsAtAlert = m_library.turns();
            m_heldAtAlert = m_power.held();
            m_isProcessingAtAlert = m_delegate.nowProcessing;
            m_isFileThereAtAlert = !m_library.imports().isEmpty() &&
                                   QFileInfo::exists(m_library.imports().last().path);
        };
    }

    QStringList m_turnsAtAlert;
    int m_heldAtAlert{-1};
    bool m_isProcessingAtAlert{true};
    bool m_isFileThereAtAlert{true};
};

TEST_F(RaiseTest, anImportThatRaisesUndoesItsTurnAndResetsBeforeTheReasonIsShown)
{
    watchAlert();
    bool wasThere = false;
    m_library.whenCalled(u"application.importing"_s,
                         [&] { wasThere = QFileInfo::exists(m_library.imports().last().path); });
    m_library.failOn(u"application.importing"_s,
                     ScriptingException(u"ImportFailed"_s, u"The disk is full."_s));
    scan({1, 2});

    EXPECT_TRUE(wasThere);
    EXPECT_EQ(m_library.calls().last(), u"application.importing"_s);
    EXPECT_EQ(m_turnsAtAlert, (QStringList{u"begin"_s, u"rollback"_s}));
    EXPECT_EQ(m_heldAtAlert, 0);
    EXPECT_FALSE(m_isProcessingAtAlert);
    EXPECT_FALSE(m_isFileThereAtAlert);
    EXPECT_EQ(after(told({u"power.create"_s,
                          u"button"_s,
                          u"nowProcessing"_s,
                          u"power.release"_s,
                          u"timeRemaining --"_s,
                          u"alert"_s}),
                    u"power.create"_s),
              (QStringList{u"button YES"_s,
                           u"nowProcessing NO"_s,
                           u"power.release 4711"_s,
                           u"timeRemaining --:--:--"_s,
                           u"alert Conversion Aborted: The disk is full."_s}));
    EXPECT_EQ(m_library.libraryAlbum()->photos().size(), 2); // the import is undone
    expectResetWithoutNotification();
    expectNoTemporaryFile();
}

TEST_F(RaiseTest, anImportCommandThatRaisesLeavesNoTemporaryFile)
{
    m_library.failOn(u"album 1.importFrom"_s, ScriptingException(u"ImportFailed"_s, u"No."_s));
    QStringList duringImport;
    m_library.whenCalled(u"album 1.importFrom"_s, [&] { duringImport = temporaryFiles(); });
    bool wasEmpty = false;
    m_delegate.onAlert = [&](const QString&) { wasEmpty = temporaryFiles().isEmpty(); };
    scan({1, 2});
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: No."_s});
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"rollback"_s}));
    EXPECT_FALSE(duringImport.filter(u"/a.jpg"_s).isEmpty());
    EXPECT_TRUE(wasEmpty);
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, theTurnsBeforeTheRaiseStay)
{
    m_library.failOn(u"photo 2.altitude"_s, ScriptingException(u"Gone"_s, u"It is gone."_s));
    scan({1, 2});
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"commit"_s, u"begin"_s, u"rollback"_s}));
    EXPECT_EQ(m_library.album(2).photos, QList<qint64>{3});
    EXPECT_EQ(m_delegate.finished.size(), 1);
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: It is gone."_s});
    expectResetWithoutNotification();
    expectNoTemporaryFile();
}

TEST_F(RaiseTest, aTurnThatCannotBeCommittedEndsTheScan)
{
    m_library.failOnCommit(ScriptingException(u"CommitFailed"_s, u"It cannot be kept."_s));
    scan({1, 2});
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"rollback"_s}));
    EXPECT_TRUE(m_delegate.finished.isEmpty());
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: It cannot be kept."_s});
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, whatRaisesBeforeTheLoopResetsWithoutAnAssertion)
{
    m_library.failOn(u"application.albums"_s, ScriptingException(u"Gone"_s, u"It is gone."_s));
    scan({1, 2});
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: It is gone."_s});
    EXPECT_TRUE(told({u"power"_s}).isEmpty());
    EXPECT_TRUE(m_library.turns().isEmpty());
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, aFileNameThatLeadsOutOfTheTemporaryFolderEndsTheScan)
{
    m_library.photo(1).properties->insert(u"imageFilename"_s, u"../../a.jpg"_s);
    scan({1, 2});
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_TRUE(alerts().first().startsWith(u"alert Conversion Aborted: "_s));
    EXPECT_TRUE(m_library.imports().isEmpty());
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, aRollWithoutANameEndsTheScanBeforeItsLoop)
{
    QFile file(m_folder.filePath(u"AlbumData.xml"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<plist version=\"1.0\"><dict><key>Master Image List</key><dict><key>1</key>"
               "<dict><key>GUID</key><string>g</string><key>Roll</key><integer>7</integer>"
               "</dict></dict><key>List of Rolls</key><array><dict><key>RollID</key>"
               "<integer>7</integer></dict></array></dict></plist>");
    file.close();
    m_library.photo(1).previewPath = u"/l/g/a.jpg"_s;
    m_delegate.library = m_folder.path();
    scan({1, 2});
    EXPECT_EQ(alerts(),
              QStringList{u"alert Conversion Aborted: Roll 7 has no name in AlbumData.xml"_s});
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, listsThatAreNotWholeEndTheScanBeforeItsLoop)
{
    m_library.selectPhotos({1, 2});
    Corvane engine(services());
    m_library.whenCalled(u"photo 2.properties"_s, [&] { engine.sbutils().setFilenameList({}); });
    runOnWorker([&] { engine.corvaneScan(m_delegate); });
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: Missing filenames"_s});
    EXPECT_EQ(m_library.calls().last(), u"photo 2.properties"_s);
    expectResetWithoutNotification();
}

TEST_F(RaiseTest, whateverElseIsRaisedEndsTheScanTheSameWay)
{
    watchAlert();
    m_library.whenCalled(u"application.lastImportAlbum"_s,
                         [] { throw std::runtime_error("something else"); });
    scan({1, 2});
    EXPECT_EQ(alerts(), QStringList{u"alert Conversion Aborted: something else"_s});
    EXPECT_EQ(m_turnsAtAlert, (QStringList{u"begin"_s, u"rollback"_s}));
    expectResetWithoutNotification();
    expectNoTemporaryFile();
}

} // namespace
