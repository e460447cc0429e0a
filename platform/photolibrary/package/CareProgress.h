#pragma once

#include <QtGlobal>

#include <functional>

/// How far the verification or the repair of a library is. Any thread.
struct CareProgress {
    enum class Stage : quint8 {
        Databases,  ///< the databases are compared with themselves
        Sidecars,   ///< and with the sidecars
        Catalogues, ///< and with the catalogues
        Files,      ///< and with the files in the package
        Backup,     ///< a dated copy is made
        Mending,    ///< rows, sidecars and catalogues are mended
        Pictures,   ///< thumbnails and previews are made
    };

    /// Told now and then, on the thread that works; may be empty.
    using Tell = std::function<void(const CareProgress&)>;

    Stage stage{Stage::Databases};
    qint64 done{0};
    qint64 total{0}; ///< 0 where it is not known how much there is to do

    bool operator==(const CareProgress&) const = default;
};
