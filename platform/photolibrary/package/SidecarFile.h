#pragma once

#include "Result.h"

#include <QString>
#include <QVariantMap>

/// One property list that is read, edited and written back. Any thread.
class SidecarFile final
{
public:
    enum class Form : quint8 { Binary, Xml };

    /// A missing or damaged file starts empty. Errors: Unreadable.
    [[nodiscard]] static Result<SidecarFile> open(const QString& path, Form form);

    [[nodiscard]] QVariantMap& content() { return m_content; }

    /// Writes the file, unless it would say what it said before. Makes the folder.
    [[nodiscard]] Result<void> save();
    /// save() with the moment of writing under "plistWriteTimestamp".
    [[nodiscard]] Result<void> saveStamped(double now);

private:
    SidecarFile(QString path, Form form, QVariantMap content);

    QString m_path;
    Form m_form;
    QVariantMap m_old;
    QVariantMap m_content;
};
