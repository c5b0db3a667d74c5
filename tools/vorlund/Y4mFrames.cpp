// YUV4MPEG2, as the manual page yuv4mpeg(5) of mjpegtools describes it: a line of parameters, then each frame
// as the line "FRAME" and its three planes.
//
// The planes are those that every player takes: 4:2:0, and the colours of ITU-R BT.601 in studio range, luma
// 16 to 235 and chroma 16 to 240. In BT.601, with R, G and B from 0 to 255,
//   Y  =  16 + ( 65.481 R + 128.553 G +  24.966 B) / 255
//   Cb = 128 + (-37.797 R -  74.203 G + 112.000 B) / 255
//   Cr = 128 + (112.000 R -  93.786 G -  18.214 B) / 255
// Here in integers with 16 fractional bits. A chroma sample is that of the mean colour of its four pixels, or
// of the two or one that there are at the edge of an odd size.
#include "OutputFile.h"
#include "VideoFrames.h"

#include <algorithm>
#include <vector>

namespace {

/// A colour, or a sum of colours.
struct TColour {
    std::int64_t red = 0;
    std::int64_t green = 0;
    std::int64_t blue = 0;

    void Add(std::uint32_t pixel) {
        red += pixel >> 16 & 255;
        green += pixel >> 8 & 255;
        blue += pixel & 255;
    }
};

/// One row of the equations, times 2^16 / 255 and rounded, and its offset.
struct TEquation {
    std::int64_t red;
    std::int64_t green;
    std::int64_t blue;
    std::int64_t offset;

    /// The value for the mean of `count` colours, rounded to nearest.
    std::uint8_t Solve(const TColour& sum, std::int64_t count) const {
        const std::int64_t unit = count << 16;
        const std::int64_t value =
            red * sum.red + green * sum.green + blue * sum.blue + offset * unit + unit / 2;
        // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): every block has a pixel.
        return static_cast<std::uint8_t>(value / unit);
    }
};

constexpr TEquation kLuma{16829, 33039, 6416, 16};
constexpr TEquation kBlueDifference{-9714, -19071, 28784, 128};
constexpr TEquation kRedDifference{28784, -24103, -4681, 128};

class CY4mFrames final : public CVideoFrames {
public:
    CY4mFrames(const std::string& name, std::uint32_t width, std::uint32_t height)
        : width_(width), height_(height), file_(COutputFile::Create(name, true, {})) {
        // C420jpeg says where the chroma samples lie: between the pixels that they are the mean of.
        WriteText("YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) +
                  " F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n");
    }

    void Write(const std::uint32_t* pixels) override {
        planes_.clear();
        for (std::size_t i = 0; i < std::size_t{width_} * height_; ++i) {
            TColour colour;
            colour.Add(pixels[i]);
            planes_.push_back(kLuma.Solve(colour, 1));
        }
        AppendChroma(pixels, kBlueDifference);
        AppendChroma(pixels, kRedDifference);
        WriteText("FRAME\n");
        file_->Write(planes_.data(), planes_.size());
    }
    void Finish() override {
        file_->Finish();
        file_->Keep();
    }

private:
    void WriteText(const std::string& text) { file_->Write(text.data(), text.size()); }

    void AppendChroma(const std::uint32_t* pixels, const TEquation& equation) {
        for (std::uint32_t y = 0; y < height_; y += 2) {
            for (std::uint32_t x = 0; x < width_; x += 2) {
                const std::uint32_t bottom = std::min(y + 2, height_);
                const std::uint32_t right = std::min(x + 2, width_);
                TColour sum;
                for (std::uint32_t row = y; row < bottom; ++row) {
                    for (std::uint32_t column = x; column < right; ++column) {
                        sum.Add(pixels[std::size_t{row} * width_ + column]);
                    }
                }
                planes_.push_back(equation.Solve(sum, std::int64_t{bottom - y} * (right - x)));
            }
        }
    }

    const std::uint32_t width_;
    const std::uint32_t height_;
    const std::unique_ptr<COutputFile> file_;
    std::vector<std::uint8_t> planes_;
};

} // namespace

std::unique_ptr<CVideoFrames> MakeY4mFrames(const std::string& name, std::uint32_t width,
                                            std::uint32_t height) {
    return std::make_unique<CY4mFrames>(name, width, height);
}
