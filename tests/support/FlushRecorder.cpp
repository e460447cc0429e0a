#include "FlushRecorder.h"

#include <QFile>

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <utility>

namespace
{

struct Record {
    std::mutex mutex;
    bool isOn{false};
    QSet<QString> paths;
    std::function<bool(const QString&)> fails;
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

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
