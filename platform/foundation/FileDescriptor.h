#pragma once

#include <unistd.h>

#include <cerrno>

/// A file descriptor that is closed at the end of the scope; -1 is none. Any thread.
class FileDescriptor final
{
public:
    explicit FileDescriptor(int number)
        : m_number(number)
    {
    }

    ~FileDescriptor()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] int number() const { return m_number; }

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }

    /// Closes now and tells whether that worked: network file systems report late errors here.
    [[nodiscard]] bool close()
    {
        const int number = m_number;
        m_number = -1;
        return ::close(number) == 0 || errno == EINTR;
    }

private:
    int m_number;
};
