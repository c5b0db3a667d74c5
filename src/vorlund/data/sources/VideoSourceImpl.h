// What the sources of generated video have in common: the format, the frame buffer and the rule of reading.
#pragma once

#include "vorlund/data/sources/EndlessSourceImpl.h"

#include <vorlund/DataFormat.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace vorlund {

/// What a video source raises, in its own name.
struct TVideoSourceFailures : TEndlessSourceFailures {
    TFailure formatIsNull;
    TFailure unsupportedFormat;
};

/// An endless stream of 32-bit frames, which a class paints in `PaintFrame`. `kFailures` is a
/// `TVideoSourceFailures`.
template <class TInterface, const auto& kFailures>
class CVideoSourceImpl : public CEndlessSourceImpl<TInterface, kFailures> {
public:
    const TDataFormat& GetFormat() override { return format_; }

    using CEndlessSourceImpl<TInterface, kFailures>::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) Raise<CNullPtrException>(kFailures.bufferIsNull);
        if (offset_ == frameSize_) {
            const std::uint32_t nextSize = GetNextFrameSize();
            if (isPaintedInPlace_ && size >= nextSize) return PaintInto(buffer, nextSize);
            ProduceFrame(nextSize);
        }
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, frameSize_));
        // Kept for callers: always from the start of the frame, and an offset beyond its size stays there.
        std::memcpy(buffer, frame_.get(), count);
        offset_ += count;
        return count;
    }

    TInterface* SetFormat(const TDataFormat* format) override {
        if (!format) Raise<CNullPtrException>(kFailures.formatIsNull);
        if (format->id != TDataFormat_VideoRgb::FormatId)
            Raise<CDataFormatException>(kFailures.unsupportedFormat);
        const auto& video = static_cast<const TDataFormat_VideoRgb&>(*format);
        format_.image.width = video.image.width;
        format_.image.height = video.image.height;
        format_.frameRate = video.frameRate;
        return this;
    }

protected:
    /// Where a frame that is read whole may be painted.
    enum class TPlace {
        FrameBuffer, ///< only in the frame buffer
        Anywhere     ///< straight into the reader's buffer, at any alignment; painting then never raises
    };

    CVideoSourceImpl(std::uint32_t width, std::uint32_t height, TPlace place)
        : isPaintedInPlace_(place == TPlace::Anywhere) {
        // The layout that is written. The constant FORMAT_A8R8G8B8 has the same name and other shifts.
        format_.image.pixelFormat = {0, 32, 8, 24, 8, 16, 8, 8, 8, 0};
        format_.image.width = width;
        format_.image.height = height;
        format_.frameRate = 30;
    }
    ~CVideoSourceImpl() = default;

    /// Fills a frame of the present format. When it raises, the frame does not count.
    virtual void PaintFrame(void* pixels, std::uint32_t frameNumber) = 0;

    TDataFormat_VideoRgb format_;

private:
    static constexpr std::uint64_t kPixelSize = 4;

    /// The size of a frame of the present format. One that 32 bits cannot state raises as its allocation
    /// would.
    std::uint32_t GetNextFrameSize() {
        const std::uint64_t pixels = std::uint64_t{format_.image.width} * format_.image.height;
        if (pixels > std::numeric_limits<std::uint32_t>::max() / kPixelSize) {
            DropFrame();
            throw std::bad_alloc();
        }
        return static_cast<std::uint32_t>(pixels * kPixelSize);
    }

    /// Makes the next frame in the frame buffer.
    void ProduceFrame(std::uint32_t size) {
        if (!frame_ || size != frameSize_) {
            DropFrame();
            // Zeros: a painter may leave pixels out, or raise.
            frame_ = std::make_unique<std::uint32_t[]>(static_cast<std::size_t>(size / kPixelSize));
            frameSize_ = size;
        }
        offset_ = 0;
        PaintFrame(frame_.get(), frameNumber_);
        ++frameNumber_;
    }

    /// Paints the next frame straight into `buffer` and counts it as read whole.
    std::uint32_t PaintInto(void* buffer, std::uint32_t size) {
        if (size != frameSize_) DropFrame();
        PaintFrame(buffer, frameNumber_);
        ++frameNumber_;
        frameSize_ = offset_ = size;
        return size;
    }

    void DropFrame() {
        frame_.reset();
        frameSize_ = offset_ = 0;
    }

    const bool isPaintedInPlace_;
    /// Null until a frame is made in it.
    std::unique_ptr<std::uint32_t[]> frame_;
    /// Bytes of the last frame, whatever format was set since.
    std::uint32_t frameSize_ = 0;
    /// Bytes of the last frame that were read, which may be more than it has.
    std::uint32_t offset_ = 0;
    std::uint32_t frameNumber_ = 0;
};

} // namespace vorlund
