#pragma once

class Clock;
class PhotoApplication;

/// Returns when no import is under way any more; asks ten times a second, without a limit.
/// Thread: the scan's worker. Raises what the photo application raises.
void waitForImport(PhotoApplication& application, Clock& clock);
