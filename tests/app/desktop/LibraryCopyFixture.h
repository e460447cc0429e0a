#pragma once

#include "SampleLibrary.h"

#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <utility>

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

    /// Runs it as a scan does: on a thread of its own, while the main thread serves its events.
    template <typename Work>
    static void runAsScan(Work work)
    {
        const std::unique_ptr<QThread> thread(QThread::create(std::move(work)));
        thread->start();
        EXPECT_TRUE(waitUntil([&thread] { return thread->isFinished(); }));
        EXPECT_TRUE(thread->wait()); // what it did is to be seen from now on
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
