// Pictures and video.

#include "vorlund_c/video.h"

#include "Calls.h"
#include "Records.h"
#include "StreamObject.h"

#include <vorlund/Exception.h>
#include <vorlund/FormatCast.h>

#include <cstring>

namespace vorlund::capi {

namespace {

constexpr TFailure kNoPictures{VRL_L("vorlund_stream_video_format"), VRL_L("bindings/c"), 0,
                               VRL_L("The stream has neither pictures nor video")};

struct TPictures {
    TDataFormat_ImageRgb image;
    float frameRate;
};

TPictures PicturesOf(CStreamObject& stream) {
    const TDataFormat& format = stream.Get().GetFormat();
    if (const auto* const video = FormatCast<TDataFormat_VideoRgb>(format))
        return {video->image, video->frameRate};
    if (const auto* const image = FormatCast<TDataFormat_ImageRgb>(format)) return {*image, 0};
    Raise<CDataFormatException>(kNoPictures);
}

/// A channel of a pixel as a byte; what has no bits is full.
unsigned char ChannelOf(std::uint32_t pixel, std::uint32_t bits, std::uint32_t shift) {
    if (bits == 0 || bits > 31 || shift > 31) return 255;
    const std::uint64_t most = (std::uint64_t{1} << bits) - 1;
    return static_cast<unsigned char>(((pixel >> shift) & most) * 255 / most);
}

struct TKindOfPixel {
    std::size_t size;
    /// Places of red, green, blue and alpha.
    std::size_t red, green, blue, alpha;
};
constexpr TKindOfPixel kKinds[] = {{3, 0, 1, 2, 3}, {3, 2, 1, 0, 3}, {4, 0, 1, 2, 3}, {4, 2, 1, 0, 3}};

void ConvertRow(unsigned char* to, const unsigned char* from, const TDataFormat_ImageRgb& image,
                const TKindOfPixel& kind) {
    const TPixelFormat& format = image.pixelFormat;
    const std::size_t bytes = format.bitsPerPixel / 8;
    for (std::uint32_t x = 0; x < image.width; ++x, to += kind.size, from += bytes) {
        std::uint32_t pixel = 0;
        for (std::size_t i = 0; i < bytes; ++i) pixel |= std::uint32_t{from[i]} << (8 * i);
        to[kind.red] = ChannelOf(pixel, format.redBits, format.redShift);
        to[kind.green] = ChannelOf(pixel, format.greenBits, format.greenShift);
        to[kind.blue] = ChannelOf(pixel, format.blueBits, format.blueShift);
        if (kind.size == 4) to[kind.alpha] = ChannelOf(pixel, format.alphaBits, format.alphaShift);
    }
}

/// Reads one picture; false when there is no other.
bool ReadPicture(CStreamObject& stream, const TKindOfPixel& kind, unsigned char* pixels, std::int32_t pitch) {
    const TDataFormat_ImageRgb image = PicturesOf(stream).image;
    const std::uint32_t bits = image.pixelFormat.bitsPerPixel;
    if (bits % 8 != 0 || bits == 0 || bits > 32)
        throw CFailure(VORLUND_ERROR_DATA_NOT_SUPPORTED, "Pixels must have 8, 16, 24 or 32 bits");
    const std::uint64_t row = std::uint64_t{image.width} * kind.size;
    const std::int64_t distance = pitch < 0 ? -std::int64_t{pitch} : pitch;
    Require(static_cast<std::uint64_t>(distance) >= row, "The pitch is less than a row");
    std::vector<unsigned char> source(std::size_t{image.width} * bits / 8);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::uint32_t count = 0;
        stream.Read(source.data(), source.size(), &count);
        if (count == 0 && y == 0) return false;
        if (count < source.size()) throw CFailure(VORLUND_ERROR_IO, "The picture has ended");
        ConvertRow(pixels, source.data(), image, kind);
        pixels += pitch;
    }
    return image.height > 0;
}

std::int32_t SeekPicture(const char* function, vorlund_stream stream, const std::uint64_t* number) noexcept {
    return On<CStreamObject>(function, stream, [&](CStreamObject& object) {
        RequirePointer(number);
        const std::uint32_t size = PicturesOf(object).image.GetSizeInBytes();
        Require(size > 0 && *number <= static_cast<std::uint64_t>(INT64_MAX) / size,
                "There is no such picture");
        object.Get().Seek(static_cast<std::int64_t>(*number * size));
    });
}

} // namespace

} // namespace vorlund::capi

using namespace vorlund::capi;

int32_t VORLUND_CALL vorlund_stream_video_format(vorlund_stream stream, vorlund_video_format* format) {
    return On<CStreamObject>(__func__, stream, [&](CStreamObject& object) {
        const TPictures pictures = PicturesOf(object);
        const vorlund::TPixelFormat& pixel = pictures.image.pixelFormat;
        const vorlund_video_format full{sizeof(full),
                                        pictures.image.width,
                                        pictures.image.height,
                                        pictures.frameRate,
                                        pictures.image.GetSizeInBytes(),
                                        pixel.bitsPerPixel,
                                        pixel.alphaBits,
                                        pixel.alphaShift,
                                        pixel.redBits,
                                        pixel.redShift,
                                        pixel.greenBits,
                                        pixel.greenShift,
                                        pixel.blueBits,
                                        pixel.blueShift};
        GiveRecord(full, format, sizeof(full));
    });
}

int32_t VORLUND_CALL vorlund_stream_read_picture(vorlund_stream stream, uint32_t kind, void* pixels,
                                                 int32_t pitch, int32_t* is_read) {
    return On<CStreamObject>(__func__, stream, [&](CStreamObject& object) {
        Require(kind <= VORLUND_PIXELS_BGRA, "There is no such kind of pixels");
        RequirePointer(pixels);
        const bool isRead = ReadPicture(object, kKinds[kind], static_cast<unsigned char*>(pixels), pitch);
        if (is_read) *is_read = isRead ? 1 : 0;
    });
}

int32_t VORLUND_CALL vorlund_stream_seek_picture(vorlund_stream stream, uint64_t number) {
    return SeekPicture(__func__, stream, &number);
}

int32_t VORLUND_CALL vorlund_stream_seek_picture_ptr(vorlund_stream stream, const uint64_t* number) {
    return SeekPicture(__func__, stream, number);
}
