#include "PropertyList.h"

#include "PropertyListForms.h"
#include "WholeFile.h"

#include <QStringList>

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// For readers that keep all.
void giveAway(QVariant& root, const PropertyList::GivenEntries& given)
{
    if (!given.taken) {
        return;
    }
    QVariantMap content = root.toMap();
    const auto entries = content.find(given.key);
    if (entries == content.end() || entries->typeId() != QMetaType::QVariantMap) {
        return;
    }
    const QVariantMap taken = entries->toMap();
    for (auto entry = taken.begin(); entry != taken.end(); ++entry) {
        given.taken(entry.key(), entry.value());
    }
    *entries = QVariantMap();
    root = content;
}

} // namespace

Result<QVariant> PropertyList::parse(const QByteArray& bytes, const GivenEntries& given)
{
    const bool isBinary = bytes.startsWith("bplist");
    if (!isBinary) {
        if (std::optional<QVariant> plain = PropertyListForms::readPlainXml(bytes, given)) {
            return *std::move(plain);
        }
    }
    Result<QVariant> whole =
        isBinary ? PropertyListForms::readBinary(bytes) : PropertyListForms::readXml(bytes);
    if (whole.ok()) {
        giveAway(whole.value(), given);
    }
    return whole;
}

Result<QVariant> PropertyList::read(const QString& path, qint64 mostBytes)
{
    const Result<QByteArray> bytes = WholeFile::read(path, mostBytes);
    if (!bytes.ok()) {
        return bytes.error();
    }
    Result<QVariant> parsed = parse(bytes.value());
    if (!parsed.ok()) {
        return Error{parsed.error().code, u"\"%1\": %2"_s.arg(path, parsed.error().message)};
    }
    return parsed;
}

Result<QByteArray> PropertyList::toXml(const QVariant& value)
{
    return PropertyListForms::writeXml(value);
}

Result<QByteArray> PropertyList::toBinary(const QVariant& value)
{
    return PropertyListForms::writeBinary(value);
}

QVariant PropertyListForms::normalised(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList:
    case QMetaType::QString:
    case QMetaType::LongLong:
    case QMetaType::Double:
    case QMetaType::Bool:
    case QMetaType::QByteArray:
        return value;
    case QMetaType::QStringList: {
        const QStringList texts = value.toStringList();
        return QVariantList(texts.cbegin(), texts.cend());
    }
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        // One integer has one form, whatever type it comes in.
        return value.toULongLong() <= quint64{std::numeric_limits<qint64>::max()}
                   ? QVariant(value.toLongLong())
                   : QVariant(value.toULongLong());
    default:
        break;
    }
    const bool isOwnType = value.metaType() == QMetaType::fromType<PropertyList::Date>() ||
                           value.metaType() == QMetaType::fromType<PropertyList::Uid>();
    return isOwnType ? value : QVariant();
}
