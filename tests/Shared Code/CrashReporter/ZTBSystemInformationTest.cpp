#include "ZTBSystemInformation.h"

#include "Assertion.h"
#include "FakeSystemControl.h"
#include "LogRecorder.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

using SystemInformationReads::int32ForSysctlName;
using SystemInformationReads::int64ForSysctlName;
using SystemInformationReads::stringForMIB;

class ZTBSystemInformationTest : public testing::Test
{
protected:
    [[nodiscard]] std::optional<QString> text(const QByteArray& value)
    {
        m_control.setHardware(SystemControl::kModel, value);
        const std::array<int, 2> mib{SystemControl::kHardware, SystemControl::kModel};
        return stringForMIB(m_control, mib.data(), mib.size());
    }

    /// The failure of what must not be called like that.
    template <typename Callable>
    static void expectFailure(Callable callable, const QString& condition, const QString& function)
    {
        try {
            callable();
            ADD_FAILURE() << "nothing was raised";
        } catch (const AssertionFailure& failure) {
            EXPECT_EQ(failure.description(), u"Invalid parameter not satisfying: "_s + condition);
            EXPECT_EQ(failure.function(), function);
            EXPECT_EQ(failure.file(), u"Shared Code/CrashReporter/ZTBSystemInformation"_s);
        }
    }

    FakeSystemControl m_control;
    LogRecorder m_log;
    const ZTBSystemInformation m_information{m_control};
};

TEST_F(ZTBSystemInformationTest, everyPropertyIsReadUnderItsName)
{
    m_control.setHardware(1, QByteArray("x86_64\0", 7));
    m_control.setHardware(2, QByteArray("Some Model 1,1\0", 15));
    m_control.setHardware(24, FakeSystemControl::bytesOf(qint64{17179869184}));
    m_control.setHardware(3, FakeSystemControl::bytesOf(qint32{8}));
    m_control.set("hw.busfrequency", FakeSystemControl::bytesOf(qint64{100000000}));
    m_control.set("hw.cpufrequency", FakeSystemControl::bytesOf(qint64{2600000000}));
    m_control.set("hw.cpufamily", FakeSystemControl::bytesOf(qint32{6}));
    m_control.set("hw.cputype", FakeSystemControl::bytesOf(qint32{7}));
    m_control.set("hw.cpusubtype", FakeSystemControl::bytesOf(qint32{4}));
    m_control.set("hw.physicalcpu", FakeSystemControl::bytesOf(qint32{2}));
    m_control.set("hw.logicalcpu", FakeSystemControl::bytesOf(qint32{5}));
    m_control.setSystemVersion(
        {{u"ProductVersion"_s, u"10.8.2"_s}, {u"ProductBuildVersion"_s, u"12C60"_s}});

    EXPECT_EQ(m_information.machine(), u"x86_64"_s);
    EXPECT_EQ(m_information.model(), u"Some Model 1,1"_s);
    EXPECT_EQ(m_information.physicalMemory(), 17179869184);
    EXPECT_EQ(m_information.busFrequency(), 100000000);
    EXPECT_EQ(m_information.CPUFrequency(), 2600000000);
    EXPECT_EQ(m_information.CPUFamily(), 6);
    EXPECT_EQ(m_information.CPUType(), 7);
    EXPECT_EQ(m_information.CPUSubtype(), 4);
    EXPECT_EQ(m_information.numberOfCPUs(), 8);
    EXPECT_EQ(m_information.physicalCPUs(), 2);
    EXPECT_EQ(m_information.logicalCPUs(), 5);
    EXPECT_EQ(m_information.systemVersion(), u"10.8.2"_s);
    EXPECT_EQ(m_information.systemBuildVersion(), u"12C60"_s);
}

TEST_F(ZTBSystemInformationTest, aNameThatTheKernelDoesNotKnowYieldsNothing)
{
    EXPECT_EQ(m_information.machine(), std::nullopt);
    EXPECT_EQ(m_information.model(), std::nullopt);
    EXPECT_EQ(m_information.physicalMemory(), std::nullopt);
    EXPECT_EQ(m_information.busFrequency(), std::nullopt);
    EXPECT_EQ(m_information.CPUFrequency(), std::nullopt);
    EXPECT_EQ(m_information.CPUFamily(), std::nullopt);
    EXPECT_EQ(m_information.CPUType(), std::nullopt);
    EXPECT_EQ(m_information.CPUSubtype(), std::nullopt);
    EXPECT_EQ(m_information.numberOfCPUs(), std::nullopt);
    EXPECT_EQ(m_information.physicalCPUs(), std::nullopt);
    EXPECT_EQ(m_information.logicalCPUs(), std::nullopt);
    EXPECT_EQ(m_information.systemVersion(), std::nullopt);
    EXPECT_EQ(m_information.systemBuildVersion(), std::nullopt);
    EXPECT_TRUE(m_log.entries().isEmpty()) << "and nothing is said about it";
}

TEST_F(ZTBSystemInformationTest, aTextComesWithoutItsZeroByte)
{
    EXPECT_EQ(text(QByteArray("ab\0", 3)), u"ab"_s);
    EXPECT_EQ(text(QByteArray("\0", 1)), u""_s);
    EXPECT_EQ(text(QByteArray("abc", 3)), u"ab"_s) << "the last byte, whatever it is";
}

TEST_F(ZTBSystemInformationTest, whatIsNoAsciiTextIsNone)
{
    EXPECT_EQ(text(QByteArray("\xC3\xA4\0", 3)), std::nullopt);
    EXPECT_EQ(text(QByteArray()), std::nullopt);
}

TEST_F(ZTBSystemInformationTest, aNumberOfThirtyTwoBitsWithTheTopBitSetIsNegative)
{
    m_control.set("hw.cputype", FakeSystemControl::bytesOf(quint32{0x80000001}));
    EXPECT_EQ(m_information.CPUType(), std::numeric_limits<qint32>::min() + 1);
}

TEST_F(ZTBSystemInformationTest, aShorterValueFillsTheLowBytes)
{
    m_control.set("hw.cpufrequency", FakeSystemControl::bytesOf(quint32{0xFFFFFFFF}));
    EXPECT_EQ(m_information.CPUFrequency(), 4294967295);
    m_control.set("hw.cpufamily", FakeSystemControl::bytesOf(quint16{0xFFFF}));
    EXPECT_EQ(m_information.CPUFamily(), 65535);
}

TEST_F(ZTBSystemInformationTest, aLongerValueIsNone)
{
    m_control.set("hw.cpufamily", FakeSystemControl::bytesOf(qint64{6}));
    EXPECT_EQ(m_information.CPUFamily(), std::nullopt);
    m_control.set("hw.cpufrequency", QByteArray(9, '\0'));
    EXPECT_EQ(m_information.CPUFrequency(), std::nullopt);
    m_control.setHardware(3, FakeSystemControl::bytesOf(qint64{6}));
    EXPECT_EQ(m_information.numberOfCPUs(), std::nullopt);
}

TEST_F(ZTBSystemInformationTest, nothingIsRemembered)
{
    m_control.setHardware(3, FakeSystemControl::bytesOf(qint32{8}));
    EXPECT_EQ(m_information.numberOfCPUs(), 8);
    m_control.setHardware(3, FakeSystemControl::bytesOf(qint32{4}));
    EXPECT_EQ(m_information.numberOfCPUs(), 4);
    EXPECT_EQ(m_control.questions(), 2);
}

TEST_F(ZTBSystemInformationTest, aNameIsRequired)
{
    expectFailure([this] { std::ignore = stringForMIB(m_control, nullptr, 2); },
                  u"NULL != mib"_s,
                  u"NSString *stringForMIB(int *, u_int, NSError *__autoreleasing *)"_s);
    expectFailure([this] { std::ignore = int32ForSysctlName(m_control, nullptr); },
                  u"NULL != name"_s,
                  u"NSNumber *int32ForSysctlName(const char *, NSError *__autoreleasing *)"_s);
    expectFailure([this] { std::ignore = int64ForSysctlName(m_control, nullptr); },
                  u"NULL != name"_s,
                  u"NSNumber *int64ForSysctlName(const char *, NSError *__autoreleasing *)"_s);
    EXPECT_EQ(m_control.questions(), 0);
}

TEST_F(ZTBSystemInformationTest, thereIsOneSharedInstanceOfThisMachine)
{
    EXPECT_EQ(&ZTBSystemInformation::instance(), &ZTBSystemInformation::instance());
    EXPECT_TRUE(ZTBSystemInformation::instance().machine().has_value());
    EXPECT_GT(ZTBSystemInformation::instance().physicalMemory(), 0);
}

} // namespace
