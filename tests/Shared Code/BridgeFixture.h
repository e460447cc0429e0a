#pragma once

#include "Bundle.h"
#include "FakeClock.h"
#include "FakeDelegate.h"
#include "FakePhotoApplication.h"
#include "LogRecorder.h"
#include "QtPrinters.h"
#include "SBUtils-iPhoto.h"
#include "WorkerRun.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A bridge over doubles of everything it is given.
class BridgeFixture : public testing::Test
{
protected:
    BridgeFixture() { m_bridge.setAppDelegate(m_delegate); }

    /// A file of that many bytes.
    [[nodiscard]] QString makeFile(const QString& name, int bytes) const
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(QByteArray(bytes, 'x')), bytes);
        return file.fileName();
    }

    [[nodiscard]] QList<ScriptingObjectPtr> photos(const QList<qint64>& ids)
    {
        QList<ScriptingObjectPtr> selection;
        for (const qint64 id : ids) {
            selection.append(m_library.photoHandle(id));
        }
        return selection;
    }

    /// Adds a photo with that property record and answers its id.
    qint64 addRecord(const std::optional<QVariantMap>& properties)
    {
        FakePhotoRecord record;
        record.properties = properties;
        return m_library.addPhoto(record);
    }

    /// A complete record of a photo.
    [[nodiscard]] static QVariantMap completeRecord()
    {
        return {
            {QStringLiteral("imageFilename"), QStringLiteral("IMG_1.cr2")},
            {QStringLiteral("imagePath"), QStringLiteral("/nowhere/IMG_1.jpg")},
            {QStringLiteral("originalPath"), QStringLiteral("/nowhere/IMG_1.cr2")},
            {QStringLiteral("date"), QVariant::fromValue(PhotoDate{5.0, QStringLiteral("GMT")})},
            {QStringLiteral("id"), qint64{4294967303}},
            {QStringLiteral("width"), 4000},
            {QStringLiteral("height"), 3000}};
    }

    /// Loads as a scan does: on a worker thread, the main thread's loop running.
    bool loadObjects(const QList<ScriptingObjectPtr>& selection)
    {
        bool complete = false;
        runOnWorker([&] { complete = m_bridge.loadData(selection); });
        return complete;
    }

    bool load(const QList<qint64>& ids) { return loadObjects(photos(ids)); }

    QTemporaryDir m_folder;
    LogRecorder m_log;
    Bundle m_bundle{QStringLiteral(":/corvane")};
    FakeClock m_clock{700000000.5};
    FakePhotoApplication m_library;
    FakeDelegate m_delegate;
    SBUtils m_bridge{m_library, m_bundle, m_clock};
};
