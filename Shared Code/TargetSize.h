#pragma once

#include <QSize>

#include <optional>

class CorvaneDelegate;

/// The output size that is wanted, as it stood at one moment.
struct OutputSize {
    float scaleFactor{1.0F};
    bool fixedSize{false};
    qint64 longSize{0};  ///< pixels
    qint64 shortSize{0}; ///< pixels
    bool longLocked{false};
    bool shortLocked{false};

    /// Reads the controller's settings. Thread: the scan's worker.
    [[nodiscard]] static OutputSize of(const CorvaneDelegate& delegate);

    /// Whether a picture is taken as it is, whatever its size.
    [[nodiscard]] bool isOriginal() const { return scaleFactor == 1.0F && !fixedSize; }
};

/// The size that a picture of `pixels` is scaled to. Any thread.
///
/// Fixed size off: both sides times the factor. Fixed size on, both sides locked: each side is
/// clamped by itself, the longer by the long size, so the aspect ratio is not kept (a square
/// counts as upright). One side locked: that side is at most its size and the other follows; a
/// smaller picture keeps its size. The short side counts as locked where neither is.
///
/// A side is rounded to nearest, a positive one below 0.5 becomes 1. Nothing where a side is not
/// positive, or where the picture would be larger than PictureLimits allows.
[[nodiscard]] std::optional<QSize> targetSize(QSize pixels, const OutputSize& wanted);

/// Whether both sides are positive and the picture would be larger than PictureLimits allows: why
/// targetSize() gives nothing. Any thread.
[[nodiscard]] bool isTargetTooLarge(QSize pixels, const OutputSize& wanted);
