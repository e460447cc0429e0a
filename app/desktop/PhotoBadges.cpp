#include "PhotoBadges.h"

#include "PhotoMarks.h"
#include "PhotoModel.h"

#include <QColor>
#include <QFontMetricsF>
#include <QList>
#include <QPainter>
#include <QPalette>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace
{

enum class Mark : quint8 { Raw, Converted, Processed, Missing };

QList<Mark> marksOf(const PhotoFacts& photo)
{
    QList<Mark> marks;
    if (photo.missing) {
        marks += Mark::Missing;
    }
    if (photo.raw) {
        marks += Mark::Raw;
    }
    if (PhotoMarks::isConvertedOriginal(photo.keywords)) {
        marks += Mark::Converted;
    }
    if (PhotoMarks::isProcessedCopy(photo.keywords)) {
        marks += Mark::Processed;
    }
    return marks;
}

QString rawText()
{
    return u"RAW"_s;
}

/// The measures of a row of marks.
struct Row {
    explicit Row(const QFont& font)
        : metrics(font)
        , height(std::ceil(metrics.height()))
        , gap(height / 5)
    {
    }

    [[nodiscard]] double widthOf(Mark mark) const
    {
        return mark == Mark::Raw ? std::ceil(metrics.horizontalAdvance(rawText()) + height / 2)
                                 : height;
    }

    /// With a gap at either end.
    [[nodiscard]] double widthOf(const QList<Mark>& marks) const
    {
        double width = gap;
        for (const Mark mark : marks) {
            width += widthOf(mark) + gap;
        }
        return width;
    }

    QFontMetricsF metrics;
    double height;
    double gap;
};

/// A line of the glyph in a square with sides of 1.
QPainterPath tick()
{
    QPainterPath path(QPointF(0.22, 0.55));
    path.lineTo(0.42, 0.75);
    path.lineTo(0.80, 0.28);
    return path;
}

QPainterPath twoSheets()
{
    QPainterPath path;
    path.addRect(QRectF(0.40, 0.36, 0.38, 0.44));
    path.moveTo(0.28, 0.62);
    path.lineTo(0.22, 0.62);
    path.lineTo(0.22, 0.20);
    path.lineTo(0.60, 0.20);
    path.lineTo(0.60, 0.24);
    return path;
}

QPainterPath exclamationMark()
{
    QPainterPath path(QPointF(0.5, 0.20));
    path.lineTo(0.5, 0.56);
    path.moveTo(0.5, 0.79);
    path.lineTo(0.5, 0.80);
    return path;
}

void paintGlyph(QPainter& painter, const QRectF& square, Mark mark, const QColor& color)
{
    const QPainterPath path = mark == Mark::Converted   ? tick()
                              : mark == Mark::Processed ? twoSheets()
                                                        : exclamationMark();
    const double thickness = mark == Mark::Processed ? 0.09 : 0.14;
    painter.save();
    painter.translate(square.topLeft());
    painter.scale(square.width(), square.height());
    painter.setPen(QPen(color, thickness, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
    painter.restore();
}

QPainterPath star(const QRectF& square)
{
    constexpr int kPoints = 5;
    constexpr double kInner = 0.45; // radius of the notches, of that of the points
    QPainterPath path;
    const QPointF centre = square.center();
    const double radius = square.width() / 2;
    for (int i = 0; i < 2 * kPoints; ++i) {
        const double angle = std::numbers::pi * (static_cast<double>(i) / kPoints - 0.5);
        const double length = i % 2 == 0 ? radius : radius * kInner;
        const QPointF point(centre.x() + length * std::cos(angle),
                            centre.y() + length * std::sin(angle));
        if (i == 0) {
            path.moveTo(point);
        } else {
            path.lineTo(point);
        }
    }
    path.closeSubpath();
    return path;
}

} // namespace

void PhotoBadges::paint(QPainter& painter,
                        const QRectF& area,
                        const PhotoFacts& photo,
                        const QFont& font,
                        const QPalette& palette)
{
    const QList<Mark> marks = marksOf(photo);
    const Row row(font);
    const double excess = std::max(0.0, row.widthOf(marks) - area.width());
    double left = area.left() - excess / 2 + row.gap;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font);
    for (const Mark mark : marks) {
        const QRectF badge(
            left, area.bottom() - row.gap - row.height, row.widthOf(mark), row.height);
        // What is wrong stands out from what is merely so.
        const bool alarm = mark == Mark::Missing;
        QColor ground = palette.color(alarm ? QPalette::WindowText : QPalette::Window);
        const QColor ink = palette.color(alarm ? QPalette::Window : QPalette::WindowText);
        ground.setAlphaF(0.85F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.drawRoundedRect(badge, row.height / 4, row.height / 4);
        if (mark == Mark::Raw) {
            painter.setPen(ink);
            painter.drawText(badge, Qt::AlignCenter | Qt::TextSingleLine, rawText());
        } else {
            paintGlyph(painter, badge, mark, ink);
        }
        left += badge.width() + row.gap;
    }
    painter.restore();
}

double PhotoBadges::starsWidth(int count, double height)
{
    return count * height;
}

void PhotoBadges::paintStars(QPainter& painter, const QRectF& area, int count, const QColor& color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const double side = area.height();
    for (int i = 0; i < count; ++i) {
        painter.drawPath(star(QRectF(area.left() + i * side, area.top(), side, side)));
    }
    painter.restore();
}
