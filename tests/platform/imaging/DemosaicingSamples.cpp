#include "DemosaicingSamples.h"

#include <gtest/gtest.h>

#include <libraw/libraw.h>

#include <cmath>
#include <memory>

Bitmap Demosaicing::byLibRaw(const QByteArray& raw, Interpolation interpolation)
{
    const auto libRaw = std::make_unique<LibRaw>();
    QByteArray bytes = raw;
    auto& parameters = libRaw->imgdata.params;
    EXPECT_EQ(libRaw->open_buffer(bytes.data(), static_cast<std::size_t>(bytes.size())), 0);
    parameters.use_camera_wb = 1;
    parameters.no_auto_bright = 1;
    parameters.output_bps = 16;
    parameters.gamm[0] = 1.0;
    parameters.gamm[1] = 1.0;
    parameters.output_color = 0;
    parameters.user_qual = static_cast<int>(interpolation);
    parameters.adjust_maximum_thr = 0.0F;
    EXPECT_EQ(libRaw->unpack(), 0);
    EXPECT_EQ(libRaw->dcraw_process(), 0);
    const auto& sizes = libRaw->imgdata.sizes;
    Bitmap bitmap(sizes.width, sizes.height, Transfer::Linear);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (std::size_t i = 0; i < bitmap.row(y).size(); ++i) {
            const std::size_t pixel = static_cast<std::size_t>(y) * sizes.width + i / 3;
            bitmap.row(y)[i] = libRaw->imgdata.image[pixel][i % 3];
        }
    }
    return bitmap;
}

double Demosaicing::closeness(const Bitmap& one, const Bitmap& other)
{
    constexpr int kRim = 4;
    double squares = 0.0;
    double count = 0.0;
    for (int y = kRim; y < one.pixelsHigh() - kRim; ++y) {
        const auto a = one.row(y);
        const auto b = other.row(y);
        for (std::size_t i = std::size_t{3} * kRim; i < a.size() - std::size_t{3} * kRim; ++i) {
            const double step = (a[i] - b[i]) / 65535.0;
            squares += step * step;
            count += 1.0;
        }
    }
    return 10.0 * std::log10(count / squares);
}
