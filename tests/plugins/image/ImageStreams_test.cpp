// The plug-in image on streams that fail, deliver little, or use the decoder above them.
#include "plugins/image/ImageTest.h"

#include "support/Failures.h"

namespace vorlund::test {
namespace {

using ImageStreams = ImageTest;

constexpr const char* kNames[] = {"video-001.png", "benchRGB-interlace.png", "cjpeg-q100.jpg",
                                  "cjpeg-progressive.jpg"};

TEST_F(ImageStreams, ShortReadsChangeNothing) {
    for (const char* const name : kNames) {
        const auto stream = Make<CFaultyInputStream>();
        stream->bytes = Load(name);
        stream->maximumRead = 37;
        EXPECT_EQ(ReadAll(*Decode(stream.Get())), Load(std::string(name) + ".bgra")) << name;
    }
}

TEST_F(ImageStreams, FailuresAreNoEnds) {
    for (const char* const name : kNames) {
        const auto stream = Make<CFaultyInputStream>();
        stream->bytes = Load(name);
        // One block is read at once; behind the last one nothing fails any more.
        for (std::size_t at = 0; at < stream->bytes.size(); at += stream->bytes.size() / 7 + 1) {
            stream->failAt = static_cast<std::int64_t>(at);
            EXPECT_THROW(Decode(stream.Get()), CException) << name << " " << at;
            EXPECT_EQ(report_.GetEntries().back().outcome, DECODE_UNREADABLE) << name << " " << at;
        }
        stream->failAt.reset();
        EXPECT_EQ(ReadAll(*Decode(stream.Get())), Load(std::string(name) + ".bgra")) << name;
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

TEST_F(ImageStreams, StreamsWithoutPositionsAreRefused) {
    const auto stream = Make<CFaultyInputStream>();
    stream->bytes = Load("video-001.png");
    stream->capabilities = STREAM_CAPABILITY_READ;
    EXPECT_THROW(Decode(stream.Get()), CDataFormatException);
    EXPECT_EQ(Narrowed(report_.GetEntries().back().reason), "Stream has no positions");
}

TEST_F(ImageStreams, WhatIsDecodedIsNoFile) {
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = Load("video-001.png");
    stream->format.Set(TDataFormat_AudioPcm());
    EXPECT_THROW(Decode(stream.Get()), CDataFormatException);
    EXPECT_EQ(Narrowed(report_.GetEntries().back().reason), "Stream is decoded already");
}

TEST_F(ImageStreams, TheStreamMayUseTheDecoderInsideARead) {
    for (const char* const name : kNames) {
        for (const int calls : {0, 1}) {
            for (int what = 0; what < 4; ++what) {
                auto decoded = DecodeFile("im-1x1.png");
                auto filter = decoded.Query<IInputStreamFilter>();
                decoded.Reset();
                IInputStreamFilter* const bare = filter.Get();
                const auto stream = Make<CActingStream>();
                const auto other = Make<CMemoryInputStream>();
                stream->bytes = Load(name);
                other->bytes = Load("im-1x1.png");
                stream->calls = calls;
                std::uint8_t byte = 0;
                stream->act = [&] {
                    if (what == 0) bare->Disconnect();
                    if (what == 1) bare->Connect(other.Get());
                    if (what == 2) filter.Reset();
                    if (what == 3) {
                        EXPECT_THROW(bare->Read(&byte, 1), CIOException);
                    }
                };
                bare->Connect(stream.Get());
                if (what == 1) {
                    EXPECT_EQ(filter->GetLength(), 4);
                }
                if (what == 0) {
                    EXPECT_EQ(filter->GetInputStream(), nullptr);
                }
            }
        }
    }
    EXPECT_EQ(CLiveObject::GetCount(), 0);
}

} // namespace
} // namespace vorlund::test
