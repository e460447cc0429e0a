#pragma once

#include <QSet>
#include <QString>

#include <functional>

/// Tells which files and folders were flushed while it lives (a file system by the folder that was
/// named), and lets flushes fail. The test's
/// executable links FlushRecorder.cpp, whose fsync, fdatasync and syncfs take the place of the C
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
};
