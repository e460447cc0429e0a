#include "CorvaneAppDelegate.h"

#include "AccessTexts.h"
#include "AlternateSignalStack.h"
#include "Bundle.h"
#include "Corvane.h"
#include "Directories.h"
#include "MainThread.h"
#include "NumberValue.h"
#include "PropertyList.h"
#include "Scripting.h"
#include "SystemLog.h"
#include "UserDefaults.h"
#include "UserNotificationCenter.h"
#include "Workspace.h"

#include <QEventLoop>
#include <QThread>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr QLatin1StringView kOutputSizeKey = "JpegOutputSize"_L1;
/// "JpegOutputSize" of the fixed-size mode, and the tag of its cell.
constexpr qint64 kFixedSizeChoice = 4;
constexpr int kFixedSizeTag = 0;

/// A path cut before its last part, as a file panel wants it: slashes at the end do not count, and
/// the root folder is its own parent.
struct SplitPath {
    QString parent;
    QString name;

    explicit SplitPath(QString path)
    {
        while (path.size() > 1 && path.endsWith(u'/')) {
            path.chop(1);
        }
        const qsizetype slash = path.lastIndexOf(u'/');
        name = path.size() > 1 ? path.mid(slash + 1) : path;
        parent = slash > 0 ? path.left(slash) : path.left(slash + 1);
    }
};

} // namespace

CorvaneAppDelegate::CorvaneAppDelegate(ControllerServices services, QObject* parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_outputSizeMatrix({1, 2, 3, 4, kFixedSizeTag})
{
    registerFallbacks();
    observeSettings();
    m_timeRemaining = u"--:--:--"_s;
}

CorvaneAppDelegate::~CorvaneAppDelegate()
{
    // A scan asks the main thread for alerts and label texts to its very end, so the events of the
    // main thread go on being handled; also when the application has already been told to quit,
    // which would end a nested exec() at once.
    QEventLoop loop;
    while (isScanning()) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    m_services.notifications.setShouldPresent({});
}

void CorvaneAppDelegate::registerFallbacks()
{
    const QString path = m_services.bundle.pathForResource(u"UserDefaults"_s, u"plist"_s);
    const Result<QVariant> fallbacks = PropertyList::read(path);
    if (!fallbacks.ok()) {
        systemLog(fallbacks.error().message);
        return;
    }
    m_services.defaults.registerDefaults(fallbacks.value().toMap());
}

void CorvaneAppDelegate::observeSettings()
{
    connect(&m_services.defaults, &UserDefaults::valueChanged, this, [this](const QString& key) {
        observeValueForKeyPath(key);
    });
    observeValueForKeyPath(kOutputSizeKey);

    connect(&m_outputSizeMatrix, &Matrix::action, this, [this](Matrix* sender) {
        m_services.defaults.setInteger(kOutputSizeKey, sender->selectedIndex());
        outputScaleSelect(sender);
    });
}

void CorvaneAppDelegate::observeValueForKeyPath(const QString& keyPath)
{
    if (keyPath != kOutputSizeKey) {
        return;
    }
    setFixedSize(false);
    const qint64 choice = m_services.defaults.integerValue(kOutputSizeKey);
    switch (choice) {
    case 1:
        setScaleFactor(0.75F);
        break;
    case 2:
        setScaleFactor(0.5F);
        break;
    case 3:
        setScaleFactor(0.25F);
        break;
    case kFixedSizeChoice:
        setFixedSize(true);
        break;
    default:
        setScaleFactor(1.0F);
        break;
    }
    const bool isCell = choice >= 0 && choice < m_outputSizeMatrix.count();
    m_outputSizeMatrix.setSelectedIndex(isCell ? static_cast<int>(choice) : -1);
}

void CorvaneAppDelegate::awakeFromNib()
{
    UserDefaults& defaults = m_services.defaults;
    setCompressionFactor(defaults.doubleValue(u"JpegQuality"_s));
    setFixedSize(false);

    const QVariant shortSide = defaults.value(u"ShortSide"_s);
    m_prevShortSize = shortSide;
    setShortSize(shortSide);
    const QVariant longSide = defaults.value(u"LongSide"_s);
    m_prevLongSize = longSide;
    setLongSize(longSide);

    setLongLocked(defaults.boolValue(u"LongLocked"_s));
    // Only now: freeing the long side has locked the short one.
    setShortLocked(defaults.boolValue(u"ShortLocked"_s));
}

void CorvaneAppDelegate::applicationDidFinishLaunching()
{
    checkForNewCrashes();
    m_services.notifications.setShouldPresent([this](const UserNotification&) {
        return userNotificationCenterShouldPresentNotification();
    });
}

/// What is raised, where no address for crash reports is given above all, ends this step alone.
void CorvaneAppDelegate::checkForNewCrashes()
{
    if (!m_services.checkForNewCrashes) {
        return;
    }
    try {
        m_services.checkForNewCrashes();
    } catch (const std::exception& exception) {
        systemLog(QString::fromUtf8(exception.what()));
    }
}

void CorvaneAppDelegate::applicationDidBecomeActive()
{
    if (nowProcessing()) {
        return;
    }
    try {
        m_selectedLabel.setStringValue(QString::number(selectionCount()));
    } catch (const ScriptingException& exception) {
        systemLog(QString::fromUtf8(exception.what()));
    }
}

bool CorvaneAppDelegate::userNotificationCenterShouldPresentNotification() const
{
    return true;
}

quint64 CorvaneAppDelegate::selectionCount()
{
    const PhotoApplicationPtr application =
        m_services.bridge.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    if (!application->isRunning()) {
        return 0;
    }
    const QList<ScriptingObjectPtr> selection = application->selection();
    if (selection.size() == 1 &&
        selection.first()->scriptingClass() == application->photoLibraryAlbum()->scriptingClass()) {
        return 0;
    }
    return static_cast<quint64>(selection.size());
}

bool CorvaneAppDelegate::isScanning() const
{
    return !m_scans.empty();
}

// Actions

void CorvaneAppDelegate::selectionScan(QObject* /*sender*/)
{
    auto engine = std::make_unique<Corvane>(ScanServices{m_services.bridge,
                                                         m_services.defaults,
                                                         m_services.bundle,
                                                         m_services.power,
                                                         m_services.notifications,
                                                         m_services.clock});
    settleLibrary();
    startScan(std::move(engine));
}

void CorvaneAppDelegate::settleLibrary()
{
    const bool albumEnabled = m_services.defaults.boolValue(u"AlbumEnabled"_s);
    if (!albumEnabled || theLibrary().has_value()) {
        // A library that was picked serves one scan; the next one runs without, the one after asks
        // again.
        setTheLibrary(std::nullopt);
        return;
    }
    OpenPanel panel;
    panel.title = AccessTexts::title();
    panel.message = AccessTexts::libraryPrompt();
    panel.directory = Directories::pictures();
    panel.canChooseFiles = true;
    panel.canChooseDirectories = false;
    panel.allowedFileTypes = {u"aplibrary"_s, u"photolibrary"_s, u""_s};
    const OpenPanelResult result = m_services.presenter.runModal(panel);
    if (result.code == kPanelOk && !result.paths.isEmpty()) {
        setTheLibrary(result.paths.first());
    }
}

void CorvaneAppDelegate::startScan(std::unique_ptr<Corvane> engine)
{
    std::unique_ptr<QThread> thread(QThread::create([this, started = std::move(engine)]() mutable {
        const AlternateSignalStack signalStack;
        // The run owns the engine; it ends on its own thread, whose connections it used.
        const std::unique_ptr<Corvane> running = std::move(started);
        running->corvaneScan(*this);
    }));
    const QThread* const running = thread.get();
    connect(thread.get(), &QThread::finished, this, [this, running] { endScan(running); });
    m_scans.push_back(std::move(thread));
    m_scans.back()->start();
    if (!running->isRunning() && !running->isFinished()) {
        // The system has no thread to give; Qt has said so in the log.
        m_scans.pop_back();
        doAlertSheet({tr("Unable To Process"),
                      tr("The system has no thread left to convert photos on. Quit other programs "
                         "and try again.")});
        emit scanEnded();
        return;
    }
    emit scanStarted();
}

void CorvaneAppDelegate::endScan(const QThread* thread)
{
    const auto ended = std::find_if(m_scans.begin(), m_scans.end(), [thread](const auto& scan) {
        return scan.get() == thread;
    });
    // The signal comes from the thread's last steps; it must be over before its object goes.
    (*ended)->wait();
    m_scans.erase(ended);
    emit scanEnded();
}

void CorvaneAppDelegate::outputScaleSelect(Matrix* sender)
{
    const int tag = sender == nullptr ? kFixedSizeTag : sender->selectedTag();
    setFixedSize(false);
    if (tag == kFixedSizeTag) {
        setFixedSize(true);
        configureFixedSize(sender);
    }
}

void CorvaneAppDelegate::configureFixedSize(QObject* /*sender*/)
{
    m_services.presenter.beginFixedSizeSheet();
}

void CorvaneAppDelegate::dismissFixedSizePanel(QObject* /*sender*/)
{
    m_services.presenter.commitEditing(Presenter::Field::ShortSide);
    m_services.presenter.commitEditing(Presenter::Field::LongSide);
    m_services.presenter.endFixedSizeSheet();
}

void CorvaneAppDelegate::moreInfoButton(QObject* /*sender*/)
{
    openPage(u"CorvaneInformationURL"_s);
}

void CorvaneAppDelegate::techSupport(QObject* /*sender*/)
{
    openPage(u"CorvaneSupportURL"_s);
}

void CorvaneAppDelegate::openPage(const QString& key)
{
    const QString address = m_services.bundle.infoDictionary().value(key).toString();
    if (!m_services.workspace.open(QUrl(address))) {
        doAlertSheet({tr("The page could not be opened"),
                      tr("No program that opens pages was found. The address is %1").arg(address)});
    }
}

// Settings

double CorvaneAppDelegate::compressionFactor() const
{
    return m_compressionFactor;
}

void CorvaneAppDelegate::setCompressionFactor(double quality)
{
    m_compressionFactor = quality;
    const float single = static_cast<float>(quality);
    setCompressionFactorText(NumberValue::withTwoDecimals(static_cast<double>(single)));
    m_services.defaults.setDouble(u"JpegQuality"_s, quality);
    emit compressionFactorChanged(quality);
}

QString CorvaneAppDelegate::compressionFactorText() const
{
    return m_compressionFactorText;
}

void CorvaneAppDelegate::setCompressionFactorText(const QString& text)
{
    m_compressionFactorText = text;
    emit compressionFactorTextChanged(text);
}

float CorvaneAppDelegate::scaleFactor() const
{
    return m_scaleFactor;
}

void CorvaneAppDelegate::setScaleFactor(float factor)
{
    m_scaleFactor = factor;
    emit scaleFactorChanged(factor);
}

bool CorvaneAppDelegate::fixedSize() const
{
    return m_fixedSize;
}

void CorvaneAppDelegate::setFixedSize(bool fixed)
{
    m_fixedSize = fixed;
    emit fixedSizeChanged(fixed);
}

QVariant CorvaneAppDelegate::longSize() const
{
    const std::lock_guard guard(m_mutex);
    return m_longSize;
}

void CorvaneAppDelegate::setLongSize(const QVariant& pixels)
{
    const qint64 count = NumberValue::integer(pixels);
    {
        const std::lock_guard guard(m_mutex);
        m_longSize = pixels;
    }
    if (count != 0) {
        m_prevLongSize = pixels;
        m_services.defaults.setValue(u"LongSide"_s, pixels);
    }
    emit longSizeChanged(pixels);
}

QVariant CorvaneAppDelegate::shortSize() const
{
    const std::lock_guard guard(m_mutex);
    return m_shortSize;
}

void CorvaneAppDelegate::setShortSize(const QVariant& pixels)
{
    const qint64 count = NumberValue::integer(pixels);
    {
        const std::lock_guard guard(m_mutex);
        m_shortSize = pixels;
    }
    if (count != 0) {
        m_prevShortSize = pixels;
        m_services.defaults.setValue(u"ShortSide"_s, pixels);
    }
    emit shortSizeChanged(pixels);
}

bool CorvaneAppDelegate::longLocked() const
{
    return m_longLocked;
}

void CorvaneAppDelegate::setLongLocked(bool locked)
{
    m_services.presenter.commitEditing(Presenter::Field::LongSide);
    if (locked) {
        setLongSize(m_prevLongSize);
    } else {
        m_services.presenter.commitEditing(Presenter::Field::ShortSide);
        m_prevLongSize = longSize();
        setLongSize(0);
        setShortLocked(true);
    }
    m_longLocked = locked;
    m_services.defaults.setBool(u"LongLocked"_s, locked);
    emit longLockedChanged(locked);
}

bool CorvaneAppDelegate::shortLocked() const
{
    return m_shortLocked;
}

void CorvaneAppDelegate::setShortLocked(bool locked)
{
    m_services.presenter.commitEditing(Presenter::Field::ShortSide);
    if (locked) {
        setShortSize(m_prevShortSize);
    } else {
        m_services.presenter.commitEditing(Presenter::Field::LongSide);
        m_prevShortSize = shortSize();
        setShortSize(0);
        setLongLocked(true);
    }
    m_shortLocked = locked;
    m_services.defaults.setBool(u"ShortLocked"_s, locked);
    emit shortLockedChanged(locked);
}

// State

bool CorvaneAppDelegate::nowProcessing() const
{
    return m_nowProcessing;
}

void CorvaneAppDelegate::setNowProcessing(bool processing)
{
    m_nowProcessing = processing;
}

bool CorvaneAppDelegate::cancelled() const
{
    return m_cancelled;
}

void CorvaneAppDelegate::setCancelled(bool cancelled)
{
    m_cancelled = cancelled;
}

std::optional<QString> CorvaneAppDelegate::theLibrary() const
{
    const std::lock_guard guard(m_mutex);
    return m_theLibrary;
}

void CorvaneAppDelegate::setTheLibrary(const std::optional<QString>& path)
{
    const std::lock_guard guard(m_mutex);
    m_theLibrary = path;
}

quint64 CorvaneAppDelegate::userSelectedFilesCount() const
{
    return m_userSelectedFilesCount;
}

void CorvaneAppDelegate::setUserSelectedFilesCount(quint64 count)
{
    m_userSelectedFilesCount = count;
}

QString CorvaneAppDelegate::timeRemaining() const
{
    const std::lock_guard guard(m_mutex);
    return m_timeRemaining;
}

void CorvaneAppDelegate::setTimeRemaining(const QString& text)
{
    {
        const std::lock_guard guard(m_mutex);
        m_timeRemaining = text;
    }
    emit timeRemainingChanged(text);
}

// Callbacks

void CorvaneAppDelegate::showAlert(const QString& message, const QString& title)
{
    const Alert alert{title, message};
    callOnMainThread([this, &alert] { doAlertSheet(alert); });
}

void CorvaneAppDelegate::showAlertOfClass(const QString& message, const QString& title)
{
    const Alert alert{title, message};
    callOnMainThread([this, &alert] {
        // Told before it runs: where nobody can answer, the presenter raises.
        emit alertShown(alert);
        m_services.presenter.runModal(alert);
    });
}

void CorvaneAppDelegate::doAlertSheet(const Alert& alert)
{
    emit alertShown(alert);
    m_services.presenter.beginSheet(alert);
}

void CorvaneAppDelegate::cfgProgressBarMaxValue(const QVariant& number)
{
    m_progressIndicator.setMaxValue(NumberValue::real(number));
}

void CorvaneAppDelegate::cfgProgressBarCurrentValue(const QVariant& number)
{
    m_progressIndicator.setDoubleValue(NumberValue::real(number));
}

void CorvaneAppDelegate::cfgProgressBarDeterminate()
{
    m_progressIndicator.setIndeterminate(false);
}

void CorvaneAppDelegate::cfgInfoText(const QString& /*text*/) {}

void CorvaneAppDelegate::userSelectedFiles(const QString& path)
{
    const SplitPath item(path);
    OpenPanel panel;
    panel.title = AccessTexts::title();
    panel.message = m_userSelectedFilesCount == 0 ? AccessTexts::firstFilePrompt(item.name)
                                                  : AccessTexts::laterFilePrompt(item.name);
    panel.directory = item.parent;
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    // It cannot be declined: only an answer gives the access that the scan waits for.
    OpenPanelResult result = m_services.presenter.runModal(panel);
    while (result.code != kPanelOk) {
        systemLog(u"NSOpenPanel result = %1"_s.arg(result.code));
        result = m_services.presenter.runModal(panel);
    }
    ++m_userSelectedFilesCount;
}

void CorvaneAppDelegate::photosSelected(const QList<PhotoOutcome>& photos)
{
    performOnMainThread([this, photos] { emit selectionTaken(photos); }, Wait::No);
}

void CorvaneAppDelegate::photoFinished(const PhotoOutcome& outcome)
{
    performOnMainThread([this, outcome] { emit photoDone(outcome); }, Wait::No);
}
