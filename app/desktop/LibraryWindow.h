#pragma once

#include "ForecastSelection.h"
#include "PhotoFilter.h"
#include "PhotoModel.h"
#include "SidebarModel.h"
#include "ThumbnailStore.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>

class CareDialogs;
class Inspector;
class LibraryActions;
class LibraryBanner;
class LibrarySession;
class PhotoGrid;
class PhotoViewer;
class QLabel;
class QLineEdit;
class QSlider;
class QStackedWidget;
class QTreeView;
class RecentLibraries;
class WelcomePage;

/// The window in which a person opens a library, looks at its photos and selects those to be
/// converted; its trash too. Main thread.
class LibraryWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryWindow)
public:
    /// All outlive the window.
    LibraryWindow(LibrarySession& session, RecentLibraries& recent, QWidget* parent = nullptr);
    ~LibraryWindow() override;

    /// Asked when the window is about to close; NO keeps it open. Empty: it closes.
    void setMayClose(std::function<bool()> mayClose) { m_mayClose = std::move(mayClose); }

    /// Libraries to be offered while none is open, in place of those before.
    void offer(const QStringList& libraries);
    /// While a scan runs photos can be looked at, but nothing can be opened, put back or deleted.
    void setScanning(bool scanning);

    /// Makes known what was selected last, where that is still to be told: a stalled event loop
    /// hands on a click on a photo and a press elsewhere before it turns.
    void settleSelection();

    [[nodiscard]] LibraryActions& actions() { return *m_actions; }

    [[nodiscard]] ForecastSelection forecastSelection() const;

public slots:
    /// Opens a library in place of the one that is open.
    void openLibrary(const QString& path);
    /// Asks for a library and opens it.
    void chooseLibrary();
    void askToEmptyTrash();

signals:
    void converterRequested();
    /// What is selected, or what is known of the library, is other than before.
    void forecastSelectionChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeToolBar();
    void makeCentre();
    void makeInspector();
    void connectFileActions();
    void connectPhotoActions();
    void connectLibraryActions();
    void connectSession();
    void showContents();
    void showCollection();
    void showSelection();
    void showRecent();
    void updateActions();
    void sortPhotos();
    void selectRaw();
    void putBack();
    void showLarge(const QModelIndex& index);
    void say(const QString& text);
    /// Whether another library may be opened, or this one anew.
    [[nodiscard]] bool mayOpen() const;
    [[nodiscard]] bool showsTrash() const;
    [[nodiscard]] QList<PhotoFacts> selectedFacts() const;

    LibrarySession& m_session;
    RecentLibraries& m_recent;
    LibraryActions* m_actions;
    std::unique_ptr<CareDialogs> m_care;
    ThumbnailStore m_thumbnails;
    PhotoModel m_photos;
    PhotoFilter m_filter;
    SidebarModel m_sidebarModel;
    QTreeView* m_sidebar{nullptr};
    PhotoGrid* m_grid{nullptr};
    QStackedWidget* m_pages{nullptr};
    WelcomePage* m_welcome{nullptr};
    LibraryBanner* m_banner{nullptr};
    Inspector* m_inspector{nullptr};
    QLineEdit* m_search{nullptr};
    QSlider* m_zoom{nullptr};
    QLabel* m_figures{nullptr};
    QPointer<PhotoViewer> m_viewer;
    std::function<bool()> m_mayClose;
    QString m_shownPath;     ///< of the library whose photos are shown
    QString m_notClosedPath; ///< library that could be opened for writing on request
    bool m_scanning{false};
    bool m_showingContents{false};
};
