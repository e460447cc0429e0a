#include "UserDefaults.h"

#include "AtomicFile.h"
#include "Directories.h"
#include "NumberValue.h"
#include "PropertyListForms.h"
#include "SystemLog.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>

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

/// The same type and value: a stored number 1 is not the switch YES.
bool isStored(const QVariantMap& settings, const QString& key, const QVariant& value)
{
    const auto found = settings.constFind(key);
    if (found == settings.constEnd()) {
        return !value.isValid();
    }
    return found.value().metaType() == value.metaType() && found.value() == value;
}

void put(QVariantMap& settings, const QString& key, const QVariant& value)
{
    if (value.isValid()) {
        settings.insert(key, value);
    } else {
        settings.remove(key);
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
    // As it will be read back, so that it is the same in this run and in the next.
    const QVariant kept = PropertyListForms::normalised(value);
    const Result<QByteArray> storable = PropertyList::toXml(QVariantMap{{key, kept}});
    if (kept.isValid() && !storable.ok()) {
        systemLog(u"The setting \"%1\" is not stored: %2"_s.arg(key, storable.error().message));
        return;
    }
    store(key, kept);
}

void UserDefaults::remove(const QString& key)
{
    store(key, QVariant());
}

void UserDefaults::store(const QString& key, const QVariant& value)
{
    QString failure;
    {
        const std::lock_guard guard(m_mutex);
        if (m_volatile.contains(key)) {
            put(m_volatile, key, value);
        } else {
            m_unwritten.insert(key, value);
            const Result<void> written = writeUnwritten();
            if (!written.ok() && !m_writeFailureLogged) {
                m_writeFailureLogged = true;
                failure = written.error().message;
            }
        }
    }
    if (!failure.isNull()) {
        systemLog(failure);
    }
    emit valueChanged(key);
}

Result<void> UserDefaults::writeUnwritten()
{
    const auto apply = [this](QVariantMap& settings) {
        for (auto change = m_unwritten.cbegin(); change != m_unwritten.cend(); ++change) {
            put(settings, change.key(), change.value());
        }
    };
    apply(m_persistent);

    const Result<void> folder = AtomicFile::makeFolder(QFileInfo(m_filePath).absolutePath());
    if (!folder.ok()) {
        return folder;
    }
    QLockFile lock(m_filePath + ".lock"_L1);
    if (!lock.tryLock(kLockMilliseconds)) {
        return Error{ErrorCode::NotWritable,
                     u"Could not lock \"%1\": the settings are not stored"_s.arg(m_filePath)};
    }
    Result<QVariantMap> settings = readSettings(m_filePath);
    if (!settings.ok() && settings.error().code == ErrorCode::Damaged) {
        // What a person may still want to read goes aside, not away.
        QFile::rename(m_filePath, m_filePath + ".damaged"_L1);
        settings = QVariantMap();
    }
    if (!settings.ok()) {
        return settings.error();
    }
    const QVariantMap stored = settings.value();
    apply(settings.value());
    m_persistent = settings.value();
    const bool isNews = std::any_of(
        m_unwritten.keyBegin(), m_unwritten.keyEnd(), [this, &stored](const QString& key) {
            return !isStored(stored, key, m_unwritten.value(key));
        });
    if (isNews) {
        const Result<QByteArray> bytes = PropertyList::toXml(m_persistent);
        if (!bytes.ok()) {
            return bytes.error();
        }
        const Result<void> written = AtomicFile::write(m_filePath, bytes.value());
        if (!written.ok()) {
            return written;
        }
    }
    m_unwritten.clear();
    return {};
}

QVariant UserDefaults::value(const QString& key) const
{
    const std::lock_guard guard(m_mutex);
    for (const QVariantMap* layer : {&m_volatile, &m_persistent, &m_registered}) {
        const auto found = layer->constFind(key);
        if (found != layer->constEnd()) {
            return found.value();
        }
    }
    return {};
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
