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

    /// Asks until no question is left that nobody asks.
    void askBy(Connection& connection)
    {
        for (std::size_t i = m_next++; i < m_questions.size() && !isGivenUp(i); i = m_next++) {
            try {
                const Connection::Interruptible interruptible(
                    connection, [this, i] { return isGivenUp(i) || isStopped(); });
                m_answers[i].findings = m_questions[i](connection);
            } catch (...) {
                if (!isGivenUp(i)) {
                    m_answers[i].failure = std::current_exception();
                    (i < m_decisive ? m_allEnd : m_othersEnd) = true;
                }
            }
            if (i < m_decisive && !m_answers[i].findings.isEmpty()) {
                m_othersEnd = true;
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
        const RoomyCache cache(*opened.value());
        askBy(*opened.value());
    }

    [[nodiscard]] std::vector<Answer> take() { return std::move(m_answers); }

private:
    [[nodiscard]] bool isGivenUp(std::size_t question) const
    {
        return m_allEnd || (question >= m_decisive && m_othersEnd);
    }

    [[nodiscard]] bool isStopped() const { return m_shouldStop && m_shouldStop(); }

    const std::vector<Question>& m_questions;
    const std::size_t m_decisive;
    const std::function<bool()> m_shouldStop;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_allEnd{false};    ///< a decisive question failed
    std::atomic<bool> m_othersEnd{false}; ///< decided, or another question failed
    std::vector<Answer> m_answers;        ///< each written by one thread
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
