#pragma once

#include "Button.h"
#include "CrashReportError.h"
#include "CrashReporterServices.h"
#include "ProgressIndicator.h"
#include "TextView.h"

#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <memory>
#include <optional>

class CrashReportConnection;

/// Offers one crash log to the person in a window of its own: to report it, to leave it for the
/// next launch, or to throw it away. Keeps itself alive from when its window is shown until the
/// window is closed; a hidden window is not closed.
/// Main thread; sending needs its event loop.
class ZTBCrashReporterWindowController final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ZTBCrashReporterWindowController)
public:
    /// Registers the fallbacks of the two settings that say what a report holds, both on, once with
    /// each settings object.
    static void initialize(UserDefaults& defaults);
    /// Shows a window for the log and returns. `crashLogPath` not null, `submissionURL` valid.
    /// Errors: raises AssertionFailure where one is missing.
    static void showWindowForCrashLogPath(const CrashReporterServices& services,
                                          const QString& crashLogPath,
                                          const QUrl& submissionURL);

    explicit ZTBCrashReporterWindowController(CrashReporterServices services);
    ~ZTBCrashReporterWindowController() override;

    /// Made at the first call, which is when windowDidLoad() runs.
    [[nodiscard]] CrashReportWindow& window();

    // Actions
    void sendReport(QObject* sender);
    void ignoreReport(QObject* sender);
    /// Moves the log to the trash; a failure is logged.
    void discardReport(QObject* sender);

    /// Builds the report and begins to send it.
    void sendCrashReport();
    /// What a report sent now would hold, by the names of the form's fields.
    [[nodiscard]] QVariantMap formValues() const;
    [[nodiscard]] QString applicationName() const;

    void showSubmissionSucceededSheet();
    /// Errors: raises AssertionFailure where there is no error.
    void showSubmissionFailedSheet(const std::optional<CrashReportError>& error);
    void showSubmissionSheetDidEnd(int returnCode);

    // Window delegate
    /// Breaks a submission off and lets go of the controller, which may be gone on return.
    void windowWillClose();
    // Text view delegate
    /// "insertTab:" and "insertBacktab:" move the focus; YES for them, NO for every other command.
    [[nodiscard]] bool textViewDoCommandBySelector(const QString& selector);

    // Connection delegate
    void connectionDidReceiveResponse();
    void connectionDidReceiveData(const QByteArray& data);
    void connectionDidFinishLoading();
    void connectionDidFailWithError(const CrashReportError& error);

    /// Null: none.
    [[nodiscard]] const QString& emailAddress() const { return m_emailAddress; }

    void setEmailAddress(const QString& address);

    [[nodiscard]] const QString& crashLogPath() const { return m_crashLogPath; }

    void setCrashLogPath(const QString& path) { m_crashLogPath = path; }

    [[nodiscard]] const QUrl& submissionURL() const { return m_submissionURL; }

    void setSubmissionURL(const QUrl& url) { m_submissionURL = url; }

    /// What keeps the controller alive; null when somebody else has to. Named as it is spoken of.
    // NOLINTNEXTLINE(readability-identifier-naming)
    [[nodiscard]] const std::shared_ptr<ZTBCrashReporterWindowController>& self_reference() const
    {
        return m_selfReference;
    }

    // Outlets
    TextView& commentsTextView() { return m_commentsTextView; }

    Button& reportButton() { return m_reportButton; }

    Button& ignoreButton() { return m_ignoreButton; }

    Button& discardButton() { return m_discardButton; }

    ProgressIndicator& progressIndicator() { return m_progressIndicator; }

signals:
    void emailAddressChanged(const QString& address);

private:
    void windowDidLoad();
    void addSystemInformation(QVariantMap& values) const;
    void addApplication(QVariantMap& values) const;
    [[nodiscard]] QString reportingLocale() const;
    void startConnection(const QByteArray& body);
    void releaseConnection();
    void acceptReport();

    const CrashReporterServices m_services;
    QString m_emailAddress;
    QString m_crashLogPath;
    QUrl m_submissionURL;
    TextView m_commentsTextView;
    Button m_reportButton;
    Button m_ignoreButton;
    Button m_discardButton;
    ProgressIndicator m_progressIndicator;
    CrashReportConnection* m_urlConnection{nullptr}; ///< a child of this object
    std::optional<QByteArray> m_responseData;
    CrashReportWindowPtr m_window;
    std::shared_ptr<ZTBCrashReporterWindowController> m_selfReference;
};
