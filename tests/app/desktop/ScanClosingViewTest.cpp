#include "ScanClosingView.h"

#include "DesktopFixture.h"
#include "Mnemonics.h"
#include "WholeTexts.h"

#include <QClipboard>
#include <QLabel>
#include <QListWidget>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace
{

/// What Corvane's window tells of single photos after a scan.
class ScanClosingViewTest : public DesktopFixture
{
protected:
    static ScannedPhoto photo(qint64 id, const QString& filename)
    {
        return {.id = id, .filename = filename, .outcome = {}};
    }

    /// Two photos that were not converted, and a copy of another name.
    static ScanClosing threePhotos()
    {
        ScanClosing closing;
        closing.notConverted = {photo(3, u"IMG_3.cr2"_s), photo(5, u"<b>IMG_5.cr2"_s)};
        closing.notConverted[0].outcome.reason = u"it ends\nearly"_s;
        closing.notConverted[1].outcome.reason = u"it is damaged"_s;
        closing.otherNames = {photo(7, u"IMG_7.cr2"_s)};
        closing.otherNames[0].outcome.importedAs = u"IMG_3.jpg"_s;
        return closing;
    }

    ScanClosingView& view() { return m_window->scanClosing(); }

    QListWidget& list() { return child<QListWidget>(u"closingList"_s); }

    QString heading() { return child<QLabel>(u"closingHeading"_s).text(); }

    /// Shows the window, and in it what is told of three photos.
    void showThreePhotos()
    {
        showWindow();
        view().setClosing(threePhotos());
        settle();
    }

    static QString clipboard() { return QApplication::clipboard()->text(); }
};

} // namespace

TEST_F(ScanClosingViewTest, isHiddenWhileThereIsNothingToTell)
{
    showWindow();
    EXPECT_FALSE(view().isVisible());
    view().setClosing(threePhotos());
    EXPECT_TRUE(view().isVisible());
    view().setClosing({});
    EXPECT_FALSE(view().isVisible());
    EXPECT_EQ(list().count(), 0);
}

TEST_F(ScanClosingViewTest, eachPhotoIsToldOnALineOfItsOwn)
{
    showThreePhotos();
    EXPECT_EQ(heading(), u"2 photos were not converted. 1 copy bears the name of another photo."_s);
    ASSERT_EQ(list().count(), 3);
    EXPECT_EQ(list().item(0)->text(), u"IMG_3.cr2 (photo 3): it ends early"_s);
    EXPECT_EQ(list().item(1)->text(), u"<b>IMG_5.cr2 (photo 5): it is damaged"_s);
    EXPECT_EQ(list().item(2)->text(),
              u"The copy of IMG_7.cr2 (photo 7) bears another name: IMG_3.jpg"_s);
}

TEST_F(ScanClosingViewTest, aMissingFileComesWithTheWayAroundIt)
{
    showWindow();
    ScanClosing closing;
    closing.notConverted = {photo(3, u"IMG_3.cr2"_s)};
    closing.notConverted[0].outcome.kind = PhotoOutcome::Kind::Missing;
    view().setClosing(closing);
    EXPECT_TRUE(heading().contains(u"Edit > Select RAW"_s)) << heading().toStdString();
}

TEST_F(ScanClosingViewTest, theListIsCopiedAsAWholeOrInPart)
{
    showThreePhotos();
    click(u"copyClosing"_s);
    EXPECT_EQ(clipboard(),
              u"IMG_3.cr2 (photo 3): it ends early\n<b>IMG_5.cr2 (photo 5): it is damaged\n"
              "The copy of IMG_7.cr2 (photo 7) bears another name: IMG_3.jpg"_s);
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    list().setFocus();
    list().setCurrentRow(1);
    QTest::keyClick(&list(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"<b>IMG_5.cr2 (photo 5): it is damaged"_s);
}

TEST_F(ScanClosingViewTest, aPhotoIsChosenByButtonAndByKey)
{
    showThreePhotos();
    const QSignalSpy chosen(&view(), &ScanClosingView::photoChosen);
    click(u"showFailedPhoto"_s);
    ASSERT_EQ(chosen.size(), 1) << "the first photo is the current one";
    EXPECT_EQ(chosen.at(0).at(0).toLongLong(), 3);
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_End);
    QTest::keyClick(&list(), Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 2);
    EXPECT_EQ(chosen.at(1).at(0).toLongLong(), 7);
}

TEST_F(ScanClosingViewTest, everyControlHasANameAndAMnemonicOfItsOwn)
{
    showThreePhotos();
    for (const QString& name : {u"closingList"_s, u"showFailedPhoto"_s, u"copyClosing"_s}) {
        EXPECT_FALSE(child<QWidget>(name).accessibleName().isEmpty()) << qPrintable(name);
    }
    QStringList letters = mnemonicsOf(*m_window);
    EXPECT_EQ(letters.size(), 15);
    EXPECT_EQ(letters.removeDuplicates(), 0);
}

TEST_F(ScanClosingViewTest, aLongReasonIsWrappedAndNothingIsCutOffOnASmallScreen)
{
    showWindow();
    ScanClosing closing = threePhotos();
    closing.notConverted[0].outcome.reason = u"a long reason "_s.repeated(30);
    view().setClosing(closing);
    m_window->resize(900, 600);
    settle();
    EXPECT_EQ(m_window->size(), QSize(900, 600));
    expectNothingIsCutOff(*m_window);
    const int oneLine = list().visualItemRect(list().item(2)).height();
    EXPECT_GE(list().visualItemRect(list().item(0)).height(), 2 * oneLine);
}
