#include "ParallelQuestions.h"

#include "AlternateSignalStack.h"
#include "RoomyCache.h"

#include <atomic>
#include <cstddef>
#include <future>
#include <memory>
#include <utility>

namespace
{

using namespace ParallelQuestions;

/// What the two connections share.
class Asking final
{
public:
    Asking(const std::vector<Question>& questions,
           std::size_t decisive,
           std::function<bool()> shouldStop)
        : m_questions(questions)
        , m_decisive(decisive)
        , m_shouldStop(std::move(shouldStop))
        , m_answers(questions.size())
    {
    }

    /// Asks until no question is left that nobody asks. Errors: SQLITE_INTERRUPT where it is to
    /// stop before the first.
    void askBy(Connection& connection)
    {
        const Connection::Interruptible interruptible(
            connection, [this] { return m_isDecided || (m_shouldStop && m_shouldStop()); });
        for (std::size_t i = m_next++; i < m_questions.size() && !m_isDecided; i = m_next++) {
            try {
                m_answers[i].findings = m_questions[i](connection);
            } catch (...) {
                m_answers[i].failure = std::current_exception();
            }
            if (i < m_decisive && !m_answers[i].findings.isEmpty()) {
                m_isDecided = true;
            }
        }
    }

    /// By a connection of its own to the same library.
    void askBeside(const Connection& first)
    {
        const Result<std::unique_ptr<Connection>> opened =
            Connection::open(first.packagePath(), Connection::Mode::Read);
        if (!opened.ok()) {
            return;
        }
        opened.value()->setVolumeFolders(first.volumeFolders());
        try {
            const RoomyCache cache(*opened.value());
            askBy(*opened.value());
        } catch (const SQLite::Exception&) {
            return; // before the first question: the other connection is asked
        }
    }

    [[nodiscard]] std::vector<Answer> take() { return std::move(m_answers); }

private:
    const std::vector<Question>& m_questions;
    const std::size_t m_decisive;
    const std::function<bool()> m_shouldStop;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_isDecided{false};
    std::vector<Answer> m_answers; ///< each written by one thread
};

} // namespace

std::vector<ParallelQuestions::Answer> ParallelQuestions::ask(
    Connection& connection, const std::vector<Question>& questions, std::size_t decisive)
{
    Asking asking(questions, decisive, connection.shouldStop());
    std::future<void> beside;
    if (!connection.hasUncommittedChanges()) {
        // Where there is no thread to be had, it runs last and has nothing left to ask.
        beside = std::async(std::launch::async | std::launch::deferred, [&asking, &connection] {
            const AlternateSignalStack signalStack;
            asking.askBeside(connection);
        });
    }
    asking.askBy(connection);
    if (beside.valid()) {
        beside.wait();
    }
    return asking.take();
}
