// The plug-in y4m on streams that fail, deliver little, or use the decoder above them.
#include "plugins/y4m/Y4mTest.h"

#include "support/Failures.h"

#include <limits>

namespace vorlund::test {
namespace {

using Y4mStreams = Y4mTest;

TEST_F(Y4mStreams, ShortReadsChangeNothing) {
    for (const char* const name : {"yuv420p-47x31.y4m", "some-parameters.y4m"}) {
        const auto stream = Make<CFaultyInputStream>();
        stream->bytes = Load(name);
        stream->maximumRead = 5;
        EXPECT_EQ(ReadAll(*Decode(stream.Get())), ReadAll(*DecodeFile(name))) << name;
    }
}

TEST_F(Y4mStreams, TheStreamMayBeMovedByOthers) {
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = Load("long.y4m");
    const TBytes whole = ReadAll(*DecodeFile("long.y4m"));
    const auto decoded = Decode(stream.Get());
    TBytes part(4000);
    for (std::size_t at = 0; at + part.size() < whole.size() && at < 40000; at += part.size()) {
        stream->Seek(static_cast<std::int64_t>(at % 777));
        ASSERT_EQ(decoded->Read(part.data(), part.size()), part.size());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + static_cast<std::ptrdiff_t>(at)));
    }
}

TEST_F(Y4mStreams, FailuresPassThroughAndReadingGoesOnAfterThem) {
    const TBytes whole = ReadAll(*DecodeFile("long.y4m"));
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = Load("long.y4m");
    const auto decoded = Decode(stream.Get());
    stream->failAt = static_cast<std::int64_t>(stream->bytes.size() / 2);
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { ReadAll(*decoded); });
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [&] { ReadAll(*decoded); });
    stream->failAt.reset();
    decoded->Seek(0);
    EXPECT_TRUE(ReadAll(*decoded) == whole);
    for (std::int64_t at = 0; at < 90; at += 5) {
        stream->failAt = at;
        EXPECT_THROW(Decode(stream.Get()), CException) << at;
    }
}

TEST_F(Y4mStreams, AShrunkFileEndsEarlier) {
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = Load("long.y4m");
    const auto decoded = Decode(stream.Get());
    stream->bytes.resize(stream->bytes.size() / 2);
    const TBytes part = ReadAll(*decoded);
    EXPECT_EQ(part.size() % (16 * 12 * 4), 0u);
    EXPECT_EQ(decoded->GetLength(), static_cast<std::int64_t>(part.size()));
    EXPECT_TRUE(decoded->Eof());
}

TEST_F(Y4mStreams, StreamsThatAreNoFilesAreRefused) {
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = Load("long.y4m");
    stream->capabilities = STREAM_CAPABILITY_READ;
    EXPECT_THROW(Decode(stream.Get()), CDataFormatException);
    EXPECT_EQ(Narrowed(report_.GetEntries().back().reason), "Stream has no positions");
    stream->capabilities = 7;
    stream->format.Set(TDataFormat_AudioPcm());
    EXPECT_THROW(Decode(stream.Get()), CDataFormatException);
    EXPECT_EQ(Narrowed(report_.GetEntries().back().reason), "Stream is decoded already");
    stream->format.Set(GetEmptyFormat());
    // A length beyond every file.
    stream->claimedLength = std::numeric_limits<std::int64_t>::max();
    const auto decoded = Decode(stream.Get());
    EXPECT_EQ(decoded->GetLength(), 300 * 16 * 12 * 4);
}

TEST_F(Y4mStreams, TheStreamMayUseTheDecoderInsideARead) {
    for (int what = 0; what < 5; ++what) {
        SCOPED_TRACE(what);
        const auto stream = Make<CActingStream>();
        const auto other = Make<CMemoryInputStream>();
        stream->bytes = Load("long.y4m");
        other->bytes = Load("gray-5x3.y4m");
        auto filter = Decode(stream.Get()).Query<IInputStreamFilter>();
        IInputStreamFilter* const bare = filter.Get();
        TBytes part(100000);
        TBytes inner(500);
        for (const std::int64_t position : {0, 100}) {
            if (!filter) break;
            if (!CRefPtr<IInputStream>::Adopt(filter->GetInputStream())) filter->Connect(stream.Get());
            if (filter->GetFormat().id != CId::Null()) filter->Seek(position);
            stream->calls = 3;
            stream->act = [&] {
                if (what == 0) bare->Seek(100);
                if (what == 1) bare->Disconnect();
                if (what == 2) filter.Reset();
                if (what == 3) {
                    EXPECT_EQ(bare->Read(inner.data(), inner.size()), 0u);
                }
                if (what == 4) bare->Connect(other.Get());
            };
            bare->Read(part.data(), part.size());
        }
        if (what == 1) {
            EXPECT_TRUE(filter->Eof());
        }
        if (what == 4) {
            EXPECT_EQ(filter->GetLength(), 5 * 5 * 3 * 4);
        }
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

} // namespace
} // namespace vorlund::test
