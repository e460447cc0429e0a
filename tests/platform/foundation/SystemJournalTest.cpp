#include "SystemJournal.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

/// The journal's end of the socket.
class Journal final
{
public:
    explicit Journal(const QString& path)
        : m_socket(::socket(AF_UNIX, SOCK_DGRAM, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof(address.sun_path));
        const auto* generic = reinterpret_cast<const sockaddr*>(&address);
        EXPECT_EQ(::bind(m_socket, generic, sizeof(address)), 0);
    }

    ~Journal() { ::close(m_socket); }

    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// The next entry's bytes, from the datagram or from the memory file that came with it.
    [[nodiscard]] QByteArray receive() const
    {
        QByteArray bytes(1 << 20, '\0');
        iovec content = {bytes.data(), size_t(bytes.size())};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control = {};
        msghdr message = {};
        message.msg_iov = &content;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        bytes.resize(qMax<qsizetype>(0, ::recvmsg(m_socket, &message, MSG_DONTWAIT)));
        const cmsghdr* header = CMSG_FIRSTHDR(&message);
        if (header == nullptr) {
            return bytes;
        }
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof(int));
        QFile file;
        EXPECT_TRUE(file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
        file.seek(0);
        return file.readAll();
    }

private:
    int m_socket;
};

TEST(SystemJournal, anEntryHasPriorityIdentifierAndTheMessageWithItsSize)
{
    EXPECT_EQ(SystemJournal::datagram(u"a\nb=ë"_s),
              QByteArray("PRIORITY=6\nSYSLOG_IDENTIFIER=corvane\nMESSAGE\n"
                         "\x06\0\0\0\0\0\0\0a\nb=\xC3\xAB\n",
                         60));
}

TEST(SystemJournal, theJournalReceivesTheEntry)
{
    const QTemporaryDir folder;
    const Journal journal(folder.filePath(u"socket"_s));
    ASSERT_TRUE(SystemJournal::send(folder.filePath(u"socket"_s), u"an entry"_s));
    EXPECT_EQ(journal.receive(), SystemJournal::datagram(u"an entry"_s));
}

TEST(SystemJournal, anEntryTooLargeForADatagramStillArrives)
{
    const QTemporaryDir folder;
    const Journal journal(folder.filePath(u"socket"_s));
    const QString large(3'000'000, u'x');
    ASSERT_TRUE(SystemJournal::send(folder.filePath(u"socket"_s), large));
    EXPECT_EQ(journal.receive(), SystemJournal::datagram(large));
}

TEST(SystemJournal, withoutAJournalNobodyTakesIt)
{
    const QTemporaryDir folder;
    EXPECT_FALSE(SystemJournal::send(folder.filePath(u"none"_s), u"an entry"_s));
    EXPECT_FALSE(SystemJournal::send(QString(500, u'p'), u"an entry"_s));
}

TEST(SystemJournal, itsStreamIsKnownByDeviceAndInode)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    struct stat status = {};
    ASSERT_EQ(::fstat(ends[1], &status), 0);
    const QString stream = u"%1:%2"_s.arg(quint64{status.st_dev}).arg(quint64{status.st_ino});
    EXPECT_TRUE(SystemJournal::isJournalStream(ends[1], stream));
    EXPECT_FALSE(SystemJournal::isJournalStream(ends[1], u"1:2"_s));
    EXPECT_FALSE(SystemJournal::isJournalStream(ends[1], QString()));
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
