#include "Matrix.h"

Matrix::Matrix(QList<int> tags, QObject* parent)
    : QObject(parent)
    , m_tags(std::move(tags))
{
}

void Matrix::setSelectedIndex(int index)
{
    const int selected = index >= 0 && index < count() ? index : -1;
    if (selected != m_selected) {
        m_selected = selected;
        emit selectedIndexChanged(selected);
    }
}

void Matrix::click(int index)
{
    if (index < 0 || index >= count()) {
        return;
    }
    setSelectedIndex(index);
    emit action(this);
}

int Matrix::selectedTag() const
{
    return m_selected < 0 ? 0 : m_tags.at(m_selected);
}
