#pragma once

#include "PictureIntake.h"
#include "Writer.h"

#include <QString>

/// The properties of an imported picture: what its file says of itself, and the copies of the
/// library's own facts that its search reads. Errors: SQLite::Exception.
namespace ImportProperties
{

struct Versions {
    qint64 shown{0};    ///< Version-1
    qint64 original{0}; ///< Version-0
    QString title;
    double imageDate{0.0}; ///< wall clock as seconds since 2001-01-01
    QString eventName;
};

void insert(Writer& writer, const PreparedPicture& picture, const Versions& versions);

} // namespace ImportProperties
