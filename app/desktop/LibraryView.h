#pragma once

#include "PhotoFilter.h"
#include "PhotoModel.h"
#include "SidebarModel.h"
#include "ThumbnailStore.h"

#include <QPointer>
#include <QWidget>

class LibraryActions;
class LibraryBanner;
class LibrarySession;
class PhotoGrid;
class PhotoViewer;
class QTreeView;

/// The open library as it is looked at: events, albums and keywords at the left, their photos at
/// the right, what is to be known of it above them, a photo large in a window of its own. What is
/// selected is made known to the session. Main thread.
class LibraryView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryView)
public:
    /// Does what the actions of the menus Edit and View are for. Both outlive it.
    LibraryView(LibrarySession& session, const LibraryActions& actions, QWidget* parent = nullptr);
    ~LibraryView() override;

    /// Shows the session's contents in place of what it showed.
    void showContents();
    /// Shows all photos of a library that was just opened.
    void showAllPhotos();
    void showTrash();
    /// Whether the photo is among those that are seen.
    [[nodiscard]] bool isSeen(qint64 id) const;
    /// Selects the photo and no other, and has it in sight, among all photos or in the trash where
    /// it is not seen now. Nothing is done where a search hides it, or the library has none such.
    void showPhoto(qint64 id);
    void closeViewer();

    /// Looks again for pictures that could not be had.
    void retryPictures() { m_thumbnails.retryFailures(); }

    /// Makes known what was selected last, where that is still to be told.
    void settleSelection();

    [[nodiscard]] bool showsTrash() const;
    [[nodiscard]] QList<PhotoFacts> selectedFacts() const;

    /// How many photos are seen.
    [[nodiscard]] int photosSeen() const { return m_filter.rowCount(); }

    [[nodiscard]] const PhotoFilter& photos() const { return m_filter; }

    [[nodiscard]] PhotoGrid& grid() { return *m_grid; }

    [[nodiscard]] LibraryBanner& banner() { return *m_banner; }

public slots:

    void setSearchText(const QString& text) { m_filter.setSearchText(text); }

signals:
    /// Other photos are selected, or seen.
    void selectionChanged();
    /// What was done, in a sentence.
    void said(const QString& text);

private:
    void makeSidebar();
    void connectActions();
    void showCollection();
    void tellSelection();
    void showLarge(const QModelIndex& index);
    void selectRaw();
    void sortPhotos();

    LibrarySession& m_session;
    const LibraryActions& m_actions;
    ThumbnailStore m_thumbnails;
    PhotoModel m_photos;
    PhotoFilter m_filter;
    SidebarModel m_sidebarModel;
    QTreeView* m_sidebar{nullptr};
    PhotoGrid* m_grid{nullptr};
    LibraryBanner* m_banner{nullptr};
    QPointer<PhotoViewer> m_viewer;
    QString m_shownPath; ///< of the library whose photos are shown
    bool m_showingContents{false};
};
