#include "TurnBench.h"

#include "Measurement.h"
#include "PhotoLibrary.h"
#include "PictureIntake.h"
#include "PropagateMetadata.h"
#include "Scripting.h"
#include "Texts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// One photo's turn as the scan takes it, but for the conversion.
void takeTurn(PhotoLibrary& library,
              PhotoApplication& application,
              const QList<AlbumPtr>& albums,
              Photo& photo,
              const QString& jpeg)
{
    const std::unique_ptr<PhotoTurn> turn = library.beginPhotoTurn();
    const AlbumPtr everything = application.photoLibraryAlbum();
    everything->importFrom(jpeg, true, everything);
    const PhotoPtr copy = application.lastImportAlbum()->photos().constFirst();
    const auto album = std::ranges::find_if(albums, [](const AlbumPtr& candidate) {
        return candidate->name() == "Album 004"_L1 && candidate->type() == kRegularAlbumType;
    });
    copy->addTo(album == albums.end() ? AlbumPtr() : *album);
    propagateMetadata(photo, *copy, application);
    copy->select();
    application.assignKeywordString(Texts::processedKeyword());
    photo.select();
    application.assignKeywordString(Texts::originalKeyword());
    photo.removeFrom(everything);
    turn->commit();
}

double millisecondsOfIntake(const QString& jpeg)
{
    constexpr int kTimes = 10;
    const Measurement measurement;
    for (int time = 0; time < kTimes; ++time) {
        static_cast<void>(PictureIntake::jpeg(jpeg, u"picture.jpg"_s));
    }
    return measurement.cpuSeconds() * 1e3 / kTimes;
}

TurnBench::Figures turnsOf(PhotoLibrary& library, int turns, const QString& jpeg)
{
    const PhotoApplicationPtr application =
        library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    const QList<PhotoPtr> photos = application->photoLibraryAlbum()->photos();
    const qsizetype distance = std::max<qsizetype>(1, photos.size() / (turns + 1));
    TurnBench::Figures figures;
    const QList<AlbumPtr> albums = application->albums();
    figures.intake = millisecondsOfIntake(jpeg);
    // The first turn makes the backup and prepares the statements: it does not count.
    takeTurn(library, *application, albums, *photos.at(0), jpeg);
    const Measurement all;
    for (int turn = 1; turn <= turns; ++turn) {
        const double before = Measurement::processorSeconds();
        takeTurn(library, *application, albums, *photos.at(turn * distance), jpeg);
        const double cpu = (Measurement::processorSeconds() - before) * 1e3 - figures.intake;
        figures.turn += cpu / turns;
        figures.slowest = std::max(figures.slowest, cpu);
    }
    figures.wall = all.wallSeconds() * 1e3 / turns;
    return figures;
}

} // namespace

Result<TurnBench::Figures> TurnBench::run(const QString& package, int turns, const QString& jpeg)
{
    const Measurement opening;
    const auto library = PhotoLibrary::open(package, {.access = Access::Write});
    if (!library.ok()) {
        return library.error();
    }
    const double openingSeconds = opening.cpuSeconds();
    try {
        Figures figures = turnsOf(*library.value(), turns, jpeg);
        figures.opening = openingSeconds;
        const Measurement following;
        if (const Result<void> followed = library.value()->synchronise(); !followed.ok()) {
            return followed.error();
        }
        figures.followers = following.wallSeconds();
        figures.followersCpu = following.cpuSeconds();
        return figures;
    } catch (const ScriptingException& exception) {
        return Error{ErrorCode::Internal, exception.reason()};
    }
}
