// Where video frames go.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// A place for frames of 32-bit pixels, blue in the lowest byte, then green and red; the highest byte is
/// ignored.
class CVideoFrames {
public:
    CVideoFrames() = default;
    CVideoFrames(const CVideoFrames&) = delete;
    CVideoFrames& operator=(const CVideoFrames&) = delete;
    virtual ~CVideoFrames() = default;

    /// Appends a frame. Raises `TProgramError`.
    virtual void Write(const std::uint32_t* pixels) = 0;
    /// Completes the output; raises as `Write`. Without it, a file that is not whole is removed.
    virtual void Finish() = 0;
};

/// One PNG file per frame: "plasma.png" becomes "plasma-0001.png" and so on, with as many digits as `count`
/// needs. The name is UTF-8 and has an extension.
std::unique_ptr<CVideoFrames> MakePngFrames(const std::string& name, std::uint32_t width,
                                            std::uint32_t height, std::uint32_t count);
/// One YUV4MPEG2 file, 30 frames per second. Raises `TProgramError`.
std::unique_ptr<CVideoFrames> MakeY4mFrames(const std::string& name, std::uint32_t width,
                                            std::uint32_t height);
