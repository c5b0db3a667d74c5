// Damaged and hostile files: no crash, no hang, and no more memory than the picture takes.
#include "bounds/Factors.h"
#include "plugins/image/ImageTest.h"
#include "support/Emulated.h"

#include <chrono>
#include <cstdio>

namespace vorlund::test {
namespace {

/// Every kind of file, small.
constexpr const char* kNames[] = {"im-0-1-none.png",   "im-0-16-png.png",      "im-3-4-png.png",
                                  "im-6-8-none.png",   "basn3p08-trns.png",    "ftbbn2c16.png",
                                  "cjpeg-grey.jpg",    "cjpeg-sample-2x2.jpg", "cjpeg-progressive.jpg",
                                  "cjpeg-restart.jpg", "cjpeg-arithmetic.jpg", "im-cmyk.jpg"};

class ImageDamage : public ImageTest {
protected:
    /// Decodes what there is.
    void ExpectBounded(const TBytes& bytes) {
        const auto began = std::chrono::steady_clock::now();
        try {
            const auto decoded = DecodeBytes(bytes);
            const auto& format = static_cast<const TDataFormat_ImageRgb&>(decoded->GetFormat());
            EXPECT_EQ(decoded->GetLength(), std::int64_t{format.width} * format.height * 4);
            decoded->Seek(decoded->GetLength() / 2);
            ReadAll(*decoded, 65536, 65536);
        } catch (const CDataFormatException&) {
            EXPECT_NE(Narrowed(report_.Explain()), "");
        }
        // Very generous: machines are busy.
        EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
    }

    /// The beginning of a file, which is enough.
    TBytes LoadSome(const char* name) const {
        TBytes bytes = Load(name);
        bytes.resize(std::min<std::size_t>(bytes.size(), 12000));
        return bytes;
    }
};

TEST_F(ImageDamage, CutAtEvery97thByte) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = LoadSome(name);
        for (std::size_t size = 0; size < bytes.size(); size += 97)
            ExpectBounded(TBytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    }
}

TEST_F(ImageDamage, FlippedHeads) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = LoadSome(name);
        for (std::size_t at = 0; at < std::min<std::size_t>(bytes.size(), 700); ++at) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                TBytes damaged = bytes;
                damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ flip);
                SCOPED_TRACE(at);
                ExpectBounded(damaged);
            }
        }
    }
}

TEST_F(ImageDamage, HugeNumbersInHeads) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = LoadSome(name);
        for (std::size_t at = 2; at + 8 <= std::min<std::size_t>(bytes.size(), 200); ++at) {
            for (const int fill : {0x00, 0x7F, 0xFF}) {
                TBytes damaged = bytes;
                std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), 4,
                            static_cast<std::uint8_t>(fill));
                SCOPED_TRACE(at);
                ExpectBounded(damaged);
            }
        }
    }
}

/// Each in a process of its own, which tells its processor time and the peak of its memory.
TEST_F(ImageDamage, HostileFilesTakeASecondAndTheMemoryOfThePicture) {
    std::istringstream names(ReadFile(files_ / "hostile.txt"));
    int count = 0;
    for (std::string name; names >> name; ++count) {
        SCOPED_TRACE(name);
        const TChildEnd end = RunChild("image_child", {.arguments = {(files_ / name).string()}});
        ASSERT_TRUE(end.IsSuccess()) << end.output << end.errors;
        unsigned long long milliseconds = ~0ull;
        unsigned long long peak = ~0ull;
        unsigned long long decoded = ~0ull;
        ASSERT_EQ(
            std::sscanf(end.output.c_str(), "%llu ms %llu bytes for %llu", &milliseconds, &peak, &decoded), 3)
            << end.output;
        EXPECT_LE(milliseconds, 1000 * kTimeFactor * (IsEmulated() ? kEmulatorTimeFactor : 1));
        EXPECT_LE(peak, ((64ull << 20) + 3 * decoded) * kMemoryFactor);
        if (name.starts_with("unheld") || name.find("11000") != std::string::npos ||
            name.find("65500") != std::string::npos || name == "side.png") {
            EXPECT_EQ(decoded, 0u);
            EXPECT_LE(peak, (32ull << 20) * kMemoryFactor);
        }
    }
    EXPECT_GT(count, 40);
}

} // namespace
} // namespace vorlund::test
