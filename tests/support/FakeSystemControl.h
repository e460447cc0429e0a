#pragma once

#include "SystemControl.h"

#include <QMap>

/// A machine that knows what it was told, and how often it was asked.
class FakeSystemControl final : public SystemControl
{
public:
    template <typename Integer>
    static QByteArray bytesOf(Integer value)
    {
        return {reinterpret_cast<const char*>(&value), sizeof(value)};
    }

    void setHardware(int number, const QByteArray& value) { m_hardware.insert(number, value); }

    void set(const QByteArray& name, const QByteArray& value) { m_named.insert(name, value); }

    void setSystemVersion(const QVariantMap& version) { m_version = version; }

    /// How many values were asked for.
    [[nodiscard]] int questions() const { return m_questions; }

    [[nodiscard]] std::optional<QByteArray> valueOf(std::span<const int> mib) const override
    {
        ++m_questions;
        return mib.size() == 2 && mib[0] == kHardware ? valueIn(m_hardware, mib[1]) : std::nullopt;
    }

    [[nodiscard]] std::optional<QByteArray> valueOf(const char* name) const override
    {
        ++m_questions;
        return valueIn(m_named, QByteArray(name));
    }

    [[nodiscard]] QVariantMap systemVersion() const override
    {
        ++m_questions;
        return m_version;
    }

private:
    template <typename Key>
    static std::optional<QByteArray> valueIn(const QMap<Key, QByteArray>& values, const Key& key)
    {
        const auto found = values.constFind(key);
        return found == values.constEnd() ? std::nullopt : std::optional(found.value());
    }

    QMap<int, QByteArray> m_hardware;
    QMap<QByteArray, QByteArray> m_named;
    QVariantMap m_version;
    mutable int m_questions{0};
};
