#include "OutputFile.h"
#include "PngEncoder.h"
#include "VideoFrames.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::size_t kLeastDigits = 4;

class CPngFrames final : public CVideoFrames {
public:
    CPngFrames(const std::string& name, std::uint32_t width, std::uint32_t height, std::uint32_t count)
        : width_(width), height_(height), digits_(std::max(std::to_string(count).size(), kLeastDigits)),
          rgb_(std::size_t{width} * height * 3) {
        const std::size_t dot = name.rfind('.');
        stem_ = name.substr(0, dot);
        extension_ = name.substr(dot);
    }

    void Write(const std::uint32_t* pixels) override {
        auto* at = rgb_.data();
        for (std::size_t i = 0; i < std::size_t{width_} * height_; ++i) {
            for (const int shift : {16, 8, 0}) *at++ = static_cast<std::uint8_t>(pixels[i] >> shift);
        }
        const std::vector<std::uint8_t> png = EncodePng(rgb_, width_, height_);
        const std::string number = std::to_string(++frames_);
        const std::string name =
            stem_ + "-" + std::string(digits_ - number.size(), '0') + number + extension_;
        const auto file = COutputFile::Create(name, true, {});
        file->Write(png.data(), png.size());
        file->Finish();
        file->Keep();
    }
    void Finish() override {}

private:
    const std::uint32_t width_;
    const std::uint32_t height_;
    const std::size_t digits_;
    std::string stem_;
    std::string extension_;
    std::uint32_t frames_ = 0;
    std::vector<std::uint8_t> rgb_;
};

} // namespace

std::unique_ptr<CVideoFrames> MakePngFrames(const std::string& name, std::uint32_t width,
                                            std::uint32_t height, std::uint32_t count) {
    return std::make_unique<CPngFrames>(name, width, height, count);
}
