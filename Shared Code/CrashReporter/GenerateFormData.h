#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

/// The body of a multipart/form-data request (RFC 7578), in the order of the dictionary, which
/// holds for each field
///   a QString                  sent as UTF-8 text,
///   a number or a boolean      sent as its decimal text ("1" and "0"),
///   a QUrl of a local file     sent as the file's bytes under its name, read right now; a file
///                              that cannot be read has none.
/// Anything else gives a part with neither headers nor content, and a line in the system log.
/// In a name of a field or file, which stands in a header line, a double quote and line ends are
/// escaped as browsers do, and what is not ASCII is UTF-8.
/// `formValues` and `boundary` (not null) are required. Any thread.
/// Errors: raises AssertionFailure where one is missing.
// The name by which it is known.
// NOLINTNEXTLINE(readability-identifier-naming)
[[nodiscard]] QByteArray GenerateFormData(const std::optional<QVariantMap>& formValues,
                                          const QString& boundary);
