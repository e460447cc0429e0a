#include "KeyedArchive.h"

#include "PropertyList.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

class Archiver final
{
public:
    explicit Archiver(QStringList dictionaryClasses)
        : m_dictionaryClasses(std::move(dictionaryClasses))
    {
        m_objects.append(u"$null"_s);
    }

    PropertyList::Uid add(const QVariant& value)
    {
        if (value.typeId() == QMetaType::QVariantMap) {
            return addDictionary(value.toMap());
        }
        if (value.typeId() == QMetaType::QVariantList) {
            return addArray(value.toList());
        }
        return addScalar(value);
    }

    [[nodiscard]] const QVariantList& objects() const { return m_objects; }

private:
    PropertyList::Uid addDictionary(const QVariantMap& map)
    {
        const qsizetype place = reserve();
        QVariantList keys;
        QVariantList values;
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
            keys.append(QVariant::fromValue(addScalar(entry.key())));
            values.append(QVariant::fromValue(add(*entry)));
        }
        m_objects[place] = QVariantMap{{u"NS.keys"_s, keys},
                                       {u"NS.objects"_s, values},
                                       {u"$class"_s, classOf(m_dictionaryClasses)}};
        return {static_cast<quint64>(place)};
    }

    PropertyList::Uid addArray(const QVariantList& list)
    {
        const qsizetype place = reserve();
        QVariantList values;
        for (const QVariant& value : list) {
            values.append(QVariant::fromValue(add(value)));
        }
        m_objects[place] =
            QVariantMap{{u"NS.objects"_s, values},
                        {u"$class"_s, classOf({u"NSMutableArray"_s, u"NSArray"_s, u"NSObject"_s})}};
        return {static_cast<quint64>(place)};
    }

    PropertyList::Uid addScalar(const QVariant& value)
    {
        for (qsizetype i = 1; i < m_objects.size(); ++i) {
            if (m_objects.at(i).typeId() == value.typeId() && m_objects.at(i) == value) {
                return {static_cast<quint64>(i)};
            }
        }
        m_objects.append(value);
        return {static_cast<quint64>(m_objects.size() - 1)};
    }

    QVariant classOf(const QStringList& names)
    {
        const QVariantMap description{
            {u"$classname"_s, names.first()},
            {u"$classes"_s, QVariant(QVariantList(names.begin(), names.end()))}};
        return QVariant::fromValue(addScalar(description));
    }

    qsizetype reserve()
    {
        m_objects.append(QVariant());
        return m_objects.size() - 1;
    }

    QStringList m_dictionaryClasses;
    QVariantList m_objects;
};

} // namespace

QByteArray KeyedArchive::encode(const QVariant& value, const QStringList& dictionaryClasses)
{
    Archiver archiver(dictionaryClasses);
    const PropertyList::Uid root = archiver.add(value);
    const QVariantMap archive{{u"$archiver"_s, u"NSKeyedArchiver"_s},
                              {u"$version"_s, 100000},
                              {u"$top"_s, QVariantMap{{u"root"_s, QVariant::fromValue(root)}}},
                              {u"$objects"_s, archiver.objects()}};
    const Result<QByteArray> bytes = PropertyList::toBinary(archive);
    Q_ASSERT_X(bytes.ok(), "KeyedArchive::encode", "value of a type that is not archived");
    return bytes.ok() ? bytes.value() : QByteArray();
}
