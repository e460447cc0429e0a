#include "ZTBCrashReporterWindowController.h"

#include "AddressBook.h"
#include "Assertion.h"
#include "Bundle.h"
#include "Clock.h"
#include "CrashReportConnection.h"
#include "CrashReportDates.h"
#include "CrashReportTexts.h"
#include "GenerateFormData.h"
#include "MainThread.h"
#include "SystemLog.h"
#include "Trash.h"
#include "UserDefaults.h"
#include "ZTBSystemInformation.h"

#include <QFile>
#include <QFileInfo>
#include <QNetworkRequest>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kBoundary = "81e29ba4f957efe5916039f587fe3ed7"_L1;
constexpr QLatin1StringView kUserAgent = "ZTBCrashReporter"_L1;
constexpr const char* kAcceptance = "ok\n";
/// An answer as long as this is not the one that is agreed, whatever follows.
constexpr qsizetype kMostResponseBytes = 65536;

constexpr QLatin1StringView kIncludeSystemInformation =
    "ZTBCrashReporterIncludeAnonymousSystemInformation"_L1;
constexpr QLatin1StringView kIncludeEmailAddress = "ZTBCrashReporterIncludeEmailAddress"_L1;
constexpr QLatin1StringView kPreferredLocale = "ZTBCrashReporterPreferredReportingLocale"_L1;

constexpr double kCommentsFontSize = 10.0;

/// As assertions name this file.
QString windowControllerFile()
{
    return u"Shared Code/CrashReporter/ZTBCrashReporterWindowController"_s;
}

template <typename Value>
void insertIfKnown(QVariantMap& values, const QString& field, const std::optional<Value>& value)
{
    if (value) {
        values.insert(field, QVariant::fromValue(*value));
    }
}

/// The text of an entry; null where there is none or it is no text.
QString textOf(const QVariant& value)
{
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

void ZTBCrashReporterWindowController::initialize(UserDefaults& defaults)
{
    constexpr const char* kMark = "ZTBCrashReporterDefaultsAreRegistered";
    if (defaults.property(kMark).toBool()) {
        return; // observers would be told for nothing
    }
    defaults.setProperty(kMark, true);
    defaults.registerDefaults({{kIncludeSystemInformation, true}, {kIncludeEmailAddress, true}});
}

void ZTBCrashReporterWindowController::showWindowForCrashLogPath(
    const CrashReporterServices& services, const QString& crashLogPath, const QUrl& submissionURL)
{
    const QString function =
        u"showWindowForCrashLogPath:submissionURL: of ZTBCrashReporterWindowController"_s;
    CORVANE_CONSISTENCY_ASSERT(!crashLogPath.isNull(),
                               u"Invalid parameter not satisfying: nil != crashLogPath"_s,
                               function,
                               windowControllerFile());
    CORVANE_CONSISTENCY_ASSERT(submissionURL.isValid(),
                               u"Invalid parameter not satisfying: nil != submissionURL"_s,
                               function,
                               windowControllerFile());
    const auto controller = std::make_shared<ZTBCrashReporterWindowController>(services);
    controller->setCrashLogPath(crashLogPath);
    controller->setSubmissionURL(submissionURL);
    controller->window().center();
    controller->window().showWindow();
    controller->m_selfReference = controller;
}

ZTBCrashReporterWindowController::ZTBCrashReporterWindowController(CrashReporterServices services)
    : m_services(std::move(services))
{
    initialize(m_services.defaults);
}

ZTBCrashReporterWindowController::~ZTBCrashReporterWindowController()
{
    releaseConnection();
}

CrashReportWindow& ZTBCrashReporterWindowController::window()
{
    if (!m_window) {
        m_window = m_services.loadWindow(*this);
        windowDidLoad();
    }
    return *m_window;
}

void ZTBCrashReporterWindowController::windowDidLoad()
{
    const QString shortVersion = m_services.bundle.version();
    m_window->setTitle(shortVersion.isNull()
                           ? CrashReportTexts::title(applicationName())
                           : CrashReportTexts::title(applicationName(), shortVersion));
    setEmailAddress(m_services.addressBook.primaryEmailAddressOfMe());
    m_commentsTextView.setTypingFontSize(kCommentsFontSize);
    m_commentsTextView.setPlaceholderString(CrashReportTexts::commentsPlaceholder());
}

void ZTBCrashReporterWindowController::sendReport(QObject* /*sender*/)
{
    sendCrashReport();
}

void ZTBCrashReporterWindowController::ignoreReport(QObject* /*sender*/)
{
    window().orderOut();
}

void ZTBCrashReporterWindowController::discardReport(QObject* /*sender*/)
{
    if (!CrashReportDates::modificationDate(m_crashLogPath)) {
        systemLog(u"ZTBCrashReporter: Unable to create FSRef for file "_s + m_crashLogPath);
    } else if (const int status = m_services.trash.moveToTrash(m_crashLogPath); status != 0) {
        systemLog(u"ZTBCrashReporter: Unable to move %1 to trash: %2"_s.arg(
            m_crashLogPath, QString::number(status)));
    }
    window().orderOut();
}

void ZTBCrashReporterWindowController::sendCrashReport()
{
    const QByteArray body = GenerateFormData(formValues(), kBoundary);
    m_progressIndicator.startAnimation();
    m_reportButton.setEnabled(false);
    m_ignoreButton.setEnabled(false);
    m_discardButton.setEnabled(false);
    startConnection(body);
}

QVariantMap ZTBCrashReporterWindowController::formValues() const
{
    QVariantMap values;
    const bool withSystem = m_services.defaults.boolValue(kIncludeSystemInformation);
    if (withSystem) {
        addSystemInformation(values);
    }
    values.insert(u"systemInformationIncluded"_s, withSystem);
    if (m_services.defaults.boolValue(kIncludeEmailAddress) && !m_emailAddress.isNull()) {
        values.insert(u"emailAddress"_s, m_emailAddress);
    }
    if (!m_commentsTextView.string().isEmpty()) {
        values.insert(u"comments"_s, m_commentsTextView.string());
    }
    values.insert(u"crashLog"_s, QUrl::fromLocalFile(m_crashLogPath));
    addApplication(values);
    values.insert(u"date"_s, CrashReportDates::text(m_services.clock.now(), reportingLocale()));
    return values;
}

void ZTBCrashReporterWindowController::addSystemInformation(QVariantMap& values) const
{
    const ZTBSystemInformation system(m_services.systemControl);
    insertIfKnown(values, u"machine"_s, system.machine());
    insertIfKnown(values, u"model"_s, system.model());
    insertIfKnown(values, u"physicalMemory"_s, system.physicalMemory());
    insertIfKnown(values, u"busFrequency"_s, system.busFrequency());
    insertIfKnown(values, u"CPUFrequency"_s, system.CPUFrequency());
    insertIfKnown(values, u"CPUFamily"_s, system.CPUFamily());
    insertIfKnown(values, u"CPUType"_s, system.CPUType());
    insertIfKnown(values, u"CPUSubtype"_s, system.CPUSubtype());
    insertIfKnown(values, u"numberOfCPUs"_s, system.numberOfCPUs());
    insertIfKnown(values, u"physicalCPUs"_s, system.physicalCPUs());
    insertIfKnown(values, u"logicalCPUs"_s, system.logicalCPUs());
    insertIfKnown(values, u"systemVersion"_s, system.systemVersion());
    insertIfKnown(values, u"systemBuildVersion"_s, system.systemBuildVersion());
}

void ZTBCrashReporterWindowController::addApplication(QVariantMap& values) const
{
    const QVariantMap& info = m_services.bundle.infoDictionary();
    const auto add = [&values, &info](const QString& field, const QString& entry) {
        if (info.contains(entry)) {
            values.insert(field, info.value(entry));
        }
    };
    add(u"applicationName"_s, u"CFBundleName"_s);
    add(u"applicationIdentifier"_s, u"CFBundleIdentifier"_s);
    add(u"applicationVersion"_s, u"CFBundleVersion"_s);
    add(u"applicationShortVersion"_s, u"CFBundleShortVersionString"_s);
}

QString ZTBCrashReporterWindowController::applicationName() const
{
    return m_services.bundle.name();
}

QString ZTBCrashReporterWindowController::reportingLocale() const
{
    QString locale = textOf(m_services.defaults.value(kPreferredLocale));
    if (locale.isEmpty()) {
        locale = textOf(m_services.bundle.infoDictionary().value(kPreferredLocale));
    }
    return locale.isEmpty() ? u"en_US"_s : locale;
}

void ZTBCrashReporterWindowController::startConnection(const QByteArray& body)
{
    QNetworkRequest request(m_submissionURL);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      u"multipart/form-data; boundary=%1"_s.arg(kBoundary));
    request.setHeader(QNetworkRequest::UserAgentHeader, QString(kUserAgent));
    request.setHeader(QNetworkRequest::ContentLengthHeader, body.size());
    releaseConnection();
    m_urlConnection = new CrashReportConnection(request, body, m_services.patience, this);
    using Connection = CrashReportConnection;
    using Self = ZTBCrashReporterWindowController;
    connect(m_urlConnection,
            &Connection::didReceiveResponse,
            this,
            &Self::connectionDidReceiveResponse);
    connect(m_urlConnection, &Connection::didReceiveData, this, &Self::connectionDidReceiveData);
    connect(
        m_urlConnection, &Connection::didFinishLoading, this, &Self::connectionDidFinishLoading);
    connect(
        m_urlConnection, &Connection::didFailWithError, this, &Self::connectionDidFailWithError);
    m_urlConnection->start();
}

void ZTBCrashReporterWindowController::releaseConnection()
{
    if (m_urlConnection != nullptr) {
        // It may be the one that is calling.
        CrashReportConnection* const connection = std::exchange(m_urlConnection, nullptr);
        connection->disconnect(this);
        connection->cancel();
        connection->deleteLater();
    }
    m_responseData.reset();
}

void ZTBCrashReporterWindowController::connectionDidReceiveResponse()
{
    m_responseData = QByteArray();
}

void ZTBCrashReporterWindowController::connectionDidReceiveData(const QByteArray& data)
{
    if (m_responseData) {
        m_responseData->append(
            data.first(std::min(data.size(), kMostResponseBytes - m_responseData->size())));
    }
}

void ZTBCrashReporterWindowController::connectionDidFinishLoading()
{
    const bool isAccepted = m_responseData && *m_responseData == kAcceptance;
    releaseConnection();
    const QPointer<ZTBCrashReporterWindowController> self(this);
    if (isAccepted) {
        acceptReport();
        performOnMainThread(
            [self] {
                if (self) {
                    self->showSubmissionSucceededSheet();
                }
            },
            Wait::No);
        return;
    }
    connectionDidFailWithError(CrashReportError::unrecognizedResponse());
}

void ZTBCrashReporterWindowController::acceptReport()
{
    if (const std::optional<double> date = CrashReportDates::modificationDate(m_crashLogPath)) {
        CrashReportDates::setLastReport(m_services.defaults, *date);
    }
    QFile log(m_crashLogPath);
    if (!log.remove()) {
        systemLog(
            u"ZTBCrashReporter error: Unable to delete the submitted crash log (%1): %2"_s.arg(
                QFileInfo(m_crashLogPath).fileName(), log.errorString()));
    }
}

void ZTBCrashReporterWindowController::connectionDidFailWithError(const CrashReportError& error)
{
    const QPointer<ZTBCrashReporterWindowController> self(this);
    // The error may not outlive the connection that told it.
    const auto showSheet = [self, kept = error] {
        if (self) {
            self->showSubmissionFailedSheet(kept);
        }
    };
    releaseConnection();
    performOnMainThread(showSheet, Wait::No);
}

void ZTBCrashReporterWindowController::showSubmissionSucceededSheet()
{
    m_progressIndicator.stopAnimation();
    window().beginSheet({CrashReportSheet::Kind::Success,
                         CrashReportTexts::submitted(),
                         CrashReportTexts::thanks(applicationName())},
                        [this](int returnCode) { showSubmissionSheetDidEnd(returnCode); });
}

void ZTBCrashReporterWindowController::showSubmissionFailedSheet(
    const std::optional<CrashReportError>& error)
{
    CORVANE_CONSISTENCY_ASSERT(error.has_value(),
                               u"Invalid parameter not satisfying: nil != error"_s,
                               u"showSubmissionFailedSheet: of ZTBCrashReporterWindowController"_s,
                               windowControllerFile());
    m_progressIndicator.stopAnimation();
    window().beginSheet({CrashReportSheet::Kind::Failure,
                         CrashReportTexts::notSubmitted(),
                         CrashReportTexts::theErrorWas(error->localizedDescription)},
                        [this](int returnCode) { showSubmissionSheetDidEnd(returnCode); });
}

void ZTBCrashReporterWindowController::showSubmissionSheetDidEnd(int /*returnCode*/)
{
    window().orderOut();
}

void ZTBCrashReporterWindowController::windowWillClose()
{
    releaseConnection();
    // Last: the controller may go with it.
    const std::shared_ptr<ZTBCrashReporterWindowController> last = std::move(m_selfReference);
}

bool ZTBCrashReporterWindowController::textViewDoCommandBySelector(const QString& selector)
{
    if (selector == "insertTab:"_L1) {
        window().selectNextKeyView();
        return true;
    }
    if (selector == "insertBacktab:"_L1) {
        window().selectPreviousKeyView();
        return true;
    }
    return false;
}

void ZTBCrashReporterWindowController::setEmailAddress(const QString& address)
{
    if (address != m_emailAddress || address.isNull() != m_emailAddress.isNull()) {
        m_emailAddress = address;
        emit emailAddressChanged(address);
    }
}
