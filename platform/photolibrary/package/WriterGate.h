#pragma once

#include <condition_variable>
#include <mutex>

/// Lets one writer in at a time. Unlike a mutex it may be left by another thread than the one that
/// entered, since a transaction may be given up with its session.
class WriterGate final
{
public:
    void enter()
    {
        std::unique_lock lock(m_mutex);
        m_left.wait(lock, [this] { return !m_taken; });
        m_taken = true;
    }

    void leave()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_taken = false;
        }
        m_left.notify_one();
    }

    /// Enters for the length of a scope.
    class Scope final
    {
    public:
        explicit Scope(WriterGate& gate)
            : m_gate(gate)
        {
            m_gate.enter();
        }

        ~Scope() { m_gate.leave(); }

        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        WriterGate& m_gate;
    };

private:
    std::mutex m_mutex;
    std::condition_variable m_left;
    bool m_taken{false};
};
