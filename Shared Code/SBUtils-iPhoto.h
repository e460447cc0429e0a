#pragma once

#include "Scripting.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <memory>
#include <optional>

class Bundle;
class Clock;
class CorvaneDelegate;
class helpers;

/// The bridge to the photo application: everything that a scan asks of it but imports and albums.
/// Keeps one record per selected photo as parallel lists, and a log of the photos whose records
/// were incomplete.
///
/// Thread: the scan's worker. Errors: what the photo application raises passes through, except in
/// versionCheck().
class SBUtils final
{
public:
    /// Everything given outlives the bridge.
    SBUtils(ScriptingBridge& bridge, const Bundle& bundle, Clock& clock);
    ~SBUtils();
    SBUtils(const SBUtils&) = delete;
    SBUtils& operator=(const SBUtils&) = delete;

    /// The controller; set before anything else is asked.
    void setAppDelegate(CorvaneDelegate& appDelegate) { m_appDelegate = &appDelegate; }

    /// What is selected, photos or albums, in the application's order.
    [[nodiscard]] QList<ScriptingObjectPtr> getSelection();
    [[nodiscard]] QString getVersion();

    /// Whether the scan must not go on: the application cannot be reached, or its major version is
    /// not 9. An alert has said so then. The argument is not consulted.
    [[nodiscard]] bool versionCheck(bool showAlert);

    /// Returns when the application knows every required keyword, in any letter case: imports the
    /// program's keyword picture, which defines them, and as long as one is missing asks the user.
    /// `product`: the name shown to the user. Always answers NO.
    bool verifyKeywords(const QStringList& required, const QString& product);

    /// Builds the record lists of the selection. YES when they are complete; NO when the user
    /// cancelled: the lists are partial then and must not be used.
    /// Raises AssertionFailure, of the function "loadData of SBUtils ADDRESS", where the lists
    /// differ in length.
    [[nodiscard]] bool loadData(const QList<ScriptingObjectPtr>& selection);

    /// Bytes of the file behind a record: of the original where it is on disk, else of the image
    /// shown, else 0.
    [[nodiscard]] quint64 imagefs(qsizetype index) const;

    /// Assigns the keyword unless the photo carries it in exactly that spelling. Changes the
    /// application's selection.
    void tagImage(const PhotoPtr& photo, const QString& keyword);

    /// Where the photo's image file lies; nothing when it has none that can be read. Copies
    /// nothing; the second argument is not consulted.
    [[nodiscard]] std::optional<QUrl> exportImage(const ScriptingObjectPtr& photo,
                                                  bool mastersOnly);

    /// Notes an issue of a photo; reportImageIssues() writes all of them to the system log.
    void logImageIssue(const ScriptingObjectPtr& photo, const QString& issue);
    void reportImageIssues();

    // The record lists: entry i of each describes photo i of the selection. A null QVariant is a
    // property that the application reports as empty.
    [[nodiscard]] const QVariantList& sizeList() const { return m_sizeList; } ///< qint64, bytes

    void setSizeList(const QVariantList& list) { m_sizeList = list; }

    /// Numbers; an empty string for a photo without id.
    [[nodiscard]] const QVariantList& idList() const { return m_idList; }

    void setIdList(const QVariantList& list) { m_idList = list; }

    [[nodiscard]] const QVariantList& filenameList() const { return m_filenameList; }

    void setFilenameList(const QVariantList& list) { m_filenameList = list; }

    /// Width divided by height, 32-bit floats.
    [[nodiscard]] const QVariantList& dimsList() const { return m_dimsList; }

    void setDimsList(const QVariantList& list) { m_dimsList = list; }

    [[nodiscard]] const QVariantList& dateList() const { return m_dateList; } ///< PhotoDate

    void setDateList(const QVariantList& list) { m_dateList = list; }

    /// A reserved column: one empty string per photo.
    [[nodiscard]] const QStringList& hashList() const { return m_hashList; }

    void setHashList(const QStringList& list) { m_hashList = list; }

    /// Paths of the images that the application shows.
    [[nodiscard]] const QVariantList& pathList() const { return m_pathList; }

    void setPathList(const QVariantList& list) { m_pathList = list; }

    /// Paths of the masters.
    [[nodiscard]] const QVariantList& originalsPathList() const { return m_originalsPathList; }

    void setOriginalsPathList(const QVariantList& list) { m_originalsPathList = list; }

    [[nodiscard]] const QVariantList& heights() const { return m_heights; } ///< pixels

    void setHeights(const QVariantList& list) { m_heights = list; }

private:
    /// What makes two objects of the application equal: class and id.
    using ObjectKey = QPair<int, qint64>;

    [[nodiscard]] static ObjectKey keyOf(const ScriptingObjectPtr& object);
    void clearLists(qsizetype capacity);
    void prepareProgressBar(qsizetype count);
    [[nodiscard]] QVariantMap recordOf(const ScriptingObjectPtr& object);
    void
    appendRecord(const ScriptingObjectPtr& photo, const QVariantMap& record, QVariantList& widths);
    [[nodiscard]] QVariant valueOf(const ScriptingObjectPtr& photo,
                                   const QVariantMap& record,
                                   const QString& key,
                                   const QVariant& fallback,
                                   const QString& issue);
    /// Raises, in loadData()'s name, unless every list is as long as the selection.
    void checkLengths(const QVariantList& widths) const;
    void computeLists(const QVariantList& widths);
    [[nodiscard]] QStringList keywordNames();
    void importKeywordPicture();
    [[nodiscard]] qsizetype indexInSelection(const ScriptingObjectPtr& photo) const;

    const Bundle& m_bundle;
    Clock& m_clock;
    PhotoApplicationPtr m_photoApplication;
    std::unique_ptr<helpers> m_help;
    CorvaneDelegate* m_appDelegate{nullptr};
    QList<ScriptingObjectPtr> m_selectionList;

    QList<ScriptingObjectPtr> m_imagesWithIssues;
    QList<QStringList> m_issueDescriptors; ///< texts of the photo at the same index
    QHash<ObjectKey, qsizetype> m_issueIndexes;

    QVariantList m_sizeList;
    QVariantList m_idList;
    QVariantList m_filenameList;
    QVariantList m_dimsList;
    QVariantList m_dateList;
    QStringList m_hashList;
    QVariantList m_pathList;
    QVariantList m_originalsPathList;
    QVariantList m_heights;
};
