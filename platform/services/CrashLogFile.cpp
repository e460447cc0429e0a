#include "CrashLogFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace
{

/// For what follows the name, and the zero byte.
constexpr std::size_t kRoomForRest = 64;

} // namespace

void CrashLogFile::prepare(std::string_view folder, std::string_view name) noexcept
{
    m_prefixLength = 0;
    m_length = 0;
    const std::size_t needed = folder.size() + name.size() + kRoomForRest;
    if (!folder.starts_with('/') || name.empty() || needed > m_path.size()) {
        return;
    }
    append(folder);
    append("/");
    m_folderLength = m_length;
    append(name);
    std::replace(&m_path[m_folderLength], &m_path[m_length], '/', '_');
    m_prefixLength = m_length;
}

int CrashLogFile::create(const UtcTime& time, pid_t process) noexcept
{
    if (m_prefixLength == 0) {
        return -1;
    }
    m_length = m_prefixLength;
    append("_");
    append(time.year, 4);
    append("-");
    append(time.month, 2);
    append("-");
    append(time.day, 2);
    append("_");
    append(time.hour, 2);
    append("-");
    append(time.minute, 2);
    append("-");
    append(time.second, 2);
    append("_");
    append(process, 1);
    append(".crash");
    m_path[m_length] = '\0';

    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    constexpr mode_t kMode = S_IRUSR | S_IWUSR;
    int file = ::open(m_path.data(), kFlags, kMode);
    if (file < 0 && errno == ENOENT) {
        makeFolders();
        file = ::open(m_path.data(), kFlags, kMode);
    }
    if (file >= 0) {
        ::fchmod(file, kMode); // whatever the process' mask took away
    }
    return file;
}

void CrashLogFile::remove() const noexcept
{
    ::unlink(m_path.data());
}

void CrashLogFile::append(std::string_view text) noexcept
{
    std::copy(text.begin(), text.end(), &m_path[m_length]);
    m_length += text.size();
}

void CrashLogFile::append(long long number, std::size_t width) noexcept
{
    std::array<char, 24> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const auto count = static_cast<std::size_t>(end - digits.data());
    for (std::size_t filled = count; filled < width; ++filled) {
        append("0");
    }
    append({digits.data(), count});
}

void CrashLogFile::makeFolders() noexcept
{
    for (std::size_t at = 1; at < m_folderLength; ++at) {
        if (m_path[at] == '/') {
            m_path[at] = '\0';
            if (::mkdir(m_path.data(), S_IRWXU) == 0) {
                ::chmod(m_path.data(), S_IRWXU); // whatever the process' mask took away
            }
            m_path[at] = '/';
        }
    }
}
