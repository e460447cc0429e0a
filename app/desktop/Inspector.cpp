#include "Inspector.h"

#include "PhotoModel.h"
#include "PhotoTexts.h"

#include <QEvent>
#include <QLocale>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// Facts one below the other, each with its name above it.
class FactSheet final
{
public:
    explicit FactSheet(const QPalette& palette)
        : m_nameColor(blended(palette).name())
    {
    }

    void addTitle(const QString& title)
    {
        m_html += u"<h3 style='margin:0px 0px 8px 0px'>"_s + title.toHtmlEscaped() + u"</h3>"_s;
    }

    /// Nothing where there is no value.
    void add(const QString& name, const QString& value)
    {
        if (value.isEmpty()) {
            return;
        }
        m_html +=
            u"<p style='margin:0px 0px 8px 0px'><small style='color:%1'>%2</small><br>%3</p>"_s.arg(
                m_nameColor, name.toHtmlEscaped(), lines(value));
    }

    /// Nothing where there are none.
    void addCount(const QString& name, int count)
    {
        if (count > 0) {
            add(name, QLocale().toString(count));
        }
    }

    [[nodiscard]] QString html() const { return m_html; }

private:
    /// The text's colour made fainter, and still readable.
    static QColor blended(const QPalette& palette)
    {
        const QColor ink = palette.color(QPalette::WindowText);
        const QColor ground = palette.color(QPalette::Window);
        constexpr double kInk = 0.68;
        const auto mix = [](int one, int other) {
            return static_cast<int>(std::lround(one * kInk + other * (1 - kInk)));
        };
        return {mix(ink.red(), ground.red()),
                mix(ink.green(), ground.green()),
                mix(ink.blue(), ground.blue())};
    }

    /// Line ends as any system writes them.
    static QString lines(const QString& text)
    {
        QString html = text.toHtmlEscaped();
        html.replace(u"\r\n"_s, u"<br>"_s).replace(u'\r', u"<br>"_s).replace(u'\n', u"<br>"_s);
        return html;
    }

    QString m_nameColor;
    QString m_html;
};

QString pixelsOf(const PhotoFacts& photo)
{
    if (photo.width <= 0 || photo.height <= 0) {
        return {};
    }
    const double megapixels = static_cast<double>(photo.width) * photo.height / 1e6;
    return Inspector::tr("%1 × %2 (%3 MP)")
        .arg(photo.width)
        .arg(photo.height)
        .arg(QLocale().toString(megapixels, 'f', 1));
}

QString sizeOf(qint64 bytes)
{
    return Inspector::tr("%1 (%2 bytes)").arg(PhotoTexts::size(bytes), QLocale().toString(bytes));
}

QString degrees(double value, const QString& positive, const QString& negative)
{
    constexpr int kDecimals = 5; // a metre
    return QLocale().toString(std::abs(value), 'f', kDecimals) + u"° "_s +
           (value < 0 ? negative : positive);
}

QString positionOf(const PhotoFacts& photo)
{
    if (!photo.latitude.has_value() || !photo.longitude.has_value()) {
        return {};
    }
    return degrees(*photo.latitude, Inspector::tr("N"), Inspector::tr("S")) + u", "_s +
           degrees(*photo.longitude, Inspector::tr("E"), Inspector::tr("W"));
}

QString altitudeOf(const PhotoFacts& photo)
{
    return photo.altitude.has_value()
               ? Inspector::tr("%1 m").arg(QLocale().toString(*photo.altitude, 'f', 0))
               : QString();
}

QString stateOf(const PhotoFacts& photo)
{
    QStringList words;
    const auto add = [&words](bool holds, const QString& word) {
        if (holds) {
            words += word;
        }
    };
    add(photo.missing, Inspector::tr("original missing"));
    add(photo.raw, Inspector::tr("RAW"));
    add(photo.movie, Inspector::tr("movie"));
    add(photo.edited, Inspector::tr("edited"));
    add(photo.rotated, Inspector::tr("rotated"));
    add(photo.hidden, Inspector::tr("hidden"));
    return words.join(u", "_s);
}

QString dateOf(const PhotoFacts& photo)
{
    return photo.wallClock().replace(u'T', u' ');
}

QString textOf(const PhotoFacts& photo, const QPalette& palette)
{
    FactSheet sheet(palette);
    sheet.addTitle(PhotoTexts::oneLine(PhotoModel::titleOf(photo)));
    sheet.add(Inspector::tr("File name"), photo.fileName);
    sheet.add(Inspector::tr("Event"), photo.rollName);
    sheet.add(Inspector::tr("Date"), dateOf(photo));
    sheet.add(Inspector::tr("State"), stateOf(photo));
    sheet.add(Inspector::tr("Pixels"), pixelsOf(photo));
    sheet.add(Inspector::tr("Size of the original"),
              photo.missing ? Inspector::tr("missing") : sizeOf(photo.bytes));
    sheet.add(Inspector::tr("Rating"),
              photo.rating > 0 ? Inspector::tr("%1 of 5").arg(photo.rating)
                               : Inspector::tr("none"));
    sheet.add(Inspector::tr("Comment"), photo.comment);
    sheet.add(Inspector::tr("Keywords"), photo.keywords.join(u'\n'));
    sheet.add(Inspector::tr("Albums"), photo.albums.join(u'\n'));
    sheet.add(Inspector::tr("Position"), positionOf(photo));
    sheet.add(Inspector::tr("Altitude"), altitudeOf(photo));
    sheet.add(Inspector::tr("Original"), photo.originalPath);
    sheet.add(Inspector::tr("Preview"), photo.previewPath);
    sheet.add(Inspector::tr("Thumbnail"), photo.thumbnailPath);
    return sheet.html();
}

QString textOf(const PhotoFigures& figures, const QPalette& palette)
{
    FactSheet sheet(palette);
    sheet.addTitle(Inspector::tr("%1 photos").arg(QLocale().toString(figures.photos)));
    sheet.add(Inspector::tr("Size of the originals"), sizeOf(figures.bytes));
    sheet.addCount(Inspector::tr("RAW"), figures.raw);
    sheet.addCount(Inspector::tr("Converted before"), figures.converted);
    sheet.addCount(Inspector::tr("Copies made by Corvane"), figures.processed);
    sheet.addCount(Inspector::tr("Original missing"), figures.missing);
    sheet.addCount(Inspector::tr("Edited"), figures.edited);
    sheet.addCount(Inspector::tr("Movies"), figures.movies);
    return sheet.html();
}

} // namespace

Inspector::Inspector(QWidget* parent)
    : QTextBrowser(parent)
{
    setObjectName(u"inspector"_s);
    setAccessibleName(tr("Information"));
    setAccessibleDescription(tr("What the library knows of the selected photos"));
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setOpenLinks(false);
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A panel of the window rather than a field in it.
    setFrameShape(QFrame::NoFrame);
    viewport()->setBackgroundRole(QPalette::Window);
    document()->setDocumentMargin(fontMetrics().height() / 2.0);
    showNothing();
}

void Inspector::showNothing()
{
    tell([this] {
        FactSheet sheet(palette());
        sheet.addTitle(tr("No photo selected"));
        return sheet.html();
    });
}

void Inspector::showPhoto(const PhotoFacts& photo)
{
    tell([this, photo] { return textOf(photo, palette()); });
}

void Inspector::showFigures(const PhotoFigures& figures)
{
    tell([this, figures] { return textOf(figures, palette()); });
}

void Inspector::tell(std::function<QString()> text)
{
    m_text = std::move(text);
    setHtml(m_text());
}

QSize Inspector::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 34, fontMetrics().height() * 20};
}

QSize Inspector::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 16, fontMetrics().height() * 4};
}

void Inspector::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_text) {
        const int position = verticalScrollBar()->value();
        setHtml(m_text());
        verticalScrollBar()->setValue(position);
    }
}
