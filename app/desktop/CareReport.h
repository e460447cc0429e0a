#pragma once

#include "CareProgress.h"

#include <QDialog>
#include <QList>
#include <QString>

class QBoxLayout;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

/// Shows that a library is being looked after, and afterwards what came of it: in a few words, and
/// as a list that can be read at leisure and copied. It holds nothing up. What is done is asked for
/// by signals. Main thread.
class CareReport final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CareReport)
public:
    enum class Stopping : quint8 { Possible, Impossible };
    enum class Mood : quint8 { Good, Notice, Bad };

    /// A line of the list, and what file or folder it tells of; either may be empty.
    struct Entry {
        QString text;
        QString place;
    };

    struct Section {
        QString title;
        QList<Entry> entries;
    };

    struct Outcome {
        Mood mood{Mood::Good};
        QString heading;
        QString text{};            ///< may be empty
        QList<Section> sections{}; ///< those without entries are not shown
        QString offer{};           ///< title of a button beside Close; none where empty
    };

    explicit CareReport(QWidget* parent = nullptr);

    void beginWork(const QString& heading, Stopping stopping);
    void showProgress(const CareProgress& progress);
    void showOutcome(const Outcome& outcome);
    /// Whether what is offered can be had now, and why not, which is said beneath; empty where that
    /// need not be said.
    void setOfferEnabled(bool enabled, const QString& why = {});

    /// What the list shows, as it is copied.
    [[nodiscard]] static QString asText(const QList<Section>& sections);

    /// While something is under way that can be stopped, asks for that instead of closing.
    void reject() override;

signals:
    void stopRequested();
    /// The button of the outcome's offer was pressed.
    void offerTaken();

private:
    void makeTexts(QBoxLayout* layout);
    void makeButtons(QBoxLayout* layout);
    [[nodiscard]] QPushButton* addButton(QBoxLayout* layout, const QString& name);
    void showMood(Mood mood);
    void showSections(const QList<Section>& sections);
    void fit();

    enum class State : quint8 { Outcome, Stoppable, Working, Stopping };

    QLabel* m_icon{nullptr};
    QLabel* m_heading{nullptr};
    QLabel* m_text{nullptr};
    QProgressBar* m_bar{nullptr};
    QPlainTextEdit* m_list{nullptr};
    QLabel* m_why{nullptr};
    QPushButton* m_copy{nullptr};
    QPushButton* m_offer{nullptr};
    QPushButton* m_stop{nullptr};
    QPushButton* m_close{nullptr};
    State m_state{State::Outcome};
};
