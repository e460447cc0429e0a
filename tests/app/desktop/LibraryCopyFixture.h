#pragma once

#include "SampleLibrary.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>

/// A copy of a small sample library for each test: two RAW photos and three JPEG ones.
class LibraryCopyFixture : public testing::Test
{
protected:
    static constexpr int kPatience = 60000; ///< milliseconds

    static void SetUpTestSuite()
    {
        static QTemporaryDir folder;
        if (sample().isEmpty()) {
            SampleOptions options;
            options.photos = 2;
            options.megapixels = 0.2;
            const Result<QString> written = SampleLibrary::write(folder.path(), options, {});
            ASSERT_TRUE(written.ok()) << written.error().message.toStdString();
            sample() = written.value();
        }
    }

    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        copyLibrary(sample(), library());
    }

    static void copyLibrary(const QString& from, const QString& to)
    {
        std::filesystem::copy(from.toStdU16String(),
                              to.toStdU16String(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
    }

    [[nodiscard]] QString library() const
    {
        return m_folder.filePath(QStringLiteral("Photos.photolibrary"));
    }

    template <typename Condition>
    [[nodiscard]] static bool waitUntil(Condition condition)
    {
        return QTest::qWaitFor(condition, kPatience);
    }

    QTemporaryDir m_folder;

private:
    /// The package that all tests copy; empty until it is written.
    [[nodiscard]] static QString& sample()
    {
        static QString path;
        return path;
    }
};
