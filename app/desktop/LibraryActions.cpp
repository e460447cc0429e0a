#include "LibraryActions.h"

#include "PhotoFilter.h"

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

using namespace Qt::StringLiterals;

LibraryActions::LibraryActions(QMainWindow& window)
    : QObject(&window)
    , m_window(window)
{
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makeLibraryMenu();
    makeOtherMenus();
}

QAction*
LibraryActions::add(QMenu* menu, const QString& name, const QString& text, const QKeySequence& keys)
{
    QAction* const action = menu->addAction(text);
    action->setObjectName(name);
    action->setShortcut(keys);
    // No action is to be moved away into an application menu by what its text says.
    action->setMenuRole(QAction::NoRole);
    return action;
}

void LibraryActions::makeFileMenu()
{
    QMenu* const menu = m_window.menuBar()->addMenu(tr("&File"));
    open = add(menu, u"openLibrary"_s, tr("&Open Library…"), QKeySequence::Open);
    openRecent = menu->addMenu(tr("Open &Recent"));
    openRecent->setObjectName(u"openRecent"_s);
    reload = add(menu, u"reload"_s, tr("Re&load"), QKeySequence::Refresh);
    menu->addSeparator();
    quit = add(menu, u"quit"_s, tr("&Quit"), QKeySequence(u"Ctrl+Q"_s));
}

void LibraryActions::makeEditMenu()
{
    QMenu* const menu = m_window.menuBar()->addMenu(tr("&Edit"));
    selectAll = add(menu, u"selectAll"_s, tr("Select &All"), QKeySequence::SelectAll);
    selectRaw = add(menu, u"selectRaw"_s, tr("Select &RAW"), QKeySequence(u"Ctrl+R"_s));
    invertSelection =
        add(menu, u"invertSelection"_s, tr("&Invert Selection"), QKeySequence(u"Ctrl+I"_s));
    menu->addSeparator();
    find = add(menu, u"find"_s, tr("&Find"), QKeySequence::Find);
}

void LibraryActions::makeViewMenu()
{
    view = m_window.menuBar()->addMenu(tr("&View"));
    zoomIn = add(view, u"zoomIn"_s, tr("Zoom &In"), QKeySequence::ZoomIn);
    zoomOut = add(view, u"zoomOut"_s, tr("Zoom &Out"), QKeySequence::ZoomOut);
    showLarge = add(view, u"showLarge"_s, tr("Show &Large"), QKeySequence(u"Ctrl+L"_s));
    makeSortMenu();
    view->addSeparator();
}

void LibraryActions::makeSortMenu()
{
    QMenu* const menu = view->addMenu(tr("&Sort By"));
    sort = new QActionGroup(this);
    const auto addOrder = [this, menu](const QString& text, PhotoFilter::Order order) {
        QAction* const action = sort->addAction(menu->addAction(text));
        action->setCheckable(true);
        action->setData(static_cast<int>(order));
        return action;
    };
    addOrder(tr("&Library Order"), PhotoFilter::Order::Library)->setChecked(true);
    addOrder(tr("&Date"), PhotoFilter::Order::Date);
    addOrder(tr("&Size"), PhotoFilter::Order::Size);
    addOrder(tr("&Name"), PhotoFilter::Order::Name);
    menu->addSeparator();
    descending = add(menu, u"descending"_s, tr("D&escending"));
    descending->setCheckable(true);
}

void LibraryActions::makeLibraryMenu()
{
    QMenu* const menu = m_window.menuBar()->addMenu(tr("&Library"));
    showTrash = add(menu, u"showTrash"_s, tr("Show &Trash"), QKeySequence(u"Ctrl+T"_s));
    putBack = add(menu, u"putBack"_s, tr("&Put Back"), QKeySequence(u"Ctrl+Backspace"_s));
    menu->addSeparator();
    emptyTrash = add(menu, u"emptyTrash"_s, tr("&Empty Trash…"));
    menu->addSeparator();
    verify = add(menu, u"verifyLibrary"_s, tr("&Verify Library…"));
    backUp = add(menu, u"backUpLibrary"_s, tr("&Back Up Now"));
    restoreBackup = add(menu, u"restoreBackup"_s, tr("&Restore Backup…"));
    whyNoCare = add(menu, u"whyNoCare"_s, {});
    whyNoCare->setEnabled(false);
}

void LibraryActions::makeOtherMenus()
{
    QMenu* const windows = m_window.menuBar()->addMenu(tr("&Window"));
    showConverter =
        add(windows, u"showConverter"_s, tr("&Corvane For iPhoto"), QKeySequence(u"Ctrl+J"_s));
    QMenu* const help = m_window.menuBar()->addMenu(tr("&Help"));
    information = add(help, u"information"_s, tr("&Information"), QKeySequence::HelpContents);
    support = add(help, u"support"_s, tr("&Support"));
    help->addSeparator();
    about = add(help, u"about"_s, tr("&About Corvane"));
}
