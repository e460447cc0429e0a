#pragma once

#include <QObject>

class LibraryActions;
class LibrarySession;
class LibraryView;
class QWidget;

/// Takes photos out of the library's trash, and empties it once a person has confirmed that. Main
/// thread.
class TrashDialogs final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TrashDialogs)
public:
    /// All outlive it.
    TrashDialogs(LibrarySession& session,
                 const LibraryActions& actions,
                 LibraryView& view,
                 QWidget& window);

signals:
    /// What was done, in a sentence.
    void said(const QString& text);

private:
    void putBack();
    void askToEmpty();

    LibrarySession& m_session;
    const LibraryActions& m_actions;
    LibraryView& m_view;
    QWidget& m_window;
};
