#include "SwitchRow.h"

#include "SmallText.h"
#include "UserDefaults.h"

#include <QCheckBox>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

SwitchRow::SwitchRow(UserDefaults& defaults,
                     const QString& key,
                     const Texts& texts,
                     QWidget* parent)
    : QWidget(parent)
    , m_defaults(defaults)
    , m_key(key)
    , m_box(new QCheckBox(texts.title, this))
{
    m_box->setObjectName(key);
    m_box->setAccessibleName(QString(texts.title).remove(u'&'));
    m_box->setAccessibleDescription(texts.hint);
    QLabel* const hint = SmallText::label(texts.hint, this);

    // The hint starts where the check box's text does.
    const int indent = style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, m_box) +
                       style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, m_box);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_box);
    hint->setIndent(0);
    hint->setContentsMargins(indent, 0, 0, 0);
    layout->addWidget(hint);

    follow(m_key);
    connect(&m_defaults, &UserDefaults::valueChanged, this, &SwitchRow::follow);
    // Only clicks store: what is merely shown leaves the setting alone.
    connect(m_box, &QCheckBox::clicked, this, [this](bool checked) {
        m_defaults.setBool(m_key, checked);
    });
}

void SwitchRow::follow(const QString& changedKey)
{
    if (changedKey == m_key) {
        m_box->setChecked(m_defaults.boolValue(m_key));
    }
}
