#pragma once

#include "ForecastSelection.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <utility>

class CareDialogs;
class Inspector;
class LibraryActions;
class LibrarySession;
class LibraryToolBar;
class LibraryView;
class QLabel;
class QStackedWidget;
class RecentLibraries;
class RecentMenu;
class TrashDialogs;
class WelcomePage;

/// The window in which a person opens a library, looks at its photos and selects those to be
/// converted; its trash too, and what looks after it. Main thread.
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
    /// While a scan runs photos can be looked at, but nothing can be opened, put back, deleted or
    /// mended.
    void setScanning(bool scanning);

    /// Makes known what was selected last, where that is still to be told: a stalled event loop
    /// hands on a click on a photo and a press elsewhere before it turns.
    void settleSelection();

    [[nodiscard]] LibraryActions& actions() { return *m_actions; }

    [[nodiscard]] ForecastSelection forecastSelection() const;

public slots:
    /// Opens a library in place of the one that is open.
    void openLibrary(const QString& path);
    /// Has the photo in sight, selected.
    void showPhoto(qint64 id);
    /// Asks for a library and opens it.
    void chooseLibrary();

signals:
    void converterRequested();
    /// What is selected, or what is known of the library, is other than before.
    void forecastSelectionChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeCentre();
    void makeInspector();
    void makeToolBar();
    void makeStatusBar();
    void connectActions();
    void connectDialogs();
    void connectSession();
    void showContents();
    void showBanner();
    void showSelection();
    void showFailure(const QString& title, const QString& text);
    void updateActions();
    void updateActionsOnPhotos();
    void say(const QString& text);
    /// Whether another library may be opened, or this one anew.
    [[nodiscard]] bool mayOpen() const;

    LibrarySession& m_session;
    LibraryActions* m_actions;
    std::unique_ptr<RecentMenu> m_recent;
    LibraryView* m_view{nullptr};
    LibraryToolBar* m_toolBar{nullptr};
    std::unique_ptr<TrashDialogs> m_trash;
    std::unique_ptr<CareDialogs> m_care;
    QStackedWidget* m_pages{nullptr};
    WelcomePage* m_welcome{nullptr};
    Inspector* m_inspector{nullptr};
    QLabel* m_figures{nullptr};
    std::function<bool()> m_mayClose;
    QString m_notClosedPath; ///< library that could be opened for writing on request
    bool m_scanning{false};
};
