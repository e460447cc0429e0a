#pragma once

#include <QDialog>
#include <QVariantMap>

class QTableWidget;
class QUrl;

/// Shows field by field what a report would hold if it were sent now, and where it would go. A file
/// is told by its name and size, since its text stands in the window.
class CrashReportContents final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CrashReportContents)
public:
    /// `formValues`: as the form is made of.
    CrashReportContents(const QVariantMap& formValues, const QUrl& address, QWidget* parent);

private:
    [[nodiscard]] static QString destination(const QUrl& address);
    [[nodiscard]] QTableWidget* makeTable(const QVariantMap& formValues);
    [[nodiscard]] static QString shown(const QVariant& value);
};
