#pragma once

#include <QString>

#include <optional>

class SystemControl;
struct Error;

/// Facts about the machine and its operating system that name nobody. Each is read anew every time
/// it is asked for, and absent where it cannot be read. Any thread.
class ZTBSystemInformation final
{
public:
    /// `control`: where the facts are read; outlives the object.
    explicit ZTBSystemInformation(const SystemControl& control);

    /// The one of this machine, made at the first call.
    [[nodiscard]] static const ZTBSystemInformation& instance();

    [[nodiscard]] std::optional<QString> machine() const;
    [[nodiscard]] std::optional<QString> model() const;
    /// Bytes.
    [[nodiscard]] std::optional<qint64> physicalMemory() const;
    /// Hertz.
    [[nodiscard]] std::optional<qint64> busFrequency() const;
    // Named as the fields of the form.
    // NOLINTBEGIN(readability-identifier-naming)
    [[nodiscard]] std::optional<qint64> CPUFrequency() const;
    [[nodiscard]] std::optional<qint32> CPUFamily() const;
    [[nodiscard]] std::optional<qint32> CPUType() const;
    [[nodiscard]] std::optional<qint32> CPUSubtype() const;
    // NOLINTEND(readability-identifier-naming)
    [[nodiscard]] std::optional<qint32> numberOfCPUs() const;
    [[nodiscard]] std::optional<qint32> physicalCPUs() const;
    [[nodiscard]] std::optional<qint32> logicalCPUs() const;
    [[nodiscard]] std::optional<QString> systemVersion() const;
    [[nodiscard]] std::optional<QString> systemBuildVersion() const;

private:
    const SystemControl& m_control;
};

/// How ZTBSystemInformation reads single values; for it and its tests. Nothing is told about a
/// failure but that there is no value: `error` is never written.
/// Errors: raise AssertionFailure where no name is given.
namespace SystemInformationReads
{

/// A text, without the zero byte that ends it; none when it is not ASCII.
[[nodiscard]] std::optional<QString>
stringForMIB(const SystemControl& control, const int* mib, unsigned length, Error* error = nullptr);
/// A value of fewer bytes fills the low ones; none when it has more.
[[nodiscard]] std::optional<qint32>
int32ForSysctlName(const SystemControl& control, const char* name, Error* error = nullptr);
[[nodiscard]] std::optional<qint64>
int64ForSysctlName(const SystemControl& control, const char* name, Error* error = nullptr);

} // namespace SystemInformationReads
