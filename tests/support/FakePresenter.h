#pragma once

#include "Presenter.h"

#include <QCoreApplication>
#include <QList>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

/// Plays the user by a script: open panels are answered from a list (running out of answers fails
/// the test and says OK), alerts are dismissed at once. Records everything in order.
class FakePresenter final : public Presenter
{
public:
    /// The answers to the next open panels, in order.
    QList<OpenPanelResult> answers;
    /// Called while an open panel is up, before it is answered.
    std::function<void(const OpenPanel&)> whilePanel;
    /// Called while an application-modal alert is up; it may raise.
    std::function<void(const Alert&)> whileModal;
    /// Called when editing is to end in a field's window.
    std::function<void(Field)> whenCommitting;

    /// "sheet TITLE", "modal TITLE", "panel TITLE", "begin fixed size", "end fixed size",
    /// "commit long", "commit short".
    [[nodiscard]] const QStringList& events() const { return m_events; }

    [[nodiscard]] const QList<Alert>& sheets() const { return m_sheets; }

    [[nodiscard]] const QList<Alert>& modalAlerts() const { return m_modalAlerts; }

    [[nodiscard]] const QList<OpenPanel>& panels() const { return m_panels; }

    void clear()
    {
        m_events.clear();
        m_sheets.clear();
        m_modalAlerts.clear();
        m_panels.clear();
    }

    void beginSheet(const Alert& alert) override
    {
        record(QStringLiteral("sheet ") + alert.messageText);
        m_sheets.append(alert);
    }

    void runModal(const Alert& alert) override
    {
        record(QStringLiteral("modal ") + alert.messageText);
        m_modalAlerts.append(alert);
        if (whileModal) {
            whileModal(alert);
        }
    }

    [[nodiscard]] OpenPanelResult runModal(const OpenPanel& panel) override
    {
        record(QStringLiteral("panel ") + panel.title);
        m_panels.append(panel);
        if (whilePanel) {
            whilePanel(panel);
        }
        if (answers.isEmpty()) {
            ADD_FAILURE() << "nobody expected an open panel: " << qPrintable(panel.message);
            return {kPanelOk, {}};
        }
        return answers.takeFirst();
    }

    void beginFixedSizeSheet() override { record(QStringLiteral("begin fixed size")); }

    void endFixedSizeSheet() override { record(QStringLiteral("end fixed size")); }

    void commitEditing(Field field) override
    {
        record(field == Field::LongSide ? QStringLiteral("commit long")
                                        : QStringLiteral("commit short"));
        if (whenCommitting) {
            whenCommitting(field);
        }
    }

private:
    void record(const QString& event)
    {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread())
            << qPrintable(event) << " away from the main thread";
        m_events.append(event);
    }

    QStringList m_events;
    QList<Alert> m_sheets;
    QList<Alert> m_modalAlerts;
    QList<OpenPanel> m_panels;
};
