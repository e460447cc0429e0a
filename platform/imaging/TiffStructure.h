#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>

#include <optional>

/// A range of a file's bytes.
struct ByteRange {
    quint64 offset{0};
    quint64 length{0};
};

/// A packet of XMP, and the directory entry of 12 bytes that points to it.
struct TiffXmp {
    ByteRange packet;
    quint64 entry{0}; ///< where it begins
};

/// One image file directory (TIFF 6.0, section 2): the numbers of its tags.
struct TiffDirectory {
    QHash<quint16, QList<quint64>> numbers; ///< integer tags of at most 65536 values
    QHash<quint16, QList<double>> rationals;
    QList<TiffXmp> xmp; ///< those that lie in the file

    [[nodiscard]] quint64 number(quint16 tag, quint64 otherwise = 0) const;
    /// Integer or rational values alike.
    [[nodiscard]] QList<double> values(quint16 tag) const;
    /// The strips or tiles that hold the picture; of a JPEG preview its one range.
    [[nodiscard]] QList<ByteRange> pictureRanges() const;
    /// Where the tiles begin, or the strips of a picture without tiles, also those without a
    /// length.
    [[nodiscard]] QList<quint64> pictureOffsets() const;
    /// Whether the picture is sensor data: a colour filter array or linear RAW.
    [[nodiscard]] bool isRaw() const;
};

/// The directories of a TIFF-based file (TIFF, DNG and the RAW formats built on it), read with
/// every range checked; damaged parts are left out. A value type; any thread.
class TiffStructure final
{
public:
    /// Nothing where the bytes do not begin like a TIFF file or have no directory.
    [[nodiscard]] static std::optional<TiffStructure> parse(QByteArrayView bytes);

    /// The main chain and all sub-directories (SubIFDs and Exif).
    [[nodiscard]] const QList<TiffDirectory>& directories() const { return m_directories; }

    /// Whether a directory, or what says where a picture is, lies beyond the end of the file.
    [[nodiscard]] bool leadsBeyondEnd() const { return m_beyondEnd; }

    /// Whether the file says of itself that it holds sensor data.
    [[nodiscard]] bool statesRaw() const;

    /// The directory of the largest sensor data; null where none says so.
    [[nodiscard]] const TiffDirectory* rawDirectory() const;

private:
    class Reader;
    QList<TiffDirectory> m_directories;
    bool m_beyondEnd{false};
};
