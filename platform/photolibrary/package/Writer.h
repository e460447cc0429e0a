#pragma once

#include "Changes.h"
#include "Connection.h"

/// What every operation on rows is given: the connection, inside a transaction, and the list of
/// what sidecars must follow. All rows of one transaction carry the same moment.
struct Writer {
    Connection& connection;
    Changes& changes;
    double now{0.0}; ///< seconds since 2001-01-01T00:00:00 UTC
};
