#pragma once

#include <QString>

/// One thing in a library that does not agree with another. Any thread.
struct Finding {
    QString what;  ///< one English sentence for people
    QString where; ///< file or folder relative to the package that it was found in
    /// Whether it can be mended without a choice: it follows from what the databases hold, or from
    /// a picture that is there.
    bool repairable{false};

    bool operator==(const Finding&) const = default;
};
