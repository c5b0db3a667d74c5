/// \file
/// `IPlasmaVideoGenerator`, an endless input stream of animated frames, as a source for tests and
/// demonstrations.
///
/// A generator never ends and has no length and no position: `Eof` is always false, `GetCapabilities` is 0,
/// `GetLength`, `Seek` and `Tell` raise `COperationNotSupportedException` "... is not supported", and `Skip`,
/// `Close` and `Flush` do nothing. `Read` of a media sample raises `CNullPtrException` "sample is NULL", else
/// `CInvalidParameterException` "Media samples are not supported". One thread at a time.
#pragma once

#include <vorlund/Stream.h>

namespace vorlund {

/// Animated plasma: frames of 32-bit pixels, blue in the lowest byte, then green, red and alpha (always 255),
/// rows from top to bottom without padding. `GetFormat` is a `TDataFormat_VideoRgb`, at first of 400 x 300
/// pixels at 30 frames per second; nothing paces the frames. Go by its shifts:
/// `TPixelFormat::FORMAT_A8R8G8B8`, of the same name as this layout, has others.
///
/// `Read` is meant for one whole frame at a time. Every call delivers from the frame's first byte on, at most
/// one frame. The next frame is made when the bytes delivered of the current one add up to exactly its size.
///
/// \warning Reading in smaller pieces does not work: every piece is the first bytes of the frame again, and
/// once their sum exceeds the frame's size, the frame never changes.
///
/// A frame of more than 2^32 - 1 bytes is refused with `std::bad_alloc`.
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
