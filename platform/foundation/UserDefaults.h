#pragma once

#include "Result.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <mutex>

/// The user's settings in three layers; a read sees the first that holds the key:
///   1. the volatile layer: what this run was given on its command line; never stored;
///   2. the persistent domain: what was set, kept in one XML property-list file;
///   3. the registration domain: fallbacks given at start.
/// A key that the volatile layer once held belongs to that layer for the whole run: writes to it
/// stay there, and so does its removal, after which reads see the persistent or the registered
/// value until the key is set again. Any other write goes to the file at once (under a lock file,
/// re-read and replaced atomically, so two programs sharing it lose nothing but a race for the same
/// key) and brings what other programs stored meanwhile into this one. Writing the value that is
/// stored already writes nothing.
///
/// Threads: every method may be called from any thread. Writes to the file happen one after the
/// other; a write may wait some seconds for another program's. Reads and writes to the volatile
/// layer never wait for the disk; they see a value once it is stored, or could not be.
/// `valueChanged` is emitted on the thread that wrote, outside the locks.
/// Errors: a file that cannot be read counts as empty. A damaged one is set aside before the first
/// write, as "NAME.damaged", "NAME.damaged 2" and so on, and never overwritten. Where the file
/// cannot be written, each reason goes to the system log once and settings live for the run.
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
    /// Puts a value into the volatile layer; an invalid one makes the key volatile without a value.
    /// Emits `valueChanged`.
    void setVolatile(const QString& key, const QVariant& value);

    /// The value is kept as the file gives it back; an invalid one removes the key. What no
    /// property list can hold is refused with one line in the system log: the old value stays, and
    /// nothing is emitted.
    void setValue(const QString& key, const QVariant& value);

    void setBool(const QString& key, bool value) { setValue(key, value); }

    void setInteger(const QString& key, qint64 value) { setValue(key, value); }

    void setDouble(const QString& key, double value) { setValue(key, value); }

    /// Of the layer that writes to this key go to.
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
    /// of the platform this program comes from are told), or a write found that another program had
    /// changed what reads of this key see. The written key is announced first.
    void valueChanged(const QString& key);

private:
    /// An invalid value removes the key.
    void store(const QString& key, const QVariant& value);
    /// Whether the key belongs to the volatile layer, which then has the value.
    [[nodiscard]] bool storeVolatile(const QString& key, const QVariant& value);
    /// Brings m_unwritten into `settings` and the file; `settings` become what the file held where
    /// that could be read. The caller holds m_writeMutex.
    [[nodiscard]] Result<void> writeUnwritten(QVariantMap& settings);
    /// Makes `settings` the persistent domain; the keys of which reads see something else now. The
    /// caller holds m_writeMutex.
    [[nodiscard]] QStringList publish(QVariantMap settings);
    /// What a read sees over this persistent domain. The caller holds m_mutex.
    [[nodiscard]] QVariant visible(const QVariantMap& persistent, const QString& key) const;

    const QString m_filePath;
    /// Held for a whole write to the file, and locked before m_mutex where both are.
    std::mutex m_writeMutex;
    /// Guards the three layers; never held while the disk is waited for.
    mutable std::mutex m_mutex;
    /// An invalid value: the key was removed but still belongs to this layer.
    QVariantMap m_volatile;
    /// Changed with both mutexes held, so either of them is enough to read it.
    QVariantMap m_persistent;
    QVariantMap m_registered;
    /// Set or, by an invalid value, removed, but not yet in the file. Guarded by m_writeMutex.
    QVariantMap m_unwritten;
    /// The messages of failed writes that are in the log already. Guarded by m_writeMutex.
    QSet<QString> m_loggedFailures;
};
