#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One thing in a library that does not agree with another. Any thread.
struct Finding {
    QString what;  ///< one English sentence for people
    QString where; ///< file or folder relative to the package that it was found in
    /// Whether it can be mended without a choice: it follows from what the databases hold, or from
    /// a picture that is there.
    bool repairable{false};

    bool operator==(const Finding&) const = default;
};

/// What became of the findings in a library that was repaired. Any thread.
struct RepairReport {
    QString backup;        ///< folder of the copy made before; null where nothing was to be mended
    QList<Finding> mended; ///< that are there no more
    QList<Finding> left;   ///< that are still there
    QStringList failures;  ///< a sentence for each thing that could not be mended after all
    /// It ended early after the backup, on request or by an error that `failures` tells: nobody has
    /// looked again, and what is known to have been done is `mended`.
    bool stopped{false};
};
