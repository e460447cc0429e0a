#include "ZTBSystemInformation.h"

#include "Assertion.h"
#include "LinuxSystemControl.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

/// As assertions name this file.
QString systemInformationFile()
{
    return u"Shared Code/CrashReporter/ZTBSystemInformation"_s;
}

/// The integer in the bytes; those that are missing are 0.
template <typename Integer>
std::optional<Integer> integerIn(const std::optional<QByteArray>& bytes)
{
    if (!bytes || bytes->size() > static_cast<qsizetype>(sizeof(Integer))) {
        return std::nullopt;
    }
    Integer value = 0;
    std::memcpy(&value, bytes->constData(), static_cast<size_t>(bytes->size()));
    return value;
}

constexpr std::array<int, 2> hardware(int name)
{
    return {SystemControl::kHardware, name};
}

std::optional<QString> entry(const QVariantMap& dictionary, const QString& key)
{
    const QVariant value = dictionary.value(key);
    return value.typeId() == QMetaType::QString ? std::optional(value.toString()) : std::nullopt;
}

} // namespace

std::optional<QString> SystemInformationReads::stringForMIB(const SystemControl& control,
                                                            const int* mib,
                                                            unsigned length,
                                                            Error* /*error*/)
{
    CORVANE_CONSISTENCY_ASSERT(
        mib != nullptr,
        u"Invalid parameter not satisfying: NULL != mib"_s,
        u"NSString *stringForMIB(int *, u_int, NSError *__autoreleasing *)"_s,
        systemInformationFile());
    const std::optional<QByteArray> bytes = control.valueOf(std::span(mib, length));
    if (!bytes || bytes->isEmpty()) {
        return std::nullopt;
    }
    const QByteArray text = bytes->chopped(1);
    const bool isAscii = std::all_of(text.begin(), text.end(), [](char letter) {
        constexpr unsigned char kEndOfAscii = 0x80;
        return static_cast<unsigned char>(letter) < kEndOfAscii;
    });
    return isAscii ? std::optional(QString::fromLatin1(text)) : std::nullopt;
}

std::optional<qint32> SystemInformationReads::int32ForSysctlName(const SystemControl& control,
                                                                 const char* name,
                                                                 Error* /*error*/)
{
    CORVANE_CONSISTENCY_ASSERT(
        name != nullptr,
        u"Invalid parameter not satisfying: NULL != name"_s,
        u"NSNumber *int32ForSysctlName(const char *, NSError *__autoreleasing *)"_s,
        systemInformationFile());
    return integerIn<qint32>(control.valueOf(name));
}

std::optional<qint64> SystemInformationReads::int64ForSysctlName(const SystemControl& control,
                                                                 const char* name,
                                                                 Error* /*error*/)
{
    CORVANE_CONSISTENCY_ASSERT(
        name != nullptr,
        u"Invalid parameter not satisfying: NULL != name"_s,
        u"NSNumber *int64ForSysctlName(const char *, NSError *__autoreleasing *)"_s,
        systemInformationFile());
    return integerIn<qint64>(control.valueOf(name));
}

using namespace SystemInformationReads;

ZTBSystemInformation::ZTBSystemInformation(const SystemControl& control)
    : m_control(control)
{
}

const ZTBSystemInformation& ZTBSystemInformation::instance()
{
    static const LinuxSystemControl control;
    static const ZTBSystemInformation shared(control);
    return shared;
}

std::optional<QString> ZTBSystemInformation::machine() const
{
    const std::array<int, 2> mib = hardware(SystemControl::kMachine);
    return stringForMIB(m_control, mib.data(), mib.size());
}

std::optional<QString> ZTBSystemInformation::model() const
{
    const std::array<int, 2> mib = hardware(SystemControl::kModel);
    return stringForMIB(m_control, mib.data(), mib.size());
}

std::optional<qint64> ZTBSystemInformation::physicalMemory() const
{
    return integerIn<qint64>(m_control.valueOf(hardware(SystemControl::kMemorySize)));
}

std::optional<qint64> ZTBSystemInformation::busFrequency() const
{
    return int64ForSysctlName(m_control, "hw.busfrequency");
}

std::optional<qint64> ZTBSystemInformation::CPUFrequency() const
{
    return int64ForSysctlName(m_control, "hw.cpufrequency");
}

std::optional<qint32> ZTBSystemInformation::CPUFamily() const
{
    return int32ForSysctlName(m_control, "hw.cpufamily");
}

std::optional<qint32> ZTBSystemInformation::CPUType() const
{
    return int32ForSysctlName(m_control, "hw.cputype");
}

std::optional<qint32> ZTBSystemInformation::CPUSubtype() const
{
    return int32ForSysctlName(m_control, "hw.cpusubtype");
}

std::optional<qint32> ZTBSystemInformation::numberOfCPUs() const
{
    return integerIn<qint32>(m_control.valueOf(hardware(SystemControl::kNumberOfCpus)));
}

std::optional<qint32> ZTBSystemInformation::physicalCPUs() const
{
    return int32ForSysctlName(m_control, "hw.physicalcpu");
}

std::optional<qint32> ZTBSystemInformation::logicalCPUs() const
{
    return int32ForSysctlName(m_control, "hw.logicalcpu");
}

std::optional<QString> ZTBSystemInformation::systemVersion() const
{
    return entry(m_control.systemVersion(), u"ProductVersion"_s);
}

std::optional<QString> ZTBSystemInformation::systemBuildVersion() const
{
    return entry(m_control.systemVersion(), u"ProductBuildVersion"_s);
}
