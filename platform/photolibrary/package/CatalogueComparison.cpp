#include "CatalogueComparison.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// Numbers are written with few decimals.
constexpr double kRounding = 0.0001;
/// Catalogues tell local time by an offset that may be another in summer.
constexpr double kSummerTime = 3600.0 + kRounding;

/// Keys that an entry may lack, and then must.
const QSet<QString>& optionalKeys()
{
    static const QSet<QString> kKeys{u"Flagged"_s,
                                     u"OriginalPath"_s,
                                     u"ThumbPath"_s,
                                     u"latitude"_s,
                                     u"longitude"_s,
                                     u"Parent"_s};
    return kKeys;
}

/// Keys of albums and rolls that are settings of their own, or that are compared otherwise.
bool isPassedOver(const QString& key)
{
    static const QSet<QString> kKeys{u"KeyList"_s,
                                     u"KeyListString"_s,
                                     u"ShuffleSlides"_s,
                                     u"SongPath"_s,
                                     u"Sort Order"_s,
                                     u"TransitionSpeed"_s};
    return kKeys.contains(key);
}

/// Kinds of albums that the databases tell of; books, slide shows and the like are others.
bool isKnownKind(const QString& type)
{
    static const QSet<QString> kTypes{u"99"_s,
                                      u"Event"_s,
                                      u"Flagged"_s,
                                      u"Folder"_s,
                                      u"Regular"_s,
                                      u"Smart"_s,
                                      u"Special Month"_s};
    return kTypes.contains(type);
}

bool isNumber(const QVariant& value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double;
}

bool agree(const QString& key, const QVariant& found, const QVariant& wanted)
{
    if (!isNumber(found) || !isNumber(wanted)) {
        return found == wanted;
    }
    const bool isLocal = key == "DateAsTimerInterval"_L1 || key == "RollDateAsTimerInterval"_L1;
    return std::abs(found.toDouble() - wanted.toDouble()) <= (isLocal ? kSummerTime : kRounding);
}

QStringList differingKeys(const QVariantMap& found, const QVariantMap& wanted)
{
    QStringList keys;
    for (auto entry = wanted.begin(); entry != wanted.end(); ++entry) {
        if (!isPassedOver(entry.key()) &&
            !agree(entry.key(), found.value(entry.key()), entry.value())) {
            keys.append(entry.key());
        }
    }
    for (const QString& key : optionalKeys()) {
        if (found.contains(key) && !wanted.contains(key)) {
            keys.append(key);
        }
    }
    keys.sort();
    return keys;
}

QStringList photosOf(const QVariantMap& entry)
{
    if (entry.contains(u"KeyListString"_s)) {
        return entry.value(u"KeyListString"_s).toString().split(u',', Qt::SkipEmptyParts);
    }
    QStringList photos;
    const QVariantList keys = entry.value(u"KeyList"_s).toList();
    for (const QVariant& key : keys) {
        photos.append(key.toString());
    }
    return photos;
}

/// A catalogue, or what it should be.
class Differences final
{
public:
    /// `images`: those that there should be, by id.
    Differences(QString file, QVariantMap images)
        : m_file(std::move(file))
        , m_images(std::move(images))
    {
    }

    void compareImages(const QVariantMap& found)
    {
        for (auto image = m_images.begin(); image != m_images.end(); ++image) {
            if (!found.contains(image.key())) {
                say(u"%1 lacks the photo %2."_s.arg(m_file, image.key()));
                continue;
            }
            const QStringList keys =
                differingKeys(found.value(image.key()).toMap(), image.value().toMap());
            if (!keys.isEmpty()) {
                say(u"%1 tells otherwise of photo %2 than the databases: %3."_s.arg(
                    m_file, image.key(), keys.join(u", "_s)));
            }
        }
        for (auto image = found.begin(); image != found.end(); ++image) {
            if (!m_images.contains(image.key())) {
                say(u"%1 lists photo %2, which is no photo that is shown."_s.arg(m_file,
                                                                                 image.key()));
            }
        }
    }

    /// Entries are told apart by `identity`, and named by `name`.
    void compareEntries(const QString& kind,
                        const QVariantList& found,
                        const QVariantList& wanted,
                        const QString& identity,
                        const QString& name)
    {
        QHash<QString, QVariantMap> known;
        for (const QVariant& item : found) {
            const QVariantMap entry = item.toMap();
            known.insert(entry.value(identity).toString(), entry);
        }
        for (const QVariant& item : wanted) {
            const QVariantMap entry = item.toMap();
            const QString title = u"%1 “%2”"_s.arg(kind, entry.value(name).toString());
            const QString key = entry.value(identity).toString();
            if (!known.contains(key)) {
                say(u"%1 lacks the %2."_s.arg(m_file, title));
                continue;
            }
            compareEntry(title, known.take(key), entry);
        }
        for (const QVariantMap& entry : std::as_const(known)) {
            const QString type = entry.value(u"Album Type"_s).toString();
            if (type.isEmpty() || isKnownKind(type)) {
                say(u"%1 lists the %2 “%3”, which the databases do not hold."_s.arg(
                    m_file, kind, entry.value(name).toString()));
            }
        }
    }

    [[nodiscard]] const QStringList& sentences() const { return m_sentences; }

private:
    void say(const QString& sentence) { m_sentences.append(sentence); }

    void compareEntry(const QString& title, const QVariantMap& found, const QVariantMap& wanted)
    {
        QStringList keys = differingKeys(found, wanted);
        const QStringList before = photosOf(found);
        const QStringList now = photosOf(wanted);
        if (!holdsTheSame(before, now)) {
            keys.append(u"the list of its photos"_s);
        } else if (!standsByDate(before, now)) {
            keys.append(u"the order of its photos"_s);
        }
        if (!keys.isEmpty()) {
            say(u"%1 tells otherwise of the %2 than the databases: %3."_s.arg(
                m_file, title, keys.join(u", "_s)));
        }
    }

    [[nodiscard]] static bool holdsTheSame(QStringList left, QStringList right)
    {
        left.sort();
        right.sort();
        return left == right;
    }

    [[nodiscard]] bool standsByDate(const QStringList& found, const QStringList& wanted) const
    {
        return std::equal(found.begin(),
                          found.end(),
                          wanted.begin(),
                          wanted.end(),
                          [this](const QString& left, const QString& right) {
                              return left == right || dateOf(left) == dateOf(right);
                          });
    }

    [[nodiscard]] double dateOf(const QString& photo) const
    {
        return m_images.value(photo).toMap().value(u"DateAsTimerIntervalGMT"_s).toDouble();
    }

    const QString m_file;
    const QVariantMap m_images;
    QStringList m_sentences;
};

void compareLists(Differences& comparison, const QVariantMap& found, const QVariantMap& wanted)
{
    comparison.compareEntries(u"album"_s,
                              found.value(u"List of Albums"_s).toList(),
                              wanted.value(u"List of Albums"_s).toList(),
                              u"GUID"_s,
                              u"AlbumName"_s);
    comparison.compareEntries(u"event"_s,
                              found.value(u"List of Rolls"_s).toList(),
                              wanted.value(u"List of Rolls"_s).toList(),
                              u"RollID"_s,
                              u"RollName"_s);
}

} // namespace

QStringList CatalogueComparison::ofFull(const QVariantMap& found, const QVariantMap& wanted)
{
    const QString images = u"Master Image List"_s;
    Differences comparison(u"AlbumData.xml"_s, wanted.value(images).toMap());
    comparison.compareImages(found.value(images).toMap());
    compareLists(comparison, found, wanted);
    return comparison.sentences();
}

QStringList CatalogueComparison::ofBrief(const QVariantMap& found,
                                         const QVariantMap& wanted,
                                         const QVariantMap& full)
{
    Differences comparison(u"AlbumData2.xml"_s, full.value(u"Master Image List"_s).toMap());
    compareLists(comparison, found, wanted);
    return comparison.sentences();
}
