// What a large library takes: library_bench PACKAGE [PHOTOS RAWFILE] or library_bench --turns
// PACKAGE. With a number of photos and a RAW file the library is made first, and written to
// afterwards: the turns of a scan in it and in Small.photolibrary of 1,000 photos, made beside it.
// With --turns a library that is there is written to, and nothing else is measured. The aims are
// those of 100,000 photos.

#include "Figure.h"
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
#include <QFileInfo>
#include <QScrollBar>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <string>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kSmall = 1000; ///< photos of the library beside which the large one is looked at
constexpr int kLookUps = 1000;
constexpr int kTurns = 40;

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
    measurement.print("opening for reading, and reading the photos",
                      {.cpuSeconds = 3.0, .megabytes = 600.0});
    QStringList guids;
    const qsizetype distance = std::max<qsizetype>(1, photos.value().size() / kLookUps);
    for (qsizetype index = 0; index < photos.value().size(); index += distance) {
        if (const PhotoFacts& photo = photos.value().at(index); !photo.hidden) { // of a roll
            guids += photo.guid;
        }
    }
    return guids;
}

Result<void> measureLookUps(const QString& package, const QStringList& guids)
{
    const Measurement measurement;
    const Result<QVariant> content =
        PropertyList::read(package + "/AlbumData.xml"_L1, PropertyList::kMostBytesOfCatalogue);
    if (!content.ok()) {
        return content.error();
    }
    const RollCatalogue catalogue(content.value());
    const qsizetype found = std::ranges::count_if(
        guids, [&](const QString& guid) { return catalogue.rollName(guid).has_value(); });
    measurement.print("reading the catalogue, and looking up rolls", {.cpuSeconds = 5.0});
    if (found != guids.size()) {
        return Error{ErrorCode::Internal,
                     QStringLiteral("of %1 photos only %2 have a roll")
                         .arg(QString::number(guids.size()), QString::number(found))};
    }
    return {};
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
        const Stopwatch watch;
        bar.setValue(static_cast<int>(static_cast<qint64>(bar.maximum()) * step / kSteps));
        grid.viewport()->repaint();
        QCoreApplication::processEvents();
        longest = std::max(longest, watch.wallSeconds());
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
    measurement.print("opening in the window until the photos are shown");
    if (session.isBusy()) {
        waitFor(session, &LibrarySession::busyChanged);
    }
    measurement.print("the same until it has been checked and can be written to");
    auto* const grid = window.findChild<PhotoGrid*>();
    Figure{longestStall(*grid), "s", "the longest step in paging through all of it"}.print();
    const Stopwatch all;
    grid->selectAll();
    Figure{all.wallSeconds(), "s", "to select all"}.print();
    const Stopwatch raw;
    window.actions().selectRaw->trigger();
    Figure{raw.wallSeconds(), "s", "to select the RAW photos"}.print();
}

/// Turns of a scan. The aim is that of 100,000 photos.
Result<TurnBench::Figures> measureTurns(const QString& package)
{
    constexpr double kAim = 20.0;
    const QTemporaryDir folder;
    const QString jpeg = folder.filePath(u"picture.jpg"_s);
    // A small one, so that thumbnails do not hide what the library takes.
    QImage picture(160, 107, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    picture.save(jpeg, "JPEG");
    Result<TurnBench::Figures> run = TurnBench::run(package, kTurns, jpeg);
    if (run.ok()) {
        const TurnBench::Figures& figures = run.value();
        const std::string name = QFileInfo(package).baseName().toStdString();
        Figure{figures.turn, "ms", name + ": a photo's turn, of processors", kAim}.print();
        Figure{figures.commit, "ms", name + ": its durable commits, of processors"}.print();
        Figure{figures.commitWall, "ms", name + ": its durable commits, on the clock"}.print();
        Figure{figures.intake, "ms", name + ": its JPEG's intake, of processors"}.print();
        Figure{figures.wall, "ms", name + ": all of it, on the clock"}.print();
    }
    return run;
}

Result<void> compareTurns(const QString& small, const QString& large)
{
    constexpr double kAim = 1.1;
    const Result<TurnBench::Figures> ofSmall = measureTurns(small);
    const Result<TurnBench::Figures> ofLarge = measureTurns(large);
    if (!ofSmall.ok() || !ofLarge.ok()) {
        return ofSmall.ok() ? ofLarge.error() : ofSmall.error();
    }
    const double growth = ofLarge.value().turn / ofSmall.value().turn;
    Figure{growth, "×", "a turn in the large library over one in the small", kAim}.print();
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == "--turns"_L1) {
        const Result<TurnBench::Figures> turns = measureTurns(arguments.at(2));
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
    const QString small = QFileInfo(package).path() + "/Small.photolibrary"_L1;
    if (makes) {
        const QString& raw = arguments.at(3);
        const Measurement making;
        Result<void> made = LargeLibrary::make(package, arguments.at(2).toInt(), raw);
        made = made.ok() ? LargeLibrary::make(small, kSmall, raw) : made;
        making.print("making the library, and the small one");
        if (!made.ok()) {
            return fails(made.error());
        }
    }
    const Result<QStringList> guids = measureReading(package);
    if (!guids.ok()) {
        return fails(guids.error());
    }
    if (const Result<void> lookedUp = measureLookUps(package, guids.value()); !lookedUp.ok()) {
        return fails(lookedUp.error());
    }
    measureWindow(package);
    if (const Result<void> turns = makes ? compareTurns(small, package) : Result<void>();
        !turns.ok()) {
        return fails(turns.error());
    }
    return 0;
}
