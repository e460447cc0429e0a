#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

/// What the library window shows while no library is open: how to open one, and those that were
/// found. Main thread.
class WelcomePage final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WelcomePage)
public:
    explicit WelcomePage(QWidget* parent = nullptr);

    /// Offers these libraries, each by a button.
    void offer(const QStringList& libraries);
    /// While a library is being opened or another long step is under way; empty: none is.
    void setActivity(const QString& text);

signals:
    void openRequested(const QString& path);
    void chooseRequested();

private:
    QLabel* m_hint;
    QVBoxLayout* m_offers;
};
