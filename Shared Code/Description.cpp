#include "Description.h"

#include "Scripting.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

QString describeNested(const QVariant& value, int depth);

QString indentation(int depth)
{
    return QString(qsizetype{4} * depth, u' ');
}

bool isPlain(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z') ||
           (character >= u'0' && character <= u'9');
}

QString quoted(const QString& text)
{
    if (!text.isEmpty() && std::ranges::all_of(text, isPlain)) {
        return text;
    }
    QString escaped = text;
    escaped.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s).replace(u'\n', u"\\n"_s);
    return u'"' + escaped + u'"';
}

QString describeDate(const PhotoDate& date)
{
    const auto from2001 = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return from2001.addSecs(static_cast<qint64>(std::floor(date.secondsSince2001)))
        .toString(u"yyyy-MM-dd HH:mm:ss '+0000'"_s);
}

QString describeList(const QVariantList& list, int depth)
{
    QStringList lines;
    for (const QVariant& entry : list) {
        lines.append(indentation(depth + 1) + describeNested(entry, depth + 1));
    }
    return u"(\n"_s + lines.join(u",\n"_s) + (lines.isEmpty() ? u""_s : u"\n"_s) +
           indentation(depth) + u')';
}

QString describeMap(const QVariantMap& map, int depth)
{
    QString text = u"{\n"_s;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        text += indentation(depth + 1) + quoted(entry.key()) + u" = "_s +
                describeNested(entry.value(), depth + 1) + u";\n"_s;
    }
    return text + indentation(depth) + u'}';
}

QString describeNested(const QVariant& value, int depth)
{
    if (value.typeId() == qMetaTypeId<PhotoDate>()) {
        return quoted(describeDate(value.value<PhotoDate>()));
    }
    if (value.isNull()) {
        return u"\"<null>\""_s;
    }
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
        return describeMap(value.toMap(), depth);
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return describeList(value.toList(), depth);
    case QMetaType::QString:
        return quoted(value.toString());
    case QMetaType::Bool:
        return value.toBool() ? u"1"_s : u"0"_s;
    default:
        return value.toString();
    }
}

} // namespace

QString describe(const QVariant& value)
{
    if (value.typeId() == QMetaType::QString && !value.isNull()) {
        return value.toString();
    }
    return value.isNull() ? u"<null>"_s : describeNested(value, 0);
}
