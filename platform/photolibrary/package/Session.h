#pragma once

#include "Connection.h"
#include "ProvedJpeg.h"
#include "WriteAccess.h"

#include <QList>

#include <memory>
#include <optional>

/// Lives as long as its thread; a session whose mark is gone belongs to no thread any more.
using ThreadMark = std::shared_ptr<const int>;

/// The calling thread's mark.
[[nodiscard]] ThreadMark currentThreadMark();

/// What one thread has of an open library. Used by that thread alone.
struct Session {
    std::weak_ptr<const int> thread;
    std::unique_ptr<Connection> connection;
    bool turnOpen{false};
    /// The open transaction of the turn; declared after the connection, so it ends before it.
    std::unique_ptr<WriteTransaction> transaction;
    std::optional<ProvedJpeg> expected;         ///< of the next import of the turn
    std::optional<QList<qint64>> turnSelection; ///< select() within a turn
    std::optional<QList<qint64>> lastImport;    ///< nothing before this thread's first import
};
