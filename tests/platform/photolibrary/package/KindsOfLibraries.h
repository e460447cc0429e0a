#pragma once

#include "Connection.h"
#include "IntegrityCheck.h"
#include "LibraryBuilder.h"
#include "PhotoLibrary.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

/// Photos and albums of every kind that people have.
class KindsOfLibraries : public testing::Test
{
protected:
    [[nodiscard]] std::unique_ptr<PhotoLibrary> open(Access access) const
    {
        OpenOptions options;
        options.access = access;
        options.volumeFolders = m_volumes;
        auto library = PhotoLibrary::open(m_builder.package(), options);
        EXPECT_TRUE(library.ok()) << library.error().message.toStdString();
        return library.ok() ? std::move(library).value() : nullptr;
    }

    [[nodiscard]] static PhotoFacts find(const QList<PhotoFacts>& photos, qint64 id)
    {
        for (const PhotoFacts& photo : photos) {
            if (photo.id == id) {
                return photo;
            }
        }
        return {};
    }

    /// As listings show it; without an id when it is not there.
    [[nodiscard]] PhotoFacts shown(qint64 id) const
    {
        return find(open(Access::Read)->photos().value(), id);
    }

    [[nodiscard]] PhotoFacts trashed(qint64 id) const
    {
        return find(open(Access::Read)->trashedPhotos().value(), id);
    }

    /// As a scan removes it.
    void remove(qint64 id) const
    {
        const auto library = open(Access::Write);
        photo(*library, id)->removeFrom(application(*library)->photoLibraryAlbum());
    }

    [[nodiscard]] static PhotoApplicationPtr application(PhotoLibrary& library)
    {
        return library.applicationWithBundleIdentifier(QStringLiteral("com.apple.iPhoto"));
    }

    [[nodiscard]] static PhotoPtr photo(PhotoLibrary& library, qint64 id)
    {
        library.setSelection({id});
        return std::dynamic_pointer_cast<Photo>(application(library)->selection().first());
    }

    [[nodiscard]] QString master(const QString& imagePath) const
    {
        return m_builder.package() + QStringLiteral("/Masters/") + imagePath;
    }

    [[nodiscard]] qint64 bytes(const QString& path) const { return QFileInfo(path).size(); }

    void expectSound() const
    {
        const auto connection = Connection::open(m_builder.package(), Connection::Mode::Read);
        ASSERT_TRUE(connection.ok());
        EXPECT_EQ(IntegrityCheck::problems(*connection.value(), {})
                      .filter(QStringLiteral("missing"))
                      .size(),
                  0);
        EXPECT_EQ(IntegrityCheck::ofDatabases(*connection.value()).join(u'\n').toStdString(), "");
    }

    /// That an opening for writing is refused, for that reason, and the summary says so.
    void expectReadOnly(const QString& reason) const
    {
        const auto refused = PhotoLibrary::open(m_builder.package(), {Access::Write, false});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::NotWritable);
        EXPECT_TRUE(refused.error().message.contains(reason))
            << refused.error().message.toStdString();
        const LibrarySummary summary = open(Access::Read)->summary().value();
        EXPECT_FALSE(summary.writable);
        EXPECT_EQ(summary.whyReadOnly, refused.error().message);
    }

    /// What verify() tells.
    [[nodiscard]] QStringList findings() const
    {
        QStringList sentences;
        const Result<QList<Finding>> found = open(Access::Read)->verify();
        EXPECT_TRUE(found.ok());
        for (const Finding& finding : found.value()) {
            sentences += finding.what + u' ' + finding.where;
        }
        return sentences;
    }

    QTemporaryDir m_folder;
    LibraryBuilder m_builder{m_folder.filePath(QStringLiteral("Test.photolibrary"))};
    QMap<QString, QString> m_volumes;
};
