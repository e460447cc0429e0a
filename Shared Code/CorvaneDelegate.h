#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <optional>

class Button;
class ProgressIndicator;
class TextField;
struct PhotoOutcome;

/// What engine and bridge may ask of their controller. Called on the scan's worker thread unless
/// said otherwise; the implementation makes each call safe from there.
class CorvaneDelegate
{
public:
    virtual ~CorvaneDelegate() = default;

    // Controls. Texts of the labels are set on the main thread only.
    virtual Button& selectionScanButton() = 0;
    virtual TextField& statusLabel() = 0;
    virtual TextField& countLabel() = 0;
    virtual ProgressIndicator& progressIndicator() = 0;

    // State of the scan.
    virtual void setNowProcessing(bool processing) = 0;
    virtual void setTimeRemaining(const QString& text) = 0;
    [[nodiscard]] virtual bool cancelled() const = 0;
    /// Path of the library for album filing, or nothing.
    [[nodiscard]] virtual std::optional<QString> theLibrary() const = 0;

    // Output settings; read anew for every photo.
    [[nodiscard]] virtual double compressionFactor() const = 0; ///< 0..1
    [[nodiscard]] virtual float scaleFactor() const = 0;
    [[nodiscard]] virtual bool fixedSize() const = 0;
    [[nodiscard]] virtual QVariant longSize() const = 0;  ///< pixels; 0 = free
    [[nodiscard]] virtual QVariant shortSize() const = 0; ///< pixels; 0 = free
    [[nodiscard]] virtual bool longLocked() const = 0;
    [[nodiscard]] virtual bool shortLocked() const = 0;

    /// Window-modal alert; returns once it is up.
    virtual void showAlert(const QString& message, const QString& title) = 0;
    /// Application-modal alert; returns when "OK" was pressed. May raise where nobody can answer
    /// (a run without a terminal), which ends the scan.
    virtual void showAlertOfClass(const QString& message, const QString& title) = 0;

    // Main thread only.
    virtual void cfgProgressBarMaxValue(const QVariant& number) = 0;
    virtual void cfgProgressBarCurrentValue(const QVariant& number) = 0;
    virtual void cfgProgressBarDeterminate() = 0;
    /// Asks for read access to the item; returns when the user has answered.
    virtual void userSelectedFiles(const QString& path) = 0;

    /// Takes an information text and does nothing with it.
    virtual void cfgInfoText(const QString& text) = 0;

    /// What the selection is when the loop begins, and what became of each photo, in order; not
    /// shown anywhere by the engine itself.
    virtual void photosSelected(const QList<PhotoOutcome>& photos) = 0;
    virtual void photoFinished(const PhotoOutcome& outcome) = 0;
};
