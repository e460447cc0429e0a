#pragma once

#include "Writer.h"

#include <QByteArray>
#include <QString>

/// The library's own settings and counters: values by area and name in RKAdminData.
namespace AdminData
{

/// How the application stores a value (column storedDataType).
inline constexpr int kString = 0;
inline constexpr int kInteger = 5;
inline constexpr int kBoolean = 7;
inline constexpr int kReal = 10;
inline constexpr int kDate = 15;
inline constexpr int kBlob = 20;

/// Null when there is no such value.
[[nodiscard]] QString text(Connection& connection, const QString& area, const QString& name);
[[nodiscard]] QByteArray blob(Connection& connection, const QString& area, const QString& name);

/// Replaces or adds a value. An existing row keeps its type. Values that outlive a rebuild of the
/// databases are told in DataModelVersion.plist, which then follows.
void setText(Writer& writer,
             const QString& area,
             const QString& name,
             const QString& value,
             int storedDataType);
void setBlob(Writer& writer, const QString& area, const QString& name, const QByteArray& value);

} // namespace AdminData
