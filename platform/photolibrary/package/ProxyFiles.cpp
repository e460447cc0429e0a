#include "ProxyFiles.h"

#include "PathMapping.h"
#include "PictureIntake.h"
#include "Queries.h"
#include "Volumes.h"

#include <QFileInfo>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// What a photo's pictures are made from.
struct ProxiedPhoto {
    QString preview;  ///< absolute; empty where the photo has none
    QString original; ///< absolute; empty where it is out of reach
    bool isRaw{false};
    bool isEdited{false};
    qint64 rotation{0}; ///< clockwise degrees from the original to what is shown
};

ProxiedPhoto photoOf(Connection& connection, qint64 version)
{
    const QString& package = connection.packagePath();
    Sql::Query row(connection,
                   "SELECT p.fullSizePreviewPath, m.imagePath, m.fileIsReference, m.isTrulyRaw,"
                   " v.hasEnabledAdjustments, v.rotation, m.fileVolumeUuid FROM RKVersion v"
                   " JOIN RKMaster m ON m.uuid = v.masterUuid"
                   " JOIN prox.RKImageProxyState p ON p.versionId = v.modelId"
                   " WHERE v.modelId = ?",
                   version);
    ProxiedPhoto photo;
    if (row.next()) {
        const QString preview = Sql::text(row.column(0));
        photo.preview =
            preview.isNull() ? QString() : PathMapping::inside(package, "Previews"_L1, preview);
        const bool isReference = row.column(2).getInt64() != 0;
        photo.original = PathMapping::master(
            package,
            {Sql::text(row.column(1)),
             isReference,
             isReference ? Volumes::of(connection, Sql::text(row.column(6))).folder : QString()});
        photo.isRaw = row.column(3).getInt64() != 0;
        photo.isEdited = row.column(4).getInt64() != 0;
        photo.rotation = row.column(5).getInt64();
    }
    return photo;
}

/// The picture that shows what the thumbnail should; empty where there is none.
QString originalOf(const ProxiedPhoto& photo, ProxyFiles::Kind kind)
{
    const bool showsItself = !photo.isRaw && !photo.isEdited;
    if (kind == ProxyFiles::Kind::Preview || photo.preview.isEmpty()) {
        return showsItself ? photo.original : QString();
    }
    return photo.preview;
}

} // namespace

QList<ProxyFiles::Missing> ProxyFiles::missing(Connection& connection)
{
    struct Column {
        Kind kind{Kind::Preview};
        QLatin1StringView folder;
    };

    constexpr std::array kColumns{Column{Kind::Preview, "Previews"_L1},
                                  Column{Kind::Thumbnail, "Thumbnails"_L1},
                                  Column{Kind::Miniature, "Thumbnails"_L1}};
    QList<Missing> all;
    Sql::Query row(connection,
                   "SELECT p.fullSizePreviewPath, p.thumbnailPath, p.miniThumbnailPath,"
                   " p.versionId, m.fileName FROM prox.RKImageProxyState p"
                   " LEFT JOIN RKVersion v ON v.modelId = p.versionId"
                   " LEFT JOIN RKMaster m ON m.uuid = v.masterUuid ORDER BY p.versionId");
    while (row.next()) {
        for (int index = 0; index < static_cast<int>(kColumns.size()); ++index) {
            const auto& [kind, folder] = kColumns.at(static_cast<std::size_t>(index));
            const QString relative = Sql::text(row.column(index));
            const QString path =
                relative.isNull() ? QString()
                                  : PathMapping::inside(connection.packagePath(), folder, relative);
            if (!relative.isNull() && (path.isEmpty() || !QFileInfo::exists(path))) {
                all.append({static_cast<qint64>(row.column(3).getInt64()),
                            Sql::text(row.column(4)),
                            kind,
                            folder + u'/' + relative,
                            path.isEmpty()});
            }
        }
    }
    return all;
}

bool ProxyFiles::canBeMade(Connection& connection, const Missing& missing)
{
    const ProxiedPhoto photo = photoOf(connection, missing.version);
    const QString source = originalOf(photo, missing.kind);
    if (missing.leadsOut || source.isEmpty()) {
        return false;
    }
    const bool previewComesFirst = missing.kind != Kind::Preview && source == photo.preview;
    return QFileInfo(source).isFile() || (previewComesFirst && !photo.isRaw && !photo.isEdited &&
                                          QFileInfo(photo.original).isFile());
}

Result<QByteArray> ProxyFiles::make(Connection& connection, const Missing& missing)
{
    const ProxiedPhoto photo = photoOf(connection, missing.version);
    const QString source = originalOf(photo, missing.kind);
    const Error impossible{ErrorCode::Unsupported,
                           u"“%1” cannot be made from the original “%2”."_s.arg(
                               missing.relativePath, missing.fileName)};
    if (missing.leadsOut || source.isEmpty()) {
        return impossible;
    }
    const Result<PreparedPicture> rendered = PictureIntake::rendered(source);
    if (!rendered.ok()) {
        return rendered.error();
    }
    const PreparedPicture& picture = rendered.value();
    if (source == photo.original && picture.rotation != photo.rotation) {
        return impossible; // the user turned it
    }
    switch (missing.kind) {
    case Kind::Preview:
        return picture.preview.isEmpty() ? Result<QByteArray>(impossible) : picture.preview;
    case Kind::Thumbnail:
        return picture.thumbnail;
    case Kind::Miniature:
        return picture.miniature;
    }
    Q_UNREACHABLE();
}
