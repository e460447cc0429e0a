#pragma once

#include "LibraryFacts.h"

#include <QPainterPath>
#include <QRectF>

class QFont;
class QPainter;
class QPalette;

/// The little marks of a photo's cell, in colours of the palette. Main thread.
namespace PhotoBadges
{

/// Paints the marks that the photo deserves in a row from the lower left corner of `area` on: RAW,
/// a tick for a converted original, two sheets for a copy made by the program, an exclamation mark
/// for a missing original. A row that is wider than the area lies across its middle.
void paint(QPainter& painter,
           const QRectF& area,
           const PhotoFacts& photo,
           const QFont& font,
           const QPalette& palette);

/// Stars in a row with its left end in the middle of `area`'s left side, as high as `area`.
void paintStars(QPainter& painter, const QRectF& area, int count, const QColor& color);

/// The width of a row of stars of that height.
[[nodiscard]] double starsWidth(int count, double height);

} // namespace PhotoBadges
