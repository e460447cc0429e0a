#pragma once

#include <QByteArray>
#include <QString>

/// The datagram protocol of the system journal ("Native Journal Protocol" of systemd), without its
/// library. Any thread.
namespace SystemJournal
{

/// Sends one entry to the socket at `socketPath`; one that is too large for a datagram travels as a
/// sealed memory file. Never blocks. False when nobody took it.
bool send(const QString& socketPath, const QString& entry);

/// The fields of an entry as the journal reads them.
[[nodiscard]] QByteArray datagram(const QString& entry);

/// Whether the descriptor is the stream that the journal gave this process, named by `stream`
/// ("device:inode", the variable JOURNAL_STREAM).
[[nodiscard]] bool isJournalStream(int descriptor, const QString& stream);

} // namespace SystemJournal
