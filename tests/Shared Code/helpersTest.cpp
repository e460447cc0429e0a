#include "helpers.h"

#include "FakeDelegate.h"
#include "QtPrinters.h"
#include "Scripting.h"
#include "UnreadableFile.h"
#include "WorkerRun.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class HelpersTest : public testing::Test
{
protected:
    /// Makes a file of some bytes, and its folders, which everyone may look into.
    [[nodiscard]] QString makeFile(const QString& relativePath) const
    {
        QString path = m_folder.filePath(relativePath);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        UnreadableFile::openFolder(m_folder.path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("content");
        return path;
    }

    [[nodiscard]] QStringList prompts() const { return m_delegate.linesOf(u"userSelectedFiles"_s); }

    QTemporaryDir m_folder;
    FakeDelegate m_delegate;
};

TEST_F(HelpersTest, aReadableFileExistsWithoutAnyPrompt)
{
    EXPECT_TRUE(helpers::fileExists(makeFile(u"a.CR2"_s), m_delegate));
    EXPECT_TRUE(m_delegate.journal->lines().isEmpty());
}

TEST_F(HelpersTest, aMissingFileDoesNotExistAndNobodyIsAsked)
{
    EXPECT_FALSE(helpers::fileExists(m_folder.filePath(u"gone.CR2"_s), m_delegate));
    EXPECT_FALSE(helpers::fileExists(u""_s, m_delegate));
    EXPECT_TRUE(m_delegate.journal->lines().isEmpty());
}

TEST_F(HelpersTest, theNullPathDoesNotExistAndNobodyIsAsked)
{
    EXPECT_FALSE(helpers::fileExists(QVariant(), m_delegate));
    EXPECT_TRUE(m_delegate.journal->lines().isEmpty());
}

TEST_F(HelpersTest, anUnreadableFileAsksOnceForTheLibraryThatHoldsIt)
{
    const QString path = makeFile(u"Holiday.photolibrary/Masters/2014/a.CR2"_s);
    const UnreadableFile unreadable(path);
    EXPECT_FALSE(helpers::fileExists(path, m_delegate));
    EXPECT_EQ(prompts(),
              QStringList{u"userSelectedFiles "_s + m_folder.filePath(u"Holiday.photolibrary"_s)});
}

TEST_F(HelpersTest, anUnreadableFileOutsideAnyLibraryAsksForTheFileItself)
{
    const QString path = makeFile(u"Pictures/a.CR2"_s);
    const UnreadableFile unreadable(path);
    EXPECT_FALSE(helpers::fileExists(path, m_delegate));
    EXPECT_EQ(prompts(), QStringList{u"userSelectedFiles "_s + path});
}

TEST_F(HelpersTest, theOtherKindOfLibraryWinsWhereBothNamesOccur)
{
    const QString path = makeFile(u"A.photolibrary/B.aplibrary/C.aplibrary/a.CR2"_s);
    const UnreadableFile unreadable(path);
    EXPECT_FALSE(helpers::fileExists(path, m_delegate));
    EXPECT_EQ(
        prompts(),
        QStringList{u"userSelectedFiles "_s + m_folder.filePath(u"A.photolibrary/B.aplibrary"_s)});
}

TEST_F(HelpersTest, aFileIsTriedAgainOnceAccessWasGranted)
{
    const QString path = makeFile(u"Holiday.photolibrary/a.CR2"_s);
    const UnreadableFile unreadable(path);
    m_delegate.onUserSelectedFiles = [&](const QString&) { unreadable.grant(); };
    EXPECT_FALSE(helpers::fileReadable(path));
    EXPECT_TRUE(helpers::fileExists(path, m_delegate));
    EXPECT_EQ(prompts().size(), 1);
}

TEST_F(HelpersTest, theUserIsAskedOnTheMainThreadWhileTheWorkerWaits)
{
    const QString path = makeFile(u"Holiday.photolibrary/a.CR2"_s);
    const UnreadableFile unreadable(path);
    m_delegate.onUserSelectedFiles = [&](const QString&) { unreadable.grant(); };
    bool exists = false;
    runOnWorker([&] { exists = helpers::fileExists(path, m_delegate); });
    EXPECT_TRUE(exists);
    EXPECT_EQ(m_delegate.mainCallThreads, QList<QThread*>{QThread::currentThread()});
}

TEST_F(HelpersTest, whatTheControllerRaisesWhileItAsksIsRaisedOnTheWorker)
{
    const QString path = makeFile(u"Holiday.photolibrary/a.CR2"_s);
    const UnreadableFile unreadable(path);
    m_delegate.onUserSelectedFiles = [](const QString&) {
        throw ScriptingException(u"NobodyAnswers"_s, u"Nobody can answer."_s);
    };
    QString reason;
    runOnWorker([&] {
        try {
            std::ignore = helpers::fileExists(path, m_delegate);
        } catch (const ScriptingException& exception) {
            reason = exception.reason();
        }
    });
    EXPECT_EQ(reason, u"Nobody can answer."_s);
    EXPECT_EQ(prompts().size(), 1);
}

TEST_F(HelpersTest, deletingRemovesAFileAndIgnoresOneThatIsGone)
{
    const QString path = makeFile(u"a.jpg"_s);
    helpers::deleteFile(path);
    EXPECT_FALSE(QFileInfo::exists(path));
    helpers::deleteFile(path);
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(HelpersTest, deletingLeavesAFolderWithContent)
{
    const QString path = makeFile(u"folder/a.jpg"_s);
    helpers::deleteFile(m_folder.filePath(u"folder"_s));
    EXPECT_TRUE(QFileInfo::exists(path));
}

} // namespace
