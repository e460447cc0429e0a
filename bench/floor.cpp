// The least that a full-size JPEG of a Bayer sensor costs: LibRaw's unpacking, one pass of the
// plainest interpolation, the encoder with the settings of JpegEncoder (4:2:0, progressive,
// optimised). On one core; nothing is checked, fitted or proved, no metadata is written.
//   floor QUALITY SOURCE JPEG        QUALITY as libjpeg counts, 1 to 100

#include <libraw/libraw.h>
// clang-format off: jpeglib.h uses what others declare
#include <jpeglib.h>
// clang-format on

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace
{

/// Light is counted to this; 65536 steps would make the table larger than a core's cache.
constexpr int kWhite = 4095;
constexpr int kMargin = 2;
constexpr float kFixedPoint = 4096.0F;

/// Rows of light of a sensor: black taken off, white balance applied, clipped.
class Light final
{
public:
    explicit Light(LibRaw& raw)
        : m_raw(raw.imgdata.rawdata.raw_image)
        , m_sizes(raw.imgdata.sizes)
    {
        const auto& color = raw.imgdata.color;
        const float least = std::min({color.cam_mul[0], color.cam_mul[1], color.cam_mul[2]});
        for (int place = 0; place < 4; ++place) {
            const int channel = raw.COLOR(place / 2, place % 2);
            const std::size_t known = channel == 3 ? 1 : static_cast<std::size_t>(channel);
            m_colors[static_cast<std::size_t>(place)] = static_cast<int>(known);
            m_black[static_cast<std::size_t>(place)] =
                static_cast<int>(color.black + color.cblack[channel]);
            m_gain[static_cast<std::size_t>(place)] =
                (least > 0.0F ? color.cam_mul[known] / least : 1.0F) * kWhite /
                static_cast<float>(color.maximum - color.black);
        }
    }

    [[nodiscard]] int color(int y, int x) const
    {
        return m_colors[static_cast<std::size_t>((y & 1) * 2 + (x & 1))];
    }

    /// The row with a margin at both sides; rows beyond the picture mirror those in it.
    void read(int y, std::vector<int>& into) const
    {
        const int height = m_sizes.height;
        const int row = y < 0 ? -y : (y >= height ? 2 * height - 2 - y : y);
        const ushort* values =
            m_raw + static_cast<std::ptrdiff_t>(row + m_sizes.top_margin) * m_sizes.raw_width +
            m_sizes.left_margin;
        const auto place = static_cast<std::size_t>((row & 1) * 2);
        const int width = m_sizes.width;
        int* out = into.data() + kMargin;
        for (int x = 0; x < width; ++x) {
            const std::size_t at = place + static_cast<std::size_t>(x & 1);
            const float value = static_cast<float>(values[x] - m_black[at]) * m_gain[at];
            out[x] = static_cast<int>(std::clamp(value, 0.0F, static_cast<float>(kWhite)));
        }
        for (int x = 1; x <= kMargin; ++x) {
            out[-x] = out[x];
            out[width - 1 + x] = out[width - 1 - x];
        }
    }

private:
    const ushort* m_raw;
    const libraw_image_sizes_t& m_sizes;
    std::array<int, 4> m_colors{};
    std::array<int, 4> m_black{};
    std::array<float, 4> m_gain{};
};

/// Light in the sensor's colours to bytes of sRGB.
class Finish final
{
public:
    explicit Finish(const libraw_colordata_t& color)
    {
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                m_matrix[row * 3 + column] =
                    static_cast<int>(std::lround(color.rgb_cam[row][column] * kFixedPoint));
            }
        }
        for (std::size_t value = 0; value <= kWhite; ++value) {
            const double light = static_cast<double>(value) / kWhite;
            const double encoded =
                light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            m_bytes[value] = static_cast<JSAMPLE>(std::lround(encoded * 255));
        }
    }

    void write(int red, int green, int blue, JSAMPLE* pixel) const
    {
        for (std::size_t row = 0; row < 3; ++row) {
            const int value = m_matrix[row * 3] * red + m_matrix[row * 3 + 1] * green +
                              m_matrix[row * 3 + 2] * blue;
            pixel[row] = m_bytes[static_cast<std::size_t>(
                std::clamp(value / static_cast<int>(kFixedPoint), 0, kWhite))];
        }
    }

private:
    std::array<int, 9> m_matrix{};
    std::array<JSAMPLE, kWhite + 1> m_bytes{};
};

/// A row of pixels between the light of the rows above and below; `first` and `second` are the
/// columns of the row's site (red or blue) and of its green.
void interpolate(const std::array<const int*, 3>& rows,
                 int width,
                 bool siteIsRed,
                 int site,
                 const Finish& finish,
                 JSAMPLE* pixels)
{
    const auto [above, here, below] = rows;
    for (int x = site - 1; x < width; x += 2) {
        if (x >= 0) {
            const int beside = (here[x - 1] + here[x + 1]) / 2;
            const int upright = (above[x] + below[x]) / 2;
            finish.write(siteIsRed ? beside : upright,
                         here[x],
                         siteIsRed ? upright : beside,
                         pixels + static_cast<std::ptrdiff_t>(x) * 3);
        }
        const int at = x + 1;
        if (at < width) {
            const int green = (here[at - 1] + here[at + 1] + above[at] + below[at]) / 4;
            const int other = (above[at - 1] + above[at + 1] + below[at - 1] + below[at + 1]) / 4;
            finish.write(siteIsRed ? here[at] : other,
                         green,
                         siteIsRed ? other : here[at],
                         pixels + static_cast<std::ptrdiff_t>(at) * 3);
        }
    }
}

void start(jpeg_compress_struct& encoder,
           const libraw_image_sizes_t& sizes,
           int quality,
           FILE* file)
{
    jpeg_create_compress(&encoder);
    jpeg_stdio_dest(&encoder, file);
    encoder.image_width = sizes.width;
    encoder.image_height = sizes.height;
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, quality, TRUE);
    encoder.optimize_coding = TRUE;
    jpeg_simple_progression(&encoder);
    jpeg_start_compress(&encoder, TRUE);
}

void encode(LibRaw& raw, int quality, FILE* file)
{
    const libraw_image_sizes_t& sizes = raw.imgdata.sizes;
    jpeg_error_mgr errors{};
    jpeg_compress_struct encoder{};
    encoder.err = jpeg_std_error(&errors);
    start(encoder, sizes, quality, file);
    const Light light(raw);
    const auto finish = std::make_unique<Finish>(raw.imgdata.color);
    std::array<std::vector<int>, 3> rows;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i].resize(static_cast<std::size_t>(sizes.width) + 2 * kMargin);
        light.read(static_cast<int>(i) - 1, rows[i]);
    }
    std::vector<JSAMPLE> pixels(static_cast<std::size_t>(sizes.width) * 3);
    for (int y = 0; y < sizes.height; ++y) {
        const int site = light.color(y, 0) == 1 ? 1 : 0;
        interpolate({rows[0].data() + kMargin, rows[1].data() + kMargin, rows[2].data() + kMargin},
                    sizes.width,
                    light.color(y, site) == 0,
                    site,
                    *finish,
                    pixels.data());
        JSAMPROW row = pixels.data();
        jpeg_write_scanlines(&encoder, &row, 1);
        std::ranges::rotate(rows, rows.begin() + 1);
        light.read(y + 2, rows[2]);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
}

} // namespace

int main(int argc, char** argv)
{
    const auto raw = std::make_unique<LibRaw>();
    if (argc != 4 || raw->open_file(argv[2]) != LIBRAW_SUCCESS || raw->unpack() != LIBRAW_SUCCESS ||
        raw->imgdata.rawdata.raw_image == nullptr) {
        std::fputs("usage: floor QUALITY SOURCE JPEG; SOURCE is of a Bayer sensor\n", stderr);
        return 1;
    }
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(argv[3], "wb"), &std::fclose);
    if (!file) {
        std::fputs("floor: the JPEG cannot be written\n", stderr);
        return 1;
    }
    encode(*raw, std::atoi(argv[1]), file.get());
    return 0;
}
