#include "LinuxSystemControl.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

/// The files of a machine made up by the test.
class LinuxSystemControlTest : public testing::Test
{
protected:
    void write(const QString& path, const QByteArray& content)
    {
        const QString full = m_folder.path() + path;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(full).path()));
        QFile file(full);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    [[nodiscard]] std::optional<QByteArray> hardware(int number) const
    {
        const std::array<int, 2> mib{SystemControl::kHardware, number};
        return m_control.valueOf(mib);
    }

    [[nodiscard]] std::optional<QByteArray> named(const char* name) const
    {
        return m_control.valueOf(name);
    }

    template <typename Integer>
    static QByteArray bytesOf(Integer value)
    {
        return {reinterpret_cast<const char*>(&value), sizeof(value)};
    }

    QTemporaryDir m_folder;
    const LinuxSystemControl m_control{m_folder.path()};
};

TEST_F(LinuxSystemControlTest, whereNothingCanBeReadNothingIsKnown)
{
    for (const int number :
         {SystemControl::kModel, SystemControl::kNumberOfCpus, SystemControl::kMemorySize, 999}) {
        EXPECT_EQ(hardware(number), std::nullopt) << number;
    }
    for (const char* name : {"hw.busfrequency",
                             "hw.cpufrequency",
                             "hw.cpufamily",
                             "hw.cputype",
                             "hw.cpusubtype",
                             "hw.physicalcpu",
                             "hw.logicalcpu",
                             "hw.no such name",
                             ""}) {
        EXPECT_EQ(named(name), std::nullopt) << name;
    }
    EXPECT_EQ(m_control.systemVersion(), QVariantMap());
    EXPECT_EQ(m_control.valueOf(std::span<const int>()), std::nullopt);
}

TEST_F(LinuxSystemControlTest, theMachineIsItsHardwareNameWithAZeroByte)
{
    const std::optional<QByteArray> machine = hardware(SystemControl::kMachine);
    ASSERT_TRUE(machine.has_value());
    EXPECT_GT(machine->size(), 1);
    EXPECT_TRUE(machine->endsWith('\0'));
}

TEST_F(LinuxSystemControlTest, theModelIsTheProductName)
{
    write(u"/sys/class/dmi/id/product_name"_s, "20XW004AGE \n");
    EXPECT_EQ(hardware(SystemControl::kModel), QByteArray("20XW004AGE\0", 11));
}

TEST_F(LinuxSystemControlTest, aProductNameThatNobodyFilledInIsNone)
{
    write(u"/sys/class/dmi/id/product_name"_s, "To Be Filled By O.E.M.\n");
    EXPECT_EQ(hardware(SystemControl::kModel), std::nullopt);
    write(u"/sys/firmware/devicetree/base/model"_s, QByteArray("Some Board Rev 1.4\0", 19));
    EXPECT_EQ(hardware(SystemControl::kModel), QByteArray("Some Board Rev 1.4\0", 19));
}

TEST_F(LinuxSystemControlTest, memoryIsCountedInBytes)
{
    write(u"/proc/meminfo"_s, "MemTotal:       16270420 kB\nMemFree:  1 kB\n");
    EXPECT_EQ(hardware(SystemControl::kMemorySize), bytesOf(qint64{16270420} * 1024));
    write(u"/proc/meminfo"_s, "MemTotal: much\n");
    EXPECT_EQ(hardware(SystemControl::kMemorySize), std::nullopt);
}

TEST_F(LinuxSystemControlTest, presentProcessorsOnlineOnesAndTheirCoresAreCounted)
{
    write(u"/sys/devices/system/cpu/present"_s, "0-7\n");
    write(u"/sys/devices/system/cpu/online"_s, "0-3,6\n");
    const std::array<std::pair<int, int>, 5> places{{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {6, 0}}};
    for (const auto& [number, core] : places) {
        const QString folder = u"/sys/devices/system/cpu/cpu%1/topology/"_s.arg(number);
        write(folder + u"core_id"_s, QByteArray::number(core));
        write(folder + u"physical_package_id"_s, number == 6 ? "1" : "0");
    }
    EXPECT_EQ(hardware(SystemControl::kNumberOfCpus), bytesOf(qint32{8}));
    EXPECT_EQ(named("hw.logicalcpu"), bytesOf(qint32{5}));
    EXPECT_EQ(named("hw.physicalcpu"), bytesOf(qint32{3}))
        << "two cores of two threads, and one of a second package";
}

TEST_F(LinuxSystemControlTest, aListOfProcessorsThatIsNoneCountsNothing)
{
    for (const char* list : {"", "x", "-", "3-1", "5-x"}) {
        write(u"/sys/devices/system/cpu/present"_s, list);
        EXPECT_EQ(hardware(SystemControl::kNumberOfCpus), std::nullopt) << list;
    }
    write(u"/sys/devices/system/cpu/present"_s, "0-2000000000");
    EXPECT_TRUE(hardware(SystemControl::kNumberOfCpus).has_value()) << "and does not take forever";
}

TEST_F(LinuxSystemControlTest, coresThatAreNotToldOfAreNotGuessed)
{
    write(u"/sys/devices/system/cpu/online"_s, "0-1\n");
    write(u"/sys/devices/system/cpu/cpu0/topology/core_id"_s, "0\n");
    EXPECT_EQ(named("hw.physicalcpu"), std::nullopt);
}

TEST_F(LinuxSystemControlTest, theFrequencyIsTheBaseElseTheHighestElseThatOfTheMoment)
{
    write(u"/proc/cpuinfo"_s, "processor : 0\ncpu MHz\t\t: 2099.998\n");
    EXPECT_EQ(named("hw.cpufrequency"), bytesOf(qint64{2099998000}));
    const QString folder = u"/sys/devices/system/cpu/cpu0/cpufreq/"_s;
    write(folder + u"cpuinfo_max_freq"_s, "4700000\n");
    EXPECT_EQ(named("hw.cpufrequency"), bytesOf(qint64{4700000000}));
    write(folder + u"base_frequency"_s, "2800000\n");
    EXPECT_EQ(named("hw.cpufrequency"), bytesOf(qint64{2800000000}));
}

TEST_F(LinuxSystemControlTest, familyAndModelAreThoseOfTheFirstProcessor)
{
    write(u"/proc/cpuinfo"_s,
          "processor\t: 0\ncpu family\t: 6\nmodel\t\t: 140\nmodel name\t: Some Processor\n\n"
          "processor\t: 1\ncpu family\t: 7\nmodel\t\t: 1\n");
    EXPECT_EQ(named("hw.cpufamily"), bytesOf(qint32{6}));
    EXPECT_EQ(named("hw.cpusubtype"), bytesOf(qint32{140}));
    write(u"/proc/cpuinfo"_s, "processor\t: 0\nmodel\t: RISC\ncpu family\t: 99999999999\n");
    EXPECT_EQ(named("hw.cpusubtype"), std::nullopt);
    EXPECT_EQ(named("hw.cpufamily"), std::nullopt);
}

TEST_F(LinuxSystemControlTest, theVersionIsTheSystemsPresentableName)
{
    write(u"/usr/lib/os-release"_s, "PRETTY_NAME=Fallback\n");
    EXPECT_EQ(m_control.systemVersion(), (QVariantMap{{u"ProductVersion"_s, u"Fallback"_s}}));
    write(u"/etc/os-release"_s,
          "# comment\nPRETTY_NAME=\"Some \\\"System\\\" 12\"\nBUILD_ID='2026.01'\nVERSION_ID=12\n");
    EXPECT_EQ(m_control.systemVersion(),
              (QVariantMap{{u"ProductVersion"_s, u"Some \"System\" 12"_s},
                           {u"ProductBuildVersion"_s, u"2026.01"_s}}));
    write(u"/etc/os-release"_s, "PRETTY_NAME=\"\"\nBUILD_ID\n");
    EXPECT_EQ(m_control.systemVersion(), QVariantMap());
}

TEST_F(LinuxSystemControlTest, everythingIsReadAnew)
{
    write(u"/proc/meminfo"_s, "MemTotal: 1 kB\n");
    EXPECT_EQ(hardware(SystemControl::kMemorySize), bytesOf(qint64{1024}));
    write(u"/proc/meminfo"_s, "MemTotal: 2 kB\n");
    EXPECT_EQ(hardware(SystemControl::kMemorySize), bytesOf(qint64{2048}));
}

TEST(LinuxSystemControl, knowsThisMachinesMemoryAndProcessors)
{
    const LinuxSystemControl control;
    const std::array<int, 2> memory{SystemControl::kHardware, SystemControl::kMemorySize};
    const std::optional<QByteArray> size = control.valueOf(memory);
    ASSERT_TRUE(size.has_value());
    qint64 bytes = 0;
    ASSERT_EQ(size->size(), static_cast<qsizetype>(sizeof(bytes)));
    std::memcpy(&bytes, size->constData(), sizeof(bytes));
    EXPECT_GT(bytes, 1024 * 1024);
    EXPECT_TRUE(control.valueOf("hw.logicalcpu").has_value());
}

} // namespace
