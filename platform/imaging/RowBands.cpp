#include "RowBands.h"

#include <QThread>

#include <algorithm>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace
{

/// Fewer rows than this are not worth a thread.
constexpr int kFewestRows = 64;

} // namespace

void RowBands::run(int rows, const std::function<void(int from, int end)>& work, int threads)
{
    const int wanted = threads > 0 ? threads : QThread::idealThreadCount();
    const int bands = std::clamp(rows / kFewestRows, 1, std::max(1, wanted));
    const int length = ((rows + bands - 1) / bands + 1) / 2 * 2;
    std::vector<std::exception_ptr> failures(static_cast<std::size_t>(bands));
    const auto runBand = [&](int band) {
        try {
            const int from = std::min(rows, band * length);
            const int end = std::min(rows, from + length);
            if (from < end) {
                work(from, end);
            }
        } catch (...) {
            failures[static_cast<std::size_t>(band)] = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> others;
        others.reserve(static_cast<std::size_t>(bands));
        int band = 1;
        try {
            for (; band < bands; ++band) {
                others.emplace_back(runBand, band);
            }
        } catch (const std::system_error&) {
            // The system has no more threads: this one does what is left.
        }
        runBand(0);
        for (; band < bands; ++band) {
            runBand(band);
        }
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}
