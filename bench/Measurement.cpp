#include "Measurement.h"

#include "Figure.h"

#include <QFile>

#include <malloc.h>
#include <time.h>

using namespace Qt::StringLiterals;

namespace
{

double processorSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

Stopwatch::Stopwatch()
    : m_cpuBefore(processorSeconds())
{
    m_timer.start();
}

double Stopwatch::wallSeconds() const
{
    return static_cast<double>(m_timer.nsecsElapsed()) * 1e-9;
}

double Stopwatch::cpuSeconds() const
{
    return processorSeconds() - m_cpuBefore;
}

Measurement::Measurement()
{
    ::malloc_trim(0);
    QFile marks(u"/proc/self/clear_refs"_s);
    if (marks.open(QIODevice::WriteOnly)) {
        marks.write("5"); // the highest mark of resident memory
    }
    m_watch = Stopwatch();
}

double Measurement::peakMegabytes()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    const QByteArray text = status.readAll();
    constexpr QByteArrayView kMark("VmHWM:");
    const qsizetype begin = text.indexOf(kMark) + kMark.size();
    return text.sliced(begin, text.indexOf("kB", begin) - begin).trimmed().toDouble() / 1024.0;
}

void Measurement::print(const std::string& what, const Aims& aims) const
{
    Figure{m_watch.cpuSeconds(), "s", what + ", of processors", aims.cpuSeconds}.print();
    Figure{m_watch.wallSeconds(), "s", what + ", on the clock"}.print();
    Figure{peakMegabytes(), "MB", what + ", at most", aims.megabytes}.print();
}
