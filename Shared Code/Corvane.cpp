#include "Corvane.h"

#include "Assertion.h"
#include "Button.h"
#include "CorvaneScan.h"
#include "ImageSource.h"
#include "MainThread.h"
#include "ProgressIndicator.h"
#include "RollCatalogue.h"
#include "SBUtils-iPhoto.h"
#include "TextField.h"
#include "Texts.h"
#include "UserDefaults.h"
#include "UserNotificationCenter.h"
#include "helpers.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

void setOnMainThread(TextField& label, const QString& text, Wait wait)
{
    performOnMainThread([&label, text] { label.setStringValue(text); }, wait);
}

} // namespace

Corvane::Corvane(const ScanServices& services)
    : m_services(services)
    , m_photoApplication(services.bridge.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s))
    , m_help(std::make_unique<helpers>())
    , m_sbutils(std::make_unique<SBUtils>(services.bridge, services.bundle, services.clock))
    , m_idleSleep(services.power)
    , m_timeRemaining(services.defaults, services.clock)
{
}

Corvane::~Corvane() = default;

void Corvane::corvaneScan(CorvaneDelegate& delegate)
{
    m_delegate = &delegate;
    try {
        run();
    } catch (const ScriptingException& exception) {
        abortWithReason(exception.reason());
    } catch (const AssertionFailure& failure) {
        abortWithReason(failure.description());
    } catch (const std::exception& exception) {
        abortWithReason(QString::fromUtf8(exception.what()));
    }
}

void Corvane::estTimeRemaining(quint64 stage, quint64 curIdx, quint64 totalCount)
{
    m_timeRemaining.update(stage, curIdx, totalCount, [this](const QString& text) {
        if (m_delegate != nullptr) {
            m_delegate->setTimeRemaining(text);
        }
    });
}

AlbumPtr Corvane::findAlbum(const QString& name)
{
    const auto album = std::ranges::find_if(m_allAlbums, [&](const AlbumPtr& candidate) {
        return candidate->name() == name && candidate->type() == kRegularAlbumType;
    });
    return album == m_allAlbums.end() ? nullptr : *album;
}

void Corvane::createAlbum(const QString& name)
{
    m_photoApplication->newAlbumName(name);
    refreshAlbums();
}

void Corvane::run()
{
    Scan scan;
    if (!takeSelection(scan) || !loadSelection(scan)) {
        return;
    }
    prepareAlbums(scan);
    prepareConversion(scan);
    if (convertPhotos(scan)) {
        finish(scan);
    }
}

bool Corvane::takeSelection(Scan& scan)
{
    m_delegate->selectionScanButton().setEnabled(false);
    m_delegate->setNowProcessing(true);
    m_sbutils->setAppDelegate(*m_delegate);
    if (m_sbutils->versionCheck(true)) {
        // On purpose without a reset: without a usable application there is nothing to start.
        return false;
    }
    scan.selection = m_sbutils->getSelection();
    scan.count = static_cast<quint64>(scan.selection.size());
    estTimeRemaining(ScanStage::kStartUp, 0, scan.count);
    scan.tagEnabled = m_services.defaults.boolValue(u"TagEnabled"_s);
    if (scan.tagEnabled &&
        m_sbutils->verifyKeywords({Texts::originalKeyword(), Texts::processedKeyword()},
                                  Texts::productName())) {
        resetControls();
        return false;
    }
    const bool isAlbumOnly =
        scan.count == 1 && scan.selection.first()->scriptingClass() ==
                               m_photoApplication->photoLibraryAlbum()->scriptingClass();
    if (scan.count < 1 || isAlbumOnly) {
        stopWithAlert(Texts::nothingSelected(), Texts::unableToProcessTitle());
        return false;
    }
    estTimeRemaining(ScanStage::kStartUp, scan.count, scan.count);
    return true;
}

bool Corvane::loadSelection(Scan& scan)
{
    estTimeRemaining(ScanStage::kDataLoading, 0, scan.count);
    setStatus(Texts::loadingData());
    m_delegate->progressIndicator().setMaxValue(static_cast<double>(scan.count));
    if (!m_sbutils->loadData(scan.selection)) {
        resetControls();
        return false;
    }
    scan.filenameList = m_sbutils->filenameList();
    scan.pathList = m_sbutils->pathList();
    scan.sizeList = m_sbutils->sizeList();
    estTimeRemaining(ScanStage::kDataLoading, scan.count, scan.count);
    if (scan.pathList.size() != scan.selection.size() ||
        scan.filenameList.size() != scan.selection.size()) {
        stopWithAlert(Texts::itemsNotOpened(), Texts::unableToContinueTitle());
        return false;
    }
    return true;
}

void Corvane::prepareAlbums(Scan& scan)
{
    estTimeRemaining(ScanStage::kAlbumLoading, 0, scan.count);
    refreshAlbums();
    scan.photoLibraryAlbum = m_photoApplication->photoLibraryAlbum();
    if (const std::optional<QString> library = m_delegate->theLibrary()) {
        scan.albumNames = RollCatalogue::albumNames(scan.selection, *library, *m_delegate);
        return;
    }
    scan.defaultAlbum = findAlbum(Texts::defaultAlbumName());
    if (!scan.defaultAlbum) {
        createAlbum(Texts::defaultAlbumName());
        scan.defaultAlbum = findAlbum(Texts::defaultAlbumName());
    }
}

void Corvane::prepareConversion(Scan& scan)
{
    estTimeRemaining(ScanStage::kAlbumLoading, scan.count, scan.count);
    Result<TemporaryDirectory> directory = TemporaryDirectory::create();
    if (!directory.ok()) {
        throw ScriptingException(u"WriteFailed"_s, directory.error().message);
    }
    scan.temporaryDirectory.emplace(std::move(directory).value());
    scan.readableExtensions = ImageSource::readableExtensions();
    m_idleSleep.create();
    scan.processingOption = m_services.defaults.boolValue(u"ProcessingOption"_s);
}

bool Corvane::convertPhotos(Scan& scan)
{
    QList<PhotoOutcome> outcomes;
    for (const ScriptingObjectPtr& object : std::as_const(scan.selection)) {
        PhotoOutcome outcome;
        outcome.photoId = object->id();
        outcome.selectionIndex = static_cast<int>(outcomes.size());
        outcomes.append(outcome);
    }
    m_delegate->photosSelected(outcomes);
    for (const PhotoOutcome& outcome : std::as_const(outcomes)) {
        Turn turn;
        turn.object = scan.selection.at(outcome.selectionIndex);
        turn.photo = std::dynamic_pointer_cast<Photo>(turn.object);
        turn.outcome = outcome;
        turn.transaction = m_services.bridge.beginPhotoTurn();
        if (!takeTurn(scan, turn)) {
            return false;
        }
    }
    return true;
}

void Corvane::finish(const Scan& scan)
{
    m_idleSleep.release();
    estTimeRemaining(ScanStage::kEndOfScan, scan.count, scan.count);
    m_services.notifications.deliver(UserNotification{.title = Texts::notificationTitle(),
                                                      .informativeText = Texts::notificationText(),
                                                      .defaultSound = true});
    m_delegate->showAlert(Texts::finished(scan.originalsTotal, scan.convertedTotal),
                          Texts::allDoneTitle());
    setOnMainThread(m_delegate->countLabel(), QString(), Wait::Yes);
    setOnMainThread(m_delegate->statusLabel(), Texts::ready(), Wait::Yes);
    m_delegate->progressIndicator().setDoubleValue(0.0);
    m_delegate->setTimeRemaining(Texts::noTimeRemaining());
    m_delegate->selectionScanButton().setEnabled(true);
    m_delegate->setNowProcessing(false);
}

void Corvane::refreshAlbums()
{
    m_allAlbums = m_photoApplication->albums();
}

void Corvane::setStatus(const QString& text)
{
    setOnMainThread(m_delegate->statusLabel(), text, Wait::No);
}

void Corvane::setCount(const QString& text)
{
    setOnMainThread(m_delegate->countLabel(), text, Wait::No);
}

void Corvane::resetControls()
{
    m_delegate->selectionScanButton().setEnabled(true);
    setCount(QString());
    setStatus(Texts::ready());
    m_delegate->setNowProcessing(false);
    m_idleSleep.release();
    m_delegate->setTimeRemaining(Texts::noTimeRemaining());
}

void Corvane::stopWithAlert(const QString& message, const QString& title)
{
    m_delegate->showAlert(message, title);
    resetControls();
}

void Corvane::abortWithReason(const QString& reason)
{
    resetControls();
    m_delegate->showAlert(reason, Texts::conversionAbortedTitle());
}
