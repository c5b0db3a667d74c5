// PNG: ISO/IEC 15948.
#include "OutputFile.h"
#include "VideoFrames.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

#include <algorithm>
#include <new>
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
        png_.clear();
        const int width = static_cast<int>(width_);
        const int isWritten = stbi_write_png_to_func(&Append, &png_, width, static_cast<int>(height_), 3,
                                                     rgb_.data(), width * 3);
        if (!isWritten) throw std::bad_alloc();

        const std::string number = std::to_string(++frames_);
        const std::string name =
            stem_ + "-" + std::string(digits_ - number.size(), '0') + number + extension_;
        const auto file = COutputFile::Create(name, true, {});
        file->Write(png_.data(), png_.size());
        file->Finish();
        file->Keep();
    }
    void Finish() override {}

private:
    static void Append(void* png, void* bytes, int size) {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        auto& target = *static_cast<std::vector<std::uint8_t>*>(png);
        target.insert(target.end(), first, first + size);
    }

    const std::uint32_t width_;
    const std::uint32_t height_;
    const std::size_t digits_;
    std::string stem_;
    std::string extension_;
    std::uint32_t frames_ = 0;
    std::vector<std::uint8_t> rgb_;
    std::vector<std::uint8_t> png_;
};

} // namespace

std::unique_ptr<CVideoFrames> MakePngFrames(const std::string& name, std::uint32_t width,
                                            std::uint32_t height, std::uint32_t count) {
    return std::make_unique<CPngFrames>(name, width, height, count);
}
