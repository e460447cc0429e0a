#include "RollCatalogue.h"

#include "Description.h"
#include "NumberValue.h"
#include "PathText.h"
#include "PropertyList.h"
#include "SystemLog.h"
#include "Texts.h"
#include "helpers.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// The name of the folder that holds the file; nothing for a path of fewer than three parts.
std::optional<QString> folderOfFile(const std::optional<QString>& path)
{
    const QStringList parts = PathText::components(path.value_or(QString()));
    return parts.size() < 3 ? std::nullopt : std::make_optional(parts.at(parts.size() - 2));
}

/// Previews and thumbnails lie in a folder named by the photo's GUID.
QString guidOf(const ScriptingObjectPtr& object)
{
    const auto photo = std::dynamic_pointer_cast<Photo>(object);
    if (const auto guid = folderOfFile(photo ? photo->previewPath() : std::nullopt)) {
        return *guid;
    }
    const std::optional<QVariantMap> properties = photo ? photo->properties() : std::nullopt;
    systemLog(u"Unable to determine GUID from previewPath. "_s +
              (properties ? describe(*properties) : u"(null)"_s));
    if (const auto guid = folderOfFile(photo ? photo->thumbnailPath() : std::nullopt)) {
        return *guid;
    }
    systemLog(u"Also unable to determine GUID from thumbnail path"_s);
    return u""_s;
}

/// What cannot be parsed knows no photo.
RollCatalogue readCatalogue(const QString& path)
{
    const Result<QVariant> content = PropertyList::read(path, PropertyList::kMostBytesOfCatalogue);
    return RollCatalogue(content.ok() ? content.value() : QVariant());
}

} // namespace

QStringList RollCatalogue::albumNames(const QList<ScriptingObjectPtr>& selection,
                                      const QString& libraryPath,
                                      CorvaneDelegate& appDelegate)
{
    QStringList names;
    names.reserve(selection.size());
    const QString path = libraryPath + u"/AlbumData.xml"_s;
    if (!helpers::fileExists(path, appDelegate)) {
        systemLog(u"Unable to find AlbumData.xml"_s);
        names.fill(Texts::defaultAlbumName(), selection.size());
        return names;
    }
    const RollCatalogue catalogue = readCatalogue(path);
    for (const ScriptingObjectPtr& photo : selection) {
        names.append(catalogue.rollName(guidOf(photo)).value_or(Texts::defaultAlbumName()));
    }
    return names;
}

RollCatalogue::RollCatalogue(const QVariant& content)
{
    const QVariantMap catalogue = content.toMap();
    const QVariantList rolls = catalogue.value(u"List of Rolls"_s).toList();
    for (const QVariant& entry : rolls) {
        const QVariantMap record = entry.toMap();
        const QVariant id = record.value(u"RollID"_s);
        const QVariant name = record.value(u"RollName"_s);
        if (id.isNull()) {
            continue;
        }
        m_rolls.push_back({NumberValue::integer(id),
                           name.typeId() == QMetaType::QString ? std::make_optional(name.toString())
                                                               : std::nullopt});
    }
    const QVariantMap images = catalogue.value(u"Master Image List"_s).toMap();
    for (const QVariant& entry : images) {
        const QVariantMap record = entry.toMap();
        const QVariant guid = record.value(u"GUID"_s);
        const QVariant roll = record.value(u"Roll"_s);
        if (guid.typeId() == QMetaType::QString && !roll.isNull()) {
            m_guidHashes.push_back(qHash(guid.toString()));
            m_images.push_back({guid.toString(), NumberValue::integer(roll)});
        }
    }
}

std::optional<QString> RollCatalogue::rollName(const QString& guid) const
{
    const size_t hash = qHash(guid);
    auto found = std::ranges::find(m_guidHashes, hash);
    for (; found != m_guidHashes.end(); found = std::find(found + 1, m_guidHashes.end(), hash)) {
        const Image& image =
            m_images.at(static_cast<size_t>(std::distance(m_guidHashes.begin(), found)));
        const Roll* roll = image.guid == guid ? rollWithId(image.roll) : nullptr;
        if (roll == nullptr) {
            continue;
        }
        if (!roll->name) {
            throw ScriptingException(u"CatalogueIncomplete"_s, Texts::rollWithoutName(roll->id));
        }
        return roll->name;
    }
    return std::nullopt;
}

const RollCatalogue::Roll* RollCatalogue::rollWithId(qint64 id) const
{
    const auto roll = std::ranges::find(m_rolls, id, &Roll::id);
    return roll == m_rolls.end() ? nullptr : &*roll;
}
