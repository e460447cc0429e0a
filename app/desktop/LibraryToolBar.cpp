#include "LibraryToolBar.h"

#include "LibraryActions.h"
#include "PhotoGrid.h"

#include <QAction>
#include <QLineEdit>
#include <QSlider>

using namespace Qt::StringLiterals;

LibraryToolBar::LibraryToolBar(const LibraryActions& actions, PhotoGrid& grid, QWidget* parent)
    : QToolBar(tr("Tools"), parent)
    , m_search(new QLineEdit)
{
    setObjectName(u"toolBar"_s);
    setMovable(false);
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    addAction(actions.open);
    addSeparator();
    addAction(actions.selectRaw);
    addAction(actions.showConverter);
    auto* const space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);
    addSearch(actions);
    addZoom(grid);
}

void LibraryToolBar::addSearch(const LibraryActions& actions)
{
    m_search->setObjectName(u"search"_s);
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search photos by words"));
    m_search->setClearButtonEnabled(true);
    m_search->setMaximumWidth(fontMetrics().averageCharWidth() * 32);
    addWidget(m_search);
    connect(m_search, &QLineEdit::textChanged, this, &LibraryToolBar::searchTextChanged);
    connect(actions.find, &QAction::triggered, m_search, [this] {
        m_search->setFocus(Qt::ShortcutFocusReason);
        m_search->selectAll();
    });
}

void LibraryToolBar::clearSearch()
{
    m_search->clear();
}

void LibraryToolBar::addZoom(PhotoGrid& grid)
{
    auto* const zoom = new QSlider(Qt::Horizontal);
    zoom->setObjectName(u"zoom"_s);
    zoom->setAccessibleName(tr("Size of the pictures"));
    zoom->setToolTip(zoom->accessibleName());
    zoom->setRange(PhotoGrid::kSmallestZoom, PhotoGrid::kLargestZoom);
    zoom->setValue(grid.zoom());
    zoom->setMaximumWidth(fontMetrics().averageCharWidth() * 20);
    addWidget(zoom);
    connect(zoom, &QSlider::valueChanged, &grid, &PhotoGrid::setZoom);
    connect(&grid, &PhotoGrid::zoomChanged, zoom, &QSlider::setValue);
}
