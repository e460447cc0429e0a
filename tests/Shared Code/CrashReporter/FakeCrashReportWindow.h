#pragma once

#include "CrashReportWindow.h"
#include "ZTBCrashReporterWindowController.h"

#include <QList>
#include <QStringList>

#include <utility>

/// What happened to the windows of a test, and what is up in them.
struct WindowRecord {
    QStringList events;
    QString title;
    bool visible{false};
    QList<CrashReportSheet> sheets;
    std::function<void(int)> sheetDidEnd;
    ZTBCrashReporterWindowController* owner{nullptr};
    int windows{0};
};

/// A window without widgets.
class FakeCrashReportWindow final : public CrashReportWindow
{
public:
    FakeCrashReportWindow(ZTBCrashReporterWindowController& owner, WindowRecord& record)
        : m_record(record)
    {
        m_record.owner = &owner;
        ++m_record.windows;
    }

    void setTitle(const QString& title) override { m_record.title = title; }

    void center() override { m_record.events.append(QStringLiteral("center")); }

    void showWindow() override
    {
        m_record.events.append(QStringLiteral("show"));
        m_record.visible = true;
    }

    void orderOut() override
    {
        m_record.events.append(QStringLiteral("orderOut"));
        m_record.visible = false;
    }

    void selectNextKeyView() override { m_record.events.append(QStringLiteral("next")); }

    void selectPreviousKeyView() override { m_record.events.append(QStringLiteral("previous")); }

    void beginSheet(const CrashReportSheet& sheet, std::function<void(int)> didEnd) override
    {
        m_record.events.append(QStringLiteral("sheet"));
        m_record.sheets.append(sheet);
        m_record.sheetDidEnd = std::move(didEnd);
    }

    void release() override
    {
        m_record.events.append(QStringLiteral("release"));
        m_record.visible = false;
        m_record.owner = nullptr;
        delete this;
    }

private:
    WindowRecord& m_record;
};
