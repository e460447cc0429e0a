#pragma once

#include <QWidget>

class Matrix;
class QButtonGroup;

/// The cells of the output-size matrix as radio buttons, one below the other. Every click acts,
/// also one on the cell that is shown as selected.
class OutputSizeView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(OutputSizeView)
public:
    /// `matrix` has five cells and outlives the widget.
    explicit OutputSizeView(Matrix& matrix, QWidget* parent = nullptr);

private:
    void click(int index);
    /// Shows the matrix's selected cell, or none.
    void follow();

    Matrix& m_matrix;
    QButtonGroup* m_cells;
};
