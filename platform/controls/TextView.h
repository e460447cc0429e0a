#pragma once

#include <QObject>
#include <QString>

/// A field for text of several lines: what was typed, and how it is typed. Main thread only.
class TextView final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TextView)
public:
    using QObject::QObject;

    /// The plain text, lines ended by line feeds.
    void setString(const QString& text);
    /// Shown while there is no text.
    void setPlaceholderString(const QString& text);
    /// The size of what is typed, in points, in the system's font; 0.0 leaves it as it is.
    void setTypingFontSize(double points);

    [[nodiscard]] const QString& string() const { return m_string; }

    [[nodiscard]] const QString& placeholderString() const { return m_placeholder; }

    [[nodiscard]] double typingFontSize() const { return m_typingFontSize; }

signals:
    /// Not emitted when the text is the one that was there.
    void stringChanged(const QString& text);
    void placeholderStringChanged(const QString& text);
    void typingFontSizeChanged(double points);

private:
    QString m_string;
    QString m_placeholder;
    double m_typingFontSize{0.0};
};
