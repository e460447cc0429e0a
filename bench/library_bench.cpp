// What a large library takes: library_bench PACKAGE [PHOTOS RAWFILE] or library_bench --turns
// PACKAGE With a number of photos and a RAW file the library is made first, and written to
// afterwards: the turns of a scan in it and in one of 1,000 photos that is made beside it. With
// --turns a library that is there is written to, and nothing else is measured.

#include "LargeLibrary.h"
#include "LibraryActions.h"
#include "LibrarySession.h"
#include "LibraryWindow.h"
#include "Measurement.h"
#include "PhotoGrid.h"
#include "PhotoLibrary.h"
#include "PropertyList.h"
#include "RecentLibraries.h"
#include "RollCatalogue.h"
#include "TurnBench.h"
#include "UserDefaults.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kSmall = 1000; ///< photos of the library beside which the large one is looked at
constexpr int kLookUps = 1000;
constexpr int kTurns = 40;

double seconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) * 1e-9;
}

int fails(const Error& error)
{
    std::fprintf(stderr, "library_bench: %s\n", qPrintable(error.message));
    return 1;
}

/// Opens it for reading; returns the GUIDs of kLookUps photos from all over it.
Result<QStringList> measureReading(const QString& package)
{
    const Measurement measurement;
    const auto library = PhotoLibrary::open(package, {.access = Access::Read});
    if (!library.ok()) {
        return library.error();
    }
    const Result<QList<PhotoFacts>> photos = library.value()->photos();
    if (!photos.ok()) {
        return photos.error();
    }
    measurement.print("opening it for reading, and reading its photos");
    QStringList guids;
    const qsizetype distance = std::max<qsizetype>(1, photos.value().size() / kLookUps);
    for (qsizetype index = 0; index < photos.value().size(); index += distance) {
        guids += photos.value().at(index).guid;
    }
    return guids;
}

void measureLookUps(const QString& package, const QStringList& guids)
{
    const Measurement measurement;
    const Result<QVariant> content = PropertyList::read(package + "/AlbumData.xml"_L1);
    const RollCatalogue catalogue(content.ok() ? content.value() : QVariant());
    const Measurement lookUps;
    qsizetype found = 0;
    for (const QString& guid : guids) {
        found += catalogue.rollName(guid) ? 1 : 0;
    }
    const double searching = lookUps.wallSeconds();
    measurement.print("reading the catalogue, and looking up rolls");
    std::printf("%8.3f s of that to find the rolls of %lld of %lld photos\n",
                searching,
                static_cast<long long>(found),
                static_cast<long long>(guids.size()));
}

/// Waits for a signal while the windows live on.
template <typename Sender, typename Signal>
void waitFor(Sender& sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(&sender, signal, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Pages through the whole grid in steps of many pages; the longest time that the main thread was
/// at one step.
double longestStall(PhotoGrid& grid)
{
    constexpr int kSteps = 200;
    double longest = 0.0;
    QScrollBar& bar = *grid.verticalScrollBar();
    for (int step = 0; step <= kSteps; ++step) {
        QElapsedTimer timer;
        timer.start();
        bar.setValue(static_cast<int>(static_cast<qint64>(bar.maximum()) * step / kSteps));
        grid.viewport()->repaint();
        QCoreApplication::processEvents();
        longest = std::max(longest, seconds(timer));
    }
    return longest;
}

void measureWindow(const QString& package)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(u"settings.plist"_s));
    RecentLibraries recent(defaults);
    LibrarySession session;
    LibraryWindow window(session, recent);
    window.resize(1280, 800);
    window.show();
    QCoreApplication::processEvents();

    const Measurement measurement;
    session.open(package);
    waitFor(session, &LibrarySession::contentsChanged);
    window.repaint();
    measurement.print("opening it in the window until its photos are shown");
    if (session.isBusy()) {
        waitFor(session, &LibrarySession::busyChanged);
    }
    measurement.print("the same until it has been checked and can be written to");
    QElapsedTimer timer;
    auto* const grid = window.findChild<PhotoGrid*>();
    std::printf("%8.3f s is the longest step in paging through all of it\n", longestStall(*grid));
    timer.restart();
    grid->selectAll();
    std::printf("%8.3f s to select all\n", seconds(timer));
    timer.restart();
    window.actions().selectRaw->trigger();
    std::printf("%8.3f s to select its RAW photos\n", seconds(timer));
}

/// Turns of a scan in both libraries, the small one first.
Result<void> measureTurns(const QStringList& packages)
{
    const QTemporaryDir folder;
    const QString jpeg = folder.filePath(u"picture.jpg"_s);
    QImage picture(1024, 683, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    picture.save(jpeg, "JPEG");
    for (const QString& package : packages) {
        const Result<TurnBench::Figures> run = TurnBench::run(package, kTurns, jpeg);
        if (!run.ok()) {
            return run.error();
        }
        const TurnBench::Figures& figures = run.value();
        std::printf("%s:\n", qPrintable(package.section(u'/', -1)));
        std::printf("%8.2f s of processors for the opening for writing, with the check\n",
                    figures.opening);
        std::printf("%8.2f ms of processors for a photo's turn, %.2f for the slowest (of %d)\n",
                    figures.turn,
                    figures.slowest,
                    kTurns);
        std::printf("%8.2f ms for a turn on the clock, with commits and the JPEG's intake (%.2f)\n",
                    figures.wall,
                    figures.intake);
        std::printf("%8.2f s (%.2f s of processors) for sidecars and catalogues\n",
                    figures.followers,
                    figures.followersCpu);
    }
    return {};
}

Result<void> make(const QString& package, int photos, const QString& raw)
{
    const Measurement measurement;
    Result<void> made = LargeLibrary::make(package, photos, raw);
    measurement.print("making the library");
    return made;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == "--turns"_L1) {
        const Result<void> turns = measureTurns({arguments.at(2)});
        return turns.ok() ? 0 : fails(turns.error());
    }
    if (arguments.size() != 2 && arguments.size() != 4) {
        std::fprintf(stderr,
                     "usage: library_bench PACKAGE [PHOTOS RAWFILE]\n"
                     "       library_bench --turns PACKAGE\n");
        return 2;
    }
    const QString& package = arguments.at(1);
    const bool makes = arguments.size() == 4;
    const QString small = package + ".small.photolibrary"_L1;
    if (makes) {
        const QString& raw = arguments.at(3);
        Result<void> made = make(package, arguments.at(2).toInt(), raw);
        made = made.ok() ? make(small, kSmall, raw) : made;
        if (!made.ok()) {
            return fails(made.error());
        }
    }
    const Result<QStringList> guids = measureReading(package);
    if (!guids.ok()) {
        return fails(guids.error());
    }
    measureLookUps(package, guids.value());
    measureWindow(package);
    if (const Result<void> turns = makes ? measureTurns({small, package}) : Result<void>();
        !turns.ok()) {
        return fails(turns.error());
    }
    return 0;
}
