// Damaged files: no crash, no hang, and no more pixels than the bytes can hold.
#include "plugins/y4m/Y4mTest.h"

namespace vorlund::test {
namespace {

class Y4mDamage : public Y4mTest {
protected:
    /// Decodes what there is.
    void ExpectBounded(const TBytes& bytes) {
        try {
            const auto decoded = DecodeBytes(bytes);
            const TBytes pixels = ReadAll(*decoded, 5000);
            // A byte of luma becomes four.
            EXPECT_LE(pixels.size(), bytes.size() * 4);
            EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(pixels.size()));
        } catch (const CDataFormatException&) {
            EXPECT_NE(Narrowed(report_.Explain()), "");
        }
    }
};

constexpr const char* kNames[] = {"yuv420p-47x31.y4m", "gray-5x3.y4m", "yuv411p-1x1.y4m", "alpha.y4m",
                                  "some-parameters.y4m"};

TEST_F(Y4mDamage, CutAtEvery97thByte) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = Load(name);
        const TBytes whole = ReadAll(*DecodeBytes(bytes));
        for (std::size_t size = 0; size < bytes.size(); size += 97) {
            const TBytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            ExpectBounded(part);
            try {
                const TBytes pixels = ReadAll(*DecodeBytes(part));
                EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), whole.begin()));
            } catch (const CDataFormatException&) {
            }
        }
    }
}

TEST_F(Y4mDamage, FlippedHeads) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = Load(name);
        for (std::size_t at = 0; at < std::min<std::size_t>(bytes.size(), 160); ++at) {
            for (const int flip : {0x01, 0x02, 0x10, 0x80, 0xFF}) {
                TBytes damaged = bytes;
                damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ flip);
                ExpectBounded(damaged);
            }
        }
    }
}

TEST_F(Y4mDamage, ManySmallFramesTakeNoMoreThanTheirBytes) {
    std::string text = "YUV4MPEG2 W1 H1 F1:1 Cmono\nFRAME X\n!";
    for (int i = 0; i < 100000; ++i) text += "FRAME\n!";
    const auto decoded = DecodeBytes(MakeBytes(text));
    EXPECT_EQ(decoded->GetLength(), 100001 * 4);
    EXPECT_EQ(ReadAll(*decoded).size(), 100001u * 4);
}

} // namespace
} // namespace vorlund::test
