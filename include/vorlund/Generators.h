/// \file
/// Endless input streams that make their data, as test and demonstration sources: random bytes and plasma
/// video.
///
/// Neither ends, has a length or a position: `Eof` is always false, `GetCapabilities` is 0, `GetLength`,
/// `Seek` and `Tell` raise `COperationNotSupportedException` "... is not supported", and `Skip`, `Close` and
/// `Flush` do nothing. `Read` of a media sample raises `CNullPtrException` "sample is NULL", else
/// `CInvalidParameterException` "Media samples are not supported". One thread uses a generator at a time.
#pragma once

#include <vorlund/Stream.h>

namespace vorlund {

/// Pseudo-random bytes of a linear congruential generator with 32 bits of state: each value is bits 16 to 23
/// of the next state, which is the former one times 214013 plus 2531011. The same seed gives the same bytes
/// on every system. D. E. Knuth, "The Art of Computer Programming", volume 2, 3.2.1. Nothing for secrets.
///
/// `Read` fills the whole buffer and returns `size`. Every call begins with a value of its own: a run of
/// repeated bytes that the buffer's end cuts is not continued.
class IRandomGenerator : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x83A81FE3, 0x415C7433, 0xD766C583, 0x78CE7B6C};

    /// Copies `format`, as many bytes as its size field says, for `GetFormat` to report; at first that is the
    /// empty format. Any format will do, the bytes are the same. Raises `CNullPtrException` "format is NULL".
    virtual void SetFormat(const TDataFormat* format) = 0;
    /// Sets the state, 0 at first. Returns the generator itself, with no reference added.
    virtual IRandomGenerator* SetSeed(std::uint32_t seed) = 0;
    /// How many consecutive bytes share one value, 1 at first; 0 counts as 1. Returns the generator itself,
    /// with no reference added.
    virtual IRandomGenerator* SetRepeatCount(std::uint32_t count) = 0;

protected:
    ~IRandomGenerator() = default;
};

/// Animated plasma: frames of 32-bit pixels, blue in the lowest byte, then green, red and alpha (always 255),
/// rows from top to bottom without padding. `GetFormat` is a `TDataFormat_VideoRgb`, at first of 400 x 300
/// pixels at 30 frames per second; nothing paces the frames. Go by its shifts:
/// `TPixelFormat::FORMAT_A8R8G8B8`, of the same name as this layout, has others.
///
/// `Read` is meant for one whole frame at a time. It makes the next frame when the bytes delivered since the
/// last one add up to exactly its size, and always delivers from the frame's first byte on, at most one
/// frame: smaller pieces are its first bytes again and again, and once their sum is beyond the frame's size
/// no other frame comes. A frame of more than 2^32 - 1 bytes is refused with `std::bad_alloc`.
class IPlasmaVideoGenerator : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0xC97694A7, 0xC0546B18, 0x3442881F, 0x792662C1};

    /// Takes width, height and frame rate of a whole `TDataFormat_VideoRgb`, for the next frame on; the rest
    /// of the record is ignored. Raises `CNullPtrException` "format is NULL" and, for another format
    /// identifier, `CDataFormatException` "Unsupported format ID". Returns the generator itself, with no
    /// reference added.
    virtual IPlasmaVideoGenerator* SetFormat(const TDataFormat* format) = 0;

protected:
    ~IPlasmaVideoGenerator() = default;
};

} // namespace vorlund
