#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

/// A line above the photos that says why nothing can be written to the library, or what to know
/// before. Main thread.
class LibraryBanner final : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryBanner)
public:
    explicit LibraryBanner(QWidget* parent = nullptr);

    /// Shows the text; an empty one hides the banner. `canOpenAfterCrash`: with a button that asks
    /// for the library to be opened for writing all the same.
    void setText(const QString& text, bool canOpenAfterCrash);

signals:
    void openAfterCrash();

private:
    QLabel* m_text;
    QPushButton* m_button;
};
