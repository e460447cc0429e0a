#pragma once

#include <QByteArray>
#include <QDate>

/// What the built-in albums show, as the archived queries that the photo application keeps in their
/// rows. Any thread.
namespace AlbumQueries
{

/// The filter of every album: all but rejected photos are shown.
[[nodiscard]] QByteArray commonFilter();

/// Everything whatever its rating; albums over the whole library.
[[nodiscard]] QByteArray everything();
[[nodiscard]] QByteArray trash();
[[nodiscard]] QByteArray rejected();
[[nodiscard]] QByteArray flagged();
/// Photos with named faces.
[[nodiscard]] QByteArray people();
/// Photos with a position.
[[nodiscard]] QByteArray places();
/// The twelve months that end with `today`.
[[nodiscard]] QByteArray lastTwelveMonths(const QDate& today);

} // namespace AlbumQueries
