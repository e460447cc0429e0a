#pragma once

#include "ScanClosing.h"

#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;

/// What is to be told of single photos after a scan: a line that counts them, and a list that says
/// which and why, to be read at leisure and copied. Hidden while there is nothing to tell. Main
/// thread.
class ScanClosingView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScanClosingView)
public:
    explicit ScanClosingView(QWidget* parent = nullptr);

    /// In place of what was told before; an empty one hides the view.
    void setClosing(const ScanClosing& closing);

signals:
    /// The photo is to be seen.
    void photoChosen(qint64 id);

private:
    void makeList();
    [[nodiscard]] QPushButton* addButton(const QString& name, const QString& title);
    void addLine(const ScannedPhoto& photo, const QString& text);
    void choosePhoto();
    enum class Lines : quint8 { All, Selected };
    void copy(Lines wanted) const;

    QLabel* m_heading;
    QListWidget* m_list;
};
