#include "SBUtils-iPhoto.h"

#include "Assertion.h"
#include "Bundle.h"
#include "Clock.h"
#include "CorvaneDelegate.h"
#include "Description.h"
#include "MainThread.h"
#include "NumberValue.h"
#include "SystemLog.h"
#include "Texts.h"
#include "WaitForImport.h"
#include "helpers.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kSupportedMajorVersion = 9;

/// The digits that a text starts with, as a number; 0 without any.
qint64 leadingNumber(const QString& text)
{
    const auto* const end = std::ranges::find_if_not(
        text, [](QChar character) { return character >= u'0' && character <= u'9'; });
    return NumberValue::integer(text.left(std::distance(text.begin(), end)));
}

/// Of the required keywords those that have no equal among the names, in any letter case.
QStringList missingOf(const QStringList& required, const QStringList& names)
{
    QStringList missing;
    for (const QString& keyword : required) {
        if (!names.contains(keyword, Qt::CaseInsensitive)) {
            missing.append(keyword);
        }
    }
    return missing;
}

/// The low 32 bits, as a signed integer: what a 32-bit read of a number object gives.
qint32 integer32(const QVariant& number)
{
    return static_cast<qint32>(NumberValue::integer(number));
}

bool fileExistsAt(const QVariant& path)
{
    return !path.isNull() && QFileInfo::exists(path.toString());
}

} // namespace

SBUtils::SBUtils(ScriptingBridge& bridge, const Bundle& bundle, Clock& clock)
    : m_bundle(bundle)
    , m_clock(clock)
    , m_photoApplication(bridge.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s))
    , m_help(std::make_unique<helpers>())
{
}

SBUtils::~SBUtils() = default;

QList<ScriptingObjectPtr> SBUtils::getSelection()
{
    return m_photoApplication->selection();
}

QString SBUtils::getVersion()
{
    return m_photoApplication->version();
}

bool SBUtils::versionCheck(bool /*showAlert*/)
{
    QString version;
    try {
        version = getVersion();
    } catch (const ScriptingException& exception) {
        m_appDelegate->showAlertOfClass(
            Texts::communicationFailed(exception.name(), exception.reason()), Texts::errorTitle());
        return true;
    }
    systemLog(u"iPhoto Version "_s + (version.isNull() ? u"(null)"_s : version));
    if (leadingNumber(version.section(u'.', 0, 0)) != kSupportedMajorVersion) {
        m_appDelegate->showAlertOfClass(Texts::unsupportedVersion(),
                                        Texts::unsupportedVersionTitle());
        return true;
    }
    return false;
}

bool SBUtils::verifyKeywords(const QStringList& required, const QString& product)
{
    for (;;) {
        QStringList names = keywordNames();
        // Without any required keyword the picture is imported too: nothing marks all as found.
        if (required.isEmpty() || !missingOf(required, names).isEmpty()) {
            importKeywordPicture();
            names = keywordNames();
        }
        const QStringList missing = missingOf(required, names);
        if (missing.isEmpty()) {
            return false;
        }
        m_appDelegate->showAlertOfClass(Texts::missingKeywords(missing, product),
                                        Texts::missingKeywordsTitle());
    }
}

bool SBUtils::loadData(const QList<ScriptingObjectPtr>& selection)
{
    m_imagesWithIssues.clear();
    m_issueDescriptors.clear();
    m_issueIndexes.clear();
    m_appDelegate->cfgInfoText(Texts::keepAwayFromPhotoApplication());
    clearLists(selection.size());
    m_selectionList = selection;
    QVariantList widths;
    widths.reserve(selection.size());
    prepareProgressBar(selection.size());
    quint32 shown = 0;
    for (const ScriptingObjectPtr& photo : selection) {
        ++shown;
        performOnMainThread(
            [delegate = m_appDelegate, shown] { delegate->cfgProgressBarCurrentValue(shown); },
            Wait::No);
        if (m_appDelegate->cancelled()) {
            return false;
        }
        appendRecord(photo, recordOf(photo), widths);
    }
    checkLengths(widths);
    computeLists(widths);
    reportImageIssues();
    return true;
}

quint64 SBUtils::imagefs(qsizetype index) const
{
    const QVariant original = m_originalsPathList.value(index);
    const QVariant path = fileExistsAt(original) ? original : m_pathList.value(index);
    return fileExistsAt(path) ? static_cast<quint64>(QFileInfo(path.toString()).size()) : 0;
}

void SBUtils::tagImage(const PhotoPtr& photo, const QString& keyword)
{
    if (photo->keywords().contains(Keyword{keyword})) {
        return;
    }
    photo->select();
    m_photoApplication->assignKeywordString(keyword);
}

std::optional<QUrl> SBUtils::exportImage(const ScriptingObjectPtr& photo, bool /*mastersOnly*/)
{
    const QVariant path = m_pathList.value(indexInSelection(photo));
    if (path.isNull() || !helpers::fileExists(path, *m_appDelegate)) {
        return std::nullopt;
    }
    return QUrl::fromLocalFile(path.toString());
}

void SBUtils::logImageIssue(const ScriptingObjectPtr& photo, const QString& issue)
{
    const auto known = m_issueIndexes.constFind(keyOf(photo));
    if (known != m_issueIndexes.cend()) {
        m_issueDescriptors[*known].append(issue);
        return;
    }
    m_issueIndexes.insert(keyOf(photo), m_imagesWithIssues.size());
    m_imagesWithIssues.append(photo);
    m_issueDescriptors.append(QStringList{issue});
}

void SBUtils::reportImageIssues()
{
    // Looked up, not searched for: all photos of a large library may have issues.
    QHash<ObjectKey, qsizetype> places;
    for (qsizetype index = m_selectionList.size() - 1; index >= 0; --index) {
        places.insert(keyOf(m_selectionList.at(index)), index);
    }
    for (qsizetype issue = 0; issue < m_imagesWithIssues.size(); ++issue) {
        const ScriptingObjectPtr& photo = m_imagesWithIssues.at(issue);
        const qsizetype index = places.value(keyOf(photo), -1);
        systemLog(u"Issue: %1\n-%2\n-%3 of size %4"_s.arg(photo->description(),
                                                          describe(m_issueDescriptors.at(issue)),
                                                          describe(m_filenameList.value(index)),
                                                          describe(m_sizeList.value(index))));
    }
    systemLog(u"Found %1 images with issues"_s.arg(m_imagesWithIssues.size()));
}

SBUtils::ObjectKey SBUtils::keyOf(const ScriptingObjectPtr& object)
{
    return {static_cast<int>(object->scriptingClass()), object->id()};
}

void SBUtils::clearLists(qsizetype capacity)
{
    for (QVariantList* list : {&m_sizeList,
                               &m_idList,
                               &m_filenameList,
                               &m_dimsList,
                               &m_dateList,
                               &m_pathList,
                               &m_originalsPathList,
                               &m_heights}) {
        list->clear();
        list->reserve(capacity);
    }
    m_hashList.clear();
    m_hashList.reserve(capacity);
}

void SBUtils::prepareProgressBar(qsizetype count)
{
    CorvaneDelegate* delegate = m_appDelegate;
    performOnMainThread([delegate] { delegate->cfgProgressBarDeterminate(); }, Wait::Yes);
    performOnMainThread(
        [delegate, count] { delegate->cfgProgressBarMaxValue(static_cast<int>(count)); },
        Wait::Yes);
    performOnMainThread([delegate] { delegate->cfgProgressBarCurrentValue(0.0); }, Wait::No);
}

QVariantMap SBUtils::recordOf(const ScriptingObjectPtr& object)
{
    // An album among the photos has no record of a photo.
    const auto photo = std::dynamic_pointer_cast<Photo>(object);
    const std::optional<QVariantMap> properties = photo ? photo->properties() : std::nullopt;
    if (!properties) {
        logImageIssue(object, u"Invalid Properties"_s);
    }
    return properties.value_or(QVariantMap());
}

void SBUtils::appendRecord(const ScriptingObjectPtr& photo,
                           const QVariantMap& record,
                           QVariantList& widths)
{
    const auto value = [&](const QString& key, const QVariant& fallback, const QString& issue) {
        return valueOf(photo, record, key, fallback, issue);
    };
    m_filenameList.append(value(u"imageFilename"_s, u""_s, u"Invalid Filename"_s));
    m_pathList.append(value(u"imagePath"_s, u""_s, u"Invalid Path"_s));
    m_originalsPathList.append(value(u"originalPath"_s, u""_s, u"Invalid Path"_s));
    const PhotoDate now{m_clock.now(), u"GMT"_s};
    m_dateList.append(value(u"date"_s, QVariant::fromValue(now), u"Invalid Date"_s));
    m_idList.append(value(u"id"_s, u""_s, u"Invalid ID"_s));
    m_heights.append(value(u"height"_s, 0, u"Invalid Height"_s));
    widths.append(value(u"width"_s, 0, u"Invalid Width"_s));
}

QVariant SBUtils::valueOf(const ScriptingObjectPtr& photo,
                          const QVariantMap& record,
                          const QString& key,
                          const QVariant& fallback,
                          const QString& issue)
{
    const auto entry = record.constFind(key);
    if (entry != record.cend()) {
        return *entry;
    }
    logImageIssue(photo, issue);
    return fallback;
}

void SBUtils::checkLengths(const QVariantList& widths) const
{
    // It is the load of this bridge that failed, so that is what the failure names.
    const QString function =
        u"loadData of SBUtils 0x%1"_s.arg(reinterpret_cast<quintptr>(this), 0, 16);
    const QString file = u"Shared Code/SBUtils-iPhoto"_s;
    const auto isWhole = [count = m_selectionList.size()](const QVariantList& list) {
        return list.size() == count;
    };
    CORVANE_CONSISTENCY_ASSERT(isWhole(m_filenameList), u"Missing filenames"_s, function, file);
    CORVANE_CONSISTENCY_ASSERT(isWhole(m_idList), u"Missing image ids"_s, function, file);
    CORVANE_CONSISTENCY_ASSERT(isWhole(m_pathList), u"Missing file paths"_s, function, file);
    CORVANE_CONSISTENCY_ASSERT(isWhole(m_dateList), u"Missing image dates"_s, function, file);
    CORVANE_CONSISTENCY_ASSERT(isWhole(m_heights), u"Missing image heights"_s, function, file);
    CORVANE_CONSISTENCY_ASSERT(isWhole(widths), u"Missing image widths"_s, function, file);
}

void SBUtils::computeLists(const QVariantList& widths)
{
    systemLog(u"Building Lists"_s);
    for (qsizetype index = 0; index < m_selectionList.size(); ++index) {
        const qint32 width = integer32(widths.at(index));
        const qint32 height = integer32(m_heights.at(index));
        const double ratio = height == 0 ? 0.0 : static_cast<double>(width) / height;
        m_dimsList.append(static_cast<float>(ratio));
        m_sizeList.append(static_cast<qint64>(imagefs(index)));
        m_hashList.append(u""_s);
    }
}

QStringList SBUtils::keywordNames()
{
    QStringList names;
    for (const Keyword& keyword : m_photoApplication->keywords()) {
        names.append(keyword.name);
    }
    return names;
}

void SBUtils::importKeywordPicture()
{
    const QString picture = m_bundle.pathForResource(u"iPhoto Keywords"_s, u"jpg"_s);
    const AlbumPtr album = m_photoApplication->photoLibraryAlbum();
    album->importFrom(picture, true, album);
    waitForImport(*m_photoApplication, m_clock);
}

qsizetype SBUtils::indexInSelection(const ScriptingObjectPtr& photo) const
{
    const auto place = std::ranges::find_if(
        m_selectionList, [&](const auto& other) { return isSameObject(photo, other); });
    return place == m_selectionList.end() ? -1 : std::distance(m_selectionList.begin(), place);
}
