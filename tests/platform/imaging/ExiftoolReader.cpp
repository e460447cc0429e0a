#include "ExiftoolReader.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

QString textOf(const QJsonValue& value)
{
    if (value.isObject() || value.isArray()) {
        const QJsonArray whole{value};
        return QString::fromUtf8(QJsonDocument(whole).toJson(QJsonDocument::Compact));
    }
    // Packets of XMP are laid out anew.
    return value.toVariant().toString().simplified();
}

ExiftoolReader::Tags tagsOf(const QJsonObject& file)
{
    ExiftoolReader::Tags tags;
    for (auto tag = file.begin(); tag != file.end(); ++tag) {
        // "EXIF:ExifIFD:FNumber"; a family of one directory stands alone, "IPTC:Headline".
        const QString key = tag.key();
        tags.add({.family = key.section(u':', 0, 0),
                  .directory = key.section(u':', -2, -2),
                  .name = key.section(u':', -1),
                  .value = textOf(tag.value())});
    }
    return tags;
}

} // namespace

namespace ExiftoolReader
{

std::optional<QString> Tags::value(const QString& family, const QString& name) const
{
    const auto found = std::ranges::find_if(
        m_all, [&](const Tag& tag) { return tag.family == family && tag.name == name; });
    return found == m_all.end() ? std::nullopt : std::optional(found->value);
}

QList<Tags> tags(const QStringList& paths)
{
    QProcess exiftool;
    exiftool.start(u"exiftool"_s, QStringList{u"-json"_s, u"-G0:1"_s, u"-a"_s, u"-n"_s} + paths);
    constexpr int kMilliseconds = 120'000;
    EXPECT_TRUE(exiftool.waitForFinished(kMilliseconds)) << qPrintable(exiftool.errorString());
    const QJsonArray files = QJsonDocument::fromJson(exiftool.readAllStandardOutput()).array();
    EXPECT_EQ(files.size(), paths.size());
    QList<Tags> found;
    for (const QJsonValue file : files) {
        found.append(tagsOf(file.toObject()));
    }
    return found;
}

} // namespace ExiftoolReader
