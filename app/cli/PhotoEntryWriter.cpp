#include "PhotoEntryWriter.h"

#include "JsonText.h"

#include <algorithm>

namespace
{

constexpr QByteArrayView kNull("null");

std::optional<qint64> unless(bool isUnknown, int number)
{
    return isUnknown ? std::nullopt : std::optional<qint64>(number);
}

} // namespace

PhotoEntryWriter::PhotoEntryWriter(QByteArray& text)
    : m_text(text)
{
}

/// Qt sorts keys too.
void PhotoEntryWriter::write(const PhotoFacts& photo)
{
    m_text += "        {\n";
    entry("albums", photo.albums);
    entry("altitude", photo.altitude);
    entry("bytes", photo.bytes);
    entry("comment", photo.comment);
    entryOrNull("date", photo.wallClock());
    entry("edited", photo.edited);
    entry("filename", photo.fileName);
    entry("guid", photo.guid);
    entry("height", unless(photo.unknown.height, photo.height));
    entry("hidden", photo.hidden);
    entry("id", photo.id);
    entryOrNull("imagePath", photo.imagePath);
    entry("keywords", photo.keywords);
    entry("latitude", photo.latitude);
    entry("longitude", photo.longitude);
    entry("missing", photo.missing);
    entry("name", photo.name);
    entryOrNull("originalPath", photo.originalPath);
    entryOrNull("previewPath", photo.previewPath);
    entry("rating", unless(photo.unknown.rating, photo.rating));
    entry("raw", photo.raw);
    roll(photo);
    entry("rotated", photo.rotated);
    entryOrNull("thumbnailPath", photo.thumbnailPath);
    entry("title", photo.name);
    entry("width", unless(photo.unknown.width, photo.width));
    m_text.chop(2); // the last one's comma
    m_text += "\n        }";
}

void PhotoEntryWriter::key(const char* name)
{
    m_text.append("            \"").append(name).append("\": ");
}

void PhotoEntryWriter::end()
{
    m_text += ",\n";
}

void PhotoEntryWriter::string(const QString& text)
{
    const auto isPlain = [](QChar character) {
        return character >= u' ' && character <= u'~' && character != u'"' && character != u'\\';
    };
    if (std::ranges::all_of(text, isPlain)) { // nearly all are
        m_text.append('"').append(text.toLatin1()).append('"');
    } else {
        m_text += JsonText::of(text);
    }
}

void PhotoEntryWriter::entry(const char* name, bool value)
{
    key(name);
    m_text += value ? "true" : "false";
    end();
}

void PhotoEntryWriter::entry(const char* name, qint64 value)
{
    entry(name, std::optional(value));
}

void PhotoEntryWriter::entry(const char* name, const std::optional<qint64>& value)
{
    key(name);
    m_text += value ? QByteArray::number(*value) : kNull;
    end();
}

void PhotoEntryWriter::entry(const char* name, const std::optional<double>& value)
{
    key(name);
    m_text += value ? JsonText::of(*value) : kNull;
    end();
}

void PhotoEntryWriter::entry(const char* name, const QString& value)
{
    key(name);
    string(value);
    end();
}

void PhotoEntryWriter::entryOrNull(const char* name, const QString& value)
{
    key(name);
    if (value.isEmpty()) {
        m_text += kNull;
    } else {
        string(value);
    }
    end();
}

void PhotoEntryWriter::entry(const char* name, const QStringList& values)
{
    key(name);
    m_text += "[\n";
    for (qsizetype index = 0; index < values.size(); ++index) {
        m_text += "                ";
        string(values.at(index));
        m_text += index + 1 < values.size() ? ",\n" : "\n";
    }
    m_text += "            ]";
    end();
}

void PhotoEntryWriter::roll(const PhotoFacts& photo)
{
    key("roll");
    if (photo.rollId == 0) {
        m_text += kNull;
    } else {
        m_text += "{\n                \"id\": " + QByteArray::number(photo.rollId) +
                  ",\n                \"name\": ";
        string(photo.rollName);
        m_text += "\n            }";
    }
    end();
}
