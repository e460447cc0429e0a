#pragma once

#include "Button.h"
#include "CorvaneDelegate.h"
#include "Matrix.h"
#include "PhotoOutcome.h"
#include "Presenter.h"
#include "ProgressIndicator.h"
#include "TextField.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class Bundle;
class Clock;
class Corvane;
class PowerManagement;
class QThread;
class ScriptingBridge;
class UserDefaults;
class UserNotificationCenter;
class Workspace;

/// What the controller is given; everything outlives it.
struct ControllerServices {
    ScriptingBridge& bridge;
    UserDefaults& defaults;
    const Bundle& bundle;
    Presenter& presenter;
    Workspace& workspace;
    PowerManagement& power;
    UserNotificationCenter& notifications;
    Clock& clock;
    /// Looks for crash logs; the first thing after launching. What it raises is logged. Empty:
    /// this face offers none.
    std::function<void()> checkForNewCrashes;
};

/// The one controller: holds the output settings and the state that windows or a terminal show,
/// starts scans, and answers engine and bridge. Headless: it owns no widget.
///
/// Threads: main, except the CorvaneDelegate methods, which the scan's worker calls.
class CorvaneAppDelegate final : public QObject, public CorvaneDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CorvaneAppDelegate)
public:
    /// `init`: registers the fallback settings and begins to observe "JpegOutputSize", which is
    /// looked at once right here.
    explicit CorvaneAppDelegate(ControllerServices services, QObject* parent = nullptr);
    /// Waits for running scans (the main event loop is run while waiting).
    ~CorvaneAppDelegate() override;

    /// Applies the saved settings. Fixed size is off afterwards, whatever "JpegOutputSize" holds;
    /// with a saved 4 the scale factor stays 0.0 until the output-size control is touched.
    void awakeFromNib();
    /// Looks for crash logs, then becomes the one who decides on presenting notifications.
    void applicationDidFinishLaunching();
    /// Shows the number of selected photos, unless a scan owns the labels. What the photo
    /// application raises is logged and leaves the label as it is.
    void applicationDidBecomeActive();
    /// Always YES: notifications are shown also while the application is frontmost.
    [[nodiscard]] bool userNotificationCenterShouldPresentNotification() const;

    // Actions
    /// Settles the library for album filing, which may ask the user, and starts a scan on a thread
    /// of its own. Tests nothing: pressed twice before the first engine has disabled the button,
    /// it starts two.
    void selectionScan(QObject* sender);
    /// The output-size control was clicked; its cell with tag 0 puts up the fixed-size sheet.
    void outputScaleSelect(Matrix* sender);
    void configureFixedSize(QObject* sender);
    void dismissFixedSizePanel(QObject* sender);
    void moreInfoButton(QObject* sender);
    void techSupport(QObject* sender);

    /// How many photos are selected; 0 when the photo application does not run or an album is the
    /// one selected object. Errors: raises what the photo application raises.
    [[nodiscard]] quint64 selectionCount();
    /// Whether a scan's thread lives; not the same as nowProcessing().
    [[nodiscard]] bool isScanning() const;

    // Controls
    TextField& selectedLabel() { return m_selectedLabel; }

    TextField& statusLabel() override { return m_statusLabel; }

    TextField& countLabel() override { return m_countLabel; }

    ProgressIndicator& progressIndicator() override { return m_progressIndicator; }

    Button& selectionScanButton() override { return m_selectionScanButton; }

    /// Cells: full, three quarters, half, quarter (tags 1 to 4), fixed size (index 4, tag 0). A
    /// click stores the cell's index as "JpegOutputSize" and then does outputScaleSelect(); the
    /// cell shown as selected follows the setting.
    Matrix& outputSizeMatrix() { return m_outputSizeMatrix; }

    // Settings
    [[nodiscard]] double compressionFactor() const override;
    void setCompressionFactor(double quality);
    [[nodiscard]] QString compressionFactorText() const;
    void setCompressionFactorText(const QString& text);
    [[nodiscard]] float scaleFactor() const override;
    void setScaleFactor(float factor);
    [[nodiscard]] bool fixedSize() const override;
    void setFixedSize(bool fixed);
    [[nodiscard]] QVariant longSize() const override;
    /// Also remembered and saved, unless its integer value is 0.
    void setLongSize(const QVariant& pixels);
    [[nodiscard]] QVariant shortSize() const override;
    void setShortSize(const QVariant& pixels);
    [[nodiscard]] bool longLocked() const override;
    /// YES brings the remembered size back; NO remembers the present one, frees the side and locks
    /// the other one first.
    void setLongLocked(bool locked);
    [[nodiscard]] bool shortLocked() const override;
    void setShortLocked(bool locked);

    // State
    [[nodiscard]] bool nowProcessing() const;
    void setNowProcessing(bool processing) override;
    [[nodiscard]] bool cancelled() const override;
    void setCancelled(bool cancelled);

    /// The class form: always NO.
    [[nodiscard]] static bool cancelledOfClass() { return false; }

    [[nodiscard]] std::optional<QString> theLibrary() const override;
    void setTheLibrary(const std::optional<QString>& path);
    [[nodiscard]] quint64 userSelectedFilesCount() const;
    void setUserSelectedFilesCount(quint64 count);
    [[nodiscard]] QString timeRemaining() const;
    void setTimeRemaining(const QString& text) override;

    // Callbacks. Alerts are shown on the main thread; what the presenter raises there is raised
    // again on the calling thread.
    void showAlert(const QString& message, const QString& title) override;
    void showAlertOfClass(const QString& message, const QString& title) override;
    void doAlertSheet(const Alert& alert);
    void cfgProgressBarMaxValue(const QVariant& number) override;
    void cfgProgressBarCurrentValue(const QVariant& number) override;
    void cfgProgressBarDeterminate() override;
    void cfgInfoText(const QString& text) override;
    void userSelectedFiles(const QString& path) override;
    void photosSelected(const QList<PhotoOutcome>& photos) override;
    void photoFinished(const PhotoOutcome& outcome) override;

signals:
    void compressionFactorChanged(double quality);
    void compressionFactorTextChanged(const QString& text);
    void scaleFactorChanged(float factor);
    void fixedSizeChanged(bool fixed);
    void longSizeChanged(const QVariant& pixels);
    void shortSizeChanged(const QVariant& pixels);
    void longLockedChanged(bool locked);
    void shortLockedChanged(bool locked);
    /// Emitted on the thread that set the text.
    void timeRemainingChanged(const QString& text);
    /// An alert of either form is being shown; on the main thread, before the presenter has it.
    void alertShown(const Alert& alert);
    /// From the engine, delivered on the main thread in order.
    void selectionTaken(const QList<PhotoOutcome>& photos);
    void photoDone(const PhotoOutcome& outcome);
    /// A scan's thread has been started, on the main thread.
    void scanStarted();
    /// A scan's thread has ended, on the main thread.
    void scanEnded();

private:
    void registerFallbacks();
    void checkForNewCrashes();
    void observeSettings();
    /// The output-size setting changed: takes fixed size and scale factor from it. Other keys are
    /// none of its business.
    void observeValueForKeyPath(const QString& keyPath);
    void settleLibrary();
    void startScan(std::unique_ptr<Corvane> engine);
    void endScan(const QThread* thread);
    void openPage(const QString& key);

    const ControllerServices m_services;
    TextField m_selectedLabel;
    TextField m_statusLabel;
    TextField m_countLabel;
    ProgressIndicator m_progressIndicator;
    Button m_selectionScanButton;
    Matrix m_outputSizeMatrix;
    std::vector<std::unique_ptr<QThread>> m_scans;

    // Read by a scan's thread while the main thread writes.
    std::atomic<double> m_compressionFactor{0.0};
    std::atomic<float> m_scaleFactor{0.0F};
    std::atomic<bool> m_fixedSize{false};
    std::atomic<bool> m_longLocked{false};
    std::atomic<bool> m_shortLocked{false};
    std::atomic<bool> m_nowProcessing{false};
    std::atomic<bool> m_cancelled{false};
    mutable std::mutex m_mutex; ///< guards what follows, up to m_timeRemaining
    QVariant m_longSize;
    QVariant m_shortSize;
    std::optional<QString> m_theLibrary;
    QString m_timeRemaining;

    QString m_compressionFactorText;
    /// Last size of each side that was not 0, or what it was when the side was freed.
    QVariant m_prevLongSize;
    QVariant m_prevShortSize;
    quint64 m_userSelectedFilesCount{0};
};
