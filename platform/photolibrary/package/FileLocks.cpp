#include "FileLocks.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <ctime>

using namespace Qt::StringLiterals;

namespace
{

QString contentOfSystemFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// What /proc/locks calls a file, "08:01:123456": device and number; null where it is not there.
QString numbersOf(const QString& path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return u"%1:%2:%3"_s.arg(major(status.st_dev), 2, 16, QLatin1Char('0'))
        .arg(minor(status.st_dev), 2, 16, QLatin1Char('0'))
        .arg(status.st_ino);
}

} // namespace

QList<qint64> FileLocks::holders(Kind kind, const QStringList& paths)
{
    QStringList files;
    for (const QString& path : paths) {
        files << numbersOf(path);
    }
    files.removeAll(QString());
    QList<qint64> processes;
    // "1: FLOCK  ADVISORY  WRITE 4711 08:01:123456 0 EOF"; who only waits has "->" after the
    // number.
    constexpr qsizetype kKind = 1;
    constexpr qsizetype kProcess = 4;
    constexpr qsizetype kFile = 5;
    const QString word = kind == Kind::Flock ? u"FLOCK"_s : u"POSIX"_s;
    const QStringList lines = contentOfSystemFile(u"/proc/locks"_s).split(u'\n');
    for (const QString& line : lines) {
        const QStringList words = line.simplified().split(u' ');
        if (words.size() <= kFile || words.at(kKind) != word || !files.contains(words.at(kFile))) {
            continue;
        }
        const qint64 process = words.at(kProcess).toLongLong();
        const bool isTold = process > 0 && process != QCoreApplication::applicationPid();
        if (isTold && !processes.contains(process)) {
            processes << process;
        }
    }
    return processes;
}

QDateTime FileLocks::startOf(qint64 process)
{
    // proc(5): the fields after the name, which stands in parentheses and may hold any character,
    // begin with the third; the 22nd is the start in clock ticks since the system booted.
    constexpr qsizetype kThird = 3;
    constexpr qsizetype kStart = 22;
    const QString stat = contentOfSystemFile(u"/proc/%1/stat"_s.arg(process));
    const QStringList fields =
        stat.sliced(stat.lastIndexOf(u')') + 1).split(u' ', Qt::SkipEmptyParts);
    const long ticks = ::sysconf(_SC_CLK_TCK);
    timespec sinceBoot{};
    if (fields.size() <= kStart - kThird || ticks <= 0 ||
        ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot) != 0) {
        return {};
    }
    constexpr qint64 kMilliseconds = 1000;
    const qint64 started = fields.at(kStart - kThird).toLongLong() * kMilliseconds / ticks;
    const qint64 now = qint64{sinceBoot.tv_sec} * kMilliseconds + sinceBoot.tv_nsec / 1'000'000;
    return QDateTime::currentDateTime().addMSecs(started - now);
}

QString FileLocks::nameOf(qint64 process)
{
    return contentOfSystemFile(u"/proc/%1/comm"_s.arg(process)).trimmed();
}
