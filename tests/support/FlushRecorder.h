#pragma once

#include <QSet>
#include <QString>

#include <functional>

/// Tells which files and folders were flushed while it lives (a file system by the folder that was
/// named), lets flushes fail, and lets the file system seem to be another. The test's executable
/// links FlushRecorder.cpp, whose fsync, fdatasync, syncfs and fstatfs take the place of the C
/// library's. One at a time.
class FlushRecorder final
{
public:
    FlushRecorder();
    ~FlushRecorder();
    FlushRecorder(const FlushRecorder&) = delete;
    FlushRecorder& operator=(const FlushRecorder&) = delete;

    /// Absolute paths, free of links.
    [[nodiscard]] QSet<QString> flushed() const;

    /// Flushes of paths that it picks fail with EIO.
    void failWhere(std::function<bool(const QString&)> picks);

    /// Every file system has that type (f_type of fstatfs).
    void pretendFileSystem(qint64 type);
};
