#pragma once

/// The moment and the UUIDs that the program sees follow from the environment, so that two runs
/// over the same library make the same of it, byte for byte, and the ring can tell that a trial
/// left what another one did.
///
///   CORVANE_FAULTS_MOMENT  seconds since 1970-01-01 UTC at which the clock stands; without it the
///                          clock goes and UUIDs are random

/// The open file was changed at that moment.
void keepMoment(int file);
