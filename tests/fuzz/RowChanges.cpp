#include "RowChanges.h"

#include "Queries.h"

#include <QVariant>

#include <array>
#include <bit>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

/// Longer than any text that a library holds, but one.
constexpr qsizetype kHuge = qsizetype{300} * 1024;

enum Kind : quint8 {
    Null,
    Integer,
    ExtremeInteger,
    Real,
    ExtremeReal,
    Text,
    Blob,
    HugeText,
    HugeBlob,
    Path,
    OtherRow,
    Deletion,
    Count,
};

template <typename Values>
auto oneOf(const Values& values, quint8 which)
{
    return values.at(which % values.size());
}

qint64 extremeInteger(quint8 which)
{
    using Limits = std::numeric_limits<qint64>;
    static constexpr std::array<qint64, 12> kValues{0,
                                                    -1,
                                                    1,
                                                    Limits::min(),
                                                    Limits::max(),
                                                    Limits::max() - 1,
                                                    std::numeric_limits<int>::min(),
                                                    std::numeric_limits<int>::max(),
                                                    qint64{1} << 31,
                                                    qint64{1} << 32,
                                                    qint64{1} << 53,
                                                    999999999999};
    return oneOf(kValues, which);
}

double extremeReal(quint8 which)
{
    using Limits = std::numeric_limits<double>;
    static constexpr std::array kValues{Limits::infinity(),
                                        -Limits::infinity(),
                                        Limits::max(),
                                        Limits::lowest(),
                                        Limits::denorm_min(),
                                        -0.0,
                                        1e18,
                                        -1e18,
                                        1e15,
                                        0.5};
    return oneOf(kValues, which);
}

QString path(quint8 which)
{
    static const std::array<QString, 14> kValues{QString(),
                                                 u""_s,
                                                 u"/etc/passwd"_s,
                                                 u"../../x"_s,
                                                 u"../../../Disk/2011/far.jpg"_s,
                                                 u"2011/../../../Disk/x"_s,
                                                 u".."_s,
                                                 u"."_s,
                                                 u"/"_s,
                                                 u"a//b"_s,
                                                 u"2011/"_s,
                                                 u"2011/x"_s + QChar(u'\0') + u".jpg"_s,
                                                 u"Gru\u0308\u00DFe/\u1E9B\u0323"_s,
                                                 QString(600, u'n')};
    return oneOf(kValues, which);
}

QVariant valueOf(quint8 kind, FuzzInput& input)
{
    switch (kind) {
    case Integer:
        return static_cast<qlonglong>(input.number());
    case ExtremeInteger:
        return static_cast<qlonglong>(extremeInteger(input.byte()));
    case Real:
        return std::bit_cast<double>(input.number());
    case ExtremeReal:
        return extremeReal(input.byte());
    case Text:
        return QString::fromUtf8(input.bytes(input.byte()));
    case Blob:
        return input.bytes(input.byte()).toByteArray();
    case HugeText:
        return QString(kHuge, QChar(char16_t{input.byte()}));
    case HugeBlob:
        return QByteArray(kHuge, static_cast<char>(input.byte()));
    case Path:
        return path(input.byte());
    default:
        return {};
    }
}

} // namespace

RowChanges::RowChanges(Connection& connection)
    : m_connection(connection)
{
    for (const char* schema : Connection::kSchemas) {
        const QString prefix = QString::fromLatin1(schema) + u'.';
        const QString tables = u"SELECT name FROM %1sqlite_master WHERE type='table' AND name LIKE"
                               " 'RK%' AND rootpage>0 ORDER BY name"_s;
        const QStringList names =
            Sql::texts(connection, QString(tables).replace(u"%1"_s, prefix).toUtf8().constData());
        for (const QString& name : names) {
            const QByteArray columns = u"SELECT name FROM pragma_table_info('%1', '%2')"_s
                                           .arg(name, QString::fromLatin1(schema))
                                           .toUtf8();
            m_tables.append({prefix + name, Sql::texts(connection, columns.constData())});
        }
    }
}

void RowChanges::apply(FuzzInput& input)
{
    constexpr int kMost = 24;
    for (int count = 0; count < kMost && !input.isAtEnd(); ++count) {
        changeOne(input);
    }
}

void RowChanges::changeOne(FuzzInput& input)
{
    const Table& table = m_tables.at(input.byte() % m_tables.size());
    const quint8 row = input.byte();
    const QString column = table.columns.at(input.byte() % table.columns.size());
    const auto kind = static_cast<quint8>(input.byte() % Count);
    // 255: all rows; else the one of that number, counted round.
    const QString which =
        row == 255 ? u"1"_s
                   : u"rowid=(SELECT rowid FROM %1 ORDER BY rowid LIMIT 1 OFFSET "
                     "?2 % (SELECT max(1, count(*)) FROM %1))"_s.replace(u"%1"_s, table.name);
    if (kind == Deletion) {
        run(u"DELETE FROM "_s + table.name + u" WHERE "_s + which, {}, row);
        return;
    }
    const QVariant value = valueOf(kind, input);
    const QString right =
        kind == OtherRow
            ? u"(SELECT \"%1\" FROM %2 ORDER BY rowid DESC LIMIT 1)"_s.arg(column, table.name)
            : u"?1"_s;
    run(u"UPDATE OR IGNORE %1 SET \"%2\"=%3 WHERE "_s.arg(table.name, column, right) + which,
        value,
        row);
}

void RowChanges::run(const QString& sql, const QVariant& value, qint64 row)
{
    const QByteArray text = sql.toUtf8();
    try {
        SQLite::Statement statement(m_connection.database(), text.constData());
        Sql::bind(statement, 1, value);
        if (text.contains("?2")) {
            Sql::bind(statement, 2, row);
        }
        statement.exec();
    } catch (const SQLite::Exception&) {
        // Some columns take no such value.
    }
}
