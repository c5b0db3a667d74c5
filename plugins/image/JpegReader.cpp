// The library leaves its functions by longjmp when it cannot go on. The functions here that call it therefore
// have nothing in them that needs a destructor, and change no variable of their own: all that lasts is in
// `TJpeg`, and its owner is outside.
//
// Pixels are computed as the library does by itself: exact integer transforms and smooth chroma. Pictures of
// four colours are printed: they are made red, green and blue by the plain rule, each the light that its ink
// and black let through. Adobe's programs store how much light that is, others how much ink there is.
#include "JpegReader.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>

// These need <cstdio> before them.
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/image/JpegReader");
constexpr const wchar* kConnect = VRL_L("CImageDecoder::Connect");
constexpr TFailure kDamaged{kConnect, kFile, 1, VRL_L("Damaged or unsupported JPEG file")};
constexpr TFailure kColours{kConnect, kFile, 2, VRL_L("Unsupported colours in JPEG file")};

/// A block of 64 pixels takes at least a bit.
constexpr std::uint64_t kMaxPixelsPerByte = 8 * 64;

/// Each scan of a progressive file goes over the whole picture; encoders write about ten.
constexpr int kMaxScans = 100;

struct TJpeg {
    explicit TJpeg(CPictureSource& pictureSource);
    TJpeg(const TJpeg&) = delete;
    TJpeg& operator=(const TJpeg&) = delete;
    ~TJpeg() { jpeg_destroy_decompress(&info); }

    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    jpeg_source_mgr input{};
    jpeg_progress_mgr progress{};
    std::jmp_buf exit{};
    CPictureSource& source;
    char error[JMSG_LENGTH_MAX] = {};
    char warning[JMSG_LENGTH_MAX] = {};
};

template <class TInfo> TJpeg& Owner(TInfo* info) {
    return *static_cast<TJpeg*>(info->client_data);
}

[[noreturn]] void OnError(j_common_ptr info) {
    TJpeg& jpeg = Owner(info);
    info->err->format_message(info, jpeg.error);
    // NOLINTNEXTLINE(cert-err52-cpp): the library's way.
    std::longjmp(jpeg.exit, 1);
}

void OnMessage(j_common_ptr info, int level) {
    if (level >= 0 || info->err->num_warnings++ > 0) return;
    info->err->format_message(info, Owner(info).warning);
}

void OnOutput(j_common_ptr) {}

void OnProgress(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMaxScans) {
        std::strcpy(Owner(info).error, "too many scans");
        // NOLINTNEXTLINE(cert-err52-cpp)
        std::longjmp(Owner(info).exit, 1);
    }
}

void OnStart(j_decompress_ptr) {}

boolean OnFill(j_decompress_ptr info) {
    static constexpr JOCTET kEndOfImage[] = {0xFF, JPEG_EOI};
    const std::span<const std::uint8_t> block = Owner(info).source.ReadBlock();
    if (block.empty()) {
        WARNMS(info, JWRN_JPEG_EOF);
        info->src->next_input_byte = kEndOfImage;
        info->src->bytes_in_buffer = sizeof kEndOfImage;
    } else {
        info->src->next_input_byte = block.data();
        info->src->bytes_in_buffer = block.size();
    }
    return TRUE;
}

void OnSkip(j_decompress_ptr info, long count) {
    jpeg_source_mgr& input = *info->src;
    while (count > static_cast<long>(input.bytes_in_buffer)) {
        count -= static_cast<long>(input.bytes_in_buffer);
        OnFill(info);
    }
    if (count <= 0) return;
    input.next_input_byte += count;
    input.bytes_in_buffer -= static_cast<std::size_t>(count);
}

void OnEnd(j_decompress_ptr) {}

TJpeg::TJpeg(CPictureSource& pictureSource) : source(pictureSource) {
    info.err = jpeg_std_error(&errors);
    info.client_data = this;
    errors.error_exit = &OnError;
    errors.emit_message = &OnMessage;
    errors.output_message = &OnOutput;
    input.init_source = &OnStart;
    input.fill_input_buffer = &OnFill;
    input.skip_input_data = &OnSkip;
    input.resync_to_restart = &jpeg_resync_to_restart;
    input.term_source = &OnEnd;
    progress.progress_monitor = &OnProgress;
}

bool IsPrinted(const TJpeg& jpeg) {
    return jpeg.info.jpeg_color_space == JCS_CMYK || jpeg.info.jpeg_color_space == JCS_YCCK;
}

/// Reads everything before the pixels; false when the library refuses it.
bool ReadHead(TJpeg& jpeg) {
    // NOLINTNEXTLINE(cert-err52-cpp)
    if (setjmp(jpeg.exit)) return false;
    jpeg_create_decompress(&jpeg.info);
    jpeg.info.src = &jpeg.input;
    jpeg.info.progress = &jpeg.progress;
    jpeg_read_header(&jpeg.info, TRUE);
    jpeg.info.out_color_space = IsPrinted(jpeg) ? JCS_CMYK : JCS_EXT_BGRA;
    return true;
}

/// Reads all rows; false when the library stops before the end.
bool ReadRows(TJpeg& jpeg, std::uint8_t* pixels) {
    // NOLINTNEXTLINE(cert-err52-cpp)
    if (setjmp(jpeg.exit)) return false;
    jpeg_start_decompress(&jpeg.info);
    while (jpeg.info.output_scanline < jpeg.info.output_height) {
        JSAMPROW row = pixels + std::size_t{jpeg.info.output_scanline} * jpeg.info.output_width * kPixelSize;
        jpeg_read_scanlines(&jpeg.info, &row, 1);
    }
    jpeg_finish_decompress(&jpeg.info);
    return true;
}

/// The product of two lights from 0 to 255, rounded to nearest.
std::uint8_t Multiply(unsigned int one, unsigned int other) {
    return static_cast<std::uint8_t>((one * other + 127) / 255);
}

/// Cyan, magenta, yellow and black to blue, green, red and alpha.
void ConvertPrinted(std::uint8_t* pixels, std::size_t size, bool isLight) {
    const unsigned int turned = isLight ? 0 : 255;
    for (std::uint8_t* pixel = pixels; pixel < pixels + size; pixel += kPixelSize) {
        const unsigned int black = pixel[3] ^ turned;
        const std::uint8_t red = Multiply(pixel[0] ^ turned, black);
        pixel[1] = Multiply(pixel[1] ^ turned, black);
        pixel[0] = Multiply(pixel[2] ^ turned, black);
        pixel[2] = red;
        pixel[3] = 0xFF;
    }
}

[[noreturn]] void RefuseFile(const TJpeg& jpeg) {
    NoteObjection("libjpeg", jpeg.error);
    Raise<CDataFormatException>(kDamaged);
}

} // namespace

bool IsJpeg(std::span<const std::uint8_t> head) {
    constexpr std::uint8_t kStart[] = {0xFF, 0xD8, 0xFF};
    return head.size() >= sizeof kStart && std::memcmp(head.data(), kStart, sizeof kStart) == 0;
}

TPicture ReadJpeg(CPictureSource& source) {
    NoteContainer(VRL_L("JPEG"));
    TJpeg jpeg(source);
    const bool hasHead = ReadHead(jpeg);
    source.RethrowFailure();
    if (!hasHead) RefuseFile(jpeg);
    if (jpeg.info.jpeg_color_space == JCS_UNKNOWN) {
        NoteValue(VRL_L("components"), jpeg.info.num_components);
        Raise<CDataFormatException>(kColours);
    }
    TPicture picture{jpeg.info.image_width, jpeg.info.image_height, {}};
    RequirePossibleSize(picture.width, picture.height);
    RequireHeldSize(picture.width, picture.height,
                    std::uint64_t{picture.width} * picture.height / kMaxPixelsPerByte, source.GetLength());

    picture.pixels.resize(std::size_t{picture.width} * picture.height * kPixelSize);
    const bool isWhole = ReadRows(jpeg, picture.pixels.data());
    source.RethrowFailure();
    const std::size_t rows = jpeg.info.output_scanline;
    if (!isWhole && rows == 0) RefuseFile(jpeg);
    if (IsPrinted(jpeg))
        ConvertPrinted(picture.pixels.data(), rows * picture.width * kPixelSize, jpeg.info.saw_Adobe_marker);
    if (!isWhole) NoteRepair("damaged, libjpeg", jpeg.error);
    if (jpeg.warning[0] != 0) NoteRepair("libjpeg", jpeg.warning);
    return picture;
}
