// libpng leaves its functions by longjmp when a file is damaged. The functions here that call it therefore
// have nothing in them that needs a destructor, and change no variable of their own: all that lasts is in
// `TPng`, and its owner is outside.
//
// What is asked of libpng: palettes and small depths widened, 16 bits made 8 by rounding to nearest, greys
// made colours, transparent colours made alpha. Colour spaces and gamma are not looked at. All ancillary
// chunks but tRNS are passed over unread, so that nobody can hide anything large in them.
#include "PngReader.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <new>
#include <string_view>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/image/PngReader");
constexpr TFailure kDamaged{VRL_L("CImageDecoder::Connect"), kFile, 1, VRL_L("Damaged PNG file")};

constexpr std::string_view kSignature{"\x89PNG\r\n\x1A\n", 8};

/// Deflate makes at most this much of a byte.
constexpr std::uint64_t kMaxInflation = 1032;

constexpr std::size_t kMaxMessage = 200;

/// The last thing that libpng has said.
struct TMessage {
    char text[kMaxMessage] = {};

    void Set(const char* said) { std::strncpy(text, said, kMaxMessage - 1); }
    bool IsEmpty() const { return text[0] == 0; }
};

struct TPng {
    explicit TPng(CPictureSource& pictureSource);
    TPng(const TPng&) = delete;
    TPng& operator=(const TPng&) = delete;
    ~TPng() { png_destroy_read_struct(&png, &info, nullptr); }

    CPictureSource& source;
    png_structp png = nullptr;
    png_infop info = nullptr;
    TMessage error;
    TMessage warning;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Bytes of the rows as they are compressed.
    std::uint64_t rawSize = 0;
    /// Rows that have arrived, in all passes.
    std::uint64_t rows = 0;
};

[[noreturn]] void OnError(png_structp png, png_const_charp text) {
    static_cast<TPng*>(png_get_error_ptr(png))->error.Set(text);
    png_longjmp(png, 1);
}

void OnWarning(png_structp png, png_const_charp text) {
    TMessage& warning = static_cast<TPng*>(png_get_error_ptr(png))->warning;
    if (warning.IsEmpty()) warning.Set(text);
}

void OnRead(png_structp png, png_bytep buffer, std::size_t size) {
    if (!static_cast<TPng*>(png_get_io_ptr(png))->source.ReadWhole(buffer, size))
        png_error(png, "the file ends early");
}

TPng::TPng(CPictureSource& pictureSource) : source(pictureSource) {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &OnError, &OnWarning);
    if (png) info = png_create_info_struct(png);
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        throw std::bad_alloc();
    }
}

/// Reads everything before the pixels; false when libpng refuses it.
bool ReadHead(TPng& png) {
    // NOLINTNEXTLINE(cert-err52-cpp): libpng's way.
    if (setjmp(png_jmpbuf(png.png))) return false;
    png_set_read_fn(png.png, &png, &OnRead);
    // The limits of Picture.h count.
    png_set_user_limits(png.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_keep_unknown_chunks(png.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_read_info(png.png, png.info);
    png.width = png_get_image_width(png.png, png.info);
    png.height = png_get_image_height(png.png, png.info);
    png.rawSize = std::uint64_t{png_get_rowbytes(png.png, png.info)} * png.height;

    png_set_expand(png.png);
    png_set_scale_16(png.png);
    png_set_gray_to_rgb(png.png);
    png_set_bgr(png.png);
    png_set_add_alpha(png.png, 0xFF, PNG_FILLER_AFTER);
    return true;
}

/// Reads all rows; false when libpng stops before the end.
bool ReadRows(TPng& png, std::uint8_t* pixels) {
    const std::size_t stride = std::size_t{png.width} * kPixelSize;
    // NOLINTNEXTLINE(cert-err52-cpp)
    if (setjmp(png_jmpbuf(png.png))) return false;
    const int passes = png_set_interlace_handling(png.png);
    png_read_update_info(png.png, png.info);
    if (png_get_rowbytes(png.png, png.info) != stride) png_error(png.png, "unexpected form of pixels");
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t row = 0; row < png.height; ++row) {
            // Of an interlaced picture, the pixels of a pass fill the place of those that are still missing.
            png_read_row(png.png, nullptr, pixels + row * stride);
            ++png.rows;
        }
    }
    png_read_end(png.png, nullptr);
    return true;
}

std::uint32_t LoadBigEndian32(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

/// Looks at the size where it is in nearly every file, before libpng, whose own limits depend on the system.
void RequirePossibleHead(std::span<const std::uint8_t> head) {
    constexpr std::size_t kWidthAt = 16;
    constexpr std::size_t kHeightAt = 20;
    if (head.size() < kHeightAt + 4) return;
    RequirePossibleSize(LoadBigEndian32(&head[kWidthAt]), LoadBigEndian32(&head[kHeightAt]));
}

} // namespace

bool IsPng(std::span<const std::uint8_t> head) {
    return head.size() >= kSignature.size() &&
           std::memcmp(head.data(), kSignature.data(), kSignature.size()) == 0;
}

TPicture ReadPng(CPictureSource& source) {
    NoteContainer(VRL_L("PNG"));
    RequirePossibleHead(source.GetHead());
    TPng png(source);
    const bool hasHead = ReadHead(png);
    source.RethrowFailure();
    if (!hasHead) {
        NoteObjection("libpng", png.error.text);
        Raise<CDataFormatException>(kDamaged);
    }
    RequirePossibleSize(png.width, png.height);
    RequireHeldSize(png.width, png.height, png.rawSize / kMaxInflation, source.GetLength());

    TPicture picture{png.width, png.height, {}};
    picture.pixels.resize(std::size_t{png.width} * png.height * kPixelSize);
    const bool isWhole = ReadRows(png, picture.pixels.data());
    source.RethrowFailure();
    if (!isWhole && png.rows == 0) {
        NoteObjection("libpng", png.error.text);
        Raise<CDataFormatException>(kDamaged);
    }
    if (!isWhole) NoteRepair("damaged, libpng", png.error.text);
    if (!png.warning.IsEmpty()) NoteRepair("libpng", png.warning.text);
    return picture;
}
