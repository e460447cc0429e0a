#include "PhotoSelection.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "PhotoMarks.h"

#include <algorithm>

namespace
{

/// Names are compared as iPhoto's own search does: without regard to case.
bool isNamed(const QString& name, const QStringList& wanted)
{
    return wanted.contains(name, Qt::CaseInsensitive);
}

bool hasOneOf(const QStringList& names, const QStringList& wanted)
{
    return std::ranges::any_of(names,
                               [&wanted](const QString& name) { return isNamed(name, wanted); });
}

/// Whether RAW photos alone are meant that were not converted yet.
bool meansRaw(const SelectionOptions& options, PhotoSelection::WithoutSelection withoutSelection)
{
    const bool selects = options.all || !options.ids.isEmpty() || !options.rolls.isEmpty() ||
                         !options.albums.isEmpty() || !options.keywords.isEmpty();
    return options.raw || (!selects && withoutSelection == PhotoSelection::WithoutSelection::Raw);
}

/// Whether the photo is what all options but the one for RAW photos ask for.
bool matches(const PhotoFacts& photo, const SelectionOptions& options)
{
    const bool byId = options.ids.contains(photo.id);
    if (photo.movie || (photo.hidden && !byId)) {
        return false;
    }
    return (options.ids.isEmpty() || byId) &&
           (options.rolls.isEmpty() || isNamed(photo.rollName, options.rolls)) &&
           (options.albums.isEmpty() || hasOneOf(photo.albums, options.albums)) &&
           (options.keywords.isEmpty() || hasOneOf(photo.keywords, options.keywords));
}

bool isPresent(const PhotoFacts& photo)
{
    return !photo.missing && !photo.unreadable;
}

/// Sentences about every wanted id or name that no photo matches.
QStringList notesOn(const QList<PhotoFacts>& photos, const SelectionOptions& options)
{
    QStringList notes;
    const auto noPhoto = [&photos](const auto& matches) {
        return std::ranges::none_of(
            photos, [&matches](const PhotoFacts& photo) { return !photo.movie && matches(photo); });
    };
    for (const qint64 id : options.ids) {
        if (noPhoto([id](const PhotoFacts& photo) { return photo.id == id; })) {
            notes += CommandLineTexts::noPhotoWithId(id);
        }
    }
    for (const QString& name : options.rolls) {
        if (noPhoto([&](const PhotoFacts& photo) { return isNamed(photo.rollName, {name}); })) {
            notes += CommandLineTexts::noPhotoInRoll(name);
        }
    }
    for (const QString& name : options.albums) {
        if (noPhoto([&](const PhotoFacts& photo) { return hasOneOf(photo.albums, {name}); })) {
            notes += CommandLineTexts::noPhotoInAlbum(name);
        }
    }
    for (const QString& name : options.keywords) {
        if (noPhoto([&](const PhotoFacts& photo) { return hasOneOf(photo.keywords, {name}); })) {
            notes += CommandLineTexts::noPhotoWithKeyword(name);
        }
    }
    return notes;
}

} // namespace

ChosenPhotos PhotoSelection::choose(const QList<PhotoFacts>& photos,
                                    const SelectionOptions& options,
                                    WithoutSelection withoutSelection)
{
    ChosenPhotos chosen;
    chosen.notes = notesOn(photos, options);
    const bool rawOnly = meansRaw(options, withoutSelection);
    for (const PhotoFacts& photo : photos) {
        if (!matches(photo, options) || (rawOnly && !photo.raw)) {
            continue;
        }
        if (rawOnly && PhotoMarks::isConvertedOriginal(photo.keywords)) {
            ++chosen.convertedAlready;
            continue;
        }
        if (options.present && !isPresent(photo)) {
            ++chosen.leftOut;
        } else {
            chosen.photos += photo;
        }
    }
    return chosen;
}

void PhotoSelection::explainNothing(const ChosenPhotos& chosen, Console& console)
{
    if (chosen.photos.isEmpty()) {
        console.say(chosen.convertedAlready > 0 && chosen.leftOut == 0
                        ? CommandLineTexts::allConverted()
                        : CommandLineTexts::nothingSelected());
    }
}

void PhotoSelection::explain(const ChosenPhotos& chosen, Console& console)
{
    for (const QString& note : chosen.notes) {
        console.say(note);
    }
    if (chosen.leftOut > 0) {
        console.say(CommandLineTexts::leftOut(chosen.leftOut));
    }
}
