#include "Session.h"

ThreadMark currentThreadMark()
{
    static thread_local const ThreadMark kMark = std::make_shared<const int>(0);
    return kMark;
}
