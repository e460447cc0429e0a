#include "PropagateMetadata.h"

#include "Texts.h"

void propagateMetadata(Photo& original, Photo& copy, PhotoApplication& application)
{
    copy.setAltitude(original.altitude());
    copy.setComment(original.comment());
    copy.setDate(original.date());
    copy.setName(original.name());
    copy.setRating(original.rating());
    copy.setTitle(original.title());

    const QList<Keyword> keywords = original.keywords();
    if (keywords.isEmpty()) {
        return;
    }
    copy.select();
    for (const Keyword& keyword : keywords) {
        if (keyword.name != Texts::originalKeyword()) {
            application.assignKeywordString(keyword.name);
        }
    }
}
