#include "ImportGroup.h"

#include "Queries.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

QDateTime ImportGroup::freeStamp(Connection& connection, const QString& package, QDateTime moment)
{
    const auto isTaken = [&](const QDateTime& stamp) {
        const QString relative = folder(stamp);
        const bool known =
            Sql::firstInteger(connection,
                              "SELECT modelId FROM RKImportGroup WHERE importYear = ?1 AND"
                              " importMonth = ?2 AND importDay = ?3 AND importTime = ?4",
                              stamp.toString(u"yyyy"_s),
                              stamp.toString(u"MM"_s),
                              stamp.toString(u"dd"_s),
                              stamp.toString(u"HHmmss"_s))
                .has_value();
        if (known) {
            return true;
        }
        constexpr std::array kRoots{
            "Masters/"_L1, "Previews/"_L1, "Thumbnails/"_L1, "Database/Versions/"_L1};
        return std::ranges::any_of(kRoots, [&](QLatin1StringView root) {
            return QFileInfo::exists(package + u'/' + root + relative);
        });
    };
    while (isTaken(moment)) {
        moment = moment.addSecs(1);
    }
    return moment;
}

QString ImportGroup::folder(const QDateTime& stamp)
{
    return stamp.toString(u"yyyy/MM/dd/yyyyMMdd-HHmmss"_s);
}

QString ImportGroup::ofMaster(Connection& connection, const QString& master)
{
    const QString path = Sql::firstText(
        connection,
        "SELECT imagePath FROM RKMaster WHERE uuid=? AND coalesce(fileIsReference,0)=0",
        master);
    if (!path.isNull()) {
        return path.section(u'/', 0, -2);
    }
    return Sql::firstText(
        connection,
        "SELECT g.importYear||'/'||g.importMonth||'/'||g.importDay||'/'||g.importYear||"
        "g.importMonth||g.importDay||'-'||g.importTime FROM RKMaster m JOIN RKImportGroup g"
        " ON g.uuid=m.importGroupUuid WHERE m.uuid=? AND m.fileIsReference<>0",
        master);
}
