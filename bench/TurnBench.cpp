#include "TurnBench.h"

#include "Catalogues.h"
#include "Clock.h"
#include "Connection.h"
#include "Measurement.h"
#include "PhotoLibrary.h"
#include "PictureIntake.h"
#include "PropagateMetadata.h"
#include "Scripting.h"
#include "Texts.h"

#include <QFileInfo>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr double kMilliseconds = 1e3;

/// One photo's turn as the scan takes it, but for the conversion. In the figures it is one of one.
TurnBench::Figures takeTurn(PhotoLibrary& library,
                            PhotoApplication& application,
                            const QList<AlbumPtr>& albums,
                            Photo& photo,
                            const QString& jpeg)
{
    const Stopwatch all;
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
    TurnBench::Figures figures;
    figures.turn = all.cpuSeconds() * kMilliseconds;
    const Stopwatch commit;
    turn->commit();
    figures.commit = commit.cpuSeconds() * kMilliseconds;
    figures.commitWall = commit.wallSeconds() * kMilliseconds;
    figures.wall = all.wallSeconds() * kMilliseconds;
    return figures;
}

double medianOf(const std::vector<TurnBench::Figures>& turns, double TurnBench::Figures::*figure)
{
    std::vector<double> values;
    for (const TurnBench::Figures& turn : turns) {
        values.push_back(turn.*figure);
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

double millisecondsOfIntake(const QString& jpeg)
{
    constexpr int kTimes = 10;
    const Stopwatch watch;
    for (int time = 0; time < kTimes; ++time) {
        static_cast<void>(PictureIntake::jpeg(jpeg, u"picture.jpg"_s));
    }
    return watch.cpuSeconds() * kMilliseconds / kTimes;
}

TurnBench::Figures turnsOf(PhotoLibrary& library, int turns, const QString& jpeg)
{
    using TurnBench::Figures;
    const PhotoApplicationPtr application =
        library.applicationWithBundleIdentifier(u"com.apple.iPhoto"_s);
    const QList<PhotoPtr> photos = application->photoLibraryAlbum()->photos();
    const qsizetype distance = std::max<qsizetype>(1, photos.size() / (turns + 1));
    const QList<AlbumPtr> albums = application->albums();
    // The first turn makes the backup and prepares the statements: it does not count.
    takeTurn(library, *application, albums, *photos.at(0), jpeg);
    std::vector<Figures> taken;
    for (int turn = 1; turn <= turns; ++turn) {
        taken.push_back(takeTurn(library, *application, albums, *photos.at(turn * distance), jpeg));
    }
    Figures figures;
    figures.intake = millisecondsOfIntake(jpeg);
    figures.turn = medianOf(taken, &Figures::turn) - figures.intake;
    figures.commit = medianOf(taken, &Figures::commit);
    figures.commitWall = medianOf(taken, &Figures::commitWall);
    figures.wall = medianOf(taken, &Figures::wall);
    return figures;
}

/// As it follows a scan; the sidecars do not.
Result<void> writeCatalogues(const QString& package, const std::string& library)
{
    const Result<std::unique_ptr<Connection>> connection =
        Connection::open(package, Connection::Mode::Read);
    if (!connection.ok()) {
        return connection.error();
    }
    const Measurement writing;
    const auto written = Catalogues::write(*connection.value(), SystemClock().now());
    writing.print(library + "rewriting the catalogues", {.cpuSeconds = 5.0, .megabytes = 600.0});
    return written.ok() ? Result<void>() : Result<void>(written.error());
}

} // namespace

Result<TurnBench::Figures> TurnBench::run(const QString& package, int turns, const QString& jpeg)
{
    const std::string name = QFileInfo(package).baseName().toStdString() + ": ";
    const Measurement opening;
    const auto library = PhotoLibrary::open(package, {.access = Access::Write});
    if (!library.ok()) {
        return library.error();
    }
    opening.print(name + "opening for writing, as this program left it",
                  {.cpuSeconds = 3.0, .megabytes = 600.0});
    try {
        const Figures figures = turnsOf(*library.value(), turns, jpeg);
        if (const Result<void> written = writeCatalogues(package, name); !written.ok()) {
            return written.error();
        }
        const Measurement following;
        if (const Result<void> followed = library.value()->synchronise(); !followed.ok()) {
            return followed.error();
        }
        following.print(name + "sidecars of these turns, and catalogues that follow already");
        return figures;
    } catch (const ScriptingException& exception) {
        return Error{ErrorCode::Internal, exception.reason()};
    }
}
