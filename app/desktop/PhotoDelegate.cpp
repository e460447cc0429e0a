#include "PhotoDelegate.h"

#include "PhotoBadges.h"
#include "PhotoFilter.h"
#include "PhotoModel.h"
#include "PhotoTexts.h"
#include "ThumbnailStore.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace
{

QFont smallFont(QFont font)
{
    constexpr double kSmaller = 0.85;
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * kSmaller);
    } else {
        font.setPixelSize(std::max(1, qRound(font.pixelSize() * kSmaller)));
    }
    return font;
}

/// Where the parts of a cell lie.
struct CellLayout {
    CellLayout(const QRect& cell, const QFont& font)
        : small(smallFont(font))
    {
        const QFontMetrics metrics(font);
        const int titleHeight = metrics.height();
        const int factsHeight = QFontMetrics(small).height();
        const int margin = marginOf(font);
        const QRect inner = cell.adjusted(2 * margin, 2 * margin, -2 * margin, -2 * margin);
        facts = QRect(inner.left(), inner.bottom() + 1 - factsHeight, inner.width(), factsHeight);
        title = QRect(inner.left(), facts.top() - titleHeight, inner.width(), titleHeight);
        picture = QRect(inner.topLeft(), QPoint(inner.right(), title.top() - margin - 1));
        ground = cell.adjusted(margin / 2, margin / 2, -margin / 2, -margin / 2);
    }

    static int marginOf(const QFont& font) { return std::max(2, QFontMetrics(font).height() / 4); }

    /// The size of a cell whose thumbnail is a square of that side.
    static QSize sizeFor(int edge, const QFont& font)
    {
        const int margin = marginOf(font);
        const int texts =
            QFontMetrics(font).height() + QFontMetrics(smallFont(font)).height() + margin;
        return {edge + 4 * margin, edge + 4 * margin + texts};
    }

    QFont small; ///< of the facts and badges
    QRect ground;
    QRect picture;
    QRect title;
    QRect facts;
};

QPalette::ColorGroup groupOf(const QStyleOptionViewItem& option)
{
    if (!option.state.testFlag(QStyle::State_Enabled)) {
        return QPalette::Disabled;
    }
    return option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

QColor withAlpha(QColor color, float alpha)
{
    color.setAlphaF(alpha);
    return color;
}

void paintGround(QPainter& painter,
                 const QRect& ground,
                 const QStyleOptionViewItem& option,
                 const QPalette& palette)
{
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const bool focused = option.state.testFlag(QStyle::State_HasFocus);
    if (!selected && !focused) {
        return;
    }
    const double line = std::max(1.5, CellLayout::marginOf(option.font) / 2.5);
    const QRectF rectangle = QRectF(ground).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    painter.setPen(focused ? QPen(palette.color(QPalette::Text), line) : QPen(Qt::NoPen));
    painter.setBrush(selected ? palette.brush(QPalette::Highlight) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(rectangle, 2 * line, 2 * line);
}

/// A rectangle of the given proportions in the middle of `area`, on whole device pixels, no larger
/// than `edge` either way.
QRectF fittedInto(const QRect& area, QSizeF proportions, int edge, double ratio)
{
    const QSizeF room(std::min(area.width(), edge), std::min(area.height(), edge));
    const QSizeF size =
        (proportions.isEmpty() ? QSizeF(1, 1) : proportions).scaled(room, Qt::KeepAspectRatio);
    const auto onPixel = [ratio](double value) { return std::round(value * ratio) / ratio; };
    const QSizeF whole(onPixel(size.width()), onPixel(size.height()));
    const QPointF middle = QRectF(area).center();
    return {
        QPointF(onPixel(middle.x() - whole.width() / 2), onPixel(middle.y() - whole.height() / 2)),
        whole};
}

/// A small picture is not blown up beyond its pixels, taken as logical ones.
QRectF placeOf(const QImage& image, const QRect& area, int edge, double ratio)
{
    const int longest = std::max(image.width(), image.height());
    return fittedInto(area, image.size(), std::min(edge, longest), ratio);
}

void paintPlaceholder(QPainter& painter,
                      const QRectF& place,
                      const QString& text,
                      const QFont& font,
                      const QColor& ink)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(withAlpha(ink, 0.08F));
    painter.drawRoundedRect(place, 4, 4);
    if (!text.isEmpty()) {
        painter.setFont(font);
        painter.setPen(withAlpha(ink, 0.7F));
        painter.drawText(place, Qt::AlignCenter | Qt::TextWordWrap, text);
    }
}

void paintTitle(QPainter& painter,
                const QRect& area,
                const PhotoFacts& photo,
                const QFont& font,
                const QColor& ink)
{
    const QString title = PhotoTexts::oneLine(PhotoModel::titleOf(photo));
    // The end of a file name tells more than its middle.
    const Qt::TextElideMode elide = photo.name.isEmpty() ? Qt::ElideMiddle : Qt::ElideRight;
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(area,
                     Qt::AlignCenter | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(title, elide, area.width()));
}

/// Size and stars together in the middle; the size gives way where there is no room.
void paintFacts(QPainter& painter,
                const QRect& area,
                const PhotoFacts& photo,
                const QFont& font,
                const QColor& ink)
{
    const QFontMetrics metrics(font);
    const int rating = std::clamp(photo.rating, 0, 5);
    const double starHeight = metrics.ascent() * 0.9;
    const double stars = PhotoBadges::starsWidth(rating, starHeight);
    const double gap = rating > 0 ? metrics.height() / 2.0 : 0;
    const QString text = metrics.elidedText(photo.missing ? PhotoDelegate::tr("missing")
                                                          : PhotoTexts::size(photo.bytes),
                                            Qt::ElideRight,
                                            static_cast<int>(area.width() - stars - gap));
    const double textWidth = metrics.horizontalAdvance(text);
    const double left = area.left() + (area.width() - textWidth - gap - stars) / 2;
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(QRectF(left, area.top(), textWidth + 1, area.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     text);
    PhotoBadges::paintStars(painter,
                            QRectF(left + textWidth + gap,
                                   area.top() + (area.height() - starHeight) / 2,
                                   stars,
                                   starHeight),
                            rating,
                            ink);
}

} // namespace

PhotoDelegate::PhotoDelegate(const ThumbnailStore& thumbnails, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_thumbnails(thumbnails)
{
}

void PhotoDelegate::setEdge(int pixels)
{
    m_edge = pixels;
}

void PhotoDelegate::setMinimumWidth(int pixels)
{
    m_minimumWidth = pixels;
}

void PhotoDelegate::paint(QPainter* painter,
                          const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    const auto* const photos = qobject_cast<const PhotoFilter*>(index.model());
    if (photos == nullptr) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const PhotoFacts& photo = photos->photo(index);
    const CellLayout cell(option.rect, option.font);
    QPalette palette = option.palette;
    palette.setCurrentColorGroup(groupOf(option));
    const QColor ink = palette.color(
        option.state.testFlag(QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text);
    const double ratio = painter->device()->devicePixelRatioF();
    const QString path = index.data(PhotoModel::ThumbnailPathRole).toString();
    const QImage image = m_thumbnails.thumbnail(path);

    painter->save();
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    paintGround(*painter, cell.ground, option, palette);
    QRectF place;
    if (image.isNull()) {
        place = fittedInto(cell.picture, QSizeF(photo.width, photo.height), m_edge, ratio);
        paintPlaceholder(*painter,
                         place,
                         m_thumbnails.hasFailed(path) ? tr("No picture") : QString(),
                         cell.small,
                         ink);
    } else {
        place = placeOf(image, cell.picture, m_edge, ratio);
        painter->drawImage(place, image);
    }
    PhotoBadges::paint(*painter, place, photo, cell.small, palette);
    paintTitle(*painter, cell.title, photo, option.font, ink);
    paintFacts(*painter, cell.facts, photo, cell.small, ink);
    painter->restore();
}

QSize PhotoDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return CellLayout::sizeFor(m_edge, option.font).expandedTo(QSize(m_minimumWidth, 0));
}
