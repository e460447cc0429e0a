#include "PhotoViewer.h"

#include "PhotoModel.h"
#include "PhotoTexts.h"
#include "Texts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// The files to try, the best first: the rendered preview, else a master that is a plain picture.
QStringList filesOf(const PhotoFacts& photo)
{
    QStringList files;
    if (!photo.previewPath.isEmpty()) {
        files += photo.previewPath;
    }
    if (!photo.raw && !photo.movie && !photo.originalPath.isEmpty()) {
        files += photo.originalPath;
    }
    return files;
}

/// Why a photo has no file that could be shown.
QString whyNoFile(const PhotoFacts& photo)
{
    if (photo.originalPath.isEmpty() && !photo.volume.isEmpty()) {
        return PhotoViewer::tr(
                   "The original lies on the disk “%1” of the Mac, which is not at hand.")
            .arg(photo.volume);
    }
    if (photo.originalPath.isEmpty()) {
        return Texts::fileMissing(QString());
    }
    return photo.movie ? PhotoViewer::tr("This is a movie; it cannot be played here:\n%1")
                             .arg(photo.originalPath)
                       : PhotoViewer::tr("The library has no preview of this RAW photo:\n%1")
                             .arg(photo.originalPath);
}

/// A grey from the palette's darker end, and its lighter end upon it.
QPalette darkened(QPalette palette)
{
    constexpr int kDarkest = 24;
    constexpr int kLightest = 48;
    const auto order = [](const QColor& one, const QColor& other) {
        return one.lightness() < other.lightness();
    };
    const auto [dark, light] =
        std::minmax(palette.color(QPalette::Window), palette.color(QPalette::WindowText), order);
    const int grey = std::clamp(dark.lightness(), kDarkest, kLightest);
    const QColor ground(grey, grey, grey);
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Button}) {
        palette.setColor(role, ground);
    }
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, light);
    }
    return palette;
}

} // namespace

PhotoViewer::PhotoViewer(PhotoFilter& photos, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_photos(photos)
{
    setObjectName(u"photoViewer"_s);
    setFocusPolicy(Qt::StrongFocus);
    build();
    darken();
    m_resizeTimer.setSingleShot(true);
    m_resizeTimer.setInterval(100ms);
    connect(&m_resizeTimer, &QTimer::timeout, this, &PhotoViewer::load);
    connect(&m_loader, &PictureLoader::loaded, this, &PhotoViewer::showImage);
    connect(&m_loader, &PictureLoader::failed, this, &PhotoViewer::showReason);
    connect(&m_photos, &QAbstractItemModel::rowsRemoved, this, &PhotoViewer::photosChanged);
    connect(&m_photos, &QAbstractItemModel::rowsInserted, this, &PhotoViewer::photosChanged);
    connect(&m_photos, &QAbstractItemModel::layoutChanged, this, &PhotoViewer::photosChanged);
    connect(&m_photos, &QAbstractItemModel::modelReset, this, &PhotoViewer::photosReplaced);
}

void PhotoViewer::build()
{
    m_picture = new QLabel(this);
    m_picture->setObjectName(u"picture"_s);
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setWordWrap(true);
    m_picture->setTextFormat(Qt::PlainText);
    m_picture->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_picture->setFocusPolicy(Qt::NoFocus); // the keys are the window's
    m_picture->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);

    m_previous = makeButton(tr("&Previous"), Qt::LeftArrow);
    m_previous->setObjectName(u"previousButton"_s);
    m_next = makeButton(tr("&Next"), Qt::RightArrow);
    m_next->setObjectName(u"nextButton"_s);
    connect(m_previous, &QToolButton::clicked, this, &PhotoViewer::showPrevious);
    connect(m_next, &QToolButton::clicked, this, &PhotoViewer::showNext);
    m_caption = new QLabel(this);
    m_caption->setObjectName(u"caption"_s);
    m_caption->setAlignment(Qt::AlignCenter);
    m_caption->setTextFormat(Qt::PlainText);
    m_caption->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto* bar = new QHBoxLayout;
    bar->addWidget(m_previous);
    bar->addWidget(m_caption, 1);
    bar->addWidget(m_next);
    auto* column = new QVBoxLayout(this);
    column->addWidget(m_picture, 1);
    column->addLayout(bar);
    resize(fontMetrics().averageCharWidth() * 120, fontMetrics().height() * 42);
}

QToolButton* PhotoViewer::makeButton(const QString& text, Qt::ArrowType arrow)
{
    auto* button = new QToolButton(this);
    button->setArrowType(arrow);
    button->setAutoRaise(true);
    button->setText(text);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAccessibleName(QString(text).remove(u'&'));
    button->setFocusPolicy(Qt::NoFocus); // Space closes the window; the arrow keys do the same
    return button;
}

void PhotoViewer::darken()
{
    // Starts from the program's palette, so that a change of it is followed.
    setPalette(darkened(QPalette()));
}

void PhotoViewer::showPhoto(const QModelIndex& index)
{
    m_photo = index;
    m_photoId = index.data(PhotoModel::IdRole).toLongLong();
    m_picture->clear();
    updateNames();
    load();
    emit photoShown(index);
}

void PhotoViewer::updateNames()
{
    m_previous->setEnabled(m_photo.isValid() && m_photo.row() > 0);
    m_next->setEnabled(m_photo.isValid() && m_photo.row() + 1 < m_photos.rowCount());
    if (!m_photo.isValid()) {
        return;
    }
    const QString title = PhotoTexts::oneLine(PhotoModel::titleOf(m_photos.photo(m_photo)));
    const QLocale locale;
    setWindowTitle(title);
    m_picture->setAccessibleName(title);
    m_caption->setText(
        tr("%1 — %2 of %3")
            .arg(title, locale.toString(m_photo.row() + 1), locale.toString(m_photos.rowCount())));
}

void PhotoViewer::load()
{
    if (!m_photo.isValid() || !isVisible()) {
        return;
    }
    const PhotoFacts& photo = m_photos.photo(m_photo);
    const QStringList files = filesOf(photo);
    if (files.isEmpty()) {
        m_loader.cancel();
        showReason(whyNoFile(photo));
        return;
    }
    if (m_picture->pixmap().isNull() && m_picture->text().isEmpty()) {
        m_picture->setText(tr("Loading…"));
    }
    m_loader.load(files, (QSizeF(m_picture->size()) * devicePixelRatioF()).toSize());
}

void PhotoViewer::showImage(const QImage& image)
{
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    m_picture->setPixmap(pixmap);
}

void PhotoViewer::showReason(const QString& reason)
{
    m_picture->setText(reason);
}

void PhotoViewer::photosChanged()
{
    if (m_photo.isValid()) {
        updateNames();
    } else {
        close(); // the photo is no longer among those to be seen
    }
}

/// Rows mean nothing after that; its files may be others than before.
void PhotoViewer::photosReplaced()
{
    const auto* const model = static_cast<const PhotoModel*>(m_photos.sourceModel());
    m_photo = m_photos.mapFromSource(model->indexOf(m_photoId));
    photosChanged();
    load();
}

void PhotoViewer::go(int rows)
{
    if (!m_photo.isValid()) {
        return;
    }
    const QModelIndex neighbour = m_photos.index(m_photo.row() + rows, 0);
    if (neighbour.isValid()) {
        showPhoto(neighbour);
    }
}

void PhotoViewer::showNext()
{
    go(1);
}

void PhotoViewer::showPrevious()
{
    go(-1);
}

void PhotoViewer::keyPressEvent(QKeyEvent* event)
{
    const int forward = isRightToLeft() ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Right:
        go(forward);
        break;
    case Qt::Key_Left:
        go(-forward);
        break;
    case Qt::Key_Down:
    case Qt::Key_PageDown:
        showNext();
        break;
    case Qt::Key_Up:
    case Qt::Key_PageUp:
        showPrevious();
        break;
    case Qt::Key_Escape:
    case Qt::Key_Space:
        close();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PhotoViewer::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_resizeTimer.start();
}

void PhotoViewer::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    load();
}

void PhotoViewer::closeEvent(QCloseEvent* event)
{
    m_loader.cancel();
    QWidget::closeEvent(event);
}

void PhotoViewer::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ApplicationPaletteChange) {
        darken();
    }
}
