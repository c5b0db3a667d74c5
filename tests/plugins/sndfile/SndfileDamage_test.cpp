// Damaged files: no crash, no hang, and no more sound than the bytes can hold.
#include "bounds/Factors.h"
#include "bounds/ProcessUse.h"
#include "plugins/SoundPluginTest.h"
#include "support/Emulated.h"

#include <algorithm>
#include <vector>

namespace vorlund::test {
namespace {

/// Every kind of file, in its smallest form.
constexpr const char* kNames[] = {"24.wav",      "float.wav", "ima.wav",    "ms.wav",    "gsm.wav",
                                  "rf64.wav",    "24.w64",    "24.aiff",    "dwvw.aiff", "24.au",
                                  "g723.au",     "24.caf",    "alac16.caf", "16.flac",   "stereo.ogg",
                                  "stereo.opus", "vbr.mp3",   "itunes.mp3"};
constexpr std::size_t kLimit = 16 << 20;

class SndfileDamage : public SoundPluginTest {
protected:
    /// Decodes what there is: no byte takes more than its time and memory, whatever the head says.
    void ExpectBounded(const TBytes& bytes) {
        const auto stream = Make<CFaultyInputStream>();
        stream->bytes = bytes;
        ExpectBounded(*stream);
    }
    void ExpectBounded(IInputStream& stream) {
        const std::uint64_t began = GetProcessUse().milliseconds;
        try {
            const auto decoded = Decode(&stream);
            EXPECT_GE(decoded->GetLength(), 0);
            EXPECT_LT(Count(*decoded, kLimit), kLimit);
            decoded->Seek(decoded->GetLength() / 2);
            Count(*decoded, 65536);
        } catch (const CDataFormatException&) {
        } catch (const CIOException&) {
        }
        const TProcessUse use = GetProcessUse();
        EXPECT_LE(use.milliseconds - began, 1000 * kTimeFactor * (IsEmulated() ? kEmulatorTimeFactor : 1));
        EXPECT_LE(use.peakBytes, peakBefore_ + (std::uint64_t{64} << 20) * kMemoryFactor);
    }

    /// The bytes from here to the end, or `limit`; none is kept.
    static std::size_t Count(IInputStream& stream, std::size_t limit) {
        std::vector<std::uint8_t> block(65536);
        std::size_t total = 0;
        while (total < limit) {
            const std::uint64_t count = stream.Read(block.data(), block.size());
            if (count == 0) break;
            total += static_cast<std::size_t>(count);
        }
        return total;
    }

    /// The beginning of a file, which is enough.
    static TBytes Load(const char* name) {
        TBytes bytes = LoadSound(name);
        bytes.resize(std::min<std::size_t>(bytes.size(), 12000));
        return bytes;
    }

private:
    const std::uint64_t peakBefore_ = GetProcessUse().peakBytes;
};

TEST_F(SndfileDamage, CutAtEvery97thByte) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = Load(name);
        for (std::size_t size = 0; size < bytes.size(); size += 97)
            ExpectBounded(TBytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    }
}

TEST_F(SndfileDamage, ReadsThatFailAllOverTheHead) {
    for (const char* const name : kNames) {
        const TBytes bytes = Load(name);
        for (std::size_t at = 0; at < std::min<std::size_t>(bytes.size(), 400); at += 3) {
            SCOPED_TRACE(name + (" at " + std::to_string(at)));
            const auto failing = Make<CFaultyInputStream>();
            failing->bytes = bytes;
            failing->failAt = static_cast<std::int64_t>(at);
            ExpectBounded(*failing);
            // And a stream that ends before its length.
            const auto ending = Make<CFaultyInputStream>();
            ending->bytes = TBytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
            ending->claimedLength = static_cast<std::int64_t>(bytes.size());
            ExpectBounded(*ending);
        }
    }
}

TEST_F(SndfileDamage, FlippedHeads) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = Load(name);
        for (std::size_t at = 0; at < std::min<std::size_t>(bytes.size(), 160); ++at) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                TBytes damaged = bytes;
                damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ flip);
                SCOPED_TRACE(at);
                ExpectBounded(damaged);
            }
        }
    }
}

TEST_F(SndfileDamage, HugeNumbersInHeads) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes bytes = Load(name);
        for (std::size_t at = 4; at + 8 <= std::min<std::size_t>(bytes.size(), 120); at += 2) {
            for (const int fill : {0x7F, 0xFF}) {
                TBytes damaged = bytes;
                std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), 4,
                            static_cast<std::uint8_t>(fill));
                SCOPED_TRACE(at);
                ExpectBounded(damaged);
            }
        }
    }
}

TEST_F(SndfileDamage, RowsOfTagsAndOfSyncs) {
    TBytes tags;
    while (tags.size() < 200000) tags.insert(tags.end(), {'I', 'D', '3', 3, 0, 0, 0, 0, 0, 0});
    ExpectBounded(tags);
    TBytes frames;
    while (frames.size() < 200000) frames.insert(frames.end(), {0xFF, 0xFB, 0x10, 0xC0});
    ExpectBounded(frames);
    ExpectBounded(TBytes(200000, 0xFF));
}

} // namespace
} // namespace vorlund::test
