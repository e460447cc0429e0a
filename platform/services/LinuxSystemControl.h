#pragma once

#include "SystemControl.h"

#include <QString>

/// What Linux tells in /proc, /sys, /etc/os-release and uname(2):
///   machine                the machine hardware name ("x86_64")
///   model                  the firmware's product name, else the model of the device tree; never a
///                          serial number
///   memory size            MemTotal
///   hw.ncpu                the processors that are present; hw.logicalcpu those that are online
///   hw.physicalcpu         the cores of those that are online
///   hw.cpufrequency        the base frequency, else the highest, else the one at the moment
///   hw.cpufamily           "cpu family" and
///   hw.cpusubtype          "model" of the first processor, where the kernel gives them as numbers
/// A bus frequency and a processor type are not to be had. The system's version is the presentable
/// name of the operating system, its build version the BUILD_ID.
class LinuxSystemControl final : public SystemControl
{
public:
    /// `root`: what stands before /proc, /sys and /etc; empty but in tests.
    explicit LinuxSystemControl(QString root = {});

    [[nodiscard]] std::optional<QByteArray> valueOf(std::span<const int> mib) const override;
    [[nodiscard]] std::optional<QByteArray> valueOf(const char* name) const override;
    [[nodiscard]] QVariantMap systemVersion() const override;

private:
    /// The file's bytes; empty where it cannot be read.
    [[nodiscard]] QByteArray contentOf(const QString& path) const;
    /// The number in a file that holds nothing else.
    [[nodiscard]] std::optional<qint64> numberIn(const QString& path) const;
    /// A line "NAME : NUMBER" of /proc/cpuinfo, of the first processor.
    [[nodiscard]] std::optional<double> processorFact(QByteArrayView name) const;
    /// The processors in a list such as "0-3,8".
    [[nodiscard]] QList<int> processors(const QString& list) const;
    [[nodiscard]] std::optional<QByteArray> model() const;
    [[nodiscard]] std::optional<QByteArray> memorySize() const;
    [[nodiscard]] std::optional<QByteArray> processorFrequency() const;
    [[nodiscard]] std::optional<QByteArray> cores() const;
    [[nodiscard]] std::optional<QByteArray> count(const QString& list) const;

    const QString m_root;
};
