#include "CorvaneWindow.h"

#include "CorvaneAppDelegate.h"
#include "FixedSizeSheet.h"
#include "ForecastLabel.h"
#include "OutputSizeView.h"
#include "QualityView.h"
#include "ScanClosingView.h"
#include "ScanProgressView.h"
#include "SwitchRow.h"
#include "Texts.h"
#include "UserDefaults.h"

#include <QCloseEvent>
#include <QGroupBox>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CorvaneWindow::CorvaneWindow(CorvaneAppDelegate& controller,
                             UserDefaults& defaults,
                             QWidget* parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_defaults(defaults)
    , m_fixedSizeSheet(new FixedSizeSheet(controller, this))
    , m_forecast(new ForecastLabel)
    , m_scanClosing(new ScanClosingView(this))
{
    setObjectName(u"window"_s);
    setWindowTitle(tr("Corvane For iPhoto"));
    if (controller.statusLabel().stringValue().isNull()) {
        controller.statusLabel().setStringValue(Texts::ready());
    }
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(makeSelectionRow());
    auto* const boxes = new QHBoxLayout;
    QWidget* const picture = makePictureBox();
    QWidget* const switches = makeSwitchBox();
    // Where room is short the lists beneath scroll; settings cannot.
    for (QWidget* const box : {picture, switches}) {
        box->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    }
    boxes->addWidget(picture, 2);
    boxes->addWidget(switches, 3);
    layout->addLayout(boxes);
    layout->addWidget(makeForecastBox(), 1);
    layout->addWidget(new ScanProgressView(controller, this));
    layout->addWidget(m_scanClosing, 1);
    layout->addLayout(makeButtons());
    watchSettings();
    updateForecast();
    // Room for a forecast of common length.
    resize(minimumSizeHint() + QSize(0, fontMetrics().lineSpacing() * 7));
}

void CorvaneWindow::setSelectionFacts(const ForecastSelection& selection)
{
    m_selection = selection;
    updateForecast();
}

void CorvaneWindow::updateForecast()
{
    m_forecast->setLines(PressForecast::lines(
        {.selection = m_selection, .settings = settings(), .scanning = m_controller.isScanning()}));
}

void CorvaneWindow::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        m_controller.applicationDidBecomeActive();
    }
}

void CorvaneWindow::closeEvent(QCloseEvent* event)
{
    event->setAccepted(!m_mayClose || m_mayClose());
}

QLayout* CorvaneWindow::makeSelectionRow()
{
    auto* const row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Selected photos:"), this));
    auto* const label = new QLabel(m_controller.selectedLabel().stringValue(), this);
    label->setObjectName(u"selectedLabel"_s);
    label->setAccessibleDescription(tr("Selected photos"));
    label->setTextFormat(Qt::PlainText);
    connect(&m_controller.selectedLabel(), &TextField::stringValueChanged, label, &QLabel::setText);
    row->addWidget(label, 1);
    return row;
}

QWidget* CorvaneWindow::makePictureBox()
{
    auto* const box = new QGroupBox(tr("Output"), this);
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(new QualityView(m_controller, box));
    layout->addWidget(new OutputSizeView(m_controller.outputSizeMatrix(), box));
    layout->addStretch(1);
    return box;
}

QWidget* CorvaneWindow::makeSwitchBox()
{
    auto* const box = new QGroupBox(tr("Photos"), this);
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(new SwitchRow(
        m_defaults,
        u"AlbumEnabled"_s,
        {tr("File by &event"), tr("Copies go into one album per event; asks for the library.")},
        box));
    layout->addWidget(new SwitchRow(
        m_defaults,
        u"TagEnabled"_s,
        {tr("&Tag with keywords"), tr("Marks originals and copies to tell them apart.")},
        box));
    layout->addWidget(new SwitchRow(
        m_defaults,
        u"TrashEnabled"_s,
        {tr("Remo&ve originals"), tr("Moves each converted original to the library's trash.")},
        box));
    layout->addWidget(
        new SwitchRow(m_defaults,
                      u"ProcessingOption"_s,
                      {tr("Convert &original files"),
                       tr("Off: converts each picture as iPhoto shows it, with edits.")},
                      box));
    layout->addStretch(1);
    return box;
}

QWidget* CorvaneWindow::makeForecastBox()
{
    auto* const box = new QGroupBox(tr("What the next press does"), this);
    auto* const area = new QScrollArea(box);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setMinimumHeight(fontMetrics().lineSpacing() * 5);
    area->setAccessibleName(box->title());
    m_forecast->setObjectName(u"pressForecast"_s);
    area->setWidget(m_forecast);
    // The ground is the box's own.
    area->viewport()->setAutoFillBackground(false);
    m_forecast->setAutoFillBackground(false);
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(area);
    return box;
}

QLayout* CorvaneWindow::makeButtons()
{
    auto* const row = new QHBoxLayout;
    connect(addButton(row, u"moreInfoButton"_s, tr("More &Info")),
            &QPushButton::clicked,
            &m_controller,
            [this] { m_controller.moreInfoButton(this); });
    connect(addButton(row, u"techSupport"_s, tr("&Support")),
            &QPushButton::clicked,
            &m_controller,
            [this] { m_controller.techSupport(this); });
    row->addStretch(1);
    QPushButton* const scan = addButton(row, u"selectionScanButton"_s, tr("&Convert to JPEG"));
    const Button& state = m_controller.selectionScanButton();
    scan->setEnabled(state.isEnabled());
    connect(&state, &Button::enabledChanged, scan, &QWidget::setEnabled);
    connect(scan, &QPushButton::clicked, &m_controller, [this, scan] {
        emit scanRequested();
        m_controller.selectionScan(scan);
        updateForecast();
    });
    return row;
}

QPushButton*
CorvaneWindow::addButton(QBoxLayout* layout, const QString& outlet, const QString& title)
{
    auto* const button = new QPushButton(title, this);
    button->setObjectName(outlet);
    button->setAccessibleName(QString(title).remove(u'&'));
    layout->addWidget(button);
    return button;
}

void CorvaneWindow::watchSettings()
{
    const auto update = [this] { updateForecast(); };
    using Controller = CorvaneAppDelegate;
    connect(&m_defaults, &UserDefaults::valueChanged, this, update);
    connect(&m_controller, &Controller::compressionFactorChanged, this, update);
    connect(&m_controller, &Controller::scaleFactorChanged, this, update);
    connect(&m_controller, &Controller::fixedSizeChanged, this, update);
    connect(&m_controller, &Controller::longSizeChanged, this, update);
    connect(&m_controller, &Controller::shortSizeChanged, this, update);
    connect(&m_controller, &Controller::longLockedChanged, this, update);
    connect(&m_controller, &Controller::shortLockedChanged, this, update);
    connect(&m_controller, &Controller::scanEnded, this, update);
    connect(&m_controller.selectionScanButton(), &Button::enabledChanged, this, update);
}

ForecastSettings CorvaneWindow::settings() const
{
    return {.albumEnabled = m_defaults.boolValue(u"AlbumEnabled"_s),
            .libraryKnown = m_controller.theLibrary().has_value(),
            .tagEnabled = m_defaults.boolValue(u"TagEnabled"_s),
            .trashEnabled = m_defaults.boolValue(u"TrashEnabled"_s),
            .processingOption = m_defaults.boolValue(u"ProcessingOption"_s),
            .outputSize = OutputSize::of(m_controller),
            .quality = m_controller.compressionFactor()};
}
