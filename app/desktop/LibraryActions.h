#pragma once

#include <QKeySequence>
#include <QObject>

class QAction;
class QActionGroup;
class QMainWindow;
class QMenu;

/// Everything that the library window's menus offer, with its keys. What an action does is
/// connected by the window. Main thread.
class LibraryActions final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryActions)
public:
    /// Makes the actions and the menu bar of `window`, which owns them.
    explicit LibraryActions(QMainWindow& window);

    QMenu* openRecent{nullptr};
    QAction* open{nullptr};
    QAction* reload{nullptr};
    QAction* quit{nullptr};

    QAction* selectAll{nullptr};
    QAction* selectRaw{nullptr};
    QAction* invertSelection{nullptr};
    QAction* find{nullptr};

    QAction* zoomIn{nullptr};
    QAction* zoomOut{nullptr};
    QAction* showLarge{nullptr};
    QMenu* view{nullptr};        ///< the window adds its panels
    QActionGroup* sort{nullptr}; ///< data: PhotoFilter::Order as a number
    QAction* descending{nullptr};

    QAction* showTrash{nullptr};
    QAction* putBack{nullptr};
    QAction* emptyTrash{nullptr};
    QAction* verify{nullptr};
    QAction* backUp{nullptr};
    QAction* restoreBackup{nullptr};
    QAction* whyNoCare{nullptr}; ///< a line of text beneath them, never enabled

    QAction* showConverter{nullptr};

    QAction* information{nullptr};
    QAction* support{nullptr};
    QAction* about{nullptr};

private:
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeSortMenu();
    void makeLibraryMenu();
    void makeOtherMenus();
    [[nodiscard]] QAction*
    add(QMenu* menu, const QString& name, const QString& text, const QKeySequence& keys = {});

    QMainWindow& m_window;
};
