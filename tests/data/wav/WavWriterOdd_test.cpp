// Streams that refuse what writers usually do.
#include "data/wav/Metadata.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

namespace vorlund::test {
namespace {

constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavWriter");
constexpr const wchar* kSetMetadata = VRL_L("vorlund::CWavWriter::SetMetadata");
constexpr TFailure kBadId{kSetMetadata, kSource, 15, VRL_L("An id has not four characters")};
constexpr TFailure kLongMetadata{kSetMetadata, kSource, 16, VRL_L("The metadata are too long")};
constexpr TFailure kCannotGoBack{kSetMetadata, kSource, 17, VRL_L("The stream cannot go back to its header")};
constexpr TFailure kNoFlush{VRL_L("test::CRefusingStream::Flush"), VRL_L("tests"), 1, VRL_L("Cannot flush")};
constexpr TFailure kNoClose{VRL_L("test::CRefusingStream::Close"), VRL_L("tests"), 2, VRL_L("Cannot close")};

/// Has no `Flush`, and fails to close.
class CRefusingStream : public CMemoryOutputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A8F5};

    bool failsToClose = false;

    void Flush() override { Raise<COperationNotSupportedException>(kNoFlush); }
    void Close() override {
        CMemoryOutputStream::Close();
        if (failsToClose) Raise<CIOException>(kNoClose);
    }
};

class WavWriterOdd : public testing::Test {
protected:
    CLibraryScope library_;
    const TWavWriterFormat format_{WAV_SAMPLE_8BIT, 1, 8000};
};

TEST_F(WavWriterOdd, StreamsNeedNoFlush) {
    const auto stream = Make<CRefusingStream>();
    CWavWriter writer(stream.Get(), format_);
    writer.Write(Ramp(7).data(), 7);
    writer.Flush();
    writer.Write(Ramp(3, 7).data(), 3);
    writer.Close();
    EXPECT_EQ(stream->bytes, WriteWav(format_, Ramp(10)));
}

TEST_F(WavWriterOdd, TheFirstFailureIsTheOneToTell) {
    const auto stream = Make<CRefusingStream>();
    stream->failsToClose = true;
    {
        CWavWriter writer(stream.Get(), format_);
        writer.Write(Ramp(4).data(), 4);
        stream->maximumSize = 10;
        ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { writer.Close(); });
        EXPECT_EQ(stream->closed, 1);
        writer.Close();
    }
    EXPECT_EQ(stream->closed, 1);
    stream->maximumSize = ~std::size_t{0};
    CWavWriter writer(stream.Get(), format_);
    ExpectRaises<CIOException>(kNoClose, [&] { writer.Close(); });
}

TEST_F(WavWriterOdd, AStreamThatRaisesAtItsEndHasItsFileWhole) {
    TBytes written;
    CTestListener listener([&written](IObject* stream) {
        written = static_cast<CMemoryOutputStream*>(stream)->bytes;
        Raise<CIOException>(streamfailures::kCannotWrite);
    });
    {
        auto stream = Make<CMemoryOutputStream>();
        stream->AddListener(&listener);
        CWavWriter writer(stream.Get(), format_);
        stream.Reset();
        writer.Write(Ramp(4).data(), 4);
    }
    EXPECT_EQ(listener.GetCalls(), 1);
    EXPECT_EQ(written, WriteWav(format_, Ramp(4)));
}

TEST_F(WavWriterOdd, MetadataThatCannotBeReplacedChangeNothing) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), format_);
    TWavMetadata metadata;
    metadata.info = {{"TITLE", "text"}};
    ExpectRaises<CInvalidParameterException>(kBadId, [&] { writer.SetMetadata(metadata); });
    ExpectRaises<CInvalidParameterException>(
        kLongMetadata, [&] { writer.SetMetadata(Titled(std::string(kMaxWavMetadataChunk, 'x'))); });
    writer.Close();
    EXPECT_EQ(stream->bytes, WriteWav(format_, {}));
}

TEST_F(WavWriterOdd, MetadataOfAnySizeInTheRoomForThem) {
    CLibraryScope library;
    for (std::uint32_t room = 8; room < 64; ++room) {
        TWavWriterOptions options;
        options.metadataRoom = room;
        const auto stream = Make<CMemoryOutputStream>();
        CWavWriter writer(stream.Get(), format_, options);
        writer.Write(Ramp(4).data(), 4);
        writer.SetMetadata(Titled("title"));
        writer.Close();
        // In its room where it fills that, or a whole free chunk is left; behind the sound otherwise.
        const auto source = Make<CMemoryInputStream>();
        source->bytes = stream->bytes;
        EXPECT_EQ(ReadWavMetadata(source.Get()), Titled("title")) << room;
        EXPECT_EQ(Body(stream->bytes, "data"), Ramp(4)) << room;
    }
}

TEST_F(WavWriterOdd, WithoutAWayBackAFailedWriteIsFollowedByTheNext) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->capabilities = STREAM_CAPABILITY_WRITE;
    TWavWriterOptions options;
    options.length = 8;
    CWavWriter writer(stream.Get(), format_, options);
    ExpectRaises<COperationNotSupportedException>(kCannotGoBack,
                                                  [&] { writer.SetMetadata(Titled("title")); });
    writer.Write(Ramp(4).data(), 4);
    stream->maximumSize = stream->bytes.size() + 2;
    ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { writer.Write(Ramp(4, 4).data(), 4); });
    EXPECT_EQ(writer.GetSize(), 4u);
    stream->maximumSize = ~std::size_t{0};
    writer.Write(Ramp(4, 4).data(), 4);
    writer.Close();
    EXPECT_EQ(stream->bytes,
              CWavBuilder().Format({.samplesPerSec = 8000, .bits = 8}).Chunk("data", Ramp(8)).Build());
}

} // namespace
} // namespace vorlund::test
