#pragma once

#include <QList>
#include <QObject>

/// A matrix of cells of which one is selected (radio buttons or segments): every cell has an
/// index, its place, and a tag, a number of the layout's choice. Main thread only.
class Matrix final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Matrix)
public:
    /// `tags`: tag of the cell at each index. No cell is selected at first.
    explicit Matrix(QList<int> tags, QObject* parent = nullptr);

    /// Shows the cell as selected without sending the action (as a binding does).
    void setSelectedIndex(int index);
    /// What a click does: selects the cell, then sends the action; also on the selected cell.
    void click(int index);

    /// -1 when none is selected.
    [[nodiscard]] int selectedIndex() const { return m_selected; }

    /// Tag of the selected cell; 0 when none is selected.
    [[nodiscard]] int selectedTag() const;

    [[nodiscard]] int count() const { return static_cast<int>(m_tags.size()); }

signals:
    void selectedIndexChanged(int index);
    /// A cell was clicked.
    void action(Matrix* sender);

private:
    QList<int> m_tags;
    int m_selected{-1};
};
