#pragma once

#include "Result.h"
#include "SidecarFile.h"

#include <QString>

/// What becomes of sidecars once it is known what they should say: they are written, or only
/// compared. Used by one thread.
class SidecarOutput
{
public:
    /// Whether a sidecar tells when it was written.
    enum class Stamp : quint8 { Without, With };

    SidecarOutput() = default;
    virtual ~SidecarOutput() = default;
    SidecarOutput(const SidecarOutput&) = delete;
    SidecarOutput& operator=(const SidecarOutput&) = delete;

    /// Whether the content matters; where it does not, put() may be given the file as it was
    /// opened.
    [[nodiscard]] virtual bool needsContentOf(const SidecarFile& file) const = 0;
    /// A sidecar whose content is what it should say.
    [[nodiscard]] virtual Result<void> put(SidecarFile& file, Stamp stamp) = 0;
    /// The sidecar at that absolute path, if any, is of an object that is gone.
    [[nodiscard]] virtual Result<void> remove(const QString& path) = 0;
};
