#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVariant>

/// Values as the photo application archives them in its databases: a binary property list of
/// objects that refer to each other by number (NSKeyedArchiver, version 100000). Any thread.
namespace KeyedArchive
{

/// Archives a value made of QVariantMap, QVariantList, strings, numbers and booleans. Equal
/// strings, numbers and booleans are one object. `dictionaryClasses` names the class of
/// dictionaries, then those that it derives from.
[[nodiscard]] QByteArray encode(const QVariant& value,
                                const QStringList& dictionaryClasses = {
                                    QStringLiteral("NSMutableDictionary"),
                                    QStringLiteral("NSDictionary"),
                                    QStringLiteral("NSObject")});

} // namespace KeyedArchive
