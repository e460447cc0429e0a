#include "UserDefaults.h"

#include "AtomicFile.h"
#include "Directories.h"
#include "NumberValue.h"
#include "PropertyList.h"
#include "SystemLog.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace
{

/// How long a write waits for another program's, which takes milliseconds.
constexpr int kLockMilliseconds = 2000;

/// The settings in the file; none where there is no file.
Result<QVariantMap> readSettings(const QString& path)
{
    const Result<QVariant> content = PropertyList::read(path);
    if (!content.ok()) {
        return content.error().code == ErrorCode::NotFound ? Result<QVariantMap>(QVariantMap())
                                                           : content.error();
    }
    if (content.value().typeId() != QMetaType::QVariantMap) {
        return Error{ErrorCode::Damaged, u"\"%1\" holds no settings"_s.arg(path)};
    }
    return content.value().toMap();
}

/// The value as the file will give it back, so that it is the same in this run and in the next.
Result<QVariant> asStored(const QString& key, const QVariant& value)
{
    const Result<QByteArray> bytes = PropertyList::toXml(QVariantMap{{key, value}});
    if (!bytes.ok()) {
        return bytes.error();
    }
    const Result<QVariant> content = PropertyList::parse(bytes.value());
    if (!content.ok()) {
        return content.error();
    }
    const QVariant kept = content.value().toMap().value(key);
    if (!kept.isValid()) {
        return Error{ErrorCode::Unsupported, u"this key has no place in a property list"_s};
    }
    return kept;
}

/// Takes the lock, also from a program that was killed before it had written its name into the
/// file: that one QLockFile takes for a living one's until half a minute has passed.
bool isTaken(QLockFile& lock)
{
    if (lock.tryLock(kLockMilliseconds)) {
        return true;
    }
    qint64 process = 0;
    QString host;
    QString program;
    const bool isNamed = lock.getLockInfo(&process, &host, &program);
    return !isNamed && lock.removeStaleLockFile() && lock.tryLock(0);
}

/// Gives a damaged file the first free of the names "….damaged", "….damaged 2" and so on. The
/// caller holds the lock file, so that no other program of ours takes the name in between.
Result<void> setAside(const QString& path)
{
    const auto isTaken = [](const QString& name) {
        const QFileInfo info(name);
        return info.exists() || info.isSymLink();
    };
    const QString first = path + ".damaged"_L1;
    QString aside = first;
    for (int number = 2; isTaken(aside); ++number) {
        aside = first + u' ' + QString::number(number);
    }
    std::error_code failure;
    std::filesystem::rename(
        QFile::encodeName(path).toStdString(), QFile::encodeName(aside).toStdString(), failure);
    if (failure) {
        return AtomicFile::errorFromErrno(failure.value(), u"set aside the damaged file"_s, path);
    }
    return {};
}

/// The settings in the file, none where there is no file or only a damaged one, which is set aside:
/// what a person may still want to read is not to be overwritten.
Result<QVariantMap> readToReplace(const QString& path)
{
    Result<QVariantMap> settings = readSettings(path);
    if (settings.ok() || settings.error().code != ErrorCode::Damaged) {
        return settings;
    }
    const Result<void> moved = setAside(path);
    return moved.ok() ? Result<QVariantMap>(QVariantMap()) : moved.error();
}

/// The same type and value: a stored number 1 is not the switch YES.
bool isSame(const QVariant& one, const QVariant& other)
{
    return one.metaType() == other.metaType() && one == other;
}

void put(QVariantMap& settings, const QString& key, const QVariant& value)
{
    if (value.isValid()) {
        settings.insert(key, value);
    } else {
        settings.remove(key);
    }
}

void putAll(QVariantMap& settings, const QVariantMap& changes)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        put(settings, change.key(), change.value());
    }
}

} // namespace

UserDefaults::UserDefaults(QString filePath, QObject* parent)
    : QObject(parent)
    , m_filePath(std::move(filePath))
{
    const Result<QVariantMap> settings = readSettings(m_filePath);
    if (settings.ok()) {
        m_persistent = settings.value();
    } else {
        systemLog(settings.error().message);
    }
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::standardFilePath()
{
    return Directories::config() + "/defaults.plist"_L1;
}

void UserDefaults::registerDefaults(const QVariantMap& fallbacks)
{
    {
        const std::lock_guard guard(m_mutex);
        m_registered.insert(fallbacks);
    }
    const QStringList keys = fallbacks.keys();
    for (const QString& key : keys) {
        emit valueChanged(key);
    }
}

void UserDefaults::setVolatile(const QString& key, const QVariant& value)
{
    {
        const std::lock_guard guard(m_mutex);
        m_volatile.insert(key, value);
    }
    emit valueChanged(key);
}

void UserDefaults::setValue(const QString& key, const QVariant& value)
{
    if (!value.isValid()) {
        remove(key);
        return;
    }
    const Result<QVariant> kept = asStored(key, value);
    if (!kept.ok()) {
        systemLog(u"The setting \"%1\" is not stored: %2"_s.arg(key, kept.error().message));
        return;
    }
    store(key, kept.value());
}

void UserDefaults::remove(const QString& key)
{
    store(key, QVariant());
}

void UserDefaults::store(const QString& key, const QVariant& value)
{
    QString failure;
    QStringList changed;
    if (!storeVolatile(key, value)) {
        const std::lock_guard writing(m_writeMutex);
        m_unwritten.insert(key, value);
        QVariantMap settings = m_persistent;
        const Result<void> written = writeUnwritten(settings);
        changed = publish(std::move(settings));
        if (!written.ok() && !m_loggedFailures.contains(written.error().message)) {
            failure = written.error().message;
            m_loggedFailures.insert(failure);
        }
    }
    if (!failure.isNull()) {
        systemLog(failure);
    }
    changed.removeOne(key);
    emit valueChanged(key);
    for (const QString& other : std::as_const(changed)) {
        emit valueChanged(other);
    }
}

bool UserDefaults::storeVolatile(const QString& key, const QVariant& value)
{
    const std::lock_guard guard(m_mutex);
    const auto found = m_volatile.find(key);
    if (found == m_volatile.end()) {
        return false;
    }
    *found = value;
    return true;
}

Result<void> UserDefaults::writeUnwritten(QVariantMap& settings)
{
    putAll(settings, m_unwritten);
    const Result<void> folder = AtomicFile::makeFolder(QFileInfo(m_filePath).absolutePath());
    if (!folder.ok()) {
        return folder.error();
    }
    QLockFile lock(m_filePath + ".lock"_L1);
    if (!isTaken(lock)) {
        return Error{ErrorCode::NotWritable,
                     u"Could not lock \"%1\": the settings are not stored"_s.arg(m_filePath)};
    }
    const Result<QVariantMap> stored = readToReplace(m_filePath);
    if (!stored.ok()) {
        return stored.error();
    }
    settings = stored.value();
    putAll(settings, m_unwritten);
    const bool isNews = std::any_of(
        m_unwritten.keyBegin(), m_unwritten.keyEnd(), [&stored, &settings](const QString& key) {
            return !isSame(stored.value().value(key), settings.value(key));
        });
    if (isNews) {
        const Result<QByteArray> bytes = PropertyList::toXml(settings);
        if (!bytes.ok()) {
            return bytes.error();
        }
        const Result<void> written = AtomicFile::write(m_filePath, bytes.value());
        if (!written.ok()) {
            return written.error();
        }
    }
    m_unwritten.clear();
    return {};
}

QStringList UserDefaults::publish(QVariantMap settings)
{
    QStringList keys = m_persistent.keys() + settings.keys();
    keys.removeDuplicates();
    const std::lock_guard guard(m_mutex);
    m_persistent.swap(settings);
    const QVariantMap& before = settings;
    keys.removeIf([this, &before](const QString& key) {
        return isSame(visible(before, key), visible(m_persistent, key));
    });
    return keys;
}

QVariant UserDefaults::visible(const QVariantMap& persistent, const QString& key) const
{
    for (const QVariantMap* layer : {&m_volatile, &persistent, &m_registered}) {
        const auto found = layer->constFind(key);
        if (found != layer->constEnd() && found.value().isValid()) {
            return found.value();
        }
    }
    return {};
}

QVariant UserDefaults::value(const QString& key) const
{
    const std::lock_guard guard(m_mutex);
    return visible(m_persistent, key);
}

bool UserDefaults::boolValue(const QString& key) const
{
    return NumberValue::boolean(value(key));
}

qint64 UserDefaults::integerValue(const QString& key) const
{
    return NumberValue::integer(value(key));
}

double UserDefaults::doubleValue(const QString& key) const
{
    return NumberValue::real(value(key));
}

QString UserDefaults::stringValue(const QString& key) const
{
    return value(key).toString();
}
