#include "VersionSidecar.h"

#include "AdminData.h"
#include "LooseRows.h"
#include "PropertyList.h"
#include "Queries.h"
#include "SidecarFile.h"
#include "SidecarValues.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// The properties of a version, by key.
QVariantMap properties(Connection& connection, const char* sql, qint64 version)
{
    QVariantMap found;
    for (Sql::Query query(connection, sql, version); query.next();) {
        found.insert(Sql::text(query.column(0)), Sql::value(query.column(1)));
    }
    return found;
}

/// Numbers that this program changes; all others come from the picture's file.
bool isEdited(const QString& key)
{
    return key == "Altitude"_L1 || key == "Latitude"_L1 || key == "Longitude"_L1 ||
           key.startsWith("Capture"_L1);
}

/// Whether what the sidecar has stands for the same as what the databases have. These hold camera
/// values in fewer digits than sidecars do, and some numbers as text.
bool standsFor(const QString& key, const QVariant& old, const QVariant& wanted)
{
    constexpr double kRounding = 0.0011; // the databases keep three decimals or more
    const bool isNumber = old.typeId() == QMetaType::Double || old.typeId() == QMetaType::LongLong;
    if (!isNumber || isEdited(key)) {
        return false;
    }
    bool wantsNumber = false;
    const double difference = std::abs(wanted.toDouble(&wantsNumber) - old.toDouble());
    return wantsNumber && difference <= kRounding;
}

/// Makes the dictionary under `key` say what `wanted` says; no dictionary for nothing.
void mirrorAll(QVariantMap& content, const QString& key, const QVariantMap& wanted)
{
    const QVariantMap old = content.value(key).toMap();
    QVariantMap dictionary;
    for (auto entry = wanted.begin(); entry != wanted.end(); ++entry) {
        const QVariant known = old.value(entry.key());
        if (known.isValid()) {
            dictionary.insert(entry.key(), known);
        }
        if (!standsFor(entry.key(), known, entry.value())) {
            SidecarValues::mirror(dictionary, entry.key(), entry.value());
        }
    }
    SidecarValues::mirror(content, key, dictionary.isEmpty() ? QVariant() : QVariant(dictionary));
}

class VersionContent final
{
public:
    VersionContent(Connection& connection, qint64 version, QVariantMap& content)
        : m_connection(connection)
        , m_version(version)
        , m_content(content)
    {
    }

    void mirror()
    {
        mirrorColumns();
        mirrorKeywords();
        mirrorWords();
        mirrorCamera();
        mirrorAdjustments();
        if (m_content.value(u"versionNumber"_s).toLongLong() == 1) {
            mirrorProxies();
        }
        m_content.insert(u"version"_s, qlonglong{SidecarValues::kFormatVersion});
        // Sidecars are of the databases' own form: other minor versions have other columns.
        m_content.insert(
            u"minorVersion"_s,
            AdminData::text(m_connection, u"database"_s, u"versionMinor"_s).toLongLong());
    }

private:
    void mirrorColumns()
    {
        Sql::Query row(m_connection, "SELECT * FROM RKVersion WHERE modelId=?", m_version);
        if (row.next()) {
            SidecarValues::mirrorRow(m_content,
                                     row,
                                     {u"masterId"_s,
                                      u"adjSeqNum"_s,
                                      u"hasNotes"_s,
                                      u"hasKeywords"_s,
                                      u"exifLatitude"_s,
                                      u"exifLongitude"_s});
        }
    }

    void mirrorKeywords()
    {
        m_keywords = Sql::texts(m_connection,
                                "SELECT k.name FROM RKKeywordForVersion f JOIN RKKeyword k"
                                " ON k.modelId=f.keywordId WHERE f.versionId=? ORDER BY f.modelId",
                                m_version);
        keepLostKeywords();
        if (m_keywords.isEmpty()) {
            m_content.remove(u"keywords"_s);
        } else {
            SidecarValues::mirrorNames(m_content, u"keywords"_s, m_keywords);
        }
    }

    /// Where the row of a keyword is gone, this sidecar may be the last that tells its name. Where
    /// rows bear too many of the names that it tells, a lost one may have been defined anew since,
    /// which of them nobody knows: then all stay.
    void keepLostKeywords()
    {
        const qsizetype lost = LooseRows::lostKeywords(m_connection, m_version);
        if (lost == 0) {
            return;
        }
        const QVariant told = m_content.value(u"keywords"_s);
        const qsizetype kept = SidecarValues::keepLost(
            m_keywords, told, m_connection, "SELECT modelId FROM RKKeyword WHERE name=?");
        if (kept < lost) {
            m_keywords += told.toStringList();
            m_keywords.removeDuplicates();
        }
    }

    /// IPTC properties. The application adds the keywords of the visible version as one text,
    /// which has no row in the databases.
    void mirrorWords()
    {
        const QString key = u"iptcProperties"_s;
        const QString joined = u"Keywords"_s;
        QVariantMap wanted =
            properties(m_connection,
                       "SELECT p.propertyKey,s.stringProperty FROM RKIptcProperty p"
                       " JOIN RKUniqueString s ON s.modelId=p.stringId WHERE p.versionId=?",
                       m_version);
        const bool hadJoined = m_content.value(key).toMap().contains(joined);
        if (hadJoined && !wanted.contains(joined) && !m_keywords.isEmpty()) {
            QStringList sorted = m_keywords;
            sorted.sort(Qt::CaseInsensitive);
            wanted.insert(joined, sorted.join(u", "_s));
        }
        mirrorAll(m_content, key, wanted);
    }

    /// EXIF properties. The date among them is the version's, its row a mere placeholder.
    void mirrorCamera()
    {
        QVariantMap wanted =
            properties(m_connection,
                       "SELECT p.propertyKey,s.stringProperty FROM RKExifStringProperty p"
                       " JOIN RKUniqueString s ON s.modelId=p.stringId WHERE p.versionId=?",
                       m_version);
        wanted.insert(properties(m_connection,
                                 "SELECT propertyKey,numberProperty FROM RKExifNumberProperty"
                                 " WHERE versionId=?",
                                 m_version));
        const QVariant date = m_content.value(u"imageDate"_s);
        if (date.isValid()) {
            wanted.insert(u"ImageDate"_s, date);
        }
        mirrorAll(m_content, u"exifProperties"_s, wanted);
    }

    void mirrorAdjustments()
    {
        const QString uuid = m_content.value(u"uuid"_s).toString();
        Sql::Query query(m_connection,
                         "SELECT adjIndex,data,dbVersion,isEnabled,modelId,name,uuid FROM"
                         " RKImageAdjustment WHERE versionUuid=? ORDER BY adjIndex,modelId",
                         uuid);
        const QVariantList rows = SidecarValues::rows(query);
        const QVariantList old = m_content.value(u"RKImageAdjustments"_s).toList();
        const bool same =
            rows.size() == old.size() &&
            std::ranges::all_of(rows, [&old](const QVariant& row) { return old.contains(row); });
        if (rows.isEmpty()) {
            m_content.remove(u"RKImageAdjustments"_s);
        } else if (!same) {
            m_content.insert(u"RKImageAdjustments"_s, rows);
        }
    }

    void mirrorProxies()
    {
        const QString key = u"imageProxyState"_s;
        QVariantMap state = m_content.value(key).toMap();
        Sql::Query row(
            m_connection, "SELECT * FROM RKImageProxyState WHERE versionId=? LIMIT 1", m_version);
        if (row.next()) {
            SidecarValues::mirrorRow(state, row, {u"modelId"_s, u"versionId"_s});
            m_content.insert(key, state);
        } else {
            m_content.remove(key);
        }
    }

    Connection& m_connection;
    qint64 m_version;
    QVariantMap& m_content;
    QStringList m_keywords;
};

} // namespace

Result<void> VersionSidecar::put(Connection& connection,
                                 qint64 version,
                                 const QString& folder,
                                 SidecarOutput& output)
{
    const std::optional<qint64> number = Sql::firstInteger(
        connection, "SELECT versionNumber FROM RKVersion WHERE modelId=?", version);
    if (!number) {
        return {};
    }
    // No pattern to fill in: the uuid that ends the folder's path may hold "%1" itself.
    const QString path = folder + u"/Version-"_s + QString::number(*number) + u".apversion"_s;
    Result<SidecarFile> file = SidecarFile::open(path, SidecarFile::Form::Binary);
    if (!file.ok()) {
        return file.error();
    }
    if (output.needsContentOf(file.value())) {
        VersionContent(connection, version, file.value().content()).mirror();
    }
    return output.put(file.value(), SidecarOutput::Stamp::With);
}
