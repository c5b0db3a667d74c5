/// \file
/// An endless video stream whose frames are painted by a function of the application.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/Stream.h>

namespace vorlund {

/// Frames of 32-bit pixels, blue in the lowest byte, then green, red and alpha, rows from top to bottom
/// without padding. `GetFormat` is a `TDataFormat_VideoRgb`, at first of 640 x 480 pixels at 30 frames per
/// second; go by its shifts, for `TPixelFormat::FORMAT_A8R8G8B8` has others. `GetCapabilities` is 8.
///
/// `Eof` is always false; `GetLength`, `Seek` and `Tell` raise `COperationNotSupportedException` "... is not
/// supported"; `Skip`, `Close` and `Flush` do nothing. `Read` of a media sample raises `CNullPtrException`
/// "sample is NULL", else `CInvalidParameterException` "Media samples are not supported".
///
/// `Read` is meant for one whole frame at a time. Every call delivers from the frame's first byte on, at most
/// one frame. The next frame is made when the bytes delivered of the current one add up to exactly its size.
///
/// \warning Reading in smaller pieces does not work: every piece is the first bytes of the frame again, and
/// once their sum exceeds the frame's size, the frame never changes.
///
/// A frame of more than 2^32 - 1 bytes is refused with `std::bad_alloc`.
class ICbVideoSource : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x7D2ACBA0, 0x2A1B4C5E, 0x9B07DBB6, 0x7A03AE9C};

    /// What the function gets for each frame.
    struct TCbData {
        /// The frame to fill, width x height pixels; zeros, or what was painted before. It belongs to the
        /// source.
        void* pixels;
        /// The number of the frame; 0 for the first one.
        std::uint32_t frameNumber;
        /// How a pixel is laid out.
        TPixelFormat pixelFormat;
    };
    /// Paints a frame, on the thread that calls `Read`. An exception passes out of `Read` unchanged: the
    /// frame does not count, and until its bytes have been read the buffer is delivered as the function left
    /// it.
    using TCallback = void (*)(TCbData& data);

    /// Takes width, height and frame rate of a whole `TDataFormat_VideoRgb`, for the next frame on; the rest
    /// of the record is ignored. Raises `CNullPtrException` "format is NULL" and, for another format
    /// identifier, `CDataFormatException` "Unsupported format ID". Returns the source itself, with no
    /// reference added.
    virtual ICbVideoSource* SetFormat(const TDataFormat* format) = 0;
    /// Sets the function that paints, from the next frame on. With null, which is the default, frames are
    /// opaque dark blue (0xFF000088). Returns the source itself, with no reference added.
    virtual ICbVideoSource* SetCallback(TCallback callback) = 0;

protected:
    ~ICbVideoSource() = default;
};

} // namespace vorlund
