#include "TurnJournal.h"

#include "AtomicFile.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <unistd.h>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

QString pathIn(const QString& stateFolder)
{
    return stateFolder + "/journal"_L1;
}

QJsonArray arrayOf(const QSet<QString>& uuids)
{
    QStringList sorted(uuids.begin(), uuids.end());
    sorted.sort();
    return QJsonArray::fromStringList(sorted);
}

QStringList textsOf(const QJsonValue& value)
{
    QStringList texts;
    for (const QJsonValue entry : value.toArray()) {
        texts << entry.toString();
    }
    return texts;
}

QSet<QString> setOf(const QJsonValue& value)
{
    const QStringList texts = textsOf(value);
    return {texts.begin(), texts.end()};
}

QJsonObject objectOf(const Changes& changes)
{
    return {{u"masters"_s, arrayOf(changes.masters)},
            {u"albums"_s, arrayOf(changes.albums)},
            {u"folders"_s, arrayOf(changes.folders)},
            {u"keywords"_s, changes.keywords},
            {u"adminData"_s, changes.adminData},
            {u"catalogues"_s, changes.catalogues}};
}

Changes changesOf(const QJsonObject& object)
{
    Changes changes;
    changes.masters = setOf(object["masters"_L1]);
    changes.albums = setOf(object["albums"_L1]);
    changes.folders = setOf(object["folders"_L1]);
    changes.keywords = object["keywords"_L1].toBool();
    changes.adminData = object["adminData"_L1].toBool();
    changes.catalogues = object["catalogues"_L1].toBool();
    return changes;
}

QJsonObject objectOf(const TrashRows::Leftovers& leftovers)
{
    return {{u"folders"_s, QJsonArray::fromStringList(leftovers.folders)},
            {u"files"_s, QJsonArray::fromStringList(leftovers.files)},
            {u"emptyFolders"_s, QJsonArray::fromStringList(leftovers.emptyFolders)}};
}

TrashRows::Leftovers leftoversOf(const QJsonObject& object)
{
    return {textsOf(object["folders"_L1]),
            textsOf(object["files"_L1]),
            textsOf(object["emptyFolders"_L1])};
}

QByteArray lineOf(qint64 turn, const QString& key, const QJsonValue& value)
{
    const QJsonObject entry{{u"turn"_s, turn}, {key, value}};
    return QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
}

/// The lines of a journal that are whole.
QList<QJsonObject> entriesOf(const QString& path)
{
    QFile file(path);
    QList<QJsonObject> entries;
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (line.endsWith('\n') && document.isObject()) {
            entries << document.object();
        }
    }
    return entries;
}

void apply(const QJsonObject& entry, QMap<qint64, JournaledTurn>& turns)
{
    const qint64 number = entry["turn"_L1].toInteger();
    JournaledTurn& turn = turns[number];
    turn.number = number;
    if (entry.contains("settled"_L1)) {
        turn.made.clear();
        turn.doomed = {};
        return;
    }
    if (entry.contains("committed"_L1)) {
        turn.made.clear();
    }
    turn.made << textsOf(entry["made"_L1]);
    turn.pictures << textsOf(entry["pictures"_L1]);
    if (entry.contains("doomed"_L1)) {
        turn.doomed = leftoversOf(entry["doomed"_L1].toObject());
    }
    if (entry.contains("changes"_L1)) {
        turn.changes = changesOf(entry["changes"_L1].toObject());
        turn.announced = true;
    }
}

} // namespace

QList<JournaledTurn> TurnJournal::read(const QString& stateFolder)
{
    QMap<qint64, JournaledTurn> turns;
    for (const QJsonObject& entry : entriesOf(pathIn(stateFolder))) {
        apply(entry, turns);
    }
    return turns.values();
}

Result<std::unique_ptr<TurnJournal>> TurnJournal::open(const QString& stateFolder)
{
    std::unique_ptr<TurnJournal> journal(new TurnJournal(pathIn(stateFolder)));
    if (const Result<void> opened = journal->openForAppending(); !opened.ok()) {
        return opened.error();
    }
    if (const Result<void> flushed = AtomicFile::flushFolder(stateFolder); !flushed.ok()) {
        return flushed.error();
    }
    if (journal->m_file.size() > 0) {
        // A line that a crash cut short must not spoil the next one.
        if (const Result<void> ended = journal->append("\n"); !ended.ok()) {
            return ended.error();
        }
    }
    return journal;
}

TurnJournal::TurnJournal(const QString& path)
    : m_file(path)
    // Numbers of this run come after those of a run whose entries may still stand in the file.
    , m_lastTurn(QDateTime::currentMSecsSinceEpoch())
{
}

qint64 TurnJournal::nextTurn()
{
    const std::lock_guard lock(m_mutex);
    return ++m_lastTurn;
}

Result<void> TurnJournal::filesWillBeMade(qint64 turn, const QStringList& relativePaths)
{
    return append(lineOf(turn, u"made"_s, QJsonArray::fromStringList(relativePaths)));
}

Result<void> TurnJournal::picturesWillBeMade(qint64 turn, const QStringList& relativePaths)
{
    return append(lineOf(turn, u"pictures"_s, QJsonArray::fromStringList(relativePaths)));
}

Result<void> TurnJournal::filesAreDoomed(qint64 turn, const TrashRows::Leftovers& leftovers)
{
    return append(lineOf(turn, u"doomed"_s, objectOf(leftovers)));
}

Result<void> TurnJournal::turnWillCommit(qint64 turn, const Changes& changes)
{
    return append(lineOf(turn, u"changes"_s, objectOf(changes)));
}

Result<void> TurnJournal::turnIsCommitted(qint64 turn)
{
    return append(lineOf(turn, u"committed"_s, true), Flush::No);
}

Result<void> TurnJournal::turnIsSettled(qint64 turn)
{
    return append(lineOf(turn, u"settled"_s, true));
}

Result<void> TurnJournal::openForAppending()
{
    m_file.close();
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)
               ? Result<void>()
               : AtomicFile::errorFromErrno(errno, u"write"_s, m_file.fileName());
}

Result<void> TurnJournal::clearBut(const QSet<qint64>& unsettled,
                                   const QSet<qint64>& inDoubt,
                                   const Changes& left)
{
    const std::lock_guard lock(m_mutex);
    if (unsettled.isEmpty() && inDoubt.isEmpty() && left.isEmpty()) {
        return empty();
    }
    QByteArray kept;
    for (const QJsonObject& entry : entriesOf(m_file.fileName())) {
        const bool isOfFiles = entry.contains("made"_L1) || entry.contains("doomed"_L1);
        const qint64 turn = entry["turn"_L1].toInteger();
        if ((isOfFiles && unsettled.contains(turn)) || inDoubt.contains(turn)) {
            kept += QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
        }
    }
    if (!left.isEmpty()) {
        kept += lineOf(++m_lastTurn, u"changes"_s, objectOf(left));
    }
    // While it is replaced, either the old one or the new one is there.
    const Result<void> written = AtomicFile::write(m_file.fileName(), kept);
    return written.ok() ? openForAppending() : written;
}

Result<void> TurnJournal::empty()
{
    if (m_file.size() == 0) {
        return {};
    }
    if (::ftruncate(m_file.handle(), 0) != 0 || ::fsync(m_file.handle()) != 0) {
        return AtomicFile::errorFromErrno(errno, u"write"_s, m_file.fileName());
    }
    return {};
}

Result<void> TurnJournal::append(const QByteArray& line, Flush flush)
{
    const std::lock_guard lock(m_mutex);
    // A line that a full disk cut short must not spoil this one.
    const QByteArray bytes = m_isCut ? '\n' + line : line;
    m_isCut = true;
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(
            m_file.handle(), bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count < 0 && errno != EINTR) {
            return AtomicFile::errorFromErrno(errno, u"write"_s, m_file.fileName());
        }
        done += std::max<ssize_t>(count, 0);
    }
    m_isCut = false;
    if (flush == Flush::Yes && ::fdatasync(m_file.handle()) != 0) {
        return AtomicFile::errorFromErrno(errno, u"write"_s, m_file.fileName());
    }
    return {};
}
