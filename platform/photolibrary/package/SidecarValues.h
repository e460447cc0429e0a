#pragma once

#include "Queries.h"

#include <QString>
#include <QStringList>
#include <QVariant>

/// Values of the databases as sidecar property lists tell them: true and false for switches, dates
/// for times, no key for NULL. Any thread.
namespace SidecarValues
{

/// "version" of a sidecar, as iPhoto 9.6.1 writes it.
inline constexpr int kFormatVersion = 110;

/// The value of a database column as its sidecar holds it: by the column's name a boolean or a
/// date, otherwise as it is stored. A column of an unexpected type is told as it is.
[[nodiscard]] QVariant ofColumn(const QString& name, const QVariant& stored);

/// Sets a key, or removes it for a null value. A number that equals what is there already leaves
/// it as it is, be it written as an integer or as a real.
void mirror(QVariantMap& target, const QString& key, const QVariant& value);

/// mirror() of all columns of the current row but `omitted`.
void mirrorRow(QVariantMap& target, Sql::Query& row, const QStringList& omitted = {});

/// Sets an array of names whose order says nothing: one that holds the same names stays as it is.
void mirrorNames(QVariantMap& target, const QString& key, const QStringList& names);

/// Adds to `names` those of an old array of names that no row bears any more, of which a sidecar
/// may be the last to tell, and returns how many. `bearer` asks for the row that bears a name.
qsizetype
keepLost(QStringList& names, const QVariant& old, Connection& connection, const char* bearer);

/// An array of dictionaries, one a row, made anew.
[[nodiscard]] QVariantList rows(Sql::Query& query);

} // namespace SidecarValues
