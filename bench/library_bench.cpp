// How long a large library takes to open: library_bench PACKAGE [PHOTOS RAWFILE]
// With a number of photos and a RAW file the library is made first.

#include "LargeLibrary.h"
#include "LibraryActions.h"
#include "LibrarySession.h"
#include "LibraryWindow.h"
#include "PhotoGrid.h"
#include "PhotoLibrary.h"
#include "RecentLibraries.h"
#include "UserDefaults.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

double seconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) * 1e-9;
}

double peakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

int fails(const Error& error)
{
    std::fprintf(stderr, "library_bench: %s\n", qPrintable(error.message));
    return 1;
}

Result<void> measureReading(const QString& package)
{
    QElapsedTimer timer;
    timer.start();
    const auto library = PhotoLibrary::open(package, {.access = Access::Read});
    if (!library.ok()) {
        return library.error();
    }
    const auto photos = library.value()->photos();
    if (!photos.ok()) {
        return photos.error();
    }
    std::printf("%8.2f s to open it for reading and to read its %lld photos\n",
                seconds(timer),
                static_cast<long long>(photos.value().size()));
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

    QElapsedTimer timer;
    timer.start();
    session.open(package);
    waitFor(session, &LibrarySession::contentsChanged);
    window.repaint();
    std::printf("%8.2f s until its photos are shown\n", seconds(timer));
    if (session.isBusy()) {
        waitFor(session, &LibrarySession::busyChanged);
    }
    std::printf("%8.2f s until it has been checked and can be written to\n", seconds(timer));
    auto* const grid = window.findChild<PhotoGrid*>();
    std::printf("%8.3f s is the longest step in paging through all of it\n", longestStall(*grid));
    timer.restart();
    grid->selectAll();
    std::printf("%8.3f s to select all\n", seconds(timer));
    timer.restart();
    window.actions().selectRaw->trigger();
    std::printf("%8.3f s to select its RAW photos\n", seconds(timer));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2 && arguments.size() != 4) {
        std::fprintf(stderr, "usage: library_bench PACKAGE [PHOTOS RAWFILE]\n");
        return 2;
    }
    const QString& package = arguments.at(1);
    QElapsedTimer timer;
    if (arguments.size() == 4) {
        timer.start();
        const Result<void> made =
            LargeLibrary::make(package, arguments.at(2).toInt(), arguments.at(3));
        if (!made.ok()) {
            return fails(made.error());
        }
        std::printf("%8.2f s to make the library\n", seconds(timer));
    }
    if (const Result<void> read = measureReading(package); !read.ok()) {
        return fails(read.error());
    }
    measureWindow(package);
    std::printf("%8.0f MB peak memory\n", peakMegabytes());
    return 0;
}
