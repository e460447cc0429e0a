#include "AlbumQueries.h"

#include "KeyedArchive.h"
#include "LibraryFixture.h"
#include "PropertyList.h"

using namespace Qt::StringLiterals;

namespace
{

/// The values that an archive holds, without the numbers of its objects.
QVariant resolved(const QVariantList& objects, const QVariant& value)
{
    if (value.canConvert<PropertyList::Uid>()) {
        return resolved(
            objects, objects.value(static_cast<qsizetype>(value.value<PropertyList::Uid>().value)));
    }
    if (value.typeId() != QMetaType::QVariantMap) {
        return value;
    }
    const QVariantMap object = value.toMap();
    const QVariantList values = object.value(u"NS.objects"_s).toList();
    if (object.contains(u"NS.keys"_s)) {
        const QVariantList keys = object.value(u"NS.keys"_s).toList();
        QVariantMap map;
        for (qsizetype i = 0; i < keys.size(); ++i) {
            map.insert(resolved(objects, keys.at(i)).toString(), resolved(objects, values.at(i)));
        }
        return map;
    }
    QVariantList list;
    for (const QVariant& entry : values) {
        list.append(resolved(objects, entry));
    }
    return list;
}

QVariant unarchived(const QByteArray& bytes)
{
    const Result<QVariant> archive = PropertyList::parse(bytes);
    if (!archive.ok()) {
        return {};
    }
    const QVariantMap content = archive.value().toMap();
    return resolved(content.value(u"$objects"_s).toList(),
                    content.value(u"$top"_s).toMap().value(u"root"_s));
}

} // namespace

TEST(AlbumQueriesTest, theyAreThoseOfTheApplicationsOwnAlbums)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    const QList<std::pair<QString, QByteArray>> albums{
        {u"allPhotosAlbum"_s, AlbumQueries::everything()},
        {u"trashAlbum"_s, AlbumQueries::trash()},
        {u"rejectedAlbum"_s, AlbumQueries::rejected()},
        {u"flaggedAlbum"_s, AlbumQueries::flagged()},
        {u"peopleAlbum"_s, AlbumQueries::people()},
        {u"allPlacedPhotosAlbum"_s, AlbumQueries::places()}};
    for (const auto& [uuid, made] : albums) {
        Sql::Query row(
            library.connection(), "SELECT filterData,queryData FROM RKAlbum WHERE uuid=?", uuid);
        ASSERT_TRUE(row.next());
        EXPECT_EQ(unarchived(made), unarchived(Sql::blob(row.column(1)))) << uuid.toStdString();
    }
    Sql::Query row(library.connection(),
                   "SELECT filterData FROM RKAlbum WHERE uuid='lastImportAlbum'");
    ASSERT_TRUE(row.next());
    EXPECT_EQ(unarchived(AlbumQueries::commonFilter()), unarchived(Sql::blob(row.column(0))));
}

TEST(AlbumQueriesTest, theLastTwelveMonthsEndToday)
{
    const QVariantMap query =
        unarchived(AlbumQueries::lastTwelveMonths(QDate(2024, 2, 29))).toMap();
    const QVariantMap months = query.value(u"querySubqueries"_s).toList().last().toMap();
    EXPECT_EQ(months.value(u"queryFirstValue"_s).toString(), u"2/28/2023 GMT"_s);
    EXPECT_EQ(months.value(u"querySecondValue"_s).toString(), u"2/29/2024 GMT"_s);
}

TEST(KeyedArchiveTest, whatIsArchivedComesBack)
{
    const QVariantMap value{{u"text"_s, u"Ähre"_s},
                            {u"again"_s, u"Ähre"_s},
                            {u"one"_s, 1},
                            {u"yes"_s, true},
                            {u"real"_s, 1.0},
                            {u"none"_s, QVariantList()},
                            {u"list"_s, QVariantList{1, u"text"_s, QVariantMap{{u"x"_s, 2}}}}};
    const QVariantMap back = unarchived(KeyedArchive::encode(value)).toMap();
    EXPECT_EQ(back, value);
    EXPECT_EQ(back.value(u"yes"_s).typeId(), QMetaType::Bool);
    EXPECT_EQ(back.value(u"real"_s).typeId(), QMetaType::Double);
    EXPECT_NE(back.value(u"one"_s).typeId(), QMetaType::Bool);
}
