#include "JpegRows.h"

#include "JpegDecoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace
{

/// A picture whose rows grow lighter downwards, red left and blue right.
QByteArray encodeRamp(QSize size)
{
    JpegRows rows(size, 95);
    std::vector<quint8> row(static_cast<size_t>(size.width()) * 3);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const auto level = static_cast<quint8>(60 + 120 * y / size.height());
            const auto at = static_cast<size_t>(x) * 3;
            const bool left = x < size.width() / 2;
            row[at] = left ? level : 40;
            row[at + 1] = 40;
            row[at + 2] = left ? 40 : level;
        }
        rows.addRow(row);
    }
    return rows.finish().value();
}

} // namespace

TEST(JpegRowsTest, aPictureComesBackWithSizeAndColours)
{
    const QSize size(66, 50);
    const auto decoded = JpegDecoder::decode(encodeRamp(size));
    ASSERT_TRUE(decoded.ok());
    ASSERT_EQ(decoded.value().size(), size);
    // 16 bits hold 257 times the 8-bit level; a few levels are lost in coding.
    for (const int y : {5, 25, 45}) {
        const auto row = decoded.value().row(y);
        const int level = 60 + 120 * y / size.height();
        EXPECT_NEAR(row[size_t{10} * 3] / 257.0, level, 8.0);
        EXPECT_NEAR(row[size_t{10} * 3 + 2] / 257.0, 40.0, 8.0);
        EXPECT_NEAR(row[size_t{55} * 3 + 2] / 257.0, level, 8.0);
    }
}

TEST(JpegRowsTest, segmentsAreWrittenAndEmptyOnesLeftOut)
{
    const std::vector<quint8> row(size_t{16} * 3, 120);
    JpegRows with(QSize(16, 1), 90);
    with.addApp1("a body of some length");
    with.addApp1({});
    with.addRow(row);
    JpegRows without(QSize(16, 1), 90);
    without.addRow(row);
    const QByteArray bytes = with.finish().value();
    EXPECT_TRUE(bytes.contains("a body of some length"));
    EXPECT_EQ(bytes.count("\xFF\xE1"), 1);
    EXPECT_EQ(without.finish().value().count("\xFF\xE1"), 0);
}

TEST(JpegRowsTest, sidesThatAJpegCannotHaveAreAnError)
{
    JpegRows rows(QSize(70000, 1), 90);
    rows.addRow(std::vector<quint8>(size_t{70000} * 3));
    EXPECT_FALSE(rows.finish().ok());
}

TEST(JpegRowsTest, aPictureThatLacksRowsIsAnError)
{
    JpegRows rows(QSize(8, 8), 90);
    rows.addRow(std::vector<quint8>(size_t{8} * 3));
    EXPECT_FALSE(rows.finish().ok());
}
