#pragma once

#include <QObject>

#include <atomic>

/// A progress bar's state: a value from 0 to `maxValue`, or indeterminate.
/// Threads: any may read and write; signals are emitted on the writer's.
class ProgressIndicator final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ProgressIndicator)
public:
    using QObject::QObject;

    void setMaxValue(double value);
    void setDoubleValue(double value);
    void setIndeterminate(bool indeterminate);
    /// Shows that something is going on of which nothing else is known.
    void startAnimation();
    void stopAnimation();

    [[nodiscard]] double maxValue() const { return m_maxValue; }

    [[nodiscard]] double doubleValue() const { return m_doubleValue; }

    [[nodiscard]] bool isIndeterminate() const { return m_indeterminate; }

    [[nodiscard]] bool isAnimating() const { return m_animating; }

signals:
    void maxValueChanged(double value);
    void doubleValueChanged(double value);
    void indeterminateChanged(bool indeterminate);
    void animatingChanged(bool animating);

private:
    std::atomic<double> m_maxValue{100.0};
    std::atomic<double> m_doubleValue{0.0};
    std::atomic<bool> m_indeterminate{true};
    std::atomic<bool> m_animating{false};
};
