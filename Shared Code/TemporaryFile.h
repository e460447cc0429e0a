#pragma once

#include <QByteArray>
#include <QString>

/// The temporary JPEG of one photo's turn: deleted at the latest when the turn ends, however it
/// ends. One thread at a time.
class TemporaryFile final
{
public:
    /// Writes nothing yet.
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Where write() will write. `fileName` comes from the library.
    /// Errors: raises ScriptingException for a name that leads out of the folder.
    void setPath(const QString& folder, const QString& fileName);
    /// Errors: raises ScriptingException with the reason, such as a full disk; what was written
    /// is deleted with the object.
    void write(const QByteArray& bytes);
    /// Deletes the file; does nothing where there is none.
    void remove();

    [[nodiscard]] const QString& path() const { return m_path; }

private:
    QString m_path;
    bool m_isWritten{false};
};
