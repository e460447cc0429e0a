#include "CommandFixture.h"

#include <QJsonArray>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace
{

class ScanCommandTest : public CommandFixture
{
protected:
    /// A scan with its report, leaving the user's own settings alone.
    int scan(const QStringList& options)
    {
        return run(QStringList{u"scan"_s,
                               library(),
                               u"--report"_s,
                               reportPath(),
                               u"--defaults"_s,
                               defaultsPath()} +
                   options);
    }

    [[nodiscard]] QStringList outcomes() const
    {
        QStringList words;
        for (const auto& photo : report().value(u"photos"_s).toArray()) {
            words += photo.toObject().value(u"outcome"_s).toString();
        }
        return words;
    }

    [[nodiscard]] QJsonObject entry(int index) const
    {
        return report().value(u"photos"_s).toArray().at(index).toObject();
    }

    static QByteArray megabytes(qint64 bytes)
    {
        return QByteArray::number(static_cast<double>(bytes) / 1048576.0, 'f', 2) + " MB";
    }
};

constexpr auto kLogLines = "iPhoto Version 9.6.1\nBuilding Lists\nFound 0 images with issues\n";

} // namespace

TEST_F(ScanCommandTest, theSummaryIsTheResultAndTheReportSaysTheSame)
{
    ASSERT_EQ(scan({u"--all"_s, u"--no-tag"_s}), 0) << m_err.toStdString();
    const QJsonObject document = report();
    EXPECT_EQ(document.keys(),
              (QStringList{u"converted"_s,
                           u"convertedBytes"_s,
                           u"dryRun"_s,
                           u"library"_s,
                           u"originalsBytes"_s,
                           u"photos"_s,
                           u"savingsBytes"_s,
                           u"selected"_s,
                           u"stopped"_s}));
    const qint64 originals = document.value(u"originalsBytes"_s).toInteger();
    const qint64 converted = document.value(u"convertedBytes"_s).toInteger();
    EXPECT_EQ(document.value(u"savingsBytes"_s).toInteger(), originals - converted);
    EXPECT_TRUE(document.value(u"stopped"_s).isNull());
    EXPECT_EQ(m_out.toStdString(),
              ("All Done\nCorvane finished processing. - Check your keywords for Corvane Original "
               "and Corvane Processed.\n\nStats:\nOriginals: " +
               megabytes(originals) + "\nConverted: " + megabytes(converted) +
               "\nSavings: " + megabytes(originals - converted) + "\n")
                  .toStdString());
    EXPECT_EQ(m_err.toStdString(),
              "3 selected photos are no RAW photos and will be encoded again.\n" +
                  std::string(kLogLines));
    const QJsonObject first = entry(0);
    EXPECT_EQ(first.keys(),
              (QStringList{u"album"_s,
                           u"filename"_s,
                           u"height"_s,
                           u"id"_s,
                           u"importedAs"_s,
                           u"jpegBytes"_s,
                           u"newId"_s,
                           u"originalBytes"_s,
                           u"outcome"_s,
                           u"source"_s,
                           u"width"_s}));
    EXPECT_EQ(first.value(u"album"_s).toString(), u"Corvane For iPhoto"_s);
    EXPECT_EQ(photos().size(), 6);
}

TEST_F(ScanCommandTest, aReportOnStandardOutputHasItForItself)
{
    ASSERT_EQ(run({u"scan"_s,
                   library(),
                   u"--no-tag"_s,
                   u"--id"_s,
                   QString::number(photo(u"Lake.jpg"_s).id),
                   u"--report"_s,
                   u"-"_s}),
              0);
    EXPECT_EQ(document().value(u"converted"_s).toInt(), 1);
    EXPECT_TRUE(m_err.contains("All Done\n"));
}

TEST_F(ScanCommandTest, optionsOfARunAreNotStoredAndTheRatesAre)
{
    ASSERT_EQ(scan({u"--all"_s, u"--quality"_s, u"0.37"_s, u"--long"_s, u"100"_s}), 0);
    EXPECT_EQ(entry(0).value(u"width"_s).toInt(), 100);
    QFile file(defaultsPath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray stored = file.readAll();
    EXPECT_TRUE(stored.contains("estConversionRate"));
    EXPECT_FALSE(stored.contains("0.37"));
    EXPECT_FALSE(stored.contains("JpegOutputSize"));
    EXPECT_FALSE(stored.contains("<integer>100</integer>"));
}

TEST_F(ScanCommandTest, nothingSelectedIsAnAlertOfTheScan)
{
    EXPECT_EQ(scan({}), 1); // no RAW photos
    EXPECT_TRUE(m_err.startsWith("No photo matches the selection.\n")) << m_err.toStdString();
    EXPECT_TRUE(m_err.endsWith(
        "Unable To Process\nYou need to select the photos you want me to process\n"));
    EXPECT_EQ(m_out, QByteArray());
    EXPECT_EQ(report().value(u"stopped"_s).toObject().value(u"title"_s).toString(),
              u"Unable To Process"_s);
    EXPECT_EQ(outcomes(), QStringList());
    EXPECT_EQ(scan({u"--dry-run"_s}), 1);
    EXPECT_TRUE(m_err.startsWith("No photo matches the selection.\n")) << m_err.toStdString();
}

TEST_F(ScanCommandTest, aMissingMasterStopsTheScanAndPresentIsNamed)
{
    const QList<PhotoFacts> all = photos();
    ASSERT_TRUE(QFile::remove(all.at(1).originalPath));
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s}), 1);
    EXPECT_EQ(outcomes(), (QStringList{u"converted"_s, u"missing"_s, u"not reached"_s}));
    EXPECT_TRUE(m_err.contains("Conversion Aborted\n"));
    EXPECT_TRUE(
        m_err.endsWith("--present leaves out photos whose master is missing or unreadable.\n"))
        << m_err.toStdString();
    EXPECT_EQ(m_out, QByteArray());

    EXPECT_EQ(scan({u"--id"_s,
                    QString::number(all.at(1).id),
                    u"--id"_s,
                    QString::number(all.at(2).id),
                    u"--present"_s,
                    u"--no-tag"_s}),
              0);
    EXPECT_EQ(outcomes(), QStringList{u"converted"_s});
    EXPECT_TRUE(m_err.startsWith("1 photo is left out: its master is missing or unreadable.\n"));
}

TEST_F(ScanCommandTest, failedPhotosAreListedAndSoAreCopiesOfAnotherName)
{
    const QList<PhotoFacts> all = photos();
    ASSERT_TRUE(QFile::resize(all.at(0).originalPath, all.at(0).bytes / 2));
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s}), 1);
    EXPECT_EQ(outcomes(), (QStringList{u"failed"_s, u"converted"_s, u"converted"_s}));
    EXPECT_TRUE(m_err.contains("\n1 photo was not converted:\n  " + all.at(0).fileName.toUtf8() +
                               " (photo " + QByteArray::number(all.at(0).id) + "): "))
        << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("The copy of " + all.at(1).fileName.toUtf8() + " (photo " +
                               QByteArray::number(all.at(1).id) + ") bears another name: "));
    EXPECT_FALSE(entry(0).value(u"reason"_s).toString().isEmpty());
}

TEST_F(ScanCommandTest, removedOriginalsBringALineThatNamesTheTrash)
{
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s, u"--trash"_s, u"--albums"_s}), 0);
    EXPECT_TRUE(m_err.endsWith("The originals are in the library's trash; their space comes back "
                               "with: corvane-cli trash --empty '" +
                               library().toUtf8() + "'\n"))
        << m_err.toStdString();
    EXPECT_EQ(photos().size(), 3);
    const QString album = entry(0).value(u"album"_s).toString();
    EXPECT_TRUE(album == u"Holiday"_s || album == u"Home"_s) << album.toStdString();
}

TEST_F(ScanCommandTest, aDryRunEstimatesAndStoresNothing)
{
    EXPECT_EQ(scan({u"--all"_s, u"--dry-run"_s, u"--quality"_s, u"0.5"_s}), 0);
    EXPECT_TRUE(
        m_out.startsWith("Dry run: 3 of 3 selected photos would be converted.\nOriginals: "));
    EXPECT_EQ(m_out.count("(an estimate)"), 2);
    EXPECT_EQ(outcomes(),
              (QStringList{u"would convert"_s, u"would convert"_s, u"would convert"_s}));
    EXPECT_TRUE(report().value(u"dryRun"_s).toBool());
    EXPECT_EQ(report().value(u"converted"_s).toInt(), 0);
    EXPECT_FALSE(QFile::exists(defaultsPath()));
    EXPECT_EQ(photos().size(), 3);
}

TEST_F(ScanCommandTest, aDryRunFindsWhatWouldGoWrong)
{
    const QList<PhotoFacts> all = photos();
    ASSERT_TRUE(QFile::resize(all.at(0).originalPath, all.at(0).bytes / 2));
    ASSERT_TRUE(QFile::remove(all.at(1).originalPath));
    EXPECT_EQ(scan({u"--all"_s, u"--dry-run"_s}), 1);
    EXPECT_EQ(outcomes(), (QStringList{u"failed"_s, u"missing"_s, u"would convert"_s}));
    EXPECT_TRUE(m_err.endsWith(
        "1 master is missing: a scan would stop there. --present leaves such photos out.\n"));
}

TEST_F(ScanCommandTest, aReportThatCannotBeWrittenIsWrongUsageBeforeAnythingIsDone)
{
    EXPECT_EQ(
        run({u"scan"_s, library(), u"--all"_s, u"--report"_s, m_folder.filePath(u"no/r.json"_s)}),
        2);
    EXPECT_TRUE(m_err.endsWith("Run “corvane-cli scan --help” to see how it is used.\n"));
    EXPECT_EQ(photos().size(), 3);
}

TEST_F(ScanCommandTest, aRequestToStopBeforeTheScanWritesAReportWithoutPhotos)
{
    m_interruption->request();
    EXPECT_EQ(scan({u"--all"_s}), 130);
    EXPECT_EQ(m_err, "Interrupted.\n");
    EXPECT_EQ(report().value(u"selected"_s).toInt(-1), 0);
    EXPECT_EQ(report().value(u"library"_s).toString(), library());
}

TEST_F(ScanCommandTest, aRequestToStopDuringTheScanEndsItOrderly)
{
    QTimer::singleShot(0, m_interruption.get(), [this] { m_interruption->request(); });
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s, u"--trash"_s}), 130) << m_err.toStdString();
    EXPECT_TRUE(m_err.endsWith(
        "Interrupted. What was converted before is complete and stays in the library.\n"));
    const auto converted = outcomes().count(u"converted"_s);
    EXPECT_LT(converted, 3);
    EXPECT_EQ(report().value(u"photos"_s).toArray().size(), 3);
    EXPECT_EQ(photos().size(), 3); // every copy took its original's place
    m_interruption = std::make_unique<Interruption>();
    EXPECT_EQ(run({u"info"_s, library()}), 0);
    EXPECT_TRUE(m_out.endsWith("Problems:          none\n"));
}

TEST_F(ScanCommandTest, onATerminalWithoutRedrawingALineAPhotoIsSaid)
{
    m_facts.isTerminal = true;
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s}), 0);
    EXPECT_TRUE(m_err.contains("1 of 3: ")) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("3 of 3: "));
    EXPECT_FALSE(m_err.contains('\x1b'));
    EXPECT_EQ(scan({u"--all"_s, u"--no-tag"_s, u"--quiet"_s}), 0);
    EXPECT_FALSE(m_err.contains(" of 6: "));
}
