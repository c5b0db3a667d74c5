// The plug-in on streams that fail, deliver little, or use the decoder above them.
#include "plugins/SoundPluginTest.h"

#include "support/Failures.h"

#include <vorlund/StreamFilter.h>

#include <functional>
#include <utility>

namespace vorlund::test {
namespace {

using SndfileStreams = SoundPluginTest;

constexpr const char* kNames[] = {"24.wav", "16.flac", "24.aiff", "stereo.ogg", "stereo.opus", "vbr.mp3"};

CRefPtr<CFaultyInputStream> MakeStream(const char* name) {
    auto stream = Make<CFaultyInputStream>();
    stream->bytes = LoadSound(name);
    return stream;
}

TEST_F(SndfileStreams, ShortReadsChangeNothing) {
    for (const char* const name : kNames) {
        const auto stream = MakeStream(name);
        stream->maximumRead = 37;
        EXPECT_EQ(ReadAll(*Decode(stream.Get())), ReadAll(*DecodeFile(name))) << name;
    }
}

TEST_F(SndfileStreams, TheStreamMayBeMovedByOthers) {
    for (const char* const name : kNames) {
        const auto stream = MakeStream(name);
        const TBytes whole = ReadAll(*DecodeFile(name));
        const auto decoded = Decode(stream.Get());
        TBytes part(4000);
        for (std::size_t at = 0; at + part.size() < whole.size() && at < 40000; at += part.size()) {
            stream->Seek(static_cast<std::int64_t>(at % 777));
            ASSERT_EQ(decoded->Read(part.data(), part.size()), part.size()) << name;
            EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + at)) << name << " " << at;
        }
    }
}

TEST_F(SndfileStreams, FailuresPassThroughAndReadingGoesOnAfterThem) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        const TBytes whole = ReadAll(*DecodeFile(name));
        const auto stream = MakeStream(name);
        const auto decoded = Decode(stream.Get());
        // Back to the start, for which even a small file is read again.
        ReadAll(*decoded);
        decoded->Seek(0);
        stream->failAt = static_cast<std::int64_t>(stream->bytes.size() / 2);
        ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { ReadAll(*decoded); });
        ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { ReadAll(*decoded); });
        stream->failAt.reset();
        decoded->Seek(0);
        EXPECT_TRUE(ReadAll(*decoded) == whole);
    }
}

TEST_F(SndfileStreams, FailuresWhileConnectingLeaveNothingBehind) {
    for (const char* const name : kNames) {
        const auto stream = MakeStream(name);
        for (std::int64_t at = 0; at < 44; at += 3) {
            stream->failAt = at;
            // The search passes over decoders whose input fails.
            EXPECT_THROW(Decode(stream.Get()), CException) << name << " " << at;
        }
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

TEST_F(SndfileStreams, StreamsWithoutPositionsAreRefused) {
    const auto stream = MakeStream("16.flac");
    stream->capabilities = STREAM_CAPABILITY_READ;
    EXPECT_THROW(Decode(stream.Get()), CDataFormatException);
}

/// Calls `act` inside one of its reads.
class CActingStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x5D1C0A96, 0x0B8F3E72, 0x51B3A8F7};

    std::function<void()> act;

    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (const auto once = std::exchange(act, nullptr)) once();
        return CMemoryInputStream::Read(buffer, size);
    }
};

TEST_F(SndfileStreams, TheStreamMayUseTheDecoderInsideARead) {
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        for (int what = 0; what < 4; ++what) {
            const auto stream = Make<CActingStream>();
            stream->bytes = LoadSound(name);
            auto decoded = Decode(stream.Get());
            TBytes part(100000);
            TBytes inner(500);
            // Back to the start later, for which even a small file is read again.
            ReadAll(*decoded);
            stream->act = [&] {
                if (what == 0) decoded->Seek(100);
                if (what == 1) decoded.Query<IInputStreamFilter>()->Disconnect();
                if (what == 2) decoded.Reset();
                if (what == 3) {
                    EXPECT_EQ(decoded->Read(inner.data(), inner.size()), 0u);
                }
            };
            IInputStream* const filter = decoded.Get();
            filter->Seek(0);
            filter->Read(part.data(), part.size());
            if (what == 1) {
                EXPECT_TRUE(decoded->Eof());
            }
            decoded.Reset();
        }
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

} // namespace
} // namespace vorlund::test
