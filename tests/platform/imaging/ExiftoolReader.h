#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What exiftool, a reader of metadata that has nothing to do with ours, finds in picture files.
namespace ExiftoolReader
{

struct Tag {
    QString family;    ///< "EXIF", "MakerNotes", "XMP", "IPTC", "File", "ExifTool", …
    QString directory; ///< "IFD0", "ExifIFD", "Canon", "XMP-dc", …
    QString name;      ///< "FNumber"; "Error" and "Warning" of ExifTool
    QString value;     ///< numbers are not translated, blanks are made one each
};

/// The tags of one file.
class Tags final
{
public:
    [[nodiscard]] const QList<Tag>& all() const { return m_all; }

    /// Its value in whatever directory of the family it stands first; nothing where it does not.
    [[nodiscard]] std::optional<QString> value(const QString& family, const QString& name) const;

    void add(const Tag& tag) { m_all.append(tag); }

private:
    QList<Tag> m_all;
};

/// Of each file in turn; a failure is a test failure and yields nothing.
[[nodiscard]] QList<Tags> tags(const QStringList& paths);

} // namespace ExiftoolReader
