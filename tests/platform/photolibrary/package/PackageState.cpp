#include "PackageState.h"

#include "Connection.h"
#include "PropertyList.h"
#include "Queries.h"

#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// The content of a property list without the moment it was written; the bytes of any other file.
QByteArray contentOf(const QString& path)
{
    const Result<QVariant> list = PropertyList::read(path);
    if (!list.ok() || path.endsWith(".xml"_L1)) {
        return bytesOf(path);
    }
    QVariantMap content = list.value().toMap();
    content.remove(u"plistWriteTimestamp"_s);
    return PropertyList::toBinary(content).value();
}

QString rowText(Sql::Query& row, bool withoutId)
{
    QStringList cells;
    for (int index = withoutId ? 1 : 0; index < row.columnCount(); ++index) {
        const QVariant value = Sql::value(row.column(index));
        cells += value.typeId() == QMetaType::QByteArray
                     ? QString::fromLatin1(value.toByteArray().toHex())
                     : value.toString();
    }
    return cells.join(u'|');
}

} // namespace

PackageState PackageState::of(const QString& package)
{
    PackageState state;
    state.addRows(package);
    state.addFiles(package);
    return state;
}

void PackageState::addRows(const QString& package)
{
    const auto connection = Connection::open(package, Connection::Mode::Read);
    ASSERT_TRUE(connection.ok()) << connection.error().message.toStdString();
    for (const char* schema : Connection::kSchemas) {
        const QString name = QString::fromLatin1(schema);
        const QByteArray allTables =
            u"SELECT name FROM %1.sqlite_master WHERE type='table'"_s.arg(name).toLatin1();
        const QStringList tables = Sql::texts(*connection.value(), allTables.constData());
        for (const QString& table : tables) {
            const QByteArray allRows = u"SELECT * FROM %1.%2"_s.arg(name, table).toLatin1();
            Sql::Query row(*connection.value(), allRows.constData());
            while (row.next()) {
                const QString text = rowText(row, table.endsWith("_RidIndexes"_L1));
                m_entries.insert(table + ": "_L1 + text, QByteArray());
            }
        }
    }
}

void PackageState::addFiles(const QString& package)
{
    QDirIterator walk(package,
                      QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        if (!path.endsWith(".apdb"_L1)) {
            m_entries.insert(path.mid(package.size() + 1), contentOf(path));
        }
    }
}

QString PackageState::differenceTo(const PackageState& other) const
{
    QStringList lines;
    for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
        const auto found = other.m_entries.find(entry.key());
        if (found == other.m_entries.end()) {
            lines += "- "_L1 + entry.key();
        } else if (*found != *entry) {
            lines += "! "_L1 + entry.key();
        }
    }
    for (auto entry = other.m_entries.begin(); entry != other.m_entries.end(); ++entry) {
        if (!m_entries.contains(entry.key())) {
            lines += "+ "_L1 + entry.key();
        }
    }
    return lines.join(u'\n');
}
