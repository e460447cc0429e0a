#include "OldCatalogue.h"

#include "PropertyList.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

std::optional<double> offsetOf(const QVariantMap& image)
{
    const QVariant local = image.value(u"DateAsTimerInterval"_s);
    const QVariant exact = image.value(u"DateAsTimerIntervalGMT"_s);
    if (!local.canConvert<double>() || !exact.canConvert<double>()) {
        return std::nullopt;
    }
    return local.toDouble() - exact.toDouble();
}

QList<qint64> idsOf(const QVariant& keyList)
{
    QList<qint64> ids;
    const QVariantList keys = keyList.toList();
    for (const QVariant& key : keys) {
        ids.append(key.toString().toLongLong());
    }
    return ids;
}

CatalogueAlbumSettings settingsOf(const QVariantMap& album)
{
    CatalogueAlbumSettings settings;
    if (const QString order = album.value(u"Sort Order"_s).toString(); !order.isEmpty()) {
        settings.sortOrder = order;
    }
    bool isNumber = false;
    const double speed = album.value(u"TransitionSpeed"_s).toDouble(&isNumber);
    settings.transitionSpeed = isNumber && std::isfinite(speed) ? speed : settings.transitionSpeed;
    settings.isShuffled = album.value(u"ShuffleSlides"_s).toBool();
    return settings;
}

} // namespace

OldCatalogue OldCatalogue::parse(const QByteArray& bytes)
{
    OldCatalogue catalogue;
    const QString images = u"Master Image List"_s;
    const Result<QVariant> parsed = PropertyList::parse(
        bytes, {.key = images, .taken = [&catalogue](const QString& id, const QVariant& image) {
                    catalogue.addImage(id.toLongLong(), image.toMap());
                }});
    const QVariantMap content = parsed.ok() ? parsed.value().toMap() : QVariantMap();
    if (content.value(images).typeId() != QMetaType::QVariantMap) {
        return {};
    }
    catalogue.m_read = true;
    for (auto entry = content.begin(); entry != content.end(); ++entry) {
        if (entry.value().typeId() == QMetaType::QString) {
            catalogue.m_texts.insert(entry.key(), entry.value());
        }
    }
    catalogue.m_faces = content.value(u"List of Faces"_s).toMap();
    const QVariantList albums = content.value(u"List of Albums"_s).toList();
    for (const QVariant& item : albums) {
        const QVariantMap album = item.toMap();
        catalogue.m_albums.insert(album.value(u"GUID"_s).toString(),
                                  {album.value(u"Album Type"_s).toString(),
                                   idsOf(album.value(u"KeyList"_s)),
                                   settingsOf(album)});
    }
    const QVariantList rolls = content.value(u"List of Rolls"_s).toList();
    for (const QVariant& item : rolls) {
        const QVariantMap roll = item.toMap();
        catalogue.m_rollNames.insert(roll.value(u"RollID"_s).toLongLong(),
                                     roll.value(u"RollName"_s).toString());
    }
    return catalogue;
}

void OldCatalogue::addImage(qint64 id, const QVariantMap& image)
{
    const std::optional<double> offset = offsetOf(image);
    m_images.insert(id,
                    {offset,
                     image.value(u"ImagePath"_s).toString(),
                     image.value(u"OriginalPath"_s).toString(),
                     image.value(u"Faces"_s).toList()});
    if (offset) {
        m_offset = offset;
    }
}

QString OldCatalogue::text(const QString& key) const
{
    const QVariant value = m_texts.value(key);
    return value.isValid() ? value.toString() : QString();
}

std::optional<OldCatalogue::Album> OldCatalogue::album(const QString& guid) const
{
    const auto found = m_albums.find(guid);
    return found == m_albums.end() ? std::nullopt : std::optional<Album>(*found);
}
