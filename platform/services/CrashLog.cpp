#include "CrashLog.h"

#include "CrashLogOutput.h"
#include "SignalText.h"
#include "UncaughtException.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Where systems and their packages have programs and libraries; no user's files lie there.
constexpr std::array<std::string_view, 8> kSystemFolders{
    "/usr/", "/lib/", "/lib32/", "/lib64/", "/libx32/", "/opt/", "/app/", "/snap/"};
constexpr std::size_t kAddressDigits = 2 * sizeof(std::uintptr_t);

/// Keeps as much of `text` as there is room for, with a zero byte behind it.
void keep(const QString& text, std::span<char> buffer)
{
    const QByteArray bytes = text.toUtf8();
    const auto length = std::min(static_cast<std::size_t>(bytes.size()), buffer.size() - 1);
    std::copy_n(bytes.cbegin(), length, buffer.begin());
    buffer[length] = '\0';
}

std::time_t secondsOf(clockid_t clock) noexcept
{
    std::timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec;
}

void writeThread(CrashLogOutput& log) noexcept
{
    std::array<char, 17> name{}; // the kernel keeps 16, the last of them zero
    prctl(PR_GET_NAME, name.data());
    log << "Thread:       " << Decimal{gettid()} << " \"" << std::string_view(name.data()) << '"'
        << (gettid() == getpid() ? " (main)\n" : "\n");
}

/// A fault has an address, a signal that was sent has a sender.
void writeOrigin(CrashLogOutput& log, const siginfo_t& information) noexcept
{
    if (information.si_code == SI_KERNEL) {
        return; // the kernel tells no address
    }
    if (SignalText::isSent(information.si_code)) {
        log << "Sent by:      process " << Decimal{information.si_pid} << '\n';
    } else if (information.si_signo == SIGSYS) {
        log << "System call:  " << Decimal{information.si_syscall} << '\n';
    } else {
        const auto address = reinterpret_cast<std::uintptr_t>(information.si_addr);
        log << "Address:      " << Hexadecimal{address, kAddressDigits} << '\n';
    }
}

} // namespace

void CrashLog::prepare(const CrashLogFacts& facts)
{
    m_startedAt = secondsOf(CLOCK_MONOTONIC);
    const QString version = facts.build == facts.version || facts.build.isEmpty()
                                ? facts.version
                                : u"%1 (%2)"_s.arg(facts.version, facts.build);
    keep(u"Program:      %1 (%2)\nVersion:      %3\nSystem:       %4, %5 %6, %7\n"_s.arg(
             facts.program,
             facts.applicationName,
             version,
             QSysInfo::prettyProductName(),
             QSysInfo::kernelType(),
             QSysInfo::kernelVersion(),
             QSysInfo::currentCpuArchitecture()),
         m_program);
    keep(QDir::homePath(), m_homes[0]);
    keep(QDir(QDir::homePath()).canonicalPath(), m_homes[1]);
    const QByteArray folder = QFile::encodeName(QDir::cleanPath(facts.folder));
    const QByteArray name = facts.applicationName.toUtf8();
    m_file.prepare({folder.constData(), static_cast<std::size_t>(folder.size())},
                   {name.constData(), static_cast<std::size_t>(name.size())});
    // Should the kernel not tell them in the crash.
    m_modules.read();
    CrashStack::warmUp();
    holdDescriptors();
}

void CrashLog::write(const Crash& crash) noexcept
{
    releaseDescriptors();
    const std::time_t now = secondsOf(CLOCK_REALTIME);
    const int file = m_file.create(UtcTime::of(now), getpid());
    if (file < 0) {
        return;
    }
    CrashLogOutput log(file);
    writeProgram(log, now);
    writeReason(log, crash);
    log.flush();
    m_modules.read();
    writeStack(log, crash);
    log.flush();
    writeModules(log);
    log << "\nEnd of the log\n";
    log.flush();
    ::close(file);
    if (!log.wasWritten()) {
        m_file.remove();
    }
}

void CrashLog::holdDescriptors() noexcept
{
    for (int& held : m_heldDescriptors) {
        if (held < 0) {
            held = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        }
    }
}

void CrashLog::releaseDescriptors() noexcept
{
    for (int& held : m_heldDescriptors) {
        if (held >= 0) {
            ::close(std::exchange(held, -1));
        }
    }
}

void CrashLog::writeProgram(CrashLogOutput& log, std::time_t now) const noexcept
{
    const UtcTime time = UtcTime::of(now);
    log << std::string_view(m_program.data()) << "Date:         " << Decimal{time.year, 4, '0'}
        << '-' << Decimal{time.month, 2, '0'} << '-' << Decimal{time.day, 2, '0'} << ' '
        << Decimal{time.hour, 2, '0'} << ':' << Decimal{time.minute, 2, '0'} << ':'
        << Decimal{time.second, 2, '0'}
        << " UTC\nRunning for:  " << Decimal{secondsOf(CLOCK_MONOTONIC) - m_startedAt}
        << " s\nProcess:      " << Decimal{getpid()} << '\n';
    writeThread(log);
}

void CrashLog::writeReason(CrashLogOutput& log, const Crash& crash) const noexcept
{
    log << '\n';
    if (crash.exception->isOf(gettid())) {
        const std::string_view type = crash.exception->type();
        log << "Exception:    " << (type.empty() ? "none, std::terminate was called" : type)
            << '\n';
        if (!crash.exception->text().empty()) {
            log << "Text:         " << crash.exception->text() << '\n';
        }
    }
    const int code = crash.information->si_code;
    log << "Signal:       " << Decimal{crash.signal} << ' ' << SignalText::name(crash.signal)
        << "\nCode:         " << Decimal{code} << ' ' << SignalText::code(crash.signal, code)
        << '\n';
    writeOrigin(log, *crash.information);
}

/// Writes each call before the walk goes on to the next: it may come to a bad end.
class CrashLog::StackWriter final : public CrashStack::Listener
{
public:
    StackWriter(CrashLog& writer, CrashLogOutput& log)
        : m_writer(writer)
        , m_log(log)
    {
    }

    void call(std::size_t index, std::uintptr_t address) noexcept override
    {
        m_writer.writeCall(m_log, index, address);
        m_log.flush();
    }

    void leftOut(std::size_t count) noexcept override
    {
        m_log << "     " << Decimal{static_cast<long long>(count)} << " calls are left out\n";
    }

private:
    CrashLog& m_writer;
    CrashLogOutput& m_log;
};

void CrashLog::writeStack(CrashLogOutput& log, const Crash& crash) noexcept
{
    log << "\nStack, the newest call first:\n";
    StackWriter writer(*this, log);
    m_stack.walk(crash.context, m_modules, writer);
}

/// The file's own address, which tools take together with the build id, and as far as the module
/// tells it the function.
void CrashLog::writeCall(CrashLogOutput& log, std::size_t index, std::uintptr_t address) noexcept
{
    log << Decimal{static_cast<long long>(index), 3} << "  ";
    const LoadedModule* const module = m_modules.find(address);
    if (module == nullptr) {
        log << Hexadecimal{address, kAddressDigits} << " in no module\n";
        return;
    }
    log << module->fileName() << " + " << Hexadecimal{address - module->bias} << " ["
        << HexadecimalBytes{module->buildId} << ']';
    const ElfImage::Symbol symbol =
        ElfImage(module->start, module->end).symbolAt(address, m_symbolName);
    if (!symbol.name.empty()) {
        log << ' ' << symbol.name << " + " << Hexadecimal{symbol.distance};
    }
    log << '\n';
}

void CrashLog::writeModules(CrashLogOutput& log) const noexcept
{
    log << "\nModules, their addresses and build ids:\n";
    for (const LoadedModule& module : m_modules.all()) {
        log << Hexadecimal{module.start, kAddressDigits} << " - "
            << Hexadecimal{module.end, kAddressDigits} << " [" << HexadecimalBytes{module.buildId}
            << "] " << shownPath(module) << '\n';
    }
    if (m_modules.isCut()) {
        log << "and more\n";
    }
}

bool CrashLog::isBelowHome(std::string_view path) const noexcept
{
    return std::ranges::any_of(m_homes, [path](const auto& kept) {
        const std::string_view home(kept.data());
        return home.size() > 1 && path.size() > home.size() && path.starts_with(home) &&
               path[home.size()] == '/';
    });
}

std::string_view CrashLog::shownPath(const LoadedModule& module) const noexcept
{
    const bool isOfSystem = std::ranges::any_of(
        kSystemFolders, [&](std::string_view folder) { return module.path.starts_with(folder); });
    return isOfSystem && !isBelowHome(module.path) ? module.path : module.fileName();
}
