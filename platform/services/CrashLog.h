#pragma once

#include "CrashLogFile.h"
#include "CrashStack.h"
#include "LoadedModules.h"

#include <QString>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

class CrashLogOutput;
class UncaughtException;

/// What is said of the program in its crash logs, known before there is a crash.
struct CrashLogFacts {
    QString applicationName; ///< its logs are named so
    QString program;         ///< which of the application's programs
    QString version;         ///< for people
    QString build;           ///< the exact one
    QString folder;          ///< where logs lie, absolute
};

/// Writes the log of a crash: what the program is, what happened, where, and which modules with
/// which build ids that where refers to. Nothing of the memory's content but names of functions and
/// modules, no register, no environment, no host name; and of a module's path only the name unless
/// it lies in one of the system's folders.
/// Large: not for the stack.
/// Thread: prepare() once, before other threads are started; write() is for a signal handler, one
/// at a time.
class CrashLog final
{
public:
    /// A handler's arguments, and the exception that may have led to the signal.
    struct Crash {
        int signal;
        const siginfo_t* information;
        void* context;
        const UncaughtException* exception;
    };

    /// Gathers what a signal handler cannot ask for, and holds as many descriptors as a log needs,
    /// so that there is one of a program that has none left.
    void prepare(const CrashLogFacts& facts);

    /// Writes the log section by section: what crashes the process a second time (a destroyed stack
    /// may) leaves what is before. Nothing is left when nothing could be written.
    void write(const Crash& crash) noexcept;

private:
    class StackWriter;
    /// What is open at the same time for a log: the log, and the kernel's list of modules.
    static constexpr std::size_t kDescriptors = 2;
    using Text = std::array<char, 1024>;

    void holdDescriptors() noexcept;
    void releaseDescriptors() noexcept;
    void writeProgram(CrashLogOutput& log, std::time_t now) const noexcept;
    void writeReason(CrashLogOutput& log, const Crash& crash) const noexcept;
    void writeStack(CrashLogOutput& log, const Crash& crash) noexcept;
    void writeCall(CrashLogOutput& log, std::size_t index, std::uintptr_t address) noexcept;
    void writeModules(CrashLogOutput& log) const noexcept;
    [[nodiscard]] bool isBelowHome(std::string_view path) const noexcept;
    [[nodiscard]] std::string_view shownPath(const LoadedModule& module) const noexcept;

    std::time_t m_startedAt{0};
    std::array<int, kDescriptors> m_heldDescriptors{-1, -1};
    Text m_program{};
    std::array<std::array<char, PATH_MAX>, 2> m_homes{}; ///< as it is called, and as it is
    CrashLogFile m_file;
    LoadedModules m_modules;
    std::array<char, 4096> m_symbolName{};
    CrashStack m_stack;
};
