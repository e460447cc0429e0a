#include "FlushRecorder.h"

#include <QFile>
#include <QFileInfo>

#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>

namespace
{

struct Record {
    std::mutex mutex;
    bool isOn{false};
    QSet<QString> paths;
};

Record& record()
{
    static Record record;
    return record;
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
}

QSet<QString> FlushRecorder::flushed() const
{
    const std::lock_guard lock(record().mutex);
    return record().paths;
}

extern "C" int fsync(int descriptor)
{
    {
        const std::lock_guard lock(record().mutex);
        if (record().isOn) {
            const QString link = QStringLiteral("/proc/self/fd/%1").arg(descriptor);
            record().paths.insert(QFile::symLinkTarget(link));
        }
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}
