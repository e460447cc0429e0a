#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QString>
#include <QStringList>

#include <sys/stat.h>
#include <unistd.h>

/// Nothing is forbidden to root: while it lives, a test that root runs goes without root's rights,
/// and the given folders with everything in them belong to whom it is then. For any other user it
/// does nothing.
class OrdinaryUser final
{
public:
    /// The private home of the tests is handed over in any case.
    explicit OrdinaryUser(const QStringList& folders)
    {
        if (!m_wasRoot) {
            return;
        }
        for (const QString& folder : folders + QStringList{QDir::homePath()}) {
            handOver(folder);
        }
        // The real user too: access() asks about that one.
        if (::setresuid(kNobody, kNobody, 0) != 0) {
            qFatal("root's rights cannot be put aside");
        }
    }

    ~OrdinaryUser()
    {
        if (m_wasRoot && ::setresuid(0, 0, 0) != 0) {
            qFatal("root's rights cannot be taken back");
        }
    }

    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;

    static void handOver(const QString& folder)
    {
        changeOwner(folder);
        QDirIterator walk(folder,
                          QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            changeOwner(walk.next());
        }
    }

    static void changeOwner(const QString& path)
    {
        if (::lchown(QFile::encodeName(path).constData(), kNobody, static_cast<gid_t>(-1)) != 0) {
            qFatal("a test's file cannot be handed over");
        }
    }

    bool m_wasRoot{::geteuid() == 0};
};

/// A file or folder with other permissions for as long as this lives.
class WithPermissions final
{
public:
    WithPermissions(const QString& path, mode_t mode)
        : m_path(QFile::encodeName(path))
    {
        struct stat status = {};
        if (::stat(m_path.constData(), &status) != 0 || ::chmod(m_path.constData(), mode) != 0) {
            qFatal("permissions cannot be changed");
        }
        m_before = status.st_mode & kAllBits;
    }

    ~WithPermissions() { ::chmod(m_path.constData(), m_before); }

    WithPermissions(const WithPermissions&) = delete;
    WithPermissions& operator=(const WithPermissions&) = delete;

private:
    static constexpr mode_t kAllBits = 07777;

    QByteArray m_path;
    mode_t m_before{0};
};
