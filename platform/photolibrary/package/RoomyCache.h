#pragma once

#include "Connection.h"

#include <array>
#include <cstddef>
#include <string>

/// Lets SQLite keep more of the databases in memory while it lives, up to 32 MB of each: for what
/// goes through all of them, since with its usual two megabytes it would read the same pages again
/// and again. Thread: the connection's. Errors: SQLite::Exception.
class RoomyCache final
{
public:
    explicit RoomyCache(Connection& connection)
        : m_connection(connection)
    {
        for (std::size_t i = 0; i < Connection::kSchemas.size(); ++i) {
            m_before[i] = connection.database().execAndGet(pragma(i)).getInt();
            set(i, kKibibytes);
        }
    }

    ~RoomyCache()
    {
        for (std::size_t i = 0; i < Connection::kSchemas.size(); ++i) {
            set(i, m_before[i]);
        }
    }

    RoomyCache(const RoomyCache&) = delete;
    RoomyCache& operator=(const RoomyCache&) = delete;

private:
    static constexpr int kKibibytes = -32 * 1024; ///< below zero: no count of pages

    static std::string pragma(std::size_t schema)
    {
        return std::string("PRAGMA ") + Connection::kSchemas[schema] + ".cache_size";
    }

    void set(std::size_t schema, int size)
    {
        m_connection.database().tryExec(pragma(schema) + '=' + std::to_string(size));
    }

    Connection& m_connection;
    std::array<int, Connection::kSchemas.size()> m_before{};
};
