#include "SidecarValues.h"

#include "PropertyList.h"

#include <QSet>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// Columns that hold 0 or 1 and do not start with "is" or "has".
constexpr std::array kSwitches{"automaticallyGenerateFullSizePreviews"_L1,
                               "customSortAvailable"_L1,
                               "faceDetectionIsFromPreview"_L1,
                               "fileIsReference"_L1,
                               "fullSizePreviewUpToDate"_L1,
                               "miniThumbnailsCurrent"_L1,
                               "showInLibrary"_L1,
                               "sortAscending"_L1,
                               "thumbnailsCurrent"_L1,
                               "tinyThumbnailsCurrent"_L1};

bool startsWithWord(const QString& name, QLatin1StringView word)
{
    return name.size() > word.size() && name.startsWith(word) && name.at(word.size()).isUpper();
}

bool isSwitch(const QString& name)
{
    return startsWithWord(name, "is"_L1) || startsWithWord(name, "has"_L1) ||
           std::ranges::any_of(kSwitches,
                               [&name](QLatin1StringView known) { return name == known; });
}

bool isTime(const QString& name)
{
    return name.endsWith("Date"_L1);
}

bool isNumber(const QVariant& value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double;
}

QSet<QString> asSet(const QVariantList& list)
{
    QSet<QString> names;
    for (const QVariant& item : list) {
        names.insert(item.toString());
    }
    return names;
}

} // namespace

QVariant SidecarValues::ofColumn(const QString& name, const QVariant& stored)
{
    if (!isNumber(stored)) {
        return stored;
    }
    if (isSwitch(name)) {
        return stored.toDouble() != 0.0;
    }
    if (isTime(name)) {
        return QVariant::fromValue(PropertyList::Date{stored.toDouble()});
    }
    return stored;
}

void SidecarValues::mirror(QVariantMap& target, const QString& key, const QVariant& value)
{
    if (!value.isValid() || value.isNull()) {
        target.remove(key);
        return;
    }
    const QVariant old = target.value(key);
    if (isNumber(old) && isNumber(value) && old.toDouble() == value.toDouble()) {
        return;
    }
    target.insert(key, value);
}

void SidecarValues::mirrorRow(QVariantMap& target, Sql::Query& row, const QStringList& omitted)
{
    for (int index = 0; index < row.columnCount(); ++index) {
        const SQLite::Column column = row.column(index);
        const QString name = QString::fromUtf8(column.getName());
        if (!omitted.contains(name)) {
            mirror(target, name, ofColumn(name, Sql::value(column)));
        }
    }
}

void SidecarValues::mirrorNames(QVariantMap& target, const QString& key, const QStringList& names)
{
    const QVariantList old = target.value(key).toList();
    const bool same = target.contains(key) && old.size() == names.size() &&
                      asSet(old) == QSet<QString>(names.begin(), names.end());
    if (!same) {
        QVariantList list;
        for (const QString& name : names) {
            list.append(name);
        }
        target.insert(key, list);
    }
}

qsizetype SidecarValues::keepLost(QStringList& names,
                                  const QVariant& old,
                                  Connection& connection,
                                  const char* bearer)
{
    const QStringList told = old.toStringList();
    const qsizetype before = names.size();
    for (const QString& name : told) {
        if (!names.contains(name) && !Sql::firstInteger(connection, bearer, name).has_value()) {
            names.append(name);
        }
    }
    return names.size() - before;
}

QVariantList SidecarValues::rows(Sql::Query& query)
{
    QVariantList list;
    while (query.next()) {
        QVariantMap row;
        mirrorRow(row, query);
        list.append(row);
    }
    return list;
}
