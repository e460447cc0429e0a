#include "PathMapping.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QStringTokenizer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

bool staysInside(const QString& relative)
{
    if (relative.isEmpty() || relative.startsWith(u'/') || relative.contains(QChar(u'\0'))) {
        return false;
    }
    if (!relative.contains(".."_L1)) {
        return true;
    }
    const auto names = QStringView(relative).tokenize(u'/');
    return std::ranges::none_of(names, [](QStringView name) { return name == ".."_L1; });
}

/// The entry of `folder` that the Mac would have meant by `name`; null when there is none.
QString entryNamed(const QString& folder, const QString& name)
{
    if (QFileInfo::exists(folder + u'/' + name)) {
        return name;
    }
    const QString composed = name.normalized(QString::NormalizationForm_C);
    QString alike;
    const QStringList entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        const QString candidate = entry.normalized(QString::NormalizationForm_C);
        if (candidate == composed) {
            return entry;
        }
        if (alike.isNull() && candidate.compare(composed, Qt::CaseInsensitive) == 0) {
            alike = entry;
        }
    }
    return alike;
}

QString below(const QString& root, const QString& relative)
{
    if (!staysInside(relative)) {
        return {};
    }
    QString exact = root + u'/' + relative;
    if (QFileInfo::exists(exact)) {
        return exact;
    }
    QString path = root;
    const QStringList names = relative.split(u'/', Qt::SkipEmptyParts);
    for (const QString& name : names) {
        const QString entry = entryNamed(path, name);
        if (entry.isNull()) {
            return exact; // not there under any spelling
        }
        path += u'/' + entry;
    }
    return path;
}

} // namespace

QString
PathMapping::inside(const QString& package, QLatin1StringView folder, const QString& relative)
{
    return below(package + u'/' + folder, relative);
}

QString PathMapping::master(const QString& package, const MasterPlace& place)
{
    if (!place.isReference) {
        return inside(package, "Masters"_L1, place.imagePath);
    }
    return place.volumeFolder.isEmpty() ? QString() : below(place.volumeFolder, place.imagePath);
}
