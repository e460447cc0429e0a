#include "LibrarySidecars.h"

#include "AdminData.h"
#include "PropertyList.h"
#include "Queries.h"
#include "RowQuestions.h"
#include "Schema.h"
#include "SidecarFile.h"
#include "SidecarValues.h"

#include <QHash>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kKeywordsVersion = 7;
/// The oldest minor version whose programs understand what this one writes.
constexpr int kCompatibleBackToMinorVersion = 220;

/// A stored setting as a property list tells it; a null variant for one that is not told.
QVariant typedSetting(const QString& text, qint64 storedDataType)
{
    switch (storedDataType) {
    case AdminData::kString:
        return text;
    case AdminData::kInteger:
        return text.toLongLong();
    case AdminData::kBoolean:
        return text.toLongLong() != 0;
    case AdminData::kReal:
        return text.toDouble();
    case AdminData::kDate:
        return QVariant::fromValue(PropertyList::Date{text.toDouble()});
    default:
        return {};
    }
}

/// Sets a setting; a date that is the same to the second, which is all that XML tells, stays.
void mirrorSetting(QVariantMap& target, const QString& key, const QVariant& value)
{
    const QVariant old = target.value(key);
    if (old.canConvert<PropertyList::Date>() && value.canConvert<PropertyList::Date>()) {
        const double difference = old.value<PropertyList::Date>().secondsSince2001 -
                                  value.value<PropertyList::Date>().secondsSince2001;
        if (std::abs(difference) < 1.0) {
            return;
        }
    }
    SidecarValues::mirror(target, key, value);
}

QVariantMap settings(Connection& connection, QVariantMap known)
{
    Sql::Query query(connection,
                     "SELECT propertyArea,propertyName,propertyValue,storedDataType FROM"
                     " RKAdminData WHERE persistAfterRebuild=1 AND propertyValue IS NOT NULL");
    while (query.next()) {
        const QString key = Sql::text(query.column(0)) + u'|' + Sql::text(query.column(1));
        const QVariant value = typedSetting(Sql::text(query.column(2)), query.column(3).getInt64());
        if (value.isValid()) {
            mirrorSetting(known, key, value);
        }
    }
    return known;
}

qlonglong rowCount(Connection& connection, const char* sql)
{
    return Sql::firstInteger(connection, sql).value_or(0);
}

/// Where the file does not tell yet, what it tells of the databases' form.
void addModel(QVariantMap& content, const QVariantMap& known, Connection& connection)
{
    const auto add = [&content](const QString& key, const QVariant& value) {
        if (!content.contains(key) && value.isValid()) {
            content.insert(key, value);
        }
    };
    const QString area = u"database"_s;
    add(u"DatabaseVersion"_s, AdminData::text(connection, area, u"versionMajor"_s).toLongLong());
    add(u"DatabaseMinorVersion"_s,
        AdminData::text(connection, area, u"versionMinor"_s).toLongLong());
    add(u"DatabaseCompatibleBackToMinorVersion"_s, qlonglong{kCompatibleBackToMinorVersion});
    add(u"projectVersion"_s, qlonglong{Schema::kProjectVersion});
    add(u"projectCompatibleBackToVersion"_s, qlonglong{Schema::kProjectVersion});
    add(u"databaseUuid"_s, known.value(u"database|databaseUuid"_s));
    add(u"createDate"_s, known.value(u"database|createDate"_s));
    add(u"isIPhotoLibrary"_s, known.value(u"database|isIPhotoLibrary"_s));
}

} // namespace

Result<void> LibrarySidecars::putKeywords(Connection& connection, SidecarOutput& output)
{
    Result<SidecarFile> file = SidecarFile::open(
        connection.packagePath() + u"/Database/Keywords.plist"_s, SidecarFile::Form::Xml);
    if (!file.ok()) {
        return file.error();
    }
    QVariantMap& content = file.value().content();
    QHash<QString, QVariantMap> missing;
    QStringList order;
    {
        Sql::Query query(connection, "SELECT modelId,name,uuid FROM RKKeyword ORDER BY modelId");
        while (query.next()) {
            QVariantMap keyword;
            SidecarValues::mirrorRow(keyword, query);
            order.append(Sql::text(query.column(2)));
            missing.insert(order.last(), keyword);
        }
    }
    // What photos still name is told by nothing else.
    const QList<qint64> lost = Sql::integers(
        connection, RowQuestions::column("keywordId", RowQuestions::kLostKeywords).c_str());
    QVariantList keywords;
    const QVariantList old = content.value(u"keywords"_s).toList();
    for (const QVariant& item : old) {
        QVariantMap keyword = item.toMap();
        const QVariantMap current = missing.take(keyword.value(u"uuid"_s).toString());
        if (!current.isEmpty()) {
            keyword.insert(current);
            keywords.append(keyword);
        } else if (lost.contains(keyword.value(u"modelId"_s).toLongLong())) {
            keywords.append(keyword);
        }
    }
    for (const QString& uuid : order) {
        if (missing.contains(uuid)) {
            keywords.append(missing.take(uuid));
        }
    }
    content.insert(u"keywords"_s, keywords);
    content.insert(u"keywords_version"_s, qlonglong{kKeywordsVersion});
    return output.put(file.value(), SidecarOutput::Stamp::Without);
}

Result<void> LibrarySidecars::putDataModel(Connection& connection, SidecarOutput& output)
{
    Result<SidecarFile> file = SidecarFile::open(
        connection.packagePath() + u"/Database/DataModelVersion.plist"_s, SidecarFile::Form::Xml);
    if (!file.ok()) {
        return file.error();
    }
    QVariantMap& content = file.value().content();
    const QString key = u"adminProperties"_s;
    const QVariantMap known = settings(connection, content.value(key).toMap());
    content.insert(key, known);
    content.insert(u"masterCount"_s,
                   rowCount(connection, "SELECT count(*) FROM RKMaster WHERE isInTrash=0"));
    content.insert(u"versionCount"_s,
                   rowCount(connection, "SELECT count(*) FROM RKVersion WHERE showInLibrary=1"));
    addModel(content, known, connection);
    return output.put(file.value(), SidecarOutput::Stamp::Without);
}
