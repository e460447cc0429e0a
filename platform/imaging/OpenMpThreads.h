#pragma once

/// How many threads OpenMP uses for what the calling thread does next. As long as an object lives
/// it is one, where that is wanted, or as many as before; afterwards it is as many as before.
/// To be destroyed on the thread that made it.
class OpenMpThreads final
{
public:
    explicit OpenMpThreads(bool isOneWanted);
    ~OpenMpThreads();
    OpenMpThreads(const OpenMpThreads&) = delete;
    OpenMpThreads& operator=(const OpenMpThreads&) = delete;

private:
    int m_before;
};
