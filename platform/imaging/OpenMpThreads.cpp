#include "OpenMpThreads.h"

#include <omp.h>

OpenMpThreads::OpenMpThreads(bool isOneWanted)
    : m_before(omp_get_max_threads())
{
    if (isOneWanted) {
        omp_set_num_threads(1);
    }
}

OpenMpThreads::~OpenMpThreads()
{
    omp_set_num_threads(m_before);
}
