// The arithmetic of one Read of a PCM converter.
#pragma once

#include "vorlund/data/filters/PcmBlocks.h"

#include <vorlund/AudioPcmConverters.h>

#include <algorithm>
#include <cstdint>

namespace vorlund::pcm {

/// How byte counts of the input become byte counts of the output.
struct TRatio {
    std::uint32_t input = 0;
    std::uint32_t output = 0;

    /// Multiplies first and wraps; 0 where the divisor is.
    std::uint64_t ToOutput(std::uint64_t bytes) const { return input == 0 ? 0 : bytes * output / input; }
    std::uint64_t ToInput(std::uint64_t bytes) const { return output == 0 ? 0 : bytes * input / output; }
};

/// What one `Read` takes from the input, and what becomes of it. No count here goes beyond a few kilobytes
/// unless it is a block size, so all divisions are 32-bit ones: 64-bit ones are library calls on 32-bit
/// systems.
class CStep {
public:
    /// Hands bytes through.
    CStep() = default;
    /// \param routine     null hands bytes through
    /// \param inputFrame  bytes per frame of the input
    /// \param outputFrame the same of the output; the two relate like the parts of `ratio`
    /// \param ratio       neither part is 0 or more than six times the other
    /// \param inputGrain  only multiples of this many input bytes are rescaled; a power of two
    /// \param units       units of the routine per frame
    CStep(TRoutine routine, std::uint64_t inputFrame, std::uint64_t outputFrame, TRatio ratio,
          std::uint32_t inputGrain, std::uint32_t units)
        : routine_(routine), ratio_(ratio), grainMask_(~(inputGrain - 1)), units_(units),
          outputFrame_(outputFrame), isLarge_(outputFrame > kEnough / 2),
          smallInputFrame_(isLarge_ ? 0 : static_cast<std::uint32_t>(inputFrame)),
          smallOutputFrame_(isLarge_ ? 0 : static_cast<std::uint32_t>(outputFrame)) {}

    bool IsPassThrough() const { return !routine_; }

    /// The bytes to read for `size` bytes of output: those of its whole frames, but at most
    /// `kMaxPcmConverterInput`.
    std::uint32_t GetInputSize(std::uint64_t size) const {
        // An input frame is then more than kMaxPcmConverterInput bytes, too.
        if (isLarge_) return size >= outputFrame_ ? kMaxPcmConverterInput : 0;
        if (smallOutputFrame_ == 0) return 0;
        const auto enough = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kEnough));
        return std::min(enough / smallOutputFrame_ * smallInputFrame_, kMaxPcmConverterInput);
    }

    /// What `inputSize` bytes become. Kept for callers: a partial frame at the end counts here although it is
    /// not converted.
    std::uint32_t GetOutputSize(std::uint32_t inputSize) const {
        return (inputSize & grainMask_) * ratio_.output / ratio_.input;
    }

    /// Converts the whole frames of `outputSize` bytes.
    void Convert(void* destination, const void* source, std::uint32_t outputSize) const {
        if (isLarge_) return;
        const std::uint32_t frames = outputSize / smallOutputFrame_;
        if (frames > 0) ConvertFrames(destination, source, frames);
    }

    /// True when frames are so large that a step of `Read` holds none.
    bool IsLarge() const { return isLarge_; }
    /// Bytes per frame, unless `IsLarge`; 0 without channels.
    std::uint32_t GetInputFrame() const { return smallInputFrame_; }
    std::uint32_t GetOutputFrame() const { return smallOutputFrame_; }
    /// Converts so many frames.
    void ConvertFrames(void* destination, const void* source, std::size_t frames) const {
        routine_(destination, source, frames * units_);
    }

private:
    /// From this size of output on, the input is always kMaxPcmConverterInput bytes as long as a frame is not
    /// larger than half of it: more than the other half is whole frames, and a sixth of that is enough.
    static constexpr std::uint32_t kEnough = 16 * 1024;
    static_assert(kEnough / 2 / 6 > kMaxPcmConverterInput);

    TRoutine routine_ = nullptr;
    TRatio ratio_{1, 1};
    std::uint32_t grainMask_ = 0;
    std::uint32_t units_ = 0;
    std::uint64_t outputFrame_ = 0;
    bool isLarge_ = false;
    std::uint32_t smallInputFrame_ = 0;
    std::uint32_t smallOutputFrame_ = 0;
};

} // namespace vorlund::pcm
