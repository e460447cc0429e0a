#include "SystemJournal.h"

#include "FileDescriptor.h"

#include <QFile>
#include <QtEndian>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

bool sendMessage(int socket, const msghdr& message)
{
    return ::sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
}

/// Hands the journal a memory file that can no longer change, in place of the bytes.
bool sendAsMemoryFile(int socket, msghdr message, const QByteArray& bytes)
{
    const FileDescriptor file(::memfd_create("corvane-log", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file.isOpen() ||
        ::write(file.number(), bytes.constData(), static_cast<size_t>(bytes.size())) !=
            static_cast<ssize_t>(bytes.size())) {
        return false;
    }
    if (::fcntl(file.number(),
                F_ADD_SEALS,
                F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) {
        return false;
    }
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control = {};
    message.msg_iov = nullptr;
    message.msg_iovlen = 0;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int number = file.number();
    std::memcpy(CMSG_DATA(header), &number, sizeof number);
    return sendMessage(socket, message);
}

} // namespace

QByteArray SystemJournal::datagram(const QString& entry)
{
    // The long form of a field, name, line feed, size, bytes, takes an entry of several lines.
    const QByteArray text = entry.toUtf8();
    std::array<char, 8> size = {};
    qToLittleEndian(static_cast<quint64>(text.size()), size.data());
    QByteArray bytes("PRIORITY=6\nSYSLOG_IDENTIFIER=corvane\nMESSAGE\n");
    bytes.append(size.data(), size.size());
    bytes.append(text);
    bytes.append('\n');
    return bytes;
}

bool SystemJournal::send(const QString& socketPath, const QString& entry)
{
    const QByteArray path = QFile::encodeName(socketPath);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (static_cast<size_t>(path.size()) >= sizeof(address.sun_path)) {
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) {
        return false;
    }
    QByteArray bytes = datagram(entry);
    iovec content = {bytes.data(), static_cast<size_t>(bytes.size())};
    msghdr message = {};
    message.msg_name = &address;
    message.msg_namelen = sizeof(address);
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    if (sendMessage(socket.number(), message)) {
        return true;
    }
    return (errno == EMSGSIZE || errno == ENOBUFS) &&
           sendAsMemoryFile(socket.number(), message, bytes);
}

bool SystemJournal::isJournalStream(int descriptor, const QString& stream)
{
    struct stat status = {};
    return !stream.isEmpty() && ::fstat(descriptor, &status) == 0 &&
           stream == u"%1:%2"_s.arg(quint64{status.st_dev}).arg(quint64{status.st_ino});
}
