#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

/// Writes property-list XML as the photo application's catalogues have it, which differs from the
/// usual form: some values stand on the line of their key. `indentation` is a number of tabs.
class CatalogueXml final
{
public:
    /// Indented: each line begins with its tabs; Flat: without any.
    enum class Layout : quint8 { Indented, Flat };

    explicit CatalogueXml(Layout layout)
        : m_layout(layout)
    {
    }

    void line(int indentation, const QByteArray& text);
    void string(int indentation, const char* key, const QString& value);
    void integer(int indentation, const char* key, qint64 value);
    /// `text`: the number as fixed() or shortest() gives it.
    void real(int indentation, const char* key, const QByteArray& text);
    /// The value on the line of its key.
    void inlineReal(int indentation, const char* key, const QByteArray& text);
    void inlineBoolean(int indentation, const char* key, bool value);
    /// What a catalogue before has under a key that is not known here, laid out as any property
    /// list.
    void carriedOver(const QString& key, const QVariant& value);
    /// An array of ids as strings, each indented by `itemIndentation`.
    void ids(int indentation, const char* key, const QList<qint64>& ids, int itemIndentation);

    [[nodiscard]] const QByteArray& bytes() const { return m_bytes; }

    /// Text with what XML reserves escaped, and without the characters that XML cannot hold.
    [[nodiscard]] static QByteArray escaped(const QString& text);
    /// As "%.6f" and the like, whatever the locale.
    [[nodiscard]] static QByteArray fixed(double number, int decimals);
    /// As "%.10g".
    [[nodiscard]] static QByteArray shortest(double number);

private:
    void indent(int indentation);
    void line(int indentation, const char* before, const QByteArray& text, const char* after);
    void keyLine(int indentation, const char* key);

    Layout m_layout;
    QByteArray m_bytes;
};
