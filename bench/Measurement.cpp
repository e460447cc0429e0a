#include "Measurement.h"

#include <QFile>

#include <malloc.h>
#include <time.h>

#include <cstdio>

using namespace Qt::StringLiterals;

Measurement::Measurement()
{
    ::malloc_trim(0);
    QFile marks(u"/proc/self/clear_refs"_s);
    if (marks.open(QIODevice::WriteOnly)) {
        marks.write("5"); // the highest mark of resident memory
    }
    m_cpuBefore = processorSeconds();
    m_timer.start();
}

double Measurement::wallSeconds() const
{
    return static_cast<double>(m_timer.nsecsElapsed()) * 1e-9;
}

double Measurement::cpuSeconds() const
{
    return processorSeconds() - m_cpuBefore;
}

double Measurement::processorSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
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

void Measurement::print(const char* what) const
{
    std::printf("%8.2f s (%6.2f s of processors), %4.0f MB at most: %s\n",
                wallSeconds(),
                cpuSeconds(),
                peakMegabytes(),
                what);
    std::fflush(stdout);
}
