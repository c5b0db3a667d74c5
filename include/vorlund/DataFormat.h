/// \file
/// What the bytes of a stream mean: plain, byte-copyable records headed by an identifier and their own size.
///
/// Sizes are computed in unsigned 32-bit arithmetic and wrap. Seconds are single-precision; products and
/// quotients are computed in double precision; a conversion to an integer truncates toward zero, and NaN, or
/// a value beyond 64 bits, gives -2^63. Nothing here raises. Constants may be read from any thread.
#pragma once

#include <vorlund/Id.h>

#include <cstdint>

namespace vorlund {

/// The head of every format record. By default the empty format: a null identifier and the size of the head.
struct TDataFormat {
    CId id;
    /// Size in bytes of the whole record, this head included.
    std::uint32_t size = 20;
};

/// Sample formats of `TDataFormat_AudioPcm`.
enum TSampleFormat : std::uint32_t {
    SAMPLE_FORMAT_8BIT = 0,  ///< unsigned, silence is 128
    SAMPLE_FORMAT_16BIT = 1, ///< signed
    SAMPLE_FORMAT_32BIT = 2, ///< signed
    SAMPLE_FORMAT_FLOAT = 3  ///< single-precision, full scale is 1.0
};

/// Uncompressed audio: interleaved linear PCM.
struct TDataFormat_AudioPcm : TDataFormat {
    static constexpr CId FormatId{0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF};

    /// A `TSampleFormat`; other codes have samples of 0 bytes.
    std::uint32_t sampleFormat = SAMPLE_FORMAT_16BIT;
    /// Samples per frame.
    std::uint32_t channels = 1;
    /// Frames per second.
    std::uint32_t samplesPerSec = 44100;

    constexpr TDataFormat_AudioPcm() : TDataFormat{FormatId, 32} {}
    constexpr TDataFormat_AudioPcm(std::uint32_t format, std::uint32_t channelCount, std::uint32_t rate)
        : TDataFormat{FormatId, 32}, sampleFormat(format), channels(channelCount), samplesPerSec(rate) {}

    /// Bytes per sample of one channel: 1, 2, 4 or 4, and 0 for an unknown format.
    VRL_API std::uint32_t GetSampleSize() const;
    /// Bytes per frame of all channels.
    VRL_API std::uint32_t GetBlockSize() const;
    /// Bytes per second of all channels.
    VRL_API std::uint32_t GetBytesPerSec() const;
    /// A byte of silence: 128 for 8-bit samples, else 0.
    VRL_API std::uint8_t GetZeroByte() const;
    /// The frame at a time, truncated.
    VRL_API std::int64_t TimeToSample(float seconds) const;
    /// The time of a frame.
    VRL_API float SampleToTime(std::int64_t sample) const;
    /// The byte at which the frame at a time begins.
    VRL_API std::int64_t TimeToByte(float seconds) const;
    /// A byte inside a frame gives a fraction of the frame's time.
    VRL_API float ByteToTime(std::int64_t bytes) const;

    VRL_API static const TDataFormat_AudioPcm FORMAT_44100HZ_16BIT_MONO;
    VRL_API static const TDataFormat_AudioPcm FORMAT_44100HZ_16BIT_STEREO;
    VRL_API static const TDataFormat_AudioPcm FORMAT_44100HZ_16BIT_51;
};

/// How a pixel is laid out. A shift is the bit position of the channel's least significant bit within the
/// pixel.
struct TPixelFormat {
    /// 0 in every constant.
    std::uint32_t type = 0;
    std::uint32_t bitsPerPixel = 0;
    std::uint32_t alphaBits = 0;
    std::uint32_t alphaShift = 0;
    std::uint32_t redBits = 0;
    std::uint32_t redShift = 0;
    std::uint32_t greenBits = 0;
    std::uint32_t greenShift = 0;
    std::uint32_t blueBits = 0;
    std::uint32_t blueShift = 0;

    /// All ten words equal.
    bool operator==(const TPixelFormat& other) const = default;

    VRL_API static const TPixelFormat FORMAT_A1;
    VRL_API static const TPixelFormat FORMAT_A8;
    VRL_API static const TPixelFormat FORMAT_A8R8G8B8;

    /// \warning All fields of the following are 0: they compare equal to each other and describe no layout.
    /// They are names only, kept for programs that use them; fill in the bits and shifts of a `TPixelFormat`
    /// instead.
    VRL_API static const TPixelFormat FORMAT_R3G3B2;
    VRL_API static const TPixelFormat FORMAT_R5G6B5;
    VRL_API static const TPixelFormat FORMAT_A1R5G5B5;
    VRL_API static const TPixelFormat FORMAT_R5G5B5A1;
    VRL_API static const TPixelFormat FORMAT_A2R2G2B2;
    VRL_API static const TPixelFormat FORMAT_R2G2B2A2;
    VRL_API static const TPixelFormat FORMAT_R8G8B8A8;
    VRL_API static const TPixelFormat FORMAT_A2R10G10B10;
    VRL_API static const TPixelFormat FORMAT_R10G10B10A2;
    VRL_API static const TPixelFormat FORMAT_R11G11B10;
    VRL_API static const TPixelFormat FORMAT_R16G16B16;
    VRL_API static const TPixelFormat FORMAT_R16G16B16A16;
    VRL_API static const TPixelFormat FORMAT_A16R16G16B16;
    VRL_API static const TPixelFormat FORMAT_A32;
    VRL_API static const TPixelFormat FORMAT_A32F;
    VRL_API static const TPixelFormat FORMAT_A32R32G32B32;
    VRL_API static const TPixelFormat FORMAT_R32G32B32A32;
    VRL_API static const TPixelFormat FORMAT_A32R32G32B32F;
    VRL_API static const TPixelFormat FORMAT_R32G32B32A32F;
};

/// One uncompressed image; rows are not padded.
struct TDataFormat_ImageRgb : TDataFormat {
    static constexpr CId FormatId{0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5};

    TPixelFormat pixelFormat;
    /// Pixels per row.
    std::uint32_t width = 0;
    /// Rows.
    std::uint32_t height = 0;

    constexpr TDataFormat_ImageRgb() : TDataFormat{FormatId, 68} {}

    /// Bytes per row, truncated.
    VRL_API std::uint32_t GetWidthInBytes() const;
    /// Pixels of the image.
    VRL_API std::uint32_t GetSizeInPixels() const;
    /// Bytes of the image, truncated. The division by eight is applied to the whole image: rows are not
    /// rounded to whole bytes.
    VRL_API std::uint32_t GetSizeInBytes() const;
};

/// Uncompressed video: frames of one image format.
struct TDataFormat_VideoRgb : TDataFormat {
    static constexpr CId FormatId{0x1EF1EB17, 0xD158429A, 0x862DA3D5, 0x897BF1D1};

    /// One frame, a whole record of its own.
    TDataFormat_ImageRgb image;
    /// Frames per second.
    float frameRate = 0;

    constexpr TDataFormat_VideoRgb() : TDataFormat{FormatId, 92} {}

    /// 640 x 480 pixels of `FORMAT_A8R8G8B8` at 30 frames per second.
    VRL_API void SetDefaults();
    /// The number of the frame at a time, truncated.
    VRL_API std::int64_t TimeToFrame(float seconds) const;
    /// The time of a frame.
    VRL_API float FrameToTime(std::int64_t frame) const;
    VRL_API std::int64_t TimeToByte(float seconds) const;
    /// A byte inside a frame gives the time at which the frame starts, unlike audio. A frame size of 0 counts
    /// as frame 0.
    VRL_API float ByteToTime(std::int64_t bytes) const;
};

static_assert(sizeof(TDataFormat) == 20 && sizeof(TDataFormat_AudioPcm) == 32 && sizeof(TPixelFormat) == 40 &&
              sizeof(TDataFormat_ImageRgb) == 68 && sizeof(TDataFormat_VideoRgb) == 92);

/// The empty format record, which streams without a format return from `GetFormat`. It lives as long as the
/// library.
VRL_API const TDataFormat& GetEmptyFormat();

} // namespace vorlund
