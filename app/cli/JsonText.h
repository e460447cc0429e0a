#pragma once

#include <QByteArray>
#include <QJsonValue>

/// JSON as bytes that steer no terminal.
namespace JsonText
{

/// JSON with control characters and direction marks as \u escapes: a terminal that shows it is not
/// steered by them, and no reader loses them.
[[nodiscard]] QByteArray withoutSteering(const QByteArray& json);

/// The value alone, as it stands in any document.
[[nodiscard]] QByteArray of(const QJsonValue& value);

} // namespace JsonText
