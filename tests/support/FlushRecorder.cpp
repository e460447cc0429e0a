#include "FlushRecorder.h"

#include <QFile>

#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <optional>
#include <utility>

namespace
{

struct Record {
    std::mutex mutex;
    bool isOn{false};
    QSet<QString> paths;
    std::function<bool(const QString&)> fails;
    std::optional<qint64> fileSystem;
};

Record& record()
{
    static Record record;
    return record;
}

int flush(long call, int descriptor)
{
    {
        const std::lock_guard lock(record().mutex);
        if (record().isOn) {
            const QString link = QStringLiteral("/proc/self/fd/%1").arg(descriptor);
            const QString path = QFile::symLinkTarget(link);
            if (record().fails && record().fails(path)) {
                errno = EIO;
                return -1;
            }
            record().paths.insert(path);
        }
    }
    return static_cast<int>(::syscall(call, descriptor));
}

} // namespace

FlushRecorder::FlushRecorder()
{
    const std::lock_guard lock(record().mutex);
    record().isOn = true;
    record().paths.clear();
}

FlushRecorder::~FlushRecorder()
{
    const std::lock_guard lock(record().mutex);
    record().isOn = false;
    record().fails = nullptr;
    record().fileSystem.reset();
}

QSet<QString> FlushRecorder::flushed() const
{
    const std::lock_guard lock(record().mutex);
    return record().paths;
}

void FlushRecorder::failWhere(std::function<bool(const QString&)> picks)
{
    const std::lock_guard lock(record().mutex);
    record().fails = std::move(picks);
}

void FlushRecorder::pretendFileSystem(qint64 type)
{
    const std::lock_guard lock(record().mutex);
    record().fileSystem = type;
}

// The header names the parameters otherwise.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int descriptor)
{
    return flush(SYS_fsync, descriptor);
}

extern "C" int fdatasync(int descriptor)
{
    return flush(SYS_fdatasync, descriptor);
}

extern "C" int syncfs(int descriptor)
{
    return flush(SYS_syncfs, descriptor);
}

extern "C" int fstatfs(int descriptor, struct statfs* found)
{
    const auto result = static_cast<int>(::syscall(SYS_fstatfs, descriptor, found));
    const std::lock_guard lock(record().mutex);
    if (result == 0 && record().fileSystem) {
        found->f_type = static_cast<decltype(found->f_type)>(*record().fileSystem);
    }
    return result;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
