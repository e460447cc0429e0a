#include "MetadataLosses.h"

#include "SystemLog.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// The first names, and how many there are more.
QString listed(const QStringList& parts)
{
    constexpr qsizetype kMostNames = 10;
    const QString first = parts.first(std::min(parts.size(), kMostNames)).join(u", "_s);
    return parts.size() <= kMostNames
               ? first
               : u"%1 and %2 more"_s.arg(first).arg(parts.size() - kMostNames);
}

} // namespace

namespace MetadataLosses
{

void logTooLarge(const QString& block, const QString& name, const QStringList& parts)
{
    if (!parts.isEmpty()) {
        systemLog(u"The %1 metadata of %2 is more than a JPEG file holds; left out: %3"_s.arg(
            block, name, listed(parts)));
    }
}

void logTooMany(const QString& block,
                const QString& name,
                std::size_t most,
                const QStringList& parts)
{
    if (!parts.isEmpty()) {
        systemLog(
            u"The %1 metadata of %2 has more than %3 properties, or as many fields in its "
            "structures; left out: %4"_s.arg(block, name, QString::number(most), listed(parts)));
    }
}

void logUnwritable(const QString& block, const QString& name, const QStringList& parts)
{
    if (!parts.isEmpty()) {
        systemLog(u"The %1 metadata of %2 has parts that cannot be written; left out: %3"_s.arg(
            block, name, listed(parts)));
    }
}

} // namespace MetadataLosses
