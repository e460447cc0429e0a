#pragma once

#include <QSet>
#include <QString>

/// Tells which files and folders were flushed while it lives. The test's executable links
/// FlushRecorder.cpp, whose fsync takes the place of the C library's. One at a time.
class FlushRecorder final
{
public:
    FlushRecorder();
    ~FlushRecorder();
    FlushRecorder(const FlushRecorder&) = delete;
    FlushRecorder& operator=(const FlushRecorder&) = delete;

    /// Absolute paths, free of links.
    [[nodiscard]] QSet<QString> flushed() const;
};
