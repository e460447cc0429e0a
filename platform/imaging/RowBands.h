#pragma once

#include <functional>

/// Work on the rows of a picture on all cores.
namespace RowBands
{

/// Calls `work` for bands of rows [from, end) that together are all of `rows`, each once and each
/// in a thread, the calling one among them; `from` is even. Returns when all are done. An exception
/// of a band is thrown on, after the others ended. `threads`: how many at most; 0 is as many as
/// there are cores. What a row becomes must not depend on the band that it lies in.
void run(int rows, const std::function<void(int from, int end)>& work, int threads = 0);

} // namespace RowBands
