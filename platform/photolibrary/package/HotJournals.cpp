#include "HotJournals.h"

#include "DatabaseFiles.h"
#include "FileLocks.h"

#include <QByteArrayView>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <numeric>

using namespace Qt::StringLiterals;

namespace
{

/// The last bytes of a journal that has a super-journal (SQLite's file format, "The Rollback
/// Journal", and pager.c): its name, then length, sum of the name's characters and this mark.
constexpr std::array<char, 8> kMark{'\xd9', '\xd5', '\x05', '\xf9', '\x20', '\xa1', '\x63', '\xd7'};
constexpr qint64 kLengthAndSum = 8;
constexpr qint64 kTail = kLengthAndSum + qint64{kMark.size()};
constexpr qint64 kLongestPath = 4096;

/// Full path of the super-journal that a journal names; empty when it names none.
QString superJournalOf(const QString& journal)
{
    QFile file(journal);
    const qint64 size = file.size();
    if (size < kTail || !file.open(QIODevice::ReadOnly) || !file.seek(size - kTail)) {
        return {};
    }
    const QByteArray tail = file.read(kTail);
    if (tail.size() != kTail || !tail.endsWith(QByteArrayView(kMark.data(), kMark.size()))) {
        return {};
    }
    const qint64 length = qFromBigEndian<quint32>(tail.constData());
    const auto sum = qFromBigEndian<quint32>(tail.constData() + sizeof(quint32));
    if (length == 0 || length > std::min(kLongestPath, size - kTail) ||
        !file.seek(size - kTail - length)) {
        return {};
    }
    const QByteArray name = file.read(length);
    // As SQLite does it, characters count with their sign.
    const quint32 sumOfName =
        std::accumulate(name.begin(), name.end(), quint32{0}, [](quint32 total, char character) {
            return total + static_cast<quint32>(character);
        });
    return name.size() == length && sumOfName == sum ? QFile::decodeName(name) : QString();
}

/// The package that a super-journal belonged to when it was written.
QString packageOf(const QString& superJournal)
{
    const QString folder = superJournal.section(u'/', 0, -2);
    constexpr QLatin1StringView kInPackage("/Database/apdb");
    return folder.endsWith(kInPackage) ? folder.chopped(kInPackage.size()) : folder;
}

/// Behind a link, the journals lie beside the file that it leads to.
QString databaseIn(const QString& package, QLatin1StringView name)
{
    return QFileInfo(package + "/Database/apdb/"_L1 + name).canonicalFilePath();
}

bool isOtherThanFile(const QString& path)
{
    return QFileInfo::exists(path) && !QFileInfo(path).isFile();
}

} // namespace

Result<void> HotJournals::canBeDecidedHere(const QString& package)
{
    for (const QLatin1StringView name : DatabaseFiles::kTogether) {
        const QString database = databaseIn(package, name);
        const QString journal = database + "-journal"_L1;
        if (isOtherThanFile(journal)) {
            return Error{ErrorCode::Unreadable,
                         u"\"%1\" in the library \"%2\" is no plain file: remove it."_s.arg(
                             journal, package)};
        }
        const QString super = superJournalOf(journal);
        if (isOtherThanFile(super)) {
            return Error{ErrorCode::Unreadable,
                         u"\"%1\" in the library \"%2\" names \"%3\", which is no plain file: "
                         "move the journal out of the library, then go back to a backup."_s.arg(
                             journal, package, super)};
        }
        if (super.isEmpty() || QFileInfo::exists(super)) {
            continue;
        }
        const QString here = database.section(u'/', 0, -2) + u'/' + super.section(u'/', -1);
        if (QFileInfo::exists(here)) {
            return Error{
                ErrorCode::Unreadable,
                u"A change to the library \"%1\" was interrupted when the library was at \"%2\", "
                "and can only be undone there: bring it back to that path, or mount its disk as "
                "it was, and open it there once. Open it nowhere else before that."_s.arg(
                    package, packageOf(super))};
        }
    }
    return {};
}

bool HotJournals::areThere(const QString& package)
{
    return std::ranges::any_of(DatabaseFiles::kTogether, [&package](QLatin1StringView name) {
        const QString database = databaseIn(package, name);
        return QFileInfo(database + "-journal"_L1).size() > 0 &&
               FileLocks::holders(FileLocks::Kind::Posix, {database}).isEmpty();
    });
}
