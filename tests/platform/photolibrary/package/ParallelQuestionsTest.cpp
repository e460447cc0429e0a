#include "ParallelQuestions.h"

#include "Queries.h"
#include "WritableLibrary.h"

#include <QFile>

#include <sqlite3.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

using ParallelQuestions::Answer;
using ParallelQuestions::Question;

constexpr auto kPatience = 60s;

Question saying(const QString& what)
{
    return [what](Connection&) { return QList<Finding>{{what, {}, false}}; };
}

/// The numbers from 0 on.
std::vector<Question> sayingNumbers(int count)
{
    std::vector<Question> questions;
    questions.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        questions.push_back(saying(QString::number(i)));
    }
    return questions;
}

/// Takes hours if nothing stops it.
QList<Finding> countForHours(Connection& connection)
{
    const char* const count = "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c"
                              " WHERE n < 1000000000000) SELECT count(*) FROM c";
    return {{QString::number(Sql::firstInteger(connection, count).value_or(0)), {}, false}};
}

bool wasInterrupted(const Answer& answer)
{
    try {
        if (answer.failure) {
            std::rethrow_exception(answer.failure);
        }
    } catch (const SQLite::Exception& exception) {
        return exception.getErrorCode() == SQLITE_INTERRUPT;
    }
    return false;
}

/// Where threads wait until a number of them has come.
class Meeting final
{
public:
    explicit Meeting(int expected)
        : m_missing(expected)
    {
    }

    /// Whether all came.
    bool come()
    {
        std::unique_lock lock(m_mutex);
        --m_missing;
        m_changed.notify_all();
        return m_changed.wait_for(lock, kPatience, [this] { return m_missing <= 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_missing;
};

class ParallelQuestionsTest : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        Result<std::unique_ptr<Connection>> opened =
            Connection::open(package(), Connection::Mode::Read);
        ASSERT_TRUE(opened.ok()) << opened.error().message.toStdString();
        m_connection = std::move(opened).value();
    }

    std::vector<Answer> ask(const std::vector<Question>& questions, std::size_t decisive = 0)
    {
        return ParallelQuestions::ask(*m_connection, questions, decisive);
    }

    std::unique_ptr<Connection> m_connection;
};

} // namespace

TEST_F(ParallelQuestionsTest, answersComeInTheOrderOfTheQuestions)
{
    const std::vector<Question> questions = sayingNumbers(50);
    const std::vector<Answer> answers = ask(questions);
    ASSERT_EQ(answers.size(), questions.size());
    for (int i = 0; i < 50; ++i) {
        const Answer& answer = answers[static_cast<std::size_t>(i)];
        EXPECT_EQ(answer.failure, nullptr);
        ASSERT_EQ(answer.findings.size(), 1);
        EXPECT_EQ(answer.findings.first().what, QString::number(i));
    }
}

TEST_F(ParallelQuestionsTest, twoConnectionsAreAskedAtATime)
{
    Meeting meeting(2);
    std::mutex mutex;
    std::set<Connection*> asked;
    const Question meet = [&](Connection& by) {
        const bool bothCame = meeting.come();
        const std::scoped_lock lock(mutex);
        asked.insert(&by);
        return bothCame ? QList<Finding>() : QList<Finding>{{u"alone"_s, {}, false}};
    };
    for (const Answer& answer : ask({meet, meet})) {
        EXPECT_TRUE(answer.findings.isEmpty());
    }
    EXPECT_EQ(asked.size(), 2U);
    EXPECT_TRUE(asked.contains(m_connection.get()));
}

TEST_F(ParallelQuestionsTest, oneConnectionIsAskedEverythingWhereNoOtherCanBeOpened)
{
    ASSERT_TRUE(QFile::remove(package() + "/Database/apdb/ImageProxies.apdb"_L1));
    int fromTheFirst = 0;
    const Question count = [&](Connection& by) {
        fromTheFirst += &by == m_connection.get() ? 1 : 0;
        return QList<Finding>();
    };
    static_cast<void>(ask({count, count, count, count}));
    EXPECT_EQ(fromTheFirst, 4);
}

TEST_F(ParallelQuestionsTest, onlyTheConnectionThatChangedSomethingSeesItBeforeItIsCommitted)
{
    Result<std::unique_ptr<Connection>> opened =
        Connection::open(package(), Connection::Mode::Write);
    ASSERT_TRUE(opened.ok());
    Connection& writing = *opened.value();
    const Question count = [](Connection& by) {
        const auto named = Sql::firstInteger(by, "SELECT count(*) FROM RKKeyword WHERE name='n'");
        return QList<Finding>{{QString::number(named.value_or(0)), {}, false}};
    };
    const std::vector<Question> questions(20, count);
    writing.beginImmediate();
    EXPECT_FALSE(writing.hasUncommittedChanges());
    Sql::execute(writing, "INSERT INTO RKKeyword(modelId, uuid, name) VALUES(900, 'u', 'n')");
    EXPECT_TRUE(writing.hasUncommittedChanges());
    for (const Answer& answer : ParallelQuestions::ask(writing, questions, 0)) {
        ASSERT_EQ(answer.findings.size(), 1);
        EXPECT_EQ(answer.findings.first().what, u"1"_s);
    }
    writing.rollback();
    EXPECT_FALSE(writing.hasUncommittedChanges());
}

TEST_F(ParallelQuestionsTest, oneThatFailsEndsTheAskingAndItsFailureIsTheOnlyOne)
{
    for (const std::size_t decisive : {0U, 3U}) {
        Meeting meeting(2);
        const Question fails = [&](Connection& by) {
            EXPECT_TRUE(meeting.come());
            static_cast<void>(Sql::firstInteger(by, "SELECT nothing FROM nowhere"));
            return QList<Finding>();
        };
        const Question begins = [&](Connection& by) {
            EXPECT_TRUE(meeting.come());
            return countForHours(by);
        };
        const std::vector<Answer> answers = ask({begins, fails, saying(u"late"_s)}, decisive);
        EXPECT_EQ(answers[0].failure, nullptr) << "it was given up";
        EXPECT_NE(answers[1].failure, nullptr);
        EXPECT_FALSE(wasInterrupted(answers[1]));
        EXPECT_TRUE(answers[2].findings.isEmpty()) << "it is not asked any more";
    }
}

TEST_F(ParallelQuestionsTest, aDecisiveOneIsAskedToItsEndThoughAnotherFails)
{
    Meeting meeting(2);
    std::atomic<bool> hasFailed{false};
    const Question decides = [&](Connection& by) {
        EXPECT_TRUE(meeting.come());
        while (!hasFailed) {
            std::this_thread::sleep_for(1ms);
        }
        const char* const count = "WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c"
                                  " WHERE n < 200000) SELECT count(*) FROM c";
        const qint64 counted = Sql::firstInteger(by, count).value_or(0);
        return QList<Finding>{{QString::number(counted), {}, false}};
    };
    const Question fails = [&](Connection& by) {
        EXPECT_TRUE(meeting.come());
        hasFailed = true;
        static_cast<void>(Sql::firstInteger(by, "SELECT nothing FROM nowhere"));
        return QList<Finding>();
    };
    const std::vector<Answer> answers = ask({decides, fails}, 1);
    ASSERT_EQ(answers[0].findings.size(), 1);
    EXPECT_EQ(answers[0].findings.first().what, u"200000"_s);
}

TEST_F(ParallelQuestionsTest, allOthersAreGivenUpOnceADecisiveOneHasToldSomething)
{
    Meeting meeting(2);
    const Question decides = [&](Connection&) {
        EXPECT_TRUE(meeting.come());
        return QList<Finding>{{u"damaged"_s, {}, false}};
    };
    const Question begins = [&](Connection& by) {
        EXPECT_TRUE(meeting.come());
        return countForHours(by);
    };
    const std::vector<Answer> answers = ask({decides, begins, countForHours}, 1);
    ASSERT_EQ(answers[0].findings.size(), 1);
    for (const Answer& answer : {answers[1], answers[2]}) {
        EXPECT_TRUE(answer.findings.isEmpty());
        EXPECT_EQ(answer.failure, nullptr) << "it has no answer";
    }
}

TEST_F(ParallelQuestionsTest, allDecisiveOnesAreAskedWhateverOneOfThemTells)
{
    const std::vector<Answer> answers = ask(sayingNumbers(20), 10);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(answers[i].findings.size(), 1) << i;
    }
}

TEST_F(ParallelQuestionsTest, whatADecisiveOneDoesNotTellStopsNothing)
{
    const Question sound = [](Connection&) { return QList<Finding>(); };
    const std::vector<Answer> answers = ask({sound, sound, saying(u"a row"_s)}, 2);
    ASSERT_EQ(answers[2].findings.size(), 1);
}

TEST_F(ParallelQuestionsTest, theWishToStopReachesBothConnections)
{
    Meeting meeting(2);
    std::atomic<bool> stop{false};
    const Connection::Interruptible interruptible(*m_connection, [&stop] { return stop.load(); });
    const Question begins = [&](Connection& by) {
        EXPECT_TRUE(meeting.come());
        stop = true;
        return countForHours(by);
    };
    const std::vector<Answer> answers = ask({begins, begins, saying(u"late"_s)});
    EXPECT_TRUE(wasInterrupted(answers[0]) || wasInterrupted(answers[1]));
    for (const Answer& answer : answers) {
        EXPECT_TRUE(answer.findings.isEmpty());
    }
    EXPECT_TRUE(wasInterrupted(ask({saying(u"late"_s)}).front()));
    stop = false;
    EXPECT_EQ(ask({saying(u"again"_s)}).front().findings.size(), 1)
        << "the first connection asks for its own wish again";
}
