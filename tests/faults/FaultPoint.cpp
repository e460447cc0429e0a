#include "FaultPoint.h"

#include "ClockAndIds.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

/// As it stands in the recording before path, other path and data.
struct Header {
    std::array<char, 16> call;
    std::uint32_t effect;
    std::uint32_t abilities;
    std::uint32_t pathBytes;
    std::uint32_t otherBytes;
    std::int64_t offset;
    std::uint64_t dataBytes;
};

static_assert(sizeof(Header) == 48);

enum class Kind : std::uint8_t { None, Error, Kill, Torn };

struct ErrorName {
    std::string_view name;
    int number;
};

constexpr std::array kErrors{ErrorName{"EIO", EIO},
                             ErrorName{"ENOSPC", ENOSPC},
                             ErrorName{"EDQUOT", EDQUOT},
                             ErrorName{"EROFS", EROFS},
                             ErrorName{"EACCES", EACCES}};

int openForAppending(const char* name)
{
    const char* const path = std::getenv(name);
    constexpr int kPrivate = 0600;
    return path == nullptr ? -1
                           : static_cast<int>(::syscall(SYS_openat,
                                                        AT_FDCWD,
                                                        path,
                                                        O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                                                        kPrivate));
}

void append(int file, const void* data, std::size_t bytes)
{
    const char* next = static_cast<const char*>(data);
    while (bytes > 0) {
        const long count = ::syscall(SYS_write, file, next, bytes);
        if (count <= 0) {
            std::abort(); // a recording with gaps would be worse than none
        }
        next += count;
        bytes -= static_cast<std::size_t>(count);
    }
}

struct Plan {
    std::mutex mutex;
    const char* below{std::getenv("CORVANE_FAULTS_BELOW")};
    long at{0};
    Kind kind{Kind::None};
    int error{0};
    bool stays{std::getenv("CORVANE_FAULTS_STAYS") != nullptr};
    int recording{openForAppending("CORVANE_FAULTS_RECORD")};
    long reached{0};

    Plan()
    {
        const char* const number = std::getenv("CORVANE_FAULTS_AT");
        const char* const name = std::getenv("CORVANE_FAULTS_KIND");
        if (number == nullptr || name == nullptr) {
            return;
        }
        at = std::strtol(number, nullptr, 10);
        const std::string_view wanted(name);
        kind = wanted == "kill" ? Kind::Kill : wanted == "torn" ? Kind::Torn : Kind::Error;
        for (const ErrorName& known : kErrors) {
            error = wanted == known.name ? known.number : error;
        }
        if (kind == Kind::Error && error == 0) {
            std::abort();
        }
    }
};

Plan& plan()
{
    static Plan plan;
    return plan;
}

/// Also the folder itself: its names are flushed.
bool isBelow(std::string_view path, const char* folders)
{
    std::string_view rest(folders == nullptr ? "" : folders);
    while (!rest.empty()) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (!folder.empty() && path.starts_with(folder) &&
            (path.size() == folder.size() || path[folder.size()] == '/')) {
            return true;
        }
    }
    return false;
}

bool isPossible(int error, std::uint32_t abilities)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return (abilities & kFaultOfSpace) != 0;
    case EACCES:
        return (abilities & kFaultOfName) != 0;
    default:
        return true;
    }
}

void tell(long number, const char* call, const char* path)
{
    std::array<char, PATH_MAX + 64> line{};
    const int size = std::snprintf(line.data(), line.size(), "%ld %s %s\n", number, call, path);
    const int file = openForAppending("CORVANE_FAULTS_HIT");
    if (file >= 0) {
        append(file, line.data(), std::min(line.size() - 1, static_cast<std::size_t>(size)));
        ::syscall(SYS_close, file);
    }
}

[[noreturn]] void end()
{
    ::kill(::getpid(), SIGKILL);
    for (;;) {
        ::pause();
    }
}

} // namespace

FaultPath FaultPath::of(int descriptor)
{
    FaultPath path;
    std::array<char, 32> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    const int before = errno;
    const ssize_t size = ::readlink(link.data(), path.text.data(), path.text.size() - 1);
    path.text.at(static_cast<std::size_t>(std::max<ssize_t>(size, 0))) = '\0';
    errno = before;
    return path;
}

FaultPath FaultPath::of(int descriptor, const char* name)
{
    FaultPath path;
    if (name == nullptr || name[0] == '/') {
        std::snprintf(path.text.data(), path.text.size(), "%s", name == nullptr ? "" : name);
        return path;
    }
    if (descriptor != AT_FDCWD) {
        path = of(descriptor);
    } else if (::getcwd(path.text.data(), path.text.size()) == nullptr) {
        return {};
    }
    const std::size_t size = std::strlen(path.text.data());
    std::snprintf(path.text.data() + size, path.text.size() - size, "/%s", name);
    return path;
}

FaultPoint::FaultPoint(const char* call, const FaultPath& path, std::uint32_t abilities)
    : m_call(call)
    , m_path(path)
    , m_abilities(abilities)
{
    Plan& all = plan();
    if (!isBelow(path.text.data(), all.below)) {
        return;
    }
    m_lock = std::unique_lock(all.mutex);
    ++all.reached;
    m_hit = all.kind != Kind::None && all.reached == all.at;
    m_after = all.kind == Kind::Error && all.stays && all.at > 0 && all.reached > all.at;
    if (m_hit) {
        tell(all.reached, call, path.text.data());
    }
    if (m_hit && all.kind == Kind::Kill) {
        end();
    }
}

FaultPoint::~FaultPoint()
{
    if (m_lock.owns_lock() && !m_recorded) {
        record(nullptr, 0);
    }
}

bool FaultPoint::fails() const
{
    const Plan& all = plan();
    if (!(m_hit || m_after) || all.kind != Kind::Error || !isPossible(all.error, m_abilities)) {
        return false;
    }
    errno = all.error;
    return true;
}

std::size_t FaultPoint::share(std::size_t bytes) const
{
    const Plan& all = plan();
    const bool isFull = all.kind == Kind::Error && all.error == ENOSPC;
    const bool isCut = m_hit && bytes > 1 && (all.kind == Kind::Torn || isFull);
    return isCut ? bytes / 2 : bytes;
}

void FaultPoint::written() const
{
    if (m_hit && plan().kind == Kind::Torn) {
        end();
    }
}

void FaultPoint::changed(int file) const
{
    if (m_lock.owns_lock()) {
        keepMoment(file);
    }
}

void FaultPoint::did(FaultEffect effect)
{
    did(effect, 0, nullptr, 0);
}

void FaultPoint::did(FaultEffect effect, const FaultPath& other)
{
    m_other = &other;
    did(effect);
    m_other = nullptr;
}

void FaultPoint::did(FaultEffect effect, off_t offset, const void* data, std::size_t bytes)
{
    m_effect = effect;
    m_offset = offset;
    record(data, bytes);
}

void FaultPoint::didCopy(FaultEffect effect, int descriptor, off_t offset, std::size_t bytes)
{
    m_effect = effect;
    m_offset = offset;
    if (plan().recording < 0 || !m_lock.owns_lock()) {
        return;
    }
    // The descriptor itself may be open for writing only.
    std::array<char, 32> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    const auto file =
        static_cast<int>(::syscall(SYS_openat, AT_FDCWD, link.data(), O_RDONLY | O_CLOEXEC, 0));
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0) {
        std::abort();
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    const std::size_t count = effect == FaultEffect::WholeFile
                                  ? size
                                  : std::min(bytes, size - static_cast<std::size_t>(offset));
    void* const data = size == 0 ? nullptr : ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    record(data == nullptr ? nullptr : static_cast<const char*>(data) + offset, count);
    if (data != nullptr) {
        ::munmap(data, size);
    }
    ::syscall(SYS_close, file);
}

void FaultPoint::record(const void* data, std::size_t bytes)
{
    const int file = plan().recording;
    m_recorded = true;
    if (file < 0 || !m_lock.owns_lock()) {
        return;
    }
    const int before = errno;
    const char* const other = m_other == nullptr ? "" : m_other->text.data();
    Header header = {};
    std::strncpy(header.call.data(), m_call, header.call.size() - 1);
    header.effect = static_cast<std::uint32_t>(m_effect);
    header.abilities = m_abilities;
    header.pathBytes = static_cast<std::uint32_t>(std::strlen(m_path.text.data()));
    header.otherBytes = static_cast<std::uint32_t>(std::strlen(other));
    header.offset = m_offset;
    header.dataBytes = bytes;
    append(file, &header, sizeof header);
    append(file, m_path.text.data(), header.pathBytes);
    append(file, other, header.otherBytes);
    append(file, data, bytes);
    errno = before;
}
