#pragma once

#include "CorvaneDelegate.h"
#include "IdleSleepAssertion.h"
#include "PhotoOutcome.h"
#include "Result.h"
#include "Scripting.h"
#include "TimeRemaining.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

class Bundle;
class Clock;
class PowerManagement;
class SBUtils;
class UserDefaults;
class UserNotificationCenter;
class helpers;
struct ProvedJpeg;

/// What an engine is given; everything outlives it.
struct ScanServices {
    ScriptingBridge& bridge;
    UserDefaults& defaults;
    const Bundle& bundle;
    PowerManagement& power;
    UserNotificationCenter& notifications;
    Clock& clock;
};

/// The scan driver: walks the selection through its stages, one after another, and owns the order
/// of things. One object serves one scan.
class Corvane final
{
public:
    /// Made on the main thread, at the press of the button; reads the learnt rates.
    explicit Corvane(const ScanServices& services);
    ~Corvane();
    Corvane(const Corvane&) = delete;
    Corvane& operator=(const Corvane&) = delete;

    /// Does the program's work. Worker thread. What the photo application raises is caught at its
    /// outermost frame: the turn undone, the temporary file deleted, the controls reset, the reason
    /// shown in an alert "Conversion Aborted".
    void corvaneScan(CorvaneDelegate& delegate);

    /// The time-remaining estimator: shows the remaining time of the scan and learns the rate of
    /// the stage. `stage` 0 start-up, 1 data loading, 2 album loading, 3 conversion, 4 end.
    void estTimeRemaining(quint64 stage, quint64 curIdx, quint64 totalCount);

    /// The first album known of exactly that name that is a regular one; null when there is none.
    /// Albums are known as they were when the albums' stage began, or when createAlbum() was last
    /// called.
    [[nodiscard]] AlbumPtr findAlbum(const QString& name);
    /// Makes an album and learns the albums anew; findAlbum() finds it then.
    void createAlbum(const QString& name);

    /// The bridge of this scan; its lists hold the last load.
    [[nodiscard]] SBUtils& sbutils() { return *m_sbutils; }

private:
    struct Scan;
    struct Turn;

    // The stages, in order; NO means that the scan ends here, everything said and reset.
    [[nodiscard]] bool takeSelection(Scan& scan);
    [[nodiscard]] bool loadSelection(Scan& scan);
    void prepareAlbums(Scan& scan);
    void prepareConversion(Scan& scan);
    [[nodiscard]] bool convertPhotos(Scan& scan);
    void finish(const Scan& scan);
    void run();

    // One photo's turn; NO means that its file is missing, which ends the scan.
    [[nodiscard]] bool takeTurn(Scan& scan, Turn& turn);
    /// Settles the file that the turn reads; answers the message for the user when it is missing.
    [[nodiscard]] std::optional<QString> findSource(const Scan& scan, Turn& turn);
    [[nodiscard]] bool isSupported(const Scan& scan, Turn& turn);
    [[nodiscard]] Result<ProvedJpeg> convert(const Scan& scan, const Turn& turn);
    void import(Scan& scan, Turn& turn, const ProvedJpeg& jpeg);
    void fileAndPropagate(const Scan& scan, Turn& turn);
    [[nodiscard]] AlbumPtr albumOfTurn(const Scan& scan, Turn& turn);
    void tagAndRemoveOriginal(const Scan& scan, const Turn& turn);
    void endTurn(Scan& scan, Turn& turn, PhotoOutcome::Kind kind);

    void refreshAlbums();
    void setStatus(const QString& text);
    void setCount(const QString& text);
    void resetControls();
    void stopWithAlert(const QString& message, const QString& title);
    void abortWithReason(const QString& reason);

    ScanServices m_services;
    PhotoApplicationPtr m_photoApplication;
    std::unique_ptr<helpers> m_help;
    std::unique_ptr<SBUtils> m_sbutils;
    CorvaneDelegate* m_delegate{nullptr};
    QList<AlbumPtr> m_allAlbums;
    IdleSleepAssertion m_idleSleep;
    TimeRemaining m_timeRemaining;
};
