#pragma once

#include <QByteArray>
#include <QList>

#include <map>
#include <vector>

/// One image file directory of a little-endian TIFF file (TIFF 6.0, section 2) with the values and
/// directories that hang from it. Setting a tag again replaces it. Any one thread at a time.
class TiffTags final
{
public:
    struct Rational {
        quint32 numerator{0};
        quint32 denominator{1};
    };

    struct SignedRational {
        qint32 numerator{0};
        qint32 denominator{1};
    };

    /// A NUL is appended.
    void setAscii(quint16 tag, const QByteArray& text);
    void setBytes(quint16 tag, const QByteArray& bytes);
    void setUndefined(quint16 tag, const QByteArray& bytes);
    void setShorts(quint16 tag, const QList<quint16>& values);
    void setLongs(quint16 tag, const QList<quint32>& values);
    void setRationals(quint16 tag, const QList<Rational>& values);
    void setSignedRationals(quint16 tag, const QList<SignedRational>& values);
    /// `tag` will point to that directory.
    void addDirectory(quint16 tag, TiffTags directory);

    /// Bytes of serialised(); depends on the tags and the number of their values only, so that
    /// offsets can be set after it is known. Even.
    [[nodiscard]] qint64 length() const;
    /// The directory, then its values, then the directories below, to stand at `offset` of a file.
    [[nodiscard]] QByteArray serialised(quint32 offset) const;
    /// A whole TIFF structure: the header, and this as the first directory at offset 8.
    [[nodiscard]] QByteArray file() const;

    static constexpr quint32 kHeaderLength = 8;

private:
    struct Entry {
        quint16 type{0};
        quint32 count{0};
        QByteArray data;
    };

    void set(quint16 tag, quint16 type, qsizetype count, const QByteArray& data);

    std::map<quint16, Entry> m_entries;
    std::vector<quint16> m_directoryTags;
    std::vector<TiffTags> m_directories;
};
