#include "TurnJournal.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

/// Files of this process grow no further than to `bytes` while it lives, as on a full disk.
class FullDisk final
{
public:
    explicit FullDisk(qint64 bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_before), 0);
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(bytes);
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }

    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace

TEST(TurnJournal, filesOfACommittedTurnAreNoLongerToldOfAndItsChangesAre)
{
    const QTemporaryDir folder;
    const auto journal = TurnJournal::open(folder.path());
    ASSERT_TRUE(journal.ok());
    Changes changes;
    changes.keywords = true;
    ASSERT_TRUE(journal.value()->filesWillBeMade(1, {u"Masters/A.JPG"_s}).ok());
    ASSERT_TRUE(journal.value()->turnWillCommit(1, changes).ok());
    ASSERT_EQ(TurnJournal::read(folder.path()).first().made, QStringList{u"Masters/A.JPG"_s});
    ASSERT_TRUE(journal.value()->turnIsCommitted(1).ok());
    const QList<JournaledTurn> turns = TurnJournal::read(folder.path());
    ASSERT_EQ(turns.size(), 1);
    EXPECT_EQ(turns.first().made, QStringList());
    EXPECT_TRUE(turns.first().changes.keywords);
}

TEST(TurnJournal, whatIsLeftToFollowStaysWhenItIsCleared)
{
    const QTemporaryDir folder;
    const auto journal = TurnJournal::open(folder.path());
    ASSERT_TRUE(journal.ok());
    ASSERT_TRUE(journal.value()->filesWillBeMade(1, {u"Masters/A.JPG"_s}).ok());
    ASSERT_TRUE(journal.value()->filesWillBeMade(2, {u"Masters/B.JPG"_s}).ok());
    Changes left;
    left.catalogues = true;
    ASSERT_TRUE(journal.value()->clearBut({2}, {}, left).ok());
    QStringList made;
    Changes changes;
    for (const JournaledTurn& turn : TurnJournal::read(folder.path())) {
        made << turn.made;
        changes.unite(turn.changes);
    }
    EXPECT_EQ(made, QStringList{u"Masters/B.JPG"_s});
    EXPECT_TRUE(changes.catalogues);
}

TEST(TurnJournal, aLineThatAFullDiskCutShortDoesNotSpoilTheNext)
{
    const QTemporaryDir folder;
    const auto journal = TurnJournal::open(folder.path());
    ASSERT_TRUE(journal.ok());
    ASSERT_TRUE(journal.value()->filesWillBeMade(1, {u"Masters/A.JPG"_s}).ok());
    const qint64 size = QFileInfo(folder.path() + u"/journal"_s).size();
    {
        constexpr qint64 kPartOfALine = 10;
        const FullDisk disk(size + kPartOfALine);
        ASSERT_FALSE(journal.value()->turnIsCommitted(1).ok());
    }
    ASSERT_EQ(QFileInfo(folder.path() + u"/journal"_s).size(), size + 10);
    ASSERT_TRUE(journal.value()->filesWillBeMade(2, {u"Masters/B.JPG"_s}).ok());
    const QList<JournaledTurn> turns = TurnJournal::read(folder.path());
    ASSERT_EQ(turns.size(), 2);
    EXPECT_EQ(turns.last().made, QStringList{u"Masters/B.JPG"_s});
}
