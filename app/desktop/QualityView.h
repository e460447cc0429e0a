#pragma once

#include <QWidget>

class CorvaneAppDelegate;
class QLabel;
class QSlider;

/// The JPEG quality as a slider and as a number. The quality changes only when the slider is moved;
/// while it is being dragged the number shows what it would become.
class QualityView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QualityView)
public:
    /// `controller` outlives the widget.
    explicit QualityView(CorvaneAppDelegate& controller, QWidget* parent = nullptr);

private:
    void makeSlider();
    void makeNumber();
    void follow(double quality);

    CorvaneAppDelegate& m_controller;
    QSlider* m_slider;
    QLabel* m_number;
};
