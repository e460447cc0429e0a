#pragma once

#include "Scripting.h"

/// Copies what the library knows of `original` onto `copy`: altitude, comment, date, name, rating,
/// title, then every keyword but "Corvane Original". Selects the copy where there are keywords to
/// assign. Thread: the scan's worker. Raises what the photo application raises.
void propagateMetadata(Photo& original, Photo& copy, PhotoApplication& application);
