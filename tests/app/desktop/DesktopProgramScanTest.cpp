#include "FixedSizeSheet.h"
#include "ForecastLabel.h"
#include "OpenPanelAnswer.h"
#include "ProgramFixture.h"
#include "ScanClosingView.h"
#include "WhenModal.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// Scans through the windows with each setting, and settings over a restart.
class DesktopProgramScanTest : public ProgramFixture
{
protected:
    /// Scans what is selected; answers what became of the photos.
    QList<PhotoOutcome> outcomesOfAScan()
    {
        QList<PhotoOutcome> outcomes;
        const QObject receiver;
        QObject::connect(&m_program->controller(),
                         &CorvaneAppDelegate::photoDone,
                         &receiver,
                         [&outcomes](const PhotoOutcome& outcome) { outcomes += outcome; });
        scan();
        return outcomes;
    }

    void clickOutputSize(int index)
    {
        control<QAbstractButton>(qPrintable(u"outputSize%1"_s.arg(index))).click();
    }

    /// Of the photo with that id, while the library is open.
    [[nodiscard]] PhotoFacts facts(qint64 id) const
    {
        const QList<PhotoFacts>& photos = m_program->session().contents().photos;
        const auto found = std::ranges::find(photos, id, &PhotoFacts::id);
        return found == photos.end() ? PhotoFacts() : *found;
    }

    /// Opens the library and selects its RAW photos; answers with their facts.
    QList<PhotoFacts> openAndSelectRaw()
    {
        open();
        selectRawPhotos();
        QList<PhotoFacts> chosen;
        for (const qint64 id : grid().selectedPhotos()) {
            chosen += facts(id);
        }
        return chosen;
    }

    /// What is told of single photos, a line each.
    [[nodiscard]] QStringList closingLines()
    {
        const auto& list = control<QListWidget>("closingList");
        QStringList lines;
        for (int row = 0; row < list.count(); ++row) {
            lines += list.item(row)->text();
        }
        return lines;
    }

    static void cutInHalf(const QString& path)
    {
        QFile file(path);
        ASSERT_TRUE(file.resize(file.size() / 2));
    }

    /// Whether the press of the scan button asked for the library; it is answered with `path`.
    bool isAskedForTheLibrary(const QString& path)
    {
        bool asked = false;
        auto* const timer = new QTimer(m_program.get());
        QObject::connect(timer, &QTimer::timeout, timer, [timer, path, &asked] {
            QWidget* const panel = QApplication::activeModalWidget();
            if (panel != nullptr && panel->objectName() == u"openPanel"_s) {
                timer->stop();
                asked = true;
                answerOpenPanel(*panel, path);
            }
        });
        timer->start(10);
        scan();
        delete timer;
        return asked;
    }
};

} // namespace

TEST_F(DesktopProgramScanTest, ofThreeScansByEventTheFirstAndTheThirdAskForTheLibrary)
{
    open();
    selectRawPhotos();
    click("AlbumEnabled");
    CorvaneAppDelegate& controller = m_program->controller();
    EXPECT_TRUE(isAskedForTheLibrary(library()));
    EXPECT_EQ(controller.theLibrary(), library());
    EXPECT_FALSE(isAskedForTheLibrary(library()));
    EXPECT_EQ(controller.theLibrary(), std::nullopt);
    EXPECT_TRUE(isAskedForTheLibrary({})) << "asked again, and cancelled";
    EXPECT_EQ(controller.theLibrary(), std::nullopt);

    const QList<PhotoFacts> copies = copiesIn(afterwards());
    ASSERT_EQ(copies.size(), 6);
    const auto inTheOneAlbum = std::ranges::count_if(copies, [](const PhotoFacts& copy) {
        return copy.albums.contains(u"Corvane For iPhoto"_s);
    });
    EXPECT_EQ(inTheOneAlbum, 4) << "those of the scans without a library";
}

TEST_F(DesktopProgramScanTest, originalFilesOrShownPicturesAreReadAsTheSwitchSays)
{
    open();
    actions().selectAll->trigger();
    click("TagEnabled");
    const QList<PhotoOutcome> originals = outcomesOfAScan();
    ASSERT_EQ(originals.size(), 5);
    for (const PhotoOutcome& outcome : originals) {
        EXPECT_EQ(outcome.source, facts(outcome.photoId).originalPath);
    }
    click("ProcessingOption");
    const QList<PhotoOutcome> shown = outcomesOfAScan();
    ASSERT_EQ(shown.size(), 5);
    bool areOthers = false;
    for (const PhotoOutcome& outcome : shown) {
        const PhotoFacts photo = facts(outcome.photoId);
        EXPECT_EQ(outcome.source, photo.imagePath);
        areOthers = areOthers || photo.imagePath != photo.originalPath;
    }
    EXPECT_TRUE(areOthers) << "some photo is shown by another file";
}

TEST_F(DesktopProgramScanTest, aFixedSizeSetInTheSheetLimitsTheCopies)
{
    open();
    selectRawPhotos();
    clickOutputSize(4);
    FixedSizeSheet& sheet = m_program->corvaneWindow().fixedSizeSheet();
    ASSERT_TRUE(sheet.isVisible());
    auto& longSide = control<QSpinBox>("fixedLengthTextField");
    longSide.setFocus();
    longSide.selectAll();
    QTest::keyClicks(&longSide, u"120"_s);
    click("dismissFixedSizePanel");
    EXPECT_FALSE(sheet.isVisible());
    const QList<PhotoOutcome> outcomes = outcomesOfAScan();
    ASSERT_EQ(outcomes.size(), 2);
    for (const PhotoOutcome& outcome : outcomes) {
        EXPECT_EQ(std::max(outcome.pixels.width(), outcome.pixels.height()), 120);
    }
}

TEST_F(DesktopProgramScanTest, theQualityThatTheSliderIsSetToIsThatOfTheCopies)
{
    open();
    selectRawPhotos();
    auto& slider = control<QSlider>("compressionFactor");
    QTest::keyClick(&slider, Qt::Key_End);
    EXPECT_EQ(control<QLabel>("compressionFactorText").text(), u"1.00"_s);
    const QList<PhotoOutcome> best = outcomesOfAScan();
    QTest::keyClick(&slider, Qt::Key_Home);
    EXPECT_EQ(control<QLabel>("compressionFactorText").text(), u"0.00"_s);
    const QList<PhotoOutcome> smallest = outcomesOfAScan();
    ASSERT_EQ(best.size(), 2);
    ASSERT_EQ(smallest.size(), 2);
    for (qsizetype index = 0; index < 2; ++index) {
        EXPECT_GT(best.at(index).jpegBytes, smallest.at(index).jpegBytes * 2);
    }
}

TEST_F(DesktopProgramScanTest, withoutTaggingNoPhotoIsMarked)
{
    open();
    selectRawPhotos();
    click("TagEnabled");
    EXPECT_EQ(outcomesOfAScan().size(), 2);
    const LibraryContents contents = afterwards();
    for (const PhotoFacts& photo : contents.photos) {
        const bool isPicture = photo.fileName.startsWith(u"iPhoto Keywords"_s);
        EXPECT_TRUE(isPicture || !photo.keywords.contains(u"Corvane Original"_s));
        EXPECT_TRUE(isPicture || !photo.keywords.contains(u"Corvane Processed"_s));
    }
}

TEST_F(DesktopProgramScanTest, aDoublePressWithTaggingMarksTheSelectedAndTheirCopiesAlone)
{
    open();
    selectRawPhotos();
    const QList<qint64> chosen = grid().selectedPhotos();
    auto& button = control<QAbstractButton>("selectionScanButton");
    button.click();
    button.click(); // before the event loop hears that the first engine has disabled it
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    const LibraryContents contents = afterwards();
    EXPECT_EQ(copiesIn(contents).size(), 4) << "each engine makes a copy of each RAW photo";
    QList<qint64> tagged;
    for (const PhotoFacts& photo : contents.photos) {
        const bool isPicture = photo.fileName.startsWith(u"iPhoto Keywords"_s);
        if (!isPicture && photo.keywords.contains(u"Corvane Original"_s)) {
            tagged += photo.id;
        }
    }
    EXPECT_EQ(tagged, chosen);
}

TEST_F(DesktopProgramScanTest, aPhotoThatCannotBeConvertedIsListedWithItsReason)
{
    const QList<PhotoFacts> chosen = openAndSelectRaw();
    ASSERT_EQ(chosen.size(), 2);
    cutInHalf(chosen.at(0).originalPath);
    const QList<PhotoOutcome> outcomes = outcomesOfAScan();
    ASSERT_EQ(outcomes.size(), 2);
    EXPECT_EQ(alerts(), QStringList{u"All Done"_s}) << "beside the summary";
    EXPECT_TRUE(control("scanClosing").isVisible());
    EXPECT_EQ(control<QLabel>("closingHeading").text(),
              u"1 photo was not converted. 1 copy bears the name of another photo."_s);
    const QStringList lines = closingLines();
    ASSERT_EQ(lines.size(), 2);
    ASSERT_FALSE(outcomes.at(0).reason.isEmpty());
    EXPECT_EQ(lines.at(0),
              u"%1 (photo %2): %3"_s.arg(
                  chosen.at(0).fileName, QString::number(chosen.at(0).id), outcomes.at(0).reason));
    EXPECT_TRUE(lines.at(1).startsWith(u"The copy of %1 "_s.arg(chosen.at(1).fileName)))
        << lines.at(1).toStdString();
}

TEST_F(DesktopProgramScanTest, afterAScanWithoutFailuresNoListIsShown)
{
    openAndSelectRaw();
    EXPECT_EQ(outcomesOfAScan().size(), 2);
    EXPECT_FALSE(control("scanClosing").isVisible());
    EXPECT_EQ(closingLines(), QStringList());
}

TEST_F(DesktopProgramScanTest, aScanThatWasStoppedByAMissingFileTellsWhichItWas)
{
    const QList<PhotoFacts> chosen = openAndSelectRaw();
    ASSERT_TRUE(QFile::remove(chosen.at(0).originalPath));
    outcomesOfAScan();
    EXPECT_FALSE(alerts().contains(u"All Done"_s));
    EXPECT_TRUE(control("scanClosing").isVisible());
    const QStringList lines = closingLines();
    ASSERT_EQ(lines.size(), 1) << "not those that were not reached";
    EXPECT_TRUE(lines.at(0).startsWith(chosen.at(0).fileName)) << lines.at(0).toStdString();
}

TEST_F(DesktopProgramScanTest, aListedPhotoIsShownWhereverTheLibraryWindowIs)
{
    const QList<PhotoFacts> chosen = openAndSelectRaw();
    cutInHalf(chosen.at(0).originalPath);
    outcomesOfAScan();
    m_program->libraryWindow().findChild<QLineEdit*>(u"search"_s)->setText(u"nothing like it"_s);
    ASSERT_EQ(grid().model()->rowCount(), 0);
    click("showFailedPhoto");
    EXPECT_EQ(grid().selectedPhotos(), QList<qint64>{chosen.at(0).id});
    actions().showTrash->trigger();
    click("showFailedPhoto");
    EXPECT_EQ(grid().selectedPhotos(), QList<qint64>{chosen.at(0).id});
}

TEST_F(DesktopProgramScanTest, theNextScanOrLibraryTakesTheListAway)
{
    const QList<PhotoFacts> chosen = openAndSelectRaw();
    cutInHalf(chosen.at(0).originalPath);
    outcomesOfAScan();
    ASSERT_TRUE(control("scanClosing").isVisible());
    grid().selectPhotos({chosen.at(1).id});
    outcomesOfAScan();
    EXPECT_FALSE(control("scanClosing").isVisible());
    grid().selectPhotos({chosen.at(0).id});
    outcomesOfAScan();
    ASSERT_TRUE(control("scanClosing").isVisible());
    m_program->libraryWindow().openLibrary(library());
    ASSERT_TRUE(waitUntil([this] { return isIdle(); }));
    EXPECT_FALSE(control("scanClosing").isVisible());
}

TEST_F(DesktopProgramScanTest, aSecondProgramShowsTheSettingsOfTheFirst)
{
    open();
    QTest::keyClick(&control<QSlider>("compressionFactor"), Qt::Key_Home);
    click("AlbumEnabled");
    click("TagEnabled");
    clickOutputSize(4);
    control<QCheckBox>("longLocked").click(); // free: the short side is locked
    click("dismissFixedSizePanel");
    EXPECT_TRUE(m_program->controller().fixedSize());
    m_program.reset();

    makeProgram();
    open();
    selectRawPhotos();
    EXPECT_EQ(control<QLabel>("compressionFactorText").text(), u"0.00"_s);
    EXPECT_EQ(control<QSlider>("compressionFactor").value(), 0);
    EXPECT_TRUE(control<QAbstractButton>("AlbumEnabled").isChecked());
    EXPECT_FALSE(control<QAbstractButton>("TagEnabled").isChecked());
    EXPECT_FALSE(control<QCheckBox>("longLocked").isChecked());
    EXPECT_TRUE(control<QCheckBox>("shortLocked").isChecked());
    EXPECT_TRUE(control<QAbstractButton>("outputSize4").isChecked());
    // The cell is shown, but not in effect until it is clicked.
    EXPECT_FALSE(m_program->controller().fixedSize());
    EXPECT_EQ(m_program->controller().scaleFactor(), 0.0F);
    const QString forecast = control<ForecastLabel>("pressForecast").plainText();
    EXPECT_TRUE(forecast.startsWith(u"Choose an output size"_s)) << forecast.toStdString();
    clickOutputSize(4);
    EXPECT_TRUE(m_program->controller().fixedSize());
    EXPECT_TRUE(m_program->corvaneWindow().fixedSizeSheet().isVisible());
}
