#pragma once

#include <QtGlobal>

#include <sys/prctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <functional>

/// A process of its own that ends in the middle of its work, as by a power cut: without a
/// destructor, a flush or a rollback. Tests run in one thread when they make one.
class ChildProcess final
{
public:
    /// Begins `work`, which ends the process itself: with crash() at the place in question. Work
    /// that comes to its end instead has failed.
    explicit ChildProcess(const std::function<void(ChildProcess&)>& work)
    {
        if (::pipe(m_toParent.data()) != 0) {
            qFatal("no pipe");
        }
        m_id = ::fork();
        if (m_id == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL); // it never outlives the test
            try {
                work(*this);
            } catch (const std::exception&) {
                ::_exit(kThrown);
            }
            ::_exit(kCameToItsEnd);
        }
        ::close(m_toParent[1]);
        m_toParent[1] = -1;
    }

    ~ChildProcess()
    {
        end();
        ::close(m_toParent[0]);
    }

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // -- for the child ---------------------------------------------------------------------------
    /// The end, as it was meant.
    [[noreturn]] static void crash() { ::_exit(0); }

    /// Says that it is as far as it was to get, and stays there until it is ended.
    [[noreturn]] void stay()
    {
        if (::write(m_toParent[1], "!", 1) == 1) {
            while (true) {
                ::pause();
            }
        }
        ::_exit(kNotHeard);
    }

    // -- for the parent --------------------------------------------------------------------------
    [[nodiscard]] pid_t id() const { return m_id; }

    /// Whether the child is where it stays; false when it ended before.
    [[nodiscard]] bool stays()
    {
        char byte = 0;
        ssize_t count = -1;
        do {
            count = ::read(m_toParent[0], &byte, 1);
        } while (count < 0 && errno == EINTR);
        return count == 1;
    }

    /// Waits for the end; whether it was crash().
    [[nodiscard]] bool crashed()
    {
        wait();
        return m_id > 0 && WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0;
    }

    /// Ends a child that stays, as the system would.
    void end()
    {
        if (m_id > 0 && !m_waitedFor) {
            ::kill(m_id, SIGKILL);
            wait();
        }
    }

private:
    static constexpr int kThrown = 2;
    static constexpr int kCameToItsEnd = 3;
    static constexpr int kNotHeard = 4;

    void wait()
    {
        pid_t ended = -1;
        while (m_id > 0 && !m_waitedFor) {
            ended = ::waitpid(m_id, &m_status, 0);
            m_waitedFor = ended == m_id || errno != EINTR;
        }
    }

    std::array<int, 2> m_toParent{-1, -1};
    pid_t m_id{-1};
    int m_status{-1};
    bool m_waitedFor{false};
};
