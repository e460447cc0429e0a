#pragma once

#include "LibraryFacts.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <optional>

/// Writes photos into the JSON text of a list, laid out as Qt does: a tree of values for each photo
/// takes several times as long.
class PhotoEntryWriter final
{
public:
    /// Appends to `text`, which stays the caller's and outlives the writer.
    explicit PhotoEntryWriter(QByteArray& text);

    /// The photo's object, without a comma or line end after it.
    void write(const PhotoFacts& photo);

private:
    void key(const char* name);
    void end();
    void string(const QString& text);
    void entry(const char* name, bool value);
    void entry(const char* name, qint64 value);
    void entry(const char* name, const std::optional<qint64>& value);
    void entry(const char* name, const std::optional<double>& value);
    void entry(const char* name, const QString& value);
    void entryOrNull(const char* name, const QString& value);
    void entry(const char* name, const QStringList& values);
    void roll(const PhotoFacts& photo);

    QByteArray& m_text;
};
