#include "CareDialogs.h"

#include "BackupChooser.h"
#include "LibraryWindowFixture.h"
#include "OpenPanelAnswer.h"
#include "WhenModal.h"
#include "WholeTexts.h"

#include <QAction>
#include <QDir>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>

#include <SQLiteCpp/Database.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace
{

class CareDialogsTest : public LibraryWindowFixture
{
protected:
    [[nodiscard]] QString brief() const { return library() + u"/iLifeShared/AlbumData2.xml"_s; }

    [[nodiscard]] LibraryActions& actions() { return m_window.actions(); }

    [[nodiscard]] bool settle()
    {
        return waitUntil([this] { return !m_session.isBusy(); });
    }

    void verify()
    {
        ASSERT_TRUE(actions().verify->isEnabled());
        actions().verify->trigger();
        ASSERT_TRUE(settle());
    }

    QString heading() { return part<QLabel>(u"careHeading"_s).text(); }

    QString text() { return part<QLabel>(u"careText"_s).text(); }

    QString list() { return part<QPlainTextEdit>(u"careList"_s).toPlainText(); }

    QPushButton& offer() { return part<QPushButton>(u"takeOffer"_s); }

    /// Does something that asks, presses the button of that text, and answers what was asked.
    /// `meanwhile`: what happens before the press.
    QString answer(
        const std::function<void()>& action,
        const QString& buttonText,
        const std::function<void()>& meanwhile = [] {})
    {
        QString asked;
        whenModal([&asked, buttonText, meanwhile](QWidget& dialog) {
            auto* const box = qobject_cast<QMessageBox*>(&dialog);
            ASSERT_NE(box, nullptr);
            meanwhile();
            asked = box->text() + u'\n' + box->informativeText();
            for (QAbstractButton* const button : box->buttons()) {
                if (button->text().remove(u'&') == buttonText) {
                    button->click();
                    return;
                }
            }
            ADD_FAILURE() << "no button " << buttonText.toStdString();
            box->reject();
        });
        action();
        return asked;
    }

    QString answerOffer(const QString& buttonText)
    {
        return answer([this] { offer().click(); }, buttonText);
    }

    [[nodiscard]] LibraryBackup backUpUnopened() const
    {
        const Result<LibraryBackup> made = LibraryBackups::make(library());
        EXPECT_TRUE(made.ok()) << made.error().message.toStdString();
        return made.ok() ? made.value() : LibraryBackup();
    }

    /// Takes a sixth photo into the library, which is not open.
    void takePhoto() const
    {
        const auto opened = PhotoLibrary::open(library(), {.access = Access::Write});
        ASSERT_TRUE(opened.ok());
        const QList<PhotoFacts> photos = opened.value()->photos().value();
        for (const PhotoFacts& photo : photos) {
            if (photo.fileName.endsWith(u".jpg"_s, Qt::CaseInsensitive)) {
                ImportRequest request;
                request.sourcePath = photo.originalPath;
                request.fileName = u"Later.jpg"_s;
                const Result<qint64> taken = opened.value()->importPhoto(request);
                EXPECT_TRUE(taken.ok()) << taken.error().message.toStdString();
                return;
            }
        }
        FAIL() << "no JPEG";
    }

    void execute(const char* sql) const
    {
        SQLite::Database database((library() + u"/Database/apdb/Library.apdb"_s).toStdString(),
                                  SQLite::OPEN_READWRITE);
        static_cast<void>(database.exec(sql));
    }

    /// The list of copies, once it is up.
    BackupChooser* chooser()
    {
        actions().restoreBackup->trigger();
        EXPECT_TRUE(settle());
        return m_window.findChild<BackupChooser*>();
    }

    /// The copy of that name is chosen in the list, and what is asked then answered.
    QString answerChooser(BackupChooser& chooser, const QString& name, const QString& buttonText)
    {
        auto& copies = *chooser.findChild<QTreeWidget*>(u"backups"_s);
        for (int row = 0; row < copies.topLevelItemCount(); ++row) {
            if (copies.topLevelItem(row)->toolTip(0).endsWith(name)) {
                copies.setCurrentItem(copies.topLevelItem(row));
            }
        }
        return answer([&chooser] { chooser.findChild<QPushButton*>(u"restoreBackup"_s)->click(); },
                      buttonText);
    }
};

} // namespace

TEST_F(CareDialogsTest, ofASoundLibraryItIsSaidThatAllAgrees)
{
    open(library());
    verify();
    EXPECT_EQ(heading(), u"Databases, sidecars, catalogues and files agree."_s);
    EXPECT_TRUE(text().contains(u"“Photos.photolibrary”"_s));
    EXPECT_FALSE(offer().isVisible());
}

TEST_F(CareDialogsTest, whatIsFoundIsListedAndMendedOnlyWhenThatIsConfirmed)
{
    open(library());
    ASSERT_TRUE(QFile::remove(brief()));
    verify();
    EXPECT_EQ(heading(), u"1 thing differs."_s);
    EXPECT_EQ(text(), u"1 can be mended without a choice, after a backup."_s);
    EXPECT_EQ(list(),
              u"Can be mended:\n• The brief catalogue AlbumData2.xml is missing.\n"
              "   iLifeShared/AlbumData2.xml"_s);
    const QString asked = answerOffer(u"Cancel"_s);
    EXPECT_TRUE(asked.startsWith(u"Mend 1 thing in “Photos.photolibrary”?"_s));
    const QString folder = LibraryBackups::folder(library()).value();
    EXPECT_TRUE(asked.contains(folder)) << asked.toStdString();
    EXPECT_FALSE(m_session.isBusy());
    EXPECT_FALSE(QFile::exists(brief()));

    static_cast<void>(answerOffer(u"Repair"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"1 thing was mended."_s);
    EXPECT_TRUE(text().contains(u"The backup made before is "_s + folder)) << text().toStdString();
    EXPECT_TRUE(list().startsWith(u"Mended:\n• The brief catalogue"_s));
    EXPECT_TRUE(QFile::exists(brief()));
    verify();
    EXPECT_EQ(heading(), u"Databases, sidecars, catalogues and files agree."_s);
}

TEST_F(CareDialogsTest, whatNeedsAChoiceIsListedApartAndNotOfferedToBeMended)
{
    open(library());
    ASSERT_TRUE(QFile::remove(m_session.contents().photos.at(0).originalPath));
    verify();
    EXPECT_EQ(heading(), u"1 thing differs."_s);
    EXPECT_TRUE(list().startsWith(u"Needs a choice of yours:\n"_s)) << list().toStdString();
    EXPECT_FALSE(offer().isVisible());
    ASSERT_TRUE(QFile::remove(brief()));
    verify();
    static_cast<void>(answerOffer(u"Repair"_s));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(text().startsWith(u"1 thing was left as it was: it needs a choice of yours."_s));
    EXPECT_LT(list().indexOf(u"Needs a choice"_s), list().indexOf(u"Mended:"_s));
}

TEST_F(CareDialogsTest, ofARepairThatWasStoppedItIsToldWhatItMendedAndWhereTheBackupIs)
{
    open(library());
    verify();
    emit m_session.care().repaired({.backup = u"/backups/1"_s,
                                    .mended = {{u"A."_s, u"a"_s, true}},
                                    .left = {{u"B."_s, u"b"_s, true}},
                                    .failures = {},
                                    .stopped = true});
    EXPECT_EQ(heading(), u"The repair was stopped"_s);
    EXPECT_TRUE(text().contains(u"1 thing was mended."_s)) << text().toStdString();
    EXPECT_TRUE(text().contains(u"1 thing is not known to be mended."_s)) << text().toStdString();
    EXPECT_TRUE(text().contains(u"/backups/1"_s)) << text().toStdString();
    EXPECT_TRUE(list().startsWith(u"Not known to be mended:\n"_s)) << list().toStdString();
    EXPECT_TRUE(list().contains(u"\nMended:\n"_s)) << list().toStdString();
}

TEST_F(CareDialogsTest, aVerificationIsStoppedByItsButton)
{
    open(library());
    actions().verify->trigger();
    EXPECT_EQ(heading(), u"Verifying “Photos.photolibrary”…"_s);
    part<QPushButton>(u"stopCare"_s).click();
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The verification was stopped"_s);
    EXPECT_EQ(text(), u"Nothing was changed."_s);
}

TEST_F(CareDialogsTest, whileSomethingIsUnderWayNoOtherLibraryIsOpenedAndAScanWouldWait)
{
    open(library());
    actions().verify->trigger();
    EXPECT_FALSE(actions().open->isEnabled());
    EXPECT_FALSE(actions().reload->isEnabled());
    EXPECT_FALSE(actions().verify->isEnabled());
    EXPECT_TRUE(m_window.forecastSelection().checking);
    EXPECT_TRUE(grid().isEnabled()) << "photos are looked at meanwhile";
    m_window.openLibrary(m_folder.filePath(u"Other.photolibrary"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(m_session.contents().path, library());
    EXPECT_EQ(heading(), u"Databases, sidecars, catalogues and files agree."_s);
    EXPECT_TRUE(actions().open->isEnabled());
    EXPECT_TRUE(actions().verify->isEnabled());
    EXPECT_FALSE(m_window.forecastSelection().checking);
}

TEST_F(CareDialogsTest, duringAScanNothingIsBegunAndItIsSaidWhy)
{
    open(library());
    ASSERT_TRUE(QFile::remove(brief()));
    verify();
    m_window.setScanning(true);
    for (const QAction* const action :
         {actions().verify, actions().backUp, actions().restoreBackup}) {
        EXPECT_FALSE(action->isEnabled()) << action->text().toStdString();
    }
    EXPECT_TRUE(actions().whyNoCare->isVisible());
    EXPECT_TRUE(actions().whyNoCare->text().contains(u"scan"_s));
    EXPECT_FALSE(offer().isEnabled());
    EXPECT_EQ(part<QLabel>(u"whyNotOffered"_s).text(), actions().whyNoCare->text());
    m_window.setScanning(false);
    EXPECT_TRUE(offer().isEnabled());
    EXPECT_FALSE(actions().whyNoCare->isVisible());
}

TEST_F(CareDialogsTest, aScanThatBeginsWhileItIsAskedKeepsTheRepairFromBeginning)
{
    open(library());
    ASSERT_TRUE(QFile::remove(brief()));
    verify();
    static_cast<void>(
        answer([this] { offer().click(); }, u"Repair"_s, [this] { m_window.setScanning(true); }));
    EXPECT_FALSE(m_session.isBusy());
    EXPECT_FALSE(QFile::exists(brief()));
}

TEST_F(CareDialogsTest, whereAnotherProgramWritesNothingIsBegunAndItIsSaidWhy)
{
    const auto other = PhotoLibrary::open(library(), {.access = Access::Write});
    ASSERT_TRUE(other.ok());
    open(library());
    ASSERT_TRUE(m_session.contents().inUse);
    EXPECT_FALSE(actions().verify->isEnabled());
    EXPECT_FALSE(actions().backUp->isEnabled());
    EXPECT_FALSE(actions().restoreBackup->isEnabled());
    EXPECT_TRUE(actions().whyNoCare->text().startsWith(u"Another program"_s));
    actions().reload->trigger();
    ASSERT_TRUE(settle());
    EXPECT_FALSE(actions().verify->isEnabled()) << "it still has";
}

TEST_F(CareDialogsTest, withoutALibraryOnlyARestoreCanBeAskedFor)
{
    EXPECT_FALSE(actions().verify->isEnabled());
    EXPECT_FALSE(actions().backUp->isEnabled());
    EXPECT_TRUE(actions().restoreBackup->isEnabled());
}

TEST_F(CareDialogsTest, aBackupIsMadeAndItIsSaidWhere)
{
    open(library());
    actions().backUp->trigger();
    ASSERT_TRUE(settle());
    const QList<LibraryBackup> backups = LibraryBackups::list(library()).value();
    ASSERT_EQ(backups.size(), 1);
    EXPECT_TRUE(text().contains(backups.first().path)) << text().toStdString();
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(CareDialogsTest, aBackupThatCannotBeMadeIsToldWithItsFile)
{
    open(library());
    const QString backups = LibraryBackups::folder(library()).value();
    ASSERT_TRUE(QDir().mkpath(QFileInfo(backups).path()));
    QFile inTheWay(backups);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    actions().backUp->trigger();
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The library could not be backed up"_s);
    EXPECT_TRUE(text().contains(backups)) << text().toStdString();
}

TEST_F(CareDialogsTest, aBackupIsRestoredOnlyWhenThatIsConfirmedAndWhatIsKeptIsListed)
{
    const LibraryBackup backup = backUpUnopened();
    takePhoto();
    open(library());
    ASSERT_EQ(m_session.contents().photos.size(), 6);
    BackupChooser* const copies = chooser();
    ASSERT_NE(copies, nullptr);
    expectNothingIsCutOff(*copies);
    const QString asked = answerChooser(*copies, backup.name, u"Cancel"_s);
    EXPECT_TRUE(asked.contains(u"A backup of what is there now is made first"_s));
    EXPECT_TRUE(asked.contains(u"stay in the library as files"_s));
    EXPECT_TRUE(copies->isVisible()) << "another one may be chosen";
    EXPECT_EQ(m_session.contents().photos.size(), 6);

    static_cast<void>(answerChooser(*copies, backup.name, u"Restore"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The backup was restored"_s);
    EXPECT_TRUE(text().contains(backup.name));
    EXPECT_TRUE(list().startsWith(
        u"1 file in the library belongs to no photo of it now, and is kept:\n• Masters/"_s))
        << list().toStdString();
    EXPECT_EQ(names().size(), 5) << "the window shows it as it is now";
    EXPECT_TRUE(m_session.contents().isWritable());
    EXPECT_TRUE(offer().isEnabled());
    offer().click();
    ASSERT_TRUE(settle());
    EXPECT_TRUE(list().contains(u"Needs a choice of yours:"_s)) << "the file that is kept";
    EXPECT_TRUE(list().contains(u"Masters/"_s)) << list().toStdString();
}

TEST_F(CareDialogsTest, thatAnotherProgramChangedTheLibraryIsSaidBeforeARestore)
{
    const LibraryBackup backup = backUpUnopened();
    execute("UPDATE RKVersion SET name='Other'");
    open(library());
    BackupChooser* const copies = chooser();
    ASSERT_NE(copies, nullptr);
    const QString asked = answerChooser(*copies, backup.name, u"Cancel"_s);
    EXPECT_TRUE(asked.contains(u"were changed within the last minute"_s)) << asked.toStdString();
}

TEST_F(CareDialogsTest, whatCannotFollowARestoreIsListed)
{
    const LibraryBackup backup = backUpUnopened();
    ASSERT_TRUE(QFile::remove(brief()));
    ASSERT_TRUE(QDir().mkpath(brief() + u"/a folder"_s));
    open(library());
    BackupChooser* const copies = chooser();
    ASSERT_NE(copies, nullptr);
    static_cast<void>(answerChooser(*copies, backup.name, u"Restore"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The backup was restored"_s);
    EXPECT_TRUE(list().startsWith(u"Not done yet:\n"_s)) << list().toStdString();
    EXPECT_TRUE(list().contains(u"AlbumData2.xml"_s)) << list().toStdString();
}

TEST_F(CareDialogsTest, aLibraryThatWasNotClosedIsRestoredWhenThatIsInsistedOn)
{
    const LibraryBackup backup = backUpUnopened();
    execute("UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'");
    open(library());
    BackupChooser* const copies = chooser();
    ASSERT_NE(copies, nullptr);
    static_cast<void>(answerChooser(*copies, backup.name, u"Restore"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"“Photos.photolibrary” was not closed"_s);
    EXPECT_FALSE(m_session.contents().isWritable());
    ASSERT_TRUE(offer().isEnabled());
    offer().click();
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The backup was restored"_s);
    EXPECT_TRUE(m_session.contents().isWritable());
}

TEST_F(CareDialogsTest, rowsThatContradictEachOtherAreMendedFromTheWindow)
{
    execute("DELETE FROM RKMaster_RidIndexes");
    open(library());
    ASSERT_FALSE(m_session.contents().isWritable());
    verify();
    static_cast<void>(answerOffer(u"Repair"_s));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(heading().endsWith(u"mended."_s)) << heading().toStdString();
    EXPECT_TRUE(m_session.contents().isWritable());
    EXPECT_FALSE(part<QLabel>(u"whyReadOnly"_s).isVisible()) << "the line above the photos";
}

TEST_F(CareDialogsTest, aLibraryThatCannotBeOpenedIsChosenAndRestored)
{
    const LibraryBackup backup = backUpUnopened();
    ASSERT_TRUE(QFile::remove(library() + u"/Database/apdb/Library.apdb"_s));
    whenModal([this](QWidget& dialog) { answerOpenPanel(dialog, library()); });
    BackupChooser* const copies = chooser();
    ASSERT_NE(copies, nullptr);
    static_cast<void>(answerChooser(*copies, backup.name, u"Restore"_s));
    ASSERT_TRUE(settle());
    EXPECT_EQ(heading(), u"The backup was restored"_s);
    EXPECT_EQ(names().size(), 5);
}
