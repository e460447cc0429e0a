#pragma once

#include <QByteArray>
#include <QVariantMap>

#include <optional>
#include <span>

/// What the kernel tells of the machine, under the names of sysctl(3), and what the system tells of
/// itself. Read anew at every call; any thread.
class SystemControl
{
public:
    /// The top level and the names below it that are asked for by number.
    static constexpr int kHardware = 6;
    static constexpr int kMachine = 1;      ///< text
    static constexpr int kModel = 2;        ///< text
    static constexpr int kNumberOfCpus = 3; ///< 32-bit integer
    static constexpr int kMemorySize = 24;  ///< 64-bit integer, bytes

    virtual ~SystemControl() = default;
    /// The value of a numeric name as the kernel gives it: an integer in the machine's byte order,
    /// or a text with the zero byte that ends it. None where the name is not known.
    [[nodiscard]] virtual std::optional<QByteArray> valueOf(std::span<const int> mib) const = 0;
    /// The same of a name such as "hw.cpufrequency".
    [[nodiscard]] virtual std::optional<QByteArray> valueOf(const char* name) const = 0;
    /// "ProductVersion" and "ProductBuildVersion" of the operating system, each where it is known.
    [[nodiscard]] virtual QVariantMap systemVersion() const = 0;
};
