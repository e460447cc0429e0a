#include "RecentMenu.h"

#include "RecentLibraries.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>

namespace
{

/// A text shown in a menu: an ampersand in it is no mnemonic.
QString menuText(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

RecentMenu::RecentMenu(QMenu& menu, RecentLibraries& recent)
    : m_menu(menu)
    , m_recent(recent)
{
    fill();
}

void RecentMenu::add(const QString& path)
{
    m_recent.add(path);
    fill();
}

void RecentMenu::setEnabled(bool enabled)
{
    m_enabled = enabled;
    m_menu.setEnabled(m_enabled && !m_recent.paths().isEmpty());
}

void RecentMenu::fill()
{
    m_menu.clear();
    const QStringList paths = m_recent.paths();
    for (const QString& path : paths) {
        QAction* const action = m_menu.addAction(
            menuText(tr("%1 in %2").arg(QDir(path).dirName(), QFileInfo(path).path())));
        connect(action, &QAction::triggered, this, [this, path] { emit openRequested(path); });
    }
    m_menu.addSeparator();
    QAction* const clear = m_menu.addAction(tr("&Clear Menu"));
    connect(clear, &QAction::triggered, this, [this] {
        m_recent.clear();
        fill();
    });
    setEnabled(m_enabled);
}
