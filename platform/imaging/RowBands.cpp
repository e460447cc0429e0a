#include "RowBands.h"

#include "Tasks.h"

#include <QThread>

#include <algorithm>

namespace
{

/// Fewer rows than this are not worth a thread.
constexpr int kFewestRowsOfBand = 64;

} // namespace

void RowBands::run(int rows, const std::function<void(int from, int end)>& work, int threads)
{
    const int wanted = threads > 0 ? threads : QThread::idealThreadCount();
    const int bands = std::clamp(rows / kFewestRowsOfBand, 1, std::max(1, wanted));
    const int length = ((rows + bands - 1) / bands + 1) / 2 * 2;
    Tasks::run(bands, [&](int band) {
        const int from = std::min(rows, band * length);
        const int end = std::min(rows, from + length);
        if (from < end) {
            work(from, end);
        }
    });
}
