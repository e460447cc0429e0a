#include "FixedSizeSheet.h"

#include "CorvaneAppDelegate.h"
#include "NumberValue.h"
#include "SmallText.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// The longest side that can be typed, in pixels.
constexpr int kLongestSide = 100000;

} // namespace

FixedSizeSheet::FixedSizeSheet(CorvaneAppDelegate& controller, QWidget* parent)
    : QDialog(parent)
    , m_controller(controller)
{
    setObjectName(u"fixedSizePanel"_s);
    setWindowTitle(tr("Fixed Size"));
    setWindowModality(Qt::WindowModal);
    auto* const grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    m_long = addSide(grid, tr("&Long side at most"), tr("Long side in pixels"));
    m_long.lock->setObjectName(u"longLocked"_s);
    m_long.field->setObjectName(u"fixedLengthTextField"_s);
    m_short = addSide(grid, tr("&Short side at most"), tr("Short side in pixels"));
    m_short.lock->setObjectName(u"shortLocked"_s);
    m_short.field->setObjectName(u"fixedWidthTextField"_s);
    addButton(grid);
    bindLongSide();
    bindShortSide();
}

void FixedSizeSheet::begin()
{
    open();
    raise();
    activateWindow();
}

void FixedSizeSheet::end()
{
    QDialog::done(0);
}

void FixedSizeSheet::commitEditing()
{
    for (Side* const side : {&m_short, &m_long}) {
        side->field->interpretText();
        commitTyped(*side);
    }
}

void FixedSizeSheet::reject()
{
    m_controller.dismissFixedSizePanel(this);
}

FixedSizeSheet::Side
FixedSizeSheet::addSide(QGridLayout* grid, const QString& title, const QString& name)
{
    Side side{new QCheckBox(title, this), new QSpinBox(this)};
    side.lock->setAccessibleName(QString(title).remove(u'&'));
    side.field->setAccessibleName(name);
    side.field->setRange(0, kLongestSide);
    side.field->setSuffix(tr(" pixels"));
    // A value counts when editing ends, not with each of its digits.
    side.field->setKeyboardTracking(false);
    const int row = grid->rowCount();
    grid->addWidget(side.lock, row, 0);
    grid->addWidget(side.field, row, 1);
    return side;
}

void FixedSizeSheet::addButton(QGridLayout* grid)
{
    QLabel* const hint = SmallText::label(
        tr("A picture is only made smaller, never larger. One side at least is locked. With both "
           "locked, each is reduced to its limit by itself, which distorts pictures of other "
           "proportions."),
        this);
    hint->setWordWrap(true);
    grid->addWidget(hint, grid->rowCount(), 0, 1, 2);
    auto* const buttons = new QDialogButtonBox(this);
    QPushButton* const done = buttons->addButton(tr("&Done"), QDialogButtonBox::AcceptRole);
    done->setObjectName(u"dismissFixedSizePanel"_s);
    done->setDefault(true);
    connect(
        done, &QPushButton::clicked, this, [this] { m_controller.dismissFixedSizePanel(this); });
    grid->addWidget(buttons, grid->rowCount(), 0, 1, 2);
}

void FixedSizeSheet::bindLongSide()
{
    showSize(m_long, m_controller.longSize());
    showLock(m_long, m_controller.longLocked());
    connect(&m_controller,
            &CorvaneAppDelegate::longSizeChanged,
            this,
            [this](const QVariant& size) { showSize(m_long, size); });
    connect(&m_controller, &CorvaneAppDelegate::longLockedChanged, this, [this](bool locked) {
        showLock(m_long, locked);
    });
    m_long.commit = [this](int pixels) { m_controller.setLongSize(pixels); };
    follow(m_long);
    connect(m_long.lock, &QCheckBox::clicked, &m_controller, [this](bool locked) {
        m_controller.setLongLocked(locked);
    });
}

void FixedSizeSheet::bindShortSide()
{
    showSize(m_short, m_controller.shortSize());
    showLock(m_short, m_controller.shortLocked());
    connect(&m_controller,
            &CorvaneAppDelegate::shortSizeChanged,
            this,
            [this](const QVariant& size) { showSize(m_short, size); });
    connect(&m_controller, &CorvaneAppDelegate::shortLockedChanged, this, [this](bool locked) {
        showLock(m_short, locked);
    });
    m_short.commit = [this](int pixels) { m_controller.setShortSize(pixels); };
    follow(m_short);
    connect(m_short.lock, &QCheckBox::clicked, &m_controller, [this](bool locked) {
        m_controller.setShortLocked(locked);
    });
}

void FixedSizeSheet::follow(Side& side)
{
    connect(side.field, &QSpinBox::valueChanged, side.field, [&side](int pixels) {
        side.typed = false;
        side.commit(pixels);
    });
    connect(side.field->findChild<QLineEdit*>(), &QLineEdit::textEdited, side.field, [&side] {
        side.typed = true;
    });
    connect(side.field, &QSpinBox::editingFinished, side.field, [&side] { commitTyped(side); });
}

void FixedSizeSheet::commitTyped(Side& side)
{
    if (std::exchange(side.typed, false)) {
        side.commit(side.field->value());
    }
}

void FixedSizeSheet::showSize(const Side& side, const QVariant& pixels)
{
    const QSignalBlocker blocker(side.field);
    const qint64 shown = std::clamp<qint64>(NumberValue::integer(pixels), 0, kLongestSide);
    side.field->setValue(static_cast<int>(shown));
}

void FixedSizeSheet::showLock(const Side& side, bool locked)
{
    side.lock->setChecked(locked);
    side.field->setEnabled(locked);
    // A locked side of no pixels is not free: every conversion fails with it.
    side.field->setSpecialValueText(locked ? QString() : tr("free"));
}
