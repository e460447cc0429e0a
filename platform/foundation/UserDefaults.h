#pragma once

#include "Result.h"

#include <QObject>
#include <QString>
#include <QVariant>

#include <mutex>

/// The user's settings in three layers; a read sees the first that holds the key:
///   1. the volatile layer: what this run was given on its command line; never stored;
///   2. the persistent domain: what was set, kept in one XML property-list file;
///   3. the registration domain: fallbacks given at start.
/// A write to a key of the volatile layer stays in that layer; any other write goes to the file at
/// once (under a lock file, re-read and replaced atomically, so two programs sharing it lose
/// nothing but a race for the same key). Writing the value that is stored already writes nothing.
///
/// Threads: every method may be called from any thread; `valueChanged` is emitted on the thread
/// that set the value, outside the lock.
/// Errors: a file that cannot be read counts as empty and one that cannot be written is reported
/// once to the system log; settings then live for the run.
class UserDefaults final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(UserDefaults)
public:
    /// `filePath`: the property-list file of the persistent domain; created at the first write.
    explicit UserDefaults(QString filePath, QObject* parent = nullptr);
    ~UserDefaults() override;

    /// `$XDG_CONFIG_HOME/corvane/defaults.plist`, else below `~/.config`.
    [[nodiscard]] static QString standardFilePath();

    /// Adds fallbacks; existing fallbacks of the same keys are replaced.
    void registerDefaults(const QVariantMap& fallbacks);
    /// Puts a value into the volatile layer. Emits `valueChanged`.
    void setVolatile(const QString& key, const QVariant& value);

    void setValue(const QString& key, const QVariant& value);

    void setBool(const QString& key, bool value) { setValue(key, value); }

    void setInteger(const QString& key, qint64 value) { setValue(key, value); }

    void setDouble(const QString& key, double value) { setValue(key, value); }

    void remove(const QString& key);

    /// An invalid QVariant where no layer holds the key.
    [[nodiscard]] QVariant value(const QString& key) const;
    /// A missing key reads as false, 0, 0.0 or a null string; text is read as a number's start
    /// ("7x" is 7), numbers as YES when not 0.
    [[nodiscard]] bool boolValue(const QString& key) const;
    [[nodiscard]] qint64 integerValue(const QString& key) const;
    [[nodiscard]] double doubleValue(const QString& key) const;
    [[nodiscard]] QString stringValue(const QString& key) const;

    [[nodiscard]] QString filePath() const { return m_filePath; }

signals:
    /// A value of any layer was set or removed (also when it is the same as before, as observers
    /// of the platform this program comes from are told).
    void valueChanged(const QString& key);

private:
    /// An invalid value removes the key.
    void store(const QString& key, const QVariant& value);
    /// Brings m_unwritten into m_persistent and the file. The caller holds m_mutex.
    [[nodiscard]] Result<void> writeUnwritten();

    const QString m_filePath;
    mutable std::mutex m_mutex;
    QVariantMap m_volatile;
    QVariantMap m_persistent;
    QVariantMap m_registered;
    /// Set or, by an invalid value, removed, but not yet in the file.
    QVariantMap m_unwritten;
    bool m_writeFailureLogged{false};
};
