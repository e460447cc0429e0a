#include "CrashLogOutput.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <string>

namespace
{

class CrashLogOutputTest : public testing::Test
{
public:
    ~CrashLogOutputTest() override { close(m_file); }

protected:
    [[nodiscard]] std::string written() const
    {
        std::string text(static_cast<std::size_t>(lseek(m_file, 0, SEEK_END)), '\0');
        EXPECT_EQ(pread(m_file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        return text;
    }

    int m_file{memfd_create("log", MFD_CLOEXEC)};
};

} // namespace

TEST_F(CrashLogOutputTest, numbersAreWritten)
{
    CrashLogOutput output(m_file);
    output << Decimal{0} << ' ' << Decimal{-17} << ' ' << Decimal{7, 3} << ' ' << Decimal{5, 2, '0'}
           << ' ' << Decimal{12345, 2} << ' ' << Decimal{std::numeric_limits<long long>::min()}
           << ' ' << Decimal{std::numeric_limits<long long>::max()} << ' ' << Hexadecimal{0} << ' '
           << Hexadecimal{0xBEEF} << ' ' << Hexadecimal{0x1F, 8} << ' '
           << Hexadecimal{std::numeric_limits<std::uint64_t>::max()};
    output.flush();
    EXPECT_EQ(written(),
              "0 -17   7 05 12345 -9223372036854775808 9223372036854775807 0x0 0xbeef 0x0000001f "
              "0xffffffffffffffff");
}

TEST_F(CrashLogOutputTest, bytesAreWrittenAsDigits)
{
    constexpr std::array<std::uint8_t, 4> kBytes{0x00, 0x0F, 0xA5, 0xFF};
    CrashLogOutput output(m_file);
    output << '[' << HexadecimalBytes{kBytes} << ']' << HexadecimalBytes{};
    output.flush();
    EXPECT_EQ(written(), "[000fa5ff]");
}

TEST_F(CrashLogOutputTest, whatIsLongerThanItsMemoryIsWrittenWhole)
{
    std::string text;
    for (int line = 0; line < 3000; ++line) {
        text += std::to_string(line) + '\n';
    }
    {
        CrashLogOutput output(m_file);
        output << text;
    }
    EXPECT_EQ(written(), text);
}

TEST_F(CrashLogOutputTest, whetherAnythingWasWrittenIsKnown)
{
    CrashLogOutput output(m_file);
    output << "text";
    EXPECT_FALSE(output.wasWritten());
    output.flush();
    EXPECT_TRUE(output.wasWritten());

    CrashLogOutput nowhere(-1);
    nowhere << "text";
    nowhere.flush();
    EXPECT_FALSE(nowhere.wasWritten());
}
