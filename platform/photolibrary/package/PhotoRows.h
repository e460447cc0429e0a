#pragma once

#include "Writer.h"

#include <QString>

#include <optional>

/// Changes to what the user sees of a photo, given by the id of its visible version. The version as
/// imported stays as it is. An id of no visible version changes nothing.
/// Errors: SQLite::Exception.
namespace PhotoRows
{

/// 0..5; other values become the nearest of these.
void setRating(Writer& writer, qint64 versionId, int rating);
/// The title; file names stay.
void setName(Writer& writer, qint64 versionId, const QString& name);
/// An empty text removes the comment.
void setComment(Writer& writer, qint64 versionId, const QString& comment);
/// Metres; nothing, or what is no number, removes it.
void setAltitude(Writer& writer, qint64 versionId, std::optional<double> metres);
/// Seconds since 2001-01-01T00:00:00 UTC and the name of the zone the photo shows them in; a photo
/// keeps its zone when the name is empty. Moves the photo within its event.
void setDate(Writer& writer, qint64 versionId, double date, const QString& zone);

/// The keyword of that name, whatever its case, made when there is none; returns its modelId.
qint64 defineKeyword(Writer& writer, const QString& name);
/// Defines the keyword where necessary; a photo has it once.
void assignKeyword(Writer& writer, qint64 versionId, const QString& name);

} // namespace PhotoRows
