#include "ScanProgressView.h"

#include "CorvaneAppDelegate.h"
#include "ElidedLabel.h"

#include <QGridLayout>
#include <QProgressBar>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

int wholeNumber(double value)
{
    constexpr double kHighest = std::numeric_limits<int>::max();
    return value > 0.0 ? static_cast<int>(std::lround(std::min(value, kHighest))) : 0;
}

} // namespace

ScanProgressView::ScanProgressView(CorvaneAppDelegate& controller, QWidget* parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_bar(new QProgressBar(this))
{
    makeBar();
    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(makeLine(u"statusLabel"_s, tr("Status"), controller.statusLabel()), 0, 0);
    layout->addWidget(makeLine(u"countLabel"_s, tr("File"), controller.countLabel()), 0, 1);
    layout->addWidget(m_bar, 1, 0, 1, 2);
    layout->addWidget(makeRemainingTime(), 1, 2);
    auto* const title = new QLabel(tr("Time remaining:"), this);
    layout->addWidget(title, 0, 2);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 2);
}

void ScanProgressView::makeBar()
{
    m_bar->setObjectName(u"progressIndicator"_s);
    m_bar->setAccessibleName(tr("Progress"));
    const ProgressIndicator& indicator = m_controller.progressIndicator();
    const auto follow = [this] { followBar(); };
    // Written by the scan's thread: shown on this one, as it stands by then.
    connect(&indicator, &ProgressIndicator::maxValueChanged, this, follow);
    connect(&indicator, &ProgressIndicator::doubleValueChanged, this, follow);
    connect(&indicator, &ProgressIndicator::indeterminateChanged, this, follow);
    connect(&m_controller.selectionScanButton(), &Button::enabledChanged, this, follow);
    connect(&m_controller, &CorvaneAppDelegate::scanEnded, this, follow);
    followBar();
}

QLabel* ScanProgressView::makeLine(const QString& outlet, const QString& name, TextField& field)
{
    auto* const label = new ElidedLabel(this);
    label->setObjectName(outlet);
    label->setAccessibleDescription(name);
    label->setText(field.stringValue());
    connect(&field, &TextField::stringValueChanged, label, &QLabel::setText);
    return label;
}

QLabel* ScanProgressView::makeRemainingTime()
{
    auto* const label = new QLabel(m_controller.timeRemaining(), this);
    label->setObjectName(u"timeRemaining"_s);
    label->setAccessibleDescription(tr("Time remaining"));
    label->setTextFormat(Qt::PlainText);
    connect(&m_controller, &CorvaneAppDelegate::timeRemainingChanged, label, &QLabel::setText);
    return label;
}

void ScanProgressView::followBar()
{
    const ProgressIndicator& indicator = m_controller.progressIndicator();
    if (indicator.isIndeterminate() && m_controller.isScanning()) {
        m_bar->setRange(0, 0); // moves without an end
        return;
    }
    // A bar without a range would move as well.
    const int maximum = std::max(1, wholeNumber(indicator.maxValue()));
    const int value =
        indicator.isIndeterminate() ? 0 : std::min(maximum, wholeNumber(indicator.doubleValue()));
    m_bar->setRange(0, maximum);
    m_bar->setValue(value);
    m_bar->setFormat(value > 0 ? tr("%v of %m") : QString());
    m_bar->setTextVisible(value > 0);
}
