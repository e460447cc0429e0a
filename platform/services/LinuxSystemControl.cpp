#include "LinuxSystemControl.h"

#include <QFile>

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <tuple>

using namespace Qt::StringLiterals;

namespace
{

/// More than any of the files holds on a machine of hundreds of processors.
constexpr qint64 kMostBytes = 4 * qint64{1024} * 1024;

constexpr qint64 kHertzPerKilohertz = 1000;
constexpr double kHertzPerMegahertz = 1e6;
constexpr qint64 kBytesPerKilobyte = 1024;

template <typename Integer>
QByteArray bytesOf(Integer value)
{
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

/// As the kernel gives a text: with a zero byte at its end.
QByteArray textValue(const QByteArray& text)
{
    return text + '\0';
}

template <typename Integer>
std::optional<QByteArray> integerValue(std::optional<double> value)
{
    if (!value || *value < 0 || *value > std::numeric_limits<Integer>::max()) {
        return std::nullopt;
    }
    return bytesOf(static_cast<Integer>(*value));
}

/// What makers leave in the product name when they forget to fill it in.
bool isFilledIn(const QByteArray& productName)
{
    static constexpr std::array<const char*, 7> kPlaceholders{"",
                                                              "Default string",
                                                              "None",
                                                              "Not Specified",
                                                              "System Product Name",
                                                              "To Be Filled By O.E.M.",
                                                              "Unknown"};
    return std::none_of(
        kPlaceholders.begin(), kPlaceholders.end(), [&productName](const char* placeholder) {
            return productName == placeholder;
        });
}

/// The value of a line of os-release: as the shell would read it.
QString unquoted(const QByteArray& text)
{
    QByteArray value = text.trimmed();
    if (value.size() >= 2 && (value.startsWith('"') || value.startsWith('\'')) &&
        value.endsWith(value.front())) {
        value = value.sliced(1, value.size() - 2);
    }
    QByteArray plain;
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value.at(index) == '\\' && index + 1 < value.size()) {
            ++index;
        }
        plain.append(value.at(index));
    }
    return QString::fromUtf8(plain);
}

void insertIfKnown(QVariantMap& facts, const QString& key, const QString& value)
{
    if (!value.isEmpty()) {
        facts.insert(key, value);
    }
}

} // namespace

LinuxSystemControl::LinuxSystemControl(QString root)
    : m_root(std::move(root))
{
}

std::optional<QByteArray> LinuxSystemControl::valueOf(std::span<const int> mib) const
{
    if (mib.size() != 2 || mib[0] != kHardware) {
        return std::nullopt;
    }
    switch (mib[1]) {
    case kMachine: {
        utsname names{};
        return ::uname(&names) == 0
                   ? std::optional(textValue(QByteArray(static_cast<const char*>(names.machine))))
                   : std::nullopt;
    }
    case kModel:
        return model();
    case kNumberOfCpus:
        return count(u"/sys/devices/system/cpu/present"_s);
    case kMemorySize:
        return memorySize();
    default:
        return std::nullopt;
    }
}

std::optional<QByteArray> LinuxSystemControl::valueOf(const char* name) const
{
    const QByteArrayView wanted(name);
    if (wanted == "hw.cpufrequency") {
        return processorFrequency();
    }
    if (wanted == "hw.cpufamily") {
        return integerValue<qint32>(processorFact("cpu family"));
    }
    if (wanted == "hw.cpusubtype") {
        return integerValue<qint32>(processorFact("model"));
    }
    if (wanted == "hw.physicalcpu") {
        return cores();
    }
    if (wanted == "hw.logicalcpu") {
        return count(u"/sys/devices/system/cpu/online"_s);
    }
    return std::nullopt;
}

QVariantMap LinuxSystemControl::systemVersion() const
{
    QByteArray content = contentOf(u"/etc/os-release"_s);
    if (content.isEmpty()) {
        content = contentOf(u"/usr/lib/os-release"_s);
    }
    QVariantMap facts;
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray& line : lines) {
        const qsizetype equals = line.indexOf('=');
        const QByteArray name = line.left(equals).trimmed();
        if (equals > 0 && name == "PRETTY_NAME") {
            insertIfKnown(facts, u"ProductVersion"_s, unquoted(line.mid(equals + 1)));
        } else if (equals > 0 && name == "BUILD_ID") {
            insertIfKnown(facts, u"ProductBuildVersion"_s, unquoted(line.mid(equals + 1)));
        }
    }
    return facts;
}

QByteArray LinuxSystemControl::contentOf(const QString& path) const
{
    QFile file(m_root + path);
    return file.open(QIODevice::ReadOnly) ? file.read(kMostBytes) : QByteArray();
}

std::optional<qint64> LinuxSystemControl::numberIn(const QString& path) const
{
    bool isNumber = false;
    const qint64 number = contentOf(path).trimmed().toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<double> LinuxSystemControl::processorFact(QByteArrayView name) const
{
    const QList<QByteArray> lines = contentOf(u"/proc/cpuinfo"_s).split('\n');
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed() == name) {
            bool isNumber = false;
            const double number = line.mid(colon + 1).trimmed().toDouble(&isNumber);
            return isNumber ? std::optional(number) : std::nullopt;
        }
    }
    return std::nullopt;
}

QList<int> LinuxSystemControl::processors(const QString& list) const
{
    /// No kernel is built for more.
    constexpr int kMostProcessors = 8192;
    QList<int> numbers;
    const QList<QByteArray> ranges = contentOf(list).trimmed().split(',');
    for (const QByteArray& range : ranges) {
        const QList<QByteArray> ends = range.split('-');
        bool hasFirst = false;
        bool hasLast = false;
        const int first = ends.first().toInt(&hasFirst);
        const int last = std::min(ends.last().toInt(&hasLast), kMostProcessors);
        if (hasFirst && hasLast && first >= 0) {
            for (int number = first; number <= last; ++number) {
                numbers.append(number);
            }
        }
    }
    return numbers;
}

std::optional<QByteArray> LinuxSystemControl::model() const
{
    for (const QString& path :
         {u"/sys/class/dmi/id/product_name"_s, u"/sys/firmware/devicetree/base/model"_s}) {
        // The device tree's texts end in a zero byte of their own.
        const QByteArray name = contentOf(path).replace('\0', "").trimmed();
        if (isFilledIn(name)) {
            return textValue(name);
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> LinuxSystemControl::memorySize() const
{
    const QList<QByteArray> lines = contentOf(u"/proc/meminfo"_s).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("MemTotal:")) {
            const QList<QByteArray> words = line.simplified().split(' ');
            bool isNumber = false;
            const qint64 kilobytes = words.value(1).toLongLong(&isNumber);
            return isNumber ? std::optional(bytesOf(kilobytes * kBytesPerKilobyte)) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> LinuxSystemControl::processorFrequency() const
{
    const QString folder = u"/sys/devices/system/cpu/cpu0/cpufreq/"_s;
    for (const QString& name : {u"base_frequency"_s, u"cpuinfo_max_freq"_s}) {
        if (const std::optional<qint64> kilohertz = numberIn(folder + name)) {
            return bytesOf(*kilohertz * kHertzPerKilohertz);
        }
    }
    const std::optional<double> megahertz = processorFact("cpu MHz");
    return megahertz ? std::optional(bytesOf(qint64{std::llround(*megahertz * kHertzPerMegahertz)}))
                     : std::nullopt;
}

std::optional<QByteArray> LinuxSystemControl::cores() const
{
    std::set<std::tuple<qint64, qint64, qint64>> found;
    const QList<int> online = processors(u"/sys/devices/system/cpu/online"_s);
    for (const int number : online) {
        const QString folder = u"/sys/devices/system/cpu/cpu%1/topology/"_s.arg(number);
        const std::optional<qint64> core = numberIn(folder + "core_id"_L1);
        if (!core) {
            return std::nullopt;
        }
        found.insert({numberIn(folder + "physical_package_id"_L1).value_or(-1),
                      numberIn(folder + "die_id"_L1).value_or(-1),
                      *core});
    }
    return found.empty() ? std::nullopt : std::optional(bytesOf(static_cast<qint32>(found.size())));
}

std::optional<QByteArray> LinuxSystemControl::count(const QString& list) const
{
    const qsizetype number = processors(list).size();
    return number > 0 ? std::optional(bytesOf(static_cast<qint32>(number))) : std::nullopt;
}
