#include "FileLocks.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/stat.h>
#include <sys/sysmacros.h>

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

QString FileLocks::nameOf(qint64 process)
{
    return contentOfSystemFile(u"/proc/%1/comm"_s.arg(process)).trimmed();
}
