#include "QualityView.h"

#include "CorvaneAppDelegate.h"
#include "NumberValue.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// Steps of the slider from the lowest to the highest quality.
constexpr int kQualitySteps = 100;

double qualityAt(int step)
{
    return static_cast<double>(step) / kQualitySteps;
}

} // namespace

QualityView::QualityView(CorvaneAppDelegate& controller, QWidget* parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_slider(new QSlider(Qt::Horizontal, this))
    , m_number(new QLabel(this))
{
    makeSlider();
    makeNumber();
    auto* const title = new QLabel(tr("JPEG &quality:"), this);
    title->setBuddy(m_slider);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(title);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_number);

    follow(controller.compressionFactor());
    m_number->setText(controller.compressionFactorText());
    connect(&controller, &CorvaneAppDelegate::compressionFactorChanged, this, &QualityView::follow);
    connect(
        &controller, &CorvaneAppDelegate::compressionFactorTextChanged, m_number, &QLabel::setText);
}

void QualityView::makeSlider()
{
    m_slider->setObjectName(u"compressionFactor"_s);
    m_slider->setAccessibleName(tr("JPEG quality"));
    m_slider->setRange(0, kQualitySteps);
    m_slider->setPageStep(10);
    m_slider->setMinimumWidth(fontMetrics().averageCharWidth() * 20);
    // A drag is stored once, at its end: every change of the quality is written to disk.
    m_slider->setTracking(false);
    connect(m_slider, &QSlider::valueChanged, this, [this](int step) {
        m_controller.setCompressionFactor(qualityAt(step));
    });
    connect(m_slider, &QSlider::sliderMoved, this, [this](int step) {
        m_number->setText(NumberValue::withTwoDecimals(qualityAt(step)));
    });
    // Dragged back to where it was, the quality is as before.
    connect(m_slider, &QSlider::sliderReleased, this, [this] {
        m_number->setText(m_controller.compressionFactorText());
    });
}

void QualityView::makeNumber()
{
    m_number->setObjectName(u"compressionFactorText"_s);
    m_number->setAccessibleName(tr("JPEG quality as a number"));
    m_number->setTextFormat(Qt::PlainText);
    m_number->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_number->setMinimumWidth(fontMetrics().horizontalAdvance(u"0.00"_s));
}

void QualityView::follow(double quality)
{
    // Shown rounded, kept in full.
    const QSignalBlocker blocker(m_slider);
    m_slider->setValue(
        static_cast<int>(std::lround(std::clamp(quality, 0.0, 1.0) * kQualitySteps)));
}
