#pragma once

#include "Bundle.h"
#include "Corvane.h"
#include "FakeClock.h"
#include "FakeDelegate.h"
#include "FakeNotifications.h"
#include "FakePhotoApplication.h"
#include "JournalingPower.h"
#include "LogRecorder.h"
#include "QtPrinters.h"
#include "SBUtils-iPhoto.h"
#include "UserDefaults.h"
#include "WorkerRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A scan over doubles of everything it is given, with pictures on disk.
class ScanFixture : public testing::Test
{
public:
    ~ScanFixture() override { qunsetenv("TMPDIR"); }

    ScanFixture(const ScanFixture&) = delete;
    ScanFixture& operator=(const ScanFixture&) = delete;

protected:
    /// `shared`: where the library's calls, too, are written, among those of the controller; or
    /// nothing, and calls() of the library are its own alone.
    explicit ScanFixture(const std::shared_ptr<Journal>& shared = nullptr)
        : m_library(shared)
        , m_told(shared ? shared : std::make_shared<Journal>())
    {
        qputenv("TMPDIR", QFile::encodeName(m_temporary.path()));
        m_defaults.registerDefaults({{QStringLiteral("TagEnabled"), false},
                                     {QStringLiteral("TrashEnabled"), false},
                                     {QStringLiteral("ProcessingOption"), false}});
        m_library.setKeywords(
            {QStringLiteral("Corvane Original"), QStringLiteral("Corvane Processed")});
    }

    /// Writes a picture of 96 x 64 pixels that is nowhere flat and answers its path.
    [[nodiscard]] QString makePicture(const QString& name) const
    {
        QImage picture(96, 64, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                picture.setPixel(x, y, qRgb(2 * x, 3 * y, 255 - 2 * x));
            }
        }
        QString path = m_folder.filePath(name);
        EXPECT_TRUE(picture.save(path, nullptr, 95));
        return path;
    }

    /// A file of that name that no decoder takes.
    [[nodiscard]] QString makeBroken(const QString& name) const
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write("this is no picture"), 18);
        return file.fileName();
    }

    /// Adds a photo of a picture on disk and answers its id.
    qint64 addPicture(const QString& name)
    {
        return m_library.addPhotoFile(makePicture(name), 96, 64);
    }

    qint64 addBroken(const QString& name)
    {
        return m_library.addPhotoFile(makeBroken(name), 96, 64);
    }

    /// Adds a picture for each name, in a catalogue that gives it a roll of that name; picture i
    /// has id i + 1. Scans file by roll then.
    void addPicturesOfRolls(const QStringList& rollNames)
    {
        QString images;
        QString rolls;
        for (qsizetype index = 0; index < rollNames.size(); ++index) {
            const qint64 id = addPicture(QStringLiteral("%1.jpg").arg(index + 1));
            m_library.photo(id).previewPath = QStringLiteral("/l/guid%1/a.jpg").arg(index);
            images += QStringLiteral("<key>%1</key><dict><key>GUID</key><string>guid%1</string>"
                                     "<key>Roll</key><integer>%1</integer></dict>")
                          .arg(index);
            rolls += QStringLiteral("<dict><key>RollID</key><integer>%1</integer>"
                                    "<key>RollName</key><string>%2</string></dict>")
                         .arg(index)
                         .arg(rollNames.at(index));
        }
        QFile file(m_folder.filePath(QStringLiteral("AlbumData.xml")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("<plist version=\"1.0\"><dict><key>Master Image List</key>"
                                  "<dict>%1</dict><key>List of Rolls</key><array>%2</array>"
                                  "</dict></plist>")
                       .arg(images, rolls)
                       .toUtf8());
        m_delegate.library = m_folder.path();
    }

    /// What an engine is given: the doubles of this fixture.
    [[nodiscard]] ScanServices services()
    {
        return {.bridge = m_library,
                .defaults = m_defaults,
                .bundle = m_bundle,
                .power = m_power,
                .notifications = m_notifications,
                .clock = m_clock};
    }

    void set(const QString& key, bool value) { m_defaults.setBool(key, value); }

    /// Scans the photos on a worker thread; what the engine asks of the library is in calls().
    void scan(const QList<qint64>& ids)
    {
        m_library.selectPhotos(ids);
        m_library.journal().clear();
        scanSelection();
    }

    void scanSelection()
    {
        Corvane engine(services());
        runOnWorker([&] { engine.corvaneScan(m_delegate); });
    }

    /// The controller's lines of the given kinds, in the order of the calls.
    [[nodiscard]] QStringList told(const QStringList& kinds) const
    {
        QStringList lines;
        for (const QString& line : m_delegate.journal->lines()) {
            for (const QString& kind : kinds) {
                if (line.startsWith(kind)) {
                    lines.append(line);
                    break;
                }
            }
        }
        return lines;
    }

    [[nodiscard]] QStringList alerts() const
    {
        return told({QStringLiteral("alert "), QStringLiteral("modal ")});
    }

    /// What was told after the last line that starts so.
    [[nodiscard]] static QStringList after(const QStringList& lines, const QString& start)
    {
        for (qsizetype index = lines.size() - 1; index >= 0; --index) {
            if (lines.at(index).startsWith(start)) {
                return lines.mid(index + 1);
            }
        }
        return lines;
    }

    /// The statistics of the last alert, such as "Originals: 1.00 MB".
    [[nodiscard]] QStringList statistics() const
    {
        const QStringList shown = alerts();
        return shown.isEmpty() ? QStringList()
                               : shown.last().section(QStringLiteral("Stats:\n"), 1).split(u'\n');
    }

    /// Files and folders that the scan's temporary folder holds.
    [[nodiscard]] QStringList temporaryFiles() const
    {
        QStringList found;
        QDirIterator walk(m_temporary.path(),
                          QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            found.append(walk.next());
        }
        return found;
    }

    /// No temporary picture and no temporary folder is left.
    void expectNoTemporaryFile() const { EXPECT_EQ(temporaryFiles(), QStringList()); }

    /// The controls are as before a scan, which ended without a notification.
    void expectResetWithoutNotification()
    {
        EXPECT_TRUE(m_delegate.selectionScanButton().isEnabled());
        EXPECT_FALSE(m_delegate.nowProcessing);
        EXPECT_EQ(m_delegate.timeRemaining, QStringLiteral("--:--:--"));
        EXPECT_EQ(m_delegate.statusLabel().stringValue(), QStringLiteral("Ready"));
        EXPECT_EQ(m_delegate.countLabel().stringValue(), QString());
        EXPECT_EQ(m_power.held(), 0);
        EXPECT_TRUE(m_notifications.delivered().isEmpty());
    }

    /// The library's calls by which a photo's facts reach its copy, both as "photo N".
    [[nodiscard]] static QStringList
    propagation(const QString& original, const QString& copy, const QString& name)
    {
        using namespace Qt::StringLiterals;
        return {original + u".altitude"_s,
                copy + u".setAltitude none"_s,
                original + u".comment"_s,
                copy + u".setComment "_s,
                original + u".date"_s,
                copy + u".setDate 0 GMT"_s,
                original + u".name"_s,
                copy + u".setName "_s + name,
                original + u".rating"_s,
                copy + u".setRating 0"_s,
                original + u".title"_s,
                copy + u".setTitle "_s + name,
                original + u".keywords"_s};
    }

    QTemporaryDir m_folder;
    QTemporaryDir m_temporary;
    LogRecorder m_log;
    UserDefaults m_defaults{m_folder.filePath(QStringLiteral("defaults.plist"))};
    Bundle m_bundle{QStringLiteral(":/corvane")};
    FakeClock m_clock{700000000.0};
    FakePhotoApplication m_library;
    FakeNotifications m_notifications;
    /// Controller and power management write into one journal: their calls are seen interleaved.
    std::shared_ptr<Journal> m_told;
    FakeDelegate m_delegate{m_told};
    JournalingPower m_power{m_told};
};
