#include "SessionEnd.h"

#include "ProgramFixture.h"

using namespace Qt::StringLiterals;

namespace
{

/// A desktop that ends the session, and notes what it is asked and told.
class NotedSessionEnd final : public SessionEnd
{
public:
    explicit NotedSessionEnd(bool allows)
        : m_allows(allows)
    {
    }

    [[nodiscard]] bool allowsInteraction() override
    {
        m_notes += u"may I ask"_s;
        return m_allows;
    }

    void release() override { m_notes += u"released"_s; }

    void cancel() override { m_notes += u"cancelled"_s; }

    [[nodiscard]] QStringList notes() const { return m_notes; }

private:
    bool m_allows;
    QStringList m_notes;
};

class SessionEndTest : public ProgramFixture
{
protected:
    void startScan()
    {
        open();
        selectRawPhotos();
        click("selectionScanButton");
        ASSERT_TRUE(m_program->controller().isScanning());
    }

    QStringList notesOfAnEnd(bool allowsInteraction)
    {
        NotedSessionEnd end(allowsInteraction);
        answerSessionEnd(*m_program, end);
        return end.notes();
    }
};

} // namespace

TEST_F(SessionEndTest, withoutAScanNobodyIsAskedAndTheSessionEnds)
{
    open();
    EXPECT_EQ(notesOfAnEnd(true), QStringList());
    EXPECT_TRUE(isIdle());
}

TEST_F(SessionEndTest, whereNobodyMayBeAskedAScanIsStoppedAndTheSessionEnds)
{
    startScan();
    EXPECT_EQ(notesOfAnEnd(false), QStringList{u"may I ask"_s});
    EXPECT_FALSE(m_program->controller().isScanning());
    EXPECT_LT(copiesIn(afterwards()).size(), 2);
}

TEST_F(SessionEndTest, whoKeepsTheScanKeepsTheSession)
{
    startScan();
    answerSoon(u"quitQuestion"_s, u"Keep Scanning"_s);
    EXPECT_EQ(notesOfAnEnd(true), (QStringList{u"may I ask"_s, u"cancelled"_s, u"released"_s}));
    ASSERT_TRUE(waitUntil([this] { return !m_program->controller().isScanning() && isIdle(); }));
    EXPECT_EQ(copiesIn(afterwards()).size(), 2);
}

TEST_F(SessionEndTest, whoStopsTheScanLetsTheSessionEndOnceItHasStopped)
{
    startScan();
    answerSoon(u"quitQuestion"_s, u"Stop and Quit"_s);
    EXPECT_EQ(notesOfAnEnd(true), (QStringList{u"may I ask"_s, u"released"_s}));
    EXPECT_FALSE(m_program->controller().isScanning());
    EXPECT_LT(copiesIn(afterwards()).size(), 2);
}
