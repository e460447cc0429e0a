#pragma once

#include "Button.h"
#include "CorvaneDelegate.h"
#include "Journal.h"
#include "PhotoOutcome.h"
#include "ProgressIndicator.h"
#include "TextField.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QObject>
#include <QThread>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// A controller that records what engine and bridge ask of it, one line a call in its journal:
///   button YES | status Ready | count IMG_1.cr2 | bar.max 3 | bar.value 1     (controls)
///   nowProcessing YES | timeRemaining 00:02:10 | cfgInfoText … | cfgProgressBarMaxValue 3 | …
///   alert TITLE: MESSAGE | modal TITLE: MESSAGE | userSelectedFiles PATH
/// Reading a setting is no call. Setting members decide what it answers.
class FakeDelegate final : public CorvaneDelegate
{
public:
    /// `sharedJournal`: shared with other fakes, or nothing for one of its own.
    explicit FakeDelegate(std::shared_ptr<Journal> sharedJournal = nullptr)
        : journal(sharedJournal ? std::move(sharedJournal) : std::make_shared<Journal>())
    {
        QObject::connect(&m_button, &Button::enabledChanged, [this](bool enabled) {
            note(QStringLiteral("button ") + yesOrNo(enabled));
        });
        QObject::connect(&m_status, &TextField::stringValueChanged, [this](const QString& text) {
            note(QStringLiteral("status ") + text);
        });
        QObject::connect(&m_count, &TextField::stringValueChanged, [this](const QString& text) {
            note(QStringLiteral("count ") + text);
        });
        QObject::connect(&m_bar, &ProgressIndicator::maxValueChanged, [this](double value) {
            note(QStringLiteral("bar.max %1").arg(value));
        });
        QObject::connect(&m_bar, &ProgressIndicator::doubleValueChanged, [this](double value) {
            note(QStringLiteral("bar.value %1").arg(value));
        });
    }

    // What it answers
    double quality{0.8};
    float scale{1.0F};
    bool fixed{false};
    QVariant longSide{1600};
    QVariant shortSide{1200};
    bool longIsLocked{true};
    bool shortIsLocked{false};
    std::optional<QString> library;
    std::atomic<bool> isCancelled{false};
    /// Cancels at this question for it (1 = the first); 0: never.
    int cancelAtPoll{0};
    /// Called for every alert of either form, after it was recorded; may raise.
    std::function<void(const QString& title)> onAlert;
    /// Called by userSelectedFiles, after it was recorded.
    std::function<void(const QString& path)> onUserSelectedFiles;
    /// Called after each photo's outcome was taken.
    std::function<void(const PhotoOutcome& outcome)> onPhotoFinished;

    // What it was told
    std::shared_ptr<Journal> journal;
    bool nowProcessing{false};
    QString timeRemaining{QStringLiteral("--:--:--")};
    QList<PhotoOutcome> selected;
    QList<PhotoOutcome> finished;
    /// Threads of the calls that must be made on the main one.
    QList<QThread*> mainCallThreads;
    /// What the progress bar's calls were given, as it was given.
    QList<QVariant> progressNumbers;
    QList<QThread*> infoTextThreads;
    mutable QList<QThread*> pollThreads; ///< of the questions whether it is cancelled

    /// Holds the main thread once, at the call or label text that is recorded as `line`, until
    /// `isFurther` finds that the caller has done what comes after it, or until `limit` is over.
    /// What other threads ask of the main one meanwhile is done, so that a caller who did not wait
    /// gets further. Set before the calls begin.
    void holdMainThreadAt(const QString& line,
                          std::function<bool()> isFurther,
                          std::chrono::milliseconds limit)
    {
        m_hold = Hold{line, std::move(isFurther), limit};
    }

    /// Whether the caller went on while the main thread was held; nothing before that.
    [[nodiscard]] std::optional<bool> wentOn() const { return m_wentOn; }

    /// How often it was asked whether it is cancelled.
    [[nodiscard]] int polls() const { return m_polls; }

    Button& selectionScanButton() override { return m_button; }

    TextField& statusLabel() override { return m_status; }

    TextField& countLabel() override { return m_count; }

    ProgressIndicator& progressIndicator() override { return m_bar; }

    void setNowProcessing(bool processing) override
    {
        note(QStringLiteral("nowProcessing ") + yesOrNo(processing));
        nowProcessing = processing;
    }

    void setTimeRemaining(const QString& text) override
    {
        note(QStringLiteral("timeRemaining ") + text);
        timeRemaining = text;
    }

    bool cancelled() const override
    {
        pollThreads.append(QThread::currentThread());
        ++m_polls;
        return isCancelled || (cancelAtPoll > 0 && m_polls >= cancelAtPoll);
    }

    std::optional<QString> theLibrary() const override { return library; }

    double compressionFactor() const override { return quality; }

    float scaleFactor() const override { return scale; }

    bool fixedSize() const override { return fixed; }

    QVariant longSize() const override { return longSide; }

    QVariant shortSize() const override { return shortSide; }

    bool longLocked() const override { return longIsLocked; }

    bool shortLocked() const override { return shortIsLocked; }

    void showAlert(const QString& message, const QString& title) override
    {
        note(QStringLiteral("alert %1: %2").arg(title, message));
        if (onAlert) {
            onAlert(title);
        }
    }

    void showAlertOfClass(const QString& message, const QString& title) override
    {
        note(QStringLiteral("modal %1: %2").arg(title, message));
        if (onAlert) {
            onAlert(title);
        }
    }

    void cfgProgressBarMaxValue(const QVariant& number) override
    {
        progressNumbers.append(number);
        noteOnMain(QStringLiteral("cfgProgressBarMaxValue ") + number.toString());
    }

    void cfgProgressBarCurrentValue(const QVariant& number) override
    {
        progressNumbers.append(number);
        noteOnMain(QStringLiteral("cfgProgressBarCurrentValue ") + number.toString());
    }

    void cfgProgressBarDeterminate() override
    {
        noteOnMain(QStringLiteral("cfgProgressBarDeterminate"));
    }

    void userSelectedFiles(const QString& path) override
    {
        noteOnMain(QStringLiteral("userSelectedFiles ") + path);
        if (onUserSelectedFiles) {
            onUserSelectedFiles(path);
        }
    }

    void cfgInfoText(const QString& text) override
    {
        infoTextThreads.append(QThread::currentThread());
        note(QStringLiteral("cfgInfoText ") + text);
    }

    void photosSelected(const QList<PhotoOutcome>& photos) override { selected = photos; }

    void photoFinished(const PhotoOutcome& outcome) override
    {
        finished.append(outcome);
        if (onPhotoFinished) {
            onPhotoFinished(outcome);
        }
    }

    /// The recorded lines that start with `prefix`.
    [[nodiscard]] QStringList linesOf(const QString& prefix) const
    {
        QStringList found;
        for (const QString& line : journal->lines()) {
            if (line.startsWith(prefix)) {
                found.append(line);
            }
        }
        return found;
    }

private:
    static QString yesOrNo(bool value)
    {
        return value ? QStringLiteral("YES") : QStringLiteral("NO");
    }

    struct Hold {
        QString line;
        std::function<bool()> isFurther;
        std::chrono::milliseconds limit{0};
    };

    void note(const QString& line)
    {
        journal->add(line);
        // The hold is the main thread's own; other threads pass.
        if (QThread::currentThread() == QCoreApplication::instance()->thread() && m_hold &&
            m_hold->line == line) {
            hold();
        }
    }

    void noteOnMain(const QString& line)
    {
        mainCallThreads.append(QThread::currentThread());
        note(line);
    }

    void hold()
    {
        const Hold held = *std::exchange(m_hold, std::nullopt);
        const QDeadlineTimer deadline(held.limit);
        while (!held.isFurther() && !deadline.hasExpired()) {
            // Not processEvents(): it may leave to the outer loop what was posted before the hold.
            QCoreApplication::sendPostedEvents();
            QThread::msleep(1);
        }
        m_wentOn = held.isFurther();
    }

    std::optional<Hold> m_hold;
    std::optional<bool> m_wentOn;
    mutable std::atomic<int> m_polls{0};
    Button m_button;
    TextField m_status;
    TextField m_count;
    ProgressIndicator m_bar;
};
