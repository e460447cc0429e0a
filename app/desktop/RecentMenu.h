#pragma once

#include <QObject>

class QMenu;
class RecentLibraries;

/// Fills a menu with the libraries that were opened before, the last one first. Main thread.
class RecentMenu final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RecentMenu)
public:
    /// Both outlive it.
    RecentMenu(QMenu& menu, RecentLibraries& recent);

    /// Remembers a library that was opened.
    void add(const QString& path);
    /// Enables the menu where there is something in it.
    void setEnabled(bool enabled);

signals:
    void openRequested(const QString& path);

private:
    void fill();

    QMenu& m_menu;
    RecentLibraries& m_recent;
    bool m_enabled{true};
};
