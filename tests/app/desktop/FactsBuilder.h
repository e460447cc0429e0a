#pragma once

#include "LibraryFacts.h"

#include <QString>
#include <QStringList>

/// Facts of a photo as tests need them, from nothing but a few words.
namespace FactsBuilder
{

inline PhotoFacts photo(qint64 id, const QString& fileName, qint64 eventId, const QString& event)
{
    PhotoFacts facts;
    facts.id = id;
    facts.fileName = fileName;
    facts.rollId = eventId;
    facts.rollName = event;
    facts.zoneName = QStringLiteral("GMT");
    facts.originalPath = QStringLiteral("/library/Masters/") + fileName;
    facts.bytes = 1000 * id;
    return facts;
}

} // namespace FactsBuilder
