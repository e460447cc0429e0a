#include "OutputSizeView.h"

#include "Matrix.h"

#include <QButtonGroup>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

OutputSizeView::OutputSizeView(Matrix& matrix, QWidget* parent)
    : QWidget(parent)
    , m_matrix(matrix)
    , m_cells(new QButtonGroup(this))
{
    setObjectName(u"outputSizeMatrix"_s);
    setAccessibleName(tr("Output size"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    const QStringList titles{
        tr("&Full size"), tr("T&hree quarters"), tr("Ha&lf"), tr("Qua&rter"), tr("Fi&xed size…")};
    for (int index = 0; index < titles.size(); ++index) {
        auto* const cell = new QRadioButton(titles.at(index), this);
        cell->setObjectName(u"outputSize%1"_s.arg(index));
        cell->setAccessibleName(QString(titles.at(index)).remove(u'&'));
        m_cells->addButton(cell, index);
        layout->addWidget(cell);
    }
    follow();
    connect(&m_matrix, &Matrix::selectedIndexChanged, this, &OutputSizeView::follow);
    connect(m_cells, &QButtonGroup::idClicked, this, &OutputSizeView::click);
}

void OutputSizeView::click(int index)
{
    m_matrix.click(index);
    // The matrix has the last word on which cell is selected.
    follow();
}

void OutputSizeView::follow()
{
    if (QAbstractButton* const cell = m_cells->button(m_matrix.selectedIndex())) {
        cell->setChecked(true);
        return;
    }
    if (QAbstractButton* const shown = m_cells->checkedButton()) {
        m_cells->setExclusive(false);
        shown->setChecked(false);
        m_cells->setExclusive(true);
    }
}
