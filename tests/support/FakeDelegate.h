#pragma once

#include "Button.h"
#include "CorvaneDelegate.h"
#include "Journal.h"
#include "PhotoOutcome.h"
#include "ProgressIndicator.h"
#include "TextField.h"

#include <QObject>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>

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
        noteOnMain(QStringLiteral("cfgProgressBarMaxValue ") + number.toString());
    }

    void cfgProgressBarCurrentValue(const QVariant& number) override
    {
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

    void cfgInfoText(const QString& text) override { note(QStringLiteral("cfgInfoText ") + text); }

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

    void note(const QString& line) { journal->add(line); }

    void noteOnMain(const QString& line)
    {
        mainCallThreads.append(QThread::currentThread());
        journal->add(line);
    }

    mutable std::atomic<int> m_polls{0};
    Button m_button;
    TextField m_status;
    TextField m_count;
    ProgressIndicator m_bar;
};
