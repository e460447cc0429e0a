#pragma once

#include "Bundle.h"
#include "Command.h"
#include "Console.h"
#include "Face.h"
#include "FakeClock.h"
#include "FakeNotifications.h"
#include "FakePower.h"
#include "FakeWorkspace.h"
#include "Interruption.h"
#include "LibraryCreator.h"
#include "MessageLog.h"
#include "PhotoLibrary.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

/// A small library of three JPEG photos in two events, and the whole program run over it in this
/// process: what it would print and its exit status.
class CommandFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        makeLibrary(library());
    }

    /// Photos have the ids 1, 3 and 5 or whatever the library gives them: see ids().
    void makeLibrary(const QString& path)
    {
        ASSERT_TRUE(LibraryCreator::create(path).ok());
        auto opened = PhotoLibrary::open(path, {.access = Access::Write, .afterCrash = false});
        ASSERT_TRUE(opened.ok()) << opened.error().message.toStdString();
        PhotoLibrary& photos = *opened.value();
        importPhoto(photos, QStringLiteral("Lake.jpg"), QStringLiteral("Holiday"), 40);
        importPhoto(photos, QStringLiteral("Wood.jpg"), QStringLiteral("Holiday"), 90);
        importPhoto(photos, QStringLiteral("Garden.jpg"), QStringLiteral("Home"), 160);
        ASSERT_TRUE(photos.close().ok());
    }

    /// A picture of 320 by 240 pixels with something to see in it.
    static QByteArray picture(int tone)
    {
        QImage image(320, 240, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const int wave = (x * tone / 40 + y * 2) % 256;
                image.setPixel(x, y, qRgb(wave, (x + tone) % 256, (y + wave / 2) % 256));
            }
        }
        QByteArray bytes;
        QBuffer buffer(&bytes);
        EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "JPEG", 90));
        return bytes;
    }

    void
    importPhoto(PhotoLibrary& library, const QString& name, const QString& event, int tone) const
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(picture(tone));
        file.close();
        ImportRequest request;
        request.sourcePath = path;
        request.eventName = event;
        const Result<qint64> imported = library.importPhoto(request);
        ASSERT_TRUE(imported.ok()) << imported.error().message.toStdString();
    }

    /// Runs the program; what it printed is in m_out and m_err afterwards.
    int run(const QStringList& arguments)
    {
        QBuffer output(&m_out);
        QBuffer error(&m_err);
        m_out.clear();
        m_err.clear();
        EXPECT_TRUE(output.open(QIODevice::WriteOnly) && error.open(QIODevice::WriteOnly));
        Console console(output, error, m_facts);
        const MessageLog log(console);
        const Bundle bundle(QStringLiteral(":/corvane"));
        return Face::run(
            arguments,
            {console, *m_interruption, bundle, m_workspace, m_power, m_notifications, m_clock});
    }

    [[nodiscard]] QJsonObject document() const { return QJsonDocument::fromJson(m_out).object(); }

    /// The report that a run wrote to reportPath().
    [[nodiscard]] QJsonObject report() const
    {
        QFile file(reportPath());
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    }

    [[nodiscard]] QString library() const
    {
        return m_folder.filePath(QStringLiteral("Test.photolibrary"));
    }

    [[nodiscard]] QString reportPath() const
    {
        return m_folder.filePath(QStringLiteral("report.json"));
    }

    [[nodiscard]] QString defaultsPath() const
    {
        return m_folder.filePath(QStringLiteral("defaults.plist"));
    }

    /// The photos out of the trash, in the catalogue's order.
    [[nodiscard]] QList<PhotoFacts> photos() const
    {
        auto opened = PhotoLibrary::open(library(), {.access = Access::Read, .afterCrash = false});
        EXPECT_TRUE(opened.ok());
        return opened.ok() ? opened.value()->photos().value() : QList<PhotoFacts>();
    }

    [[nodiscard]] PhotoFacts photo(const QString& filename) const
    {
        for (const PhotoFacts& photo : photos()) {
            if (photo.fileName == filename) {
                return photo;
            }
        }
        ADD_FAILURE() << "no photo " << filename.toStdString();
        return {};
    }

    QTemporaryDir m_folder;
    TerminalFacts m_facts;
    std::unique_ptr<Interruption> m_interruption{std::make_unique<Interruption>()};
    FakeWorkspace m_workspace;
    FakePower m_power;
    FakeNotifications m_notifications;
    FakeClock m_clock;
    QByteArray m_out;
    QByteArray m_err;
};
