#pragma once

#include <QLatin1StringView>

#include <array>

/// The names of a library's databases in its folder Database/apdb.
namespace DatabaseFiles
{

/// Those that belong together: what changes a photo may change each of them in one transaction.
inline constexpr std::array kTogether{QLatin1StringView("Library.apdb"),
                                      QLatin1StringView("Properties.apdb"),
                                      QLatin1StringView("ImageProxies.apdb")};

/// Those that have a link in Database, where older programs look for them.
inline constexpr std::array kLinked{QLatin1StringView("BigBlobs.apdb"),
                                    QLatin1StringView("Faces.db"),
                                    QLatin1StringView("History.apdb"),
                                    QLatin1StringView("ImageProxies.apdb"),
                                    QLatin1StringView("Library.apdb"),
                                    QLatin1StringView("Properties.apdb")};

} // namespace DatabaseFiles
