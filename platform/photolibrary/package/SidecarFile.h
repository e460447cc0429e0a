#pragma once

#include "Result.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

/// One property list that is read, edited and written back. Any thread.
class SidecarFile final
{
public:
    enum class Form : quint8 { Binary, Xml };
    /// What the file was found to be.
    enum class Found : quint8 { Missing, Damaged, Whole };

    /// A missing or damaged file starts empty. Errors: Unreadable.
    [[nodiscard]] static Result<SidecarFile> open(const QString& path, Form form);

    [[nodiscard]] QVariantMap& content() { return m_content; }

    [[nodiscard]] const QString& path() const { return m_path; }

    [[nodiscard]] Found found() const { return m_found; }

    /// Whether the file says otherwise than the content, so that save() would write it.
    [[nodiscard]] bool differs() const { return m_content != m_old || m_old.isEmpty(); }

    /// The keys that content and file tell differently, sorted.
    [[nodiscard]] QStringList differingKeys() const;

    /// Writes the file, unless it would say what it said before. Makes the folder.
    [[nodiscard]] Result<void> save();
    /// save() with the moment of writing under "plistWriteTimestamp".
    [[nodiscard]] Result<void> saveStamped(double now);

private:
    SidecarFile(QString path, Form form, Found found, QVariantMap content);

    QString m_path;
    Form m_form;
    Found m_found;
    QVariantMap m_old;
    QVariantMap m_content;
};
