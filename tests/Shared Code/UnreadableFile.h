#pragma once

#include <QFile>
#include <QString>

#include <sys/stat.h>
#include <unistd.h>

/// A file that this process may see but not read, for as long as the object lives. Nothing is
/// unreadable to root, so a test that root runs goes without root's rights meanwhile.
class UnreadableFile final
{
public:
    explicit UnreadableFile(const QString& path)
        : m_path(QFile::encodeName(path))
    {
        ::chmod(m_path.constData(), 0);
        if (m_isRoot && ::seteuid(kNobody) != 0) {
            qFatal("root's rights cannot be put aside");
        }
    }

    ~UnreadableFile()
    {
        if (m_isRoot && ::seteuid(0) != 0) {
            qFatal("root's rights cannot be taken back");
        }
        ::chmod(m_path.constData(), 0600);
    }

    UnreadableFile(const UnreadableFile&) = delete;
    UnreadableFile& operator=(const UnreadableFile&) = delete;

    /// Grants everyone reading, as a user who gives access.
    void grant() const
    {
        const bool isRootNow = !m_isRoot || ::seteuid(0) == 0;
        if (!isRootNow || ::chmod(m_path.constData(), 0644) != 0 ||
            (m_isRoot && ::seteuid(kNobody) != 0)) {
            qFatal("access cannot be granted");
        }
    }

    /// Lets everyone look into a folder, which a temporary one forbids.
    static void openFolder(const QString& folder)
    {
        ::chmod(QFile::encodeName(folder).constData(), 0755);
    }

private:
    static constexpr uid_t kNobody = 65534;

    QByteArray m_path;
    bool m_isRoot{::geteuid() == 0};
};
