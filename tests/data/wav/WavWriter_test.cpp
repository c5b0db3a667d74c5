// Writing WAV files: headers, streams of every kind, what cannot be written.
#include "data/file/RefusingPlace.h"
#include "data/file/TemporaryFolder.h"
#include "data/wav/WavFile.h"
#include "support/Failures.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/WavDecoder.h>

#include <chrono>

namespace vorlund::test {
namespace {

constexpr const wchar* kSource = VRL_L("src/vorlund/data/wav/WavWriter");
constexpr const wchar* kConstructor = VRL_L("vorlund::CWavWriter::CWavWriter");
constexpr const wchar* kWrite = VRL_L("vorlund::CWavWriter::Write");
constexpr TFailure kNoStream{kConstructor, kSource, 1, VRL_L("There is no stream to write to")};
constexpr TFailure kUnknownSamples{kConstructor, kSource, 2, VRL_L("The sample format is unknown")};
constexpr TFailure kBadChannels{kConstructor, kSource, 3, VRL_L("The number of channels is impossible")};
constexpr TFailure kNoRate{kConstructor, kSource, 4, VRL_L("The rate is 0")};
constexpr TFailure kBadLength{kConstructor, kSource, 5, VRL_L("The file would be too long")};
constexpr TFailure kCannotGoBack{
    kConstructor, kSource, 8, VRL_L("The stream cannot go back to its header, and the length is not known")};
constexpr TFailure kWriteFinished{kWrite, kSource, 9, VRL_L("The file is finished")};
constexpr TFailure kWriteNull{kWrite, kSource, 10, VRL_L("buffer is NULL")};
constexpr TFailure kTooMuch{kWrite, kSource, 12, VRL_L("More is written than was announced")};
constexpr TFailure kTooLittle{VRL_L("vorlund::CWavWriter::Finish"), kSource, 18,
                              VRL_L("Less is written than was announced")};
constexpr TFailure kFileRefused{VRL_L("vorlund::CFileOutputStream::Flush"),
                                VRL_L("src/vorlund/data/file/FileOutputStream_win32"), 100,
                                VRL_L("fwrite failed")};

constexpr std::size_t kGrowingHeader = 80;

class WavWriter : public CFileTest {
protected:
    CRefPtr<IFileOutputStream> OpenFile(const fs::path& path, bool append = false) const {
        const auto stream = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        stream->Open(ToVorlund(path).c_str(), append);
        return stream;
    }
};

TWavWriterOptions Announce(std::uint64_t length) {
    TWavWriterOptions options;
    options.length = length;
    return options;
}

TEST_F(WavWriter, TheShortestHeaderIsTheOldOne) {
    const TBytes sound = Ramp(400);
    EXPECT_EQ(WriteWav({WAV_SAMPLE_16BIT, 2, 44100}, sound, Small()), PlainWav({.channels = 2}, sound));
    EXPECT_EQ(WriteWav({WAV_SAMPLE_8BIT, 1, 8000}, sound, Small()),
              PlainWav({.samplesPerSec = 8000, .bits = 8}, sound));
}

TEST_F(WavWriter, RoomForLargeSizesIsKept) {
    const TBytes bytes = WriteWav({WAV_SAMPLE_16BIT, 1, 44100}, Ramp(10));
    EXPECT_EQ(Ids(bytes), "JUNK,fmt ,data");
    EXPECT_EQ(Body(bytes, "JUNK"), TBytes(28));
    EXPECT_EQ(Body(bytes, "data"), Ramp(10));
}

TEST_F(WavWriter, EveryFormatAndNumberOfChannels) {
    struct TRow {
        TWavSampleFormat format;
        std::uint32_t size;
        std::uint16_t tag;
    };
    for (const TRow& row : {TRow{WAV_SAMPLE_8BIT, 1, 1},
                            {WAV_SAMPLE_16BIT, 2, 1},
                            {WAV_SAMPLE_24BIT, 3, 1},
                            {WAV_SAMPLE_32BIT, 4, 1},
                            {WAV_SAMPLE_FLOAT, 4, 3}}) {
        for (std::uint32_t channels = 1; channels <= 9; ++channels) {
            const TWavWriterFormat format(row.format, channels, 48000);
            const TBytes sound = Ramp(std::size_t{3} * row.size * channels);
            const TBytes bytes = WriteWav(format, sound);
            const TBytes fmt = Body(bytes, "fmt ");
            const bool isExtensible =
                channels > 2 || row.format == WAV_SAMPLE_24BIT || row.format == WAV_SAMPLE_32BIT;
            EXPECT_EQ(fmt.size(), isExtensible ? 40u : row.tag == 1 ? 16u : 18u);
            EXPECT_EQ(Number(fmt, 0, 2), isExtensible ? 0xFFFE : row.tag);
            EXPECT_EQ(Number(fmt, 2, 2), channels);
            EXPECT_EQ(Number(fmt, 4, 4), 48000u);
            EXPECT_EQ(Number(fmt, 8, 4), 48000u * row.size * channels);
            EXPECT_EQ(Number(fmt, 12, 2), row.size * channels);
            EXPECT_EQ(Number(fmt, 14, 2), row.size * 8);
            if (isExtensible) {
                EXPECT_EQ(Number(fmt, 18, 2), row.size * 8);
                EXPECT_EQ(Number(fmt, 24, 2), row.tag);
                // The rest of the GUID.
                EXPECT_EQ(Number(fmt, 26, 8), 0x0080001000000000u);
                EXPECT_EQ(Number(fmt, 34, 6), 0x719B3800AA00u);
            }
            if (row.tag == 3) {
                EXPECT_EQ(Number(Body(bytes, "fact"), 0, 4), 3u);
            }
            EXPECT_EQ(Body(bytes, "data"), sound);
        }
    }
}

TEST_F(WavWriter, SpeakersAreTheUsualOnesOrThoseAskedFor) {
    const std::uint32_t masks[] = {0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F, 0};
    for (std::uint32_t channels = 1; channels <= std::size(masks); ++channels)
        EXPECT_EQ(Number(Body(WriteWav({WAV_SAMPLE_24BIT, channels, 48000}, {}), "fmt "), 20, 4),
                  masks[channels - 1]);
    TWavWriterFormat format(WAV_SAMPLE_16BIT, 2, 48000);
    format.channelMask = 0x30;
    const TBytes fmt = Body(WriteWav(format, {}), "fmt ");
    EXPECT_EQ(Number(fmt, 0, 2), 0xFFFEu);
    EXPECT_EQ(Number(fmt, 20, 4), 0x30u);
}

TEST_F(WavWriter, PlainDescriptionsAreForOldReaders) {
    TWavWriterFormat format(WAV_SAMPLE_16BIT, 6, 48000);
    format.description = WAV_DESCRIPTION_PLAIN;
    const TBytes sound = Ramp(24);
    const auto input = Make<CMemoryInputStream>();
    input->bytes = WriteWav(format, sound);
    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    decoder->Connect(input.Get());
    TBytes read(100);
    read.resize(static_cast<std::size_t>(decoder->Read(read.data(), read.size())));
    EXPECT_EQ(read, sound);
    EXPECT_EQ(static_cast<const TDataFormat_AudioPcm&>(decoder->GetFormat()).channels, 6u);
}

TEST_F(WavWriter, PlainDescriptionsSayWhatDecodersPassOn) {
    TWavWriterFormat format(WAV_SAMPLE_16BIT, 0, 0);
    format.description = WAV_DESCRIPTION_PLAIN;
    EXPECT_EQ(WriteWav(format, Ramp(6), Small()), PlainWav({.channels = 0, .samplesPerSec = 0}, Ramp(6)));
}

TEST_F(WavWriter, FormatsOfTheLibraryAreTaken) {
    const TWavWriterFormat format{TDataFormat_AudioPcm(SAMPLE_FORMAT_FLOAT, 3, 96000)};
    EXPECT_EQ(format.sampleFormat, WAV_SAMPLE_FLOAT);
    EXPECT_EQ(format.channels, 3u);
    EXPECT_EQ(format.samplesPerSec, 96000u);
    EXPECT_EQ(format.GetBlockSize(), 12u);
    EXPECT_THROW(TWavWriterFormat{TDataFormat_AudioPcm(4, 1, 1)}, CInvalidParameterException);
}

TEST_F(WavWriter, SizesZeroOneAndOdd) {
    for (const std::size_t size : {0, 1, 2, 3, 5}) {
        for (const auto format : {WAV_SAMPLE_8BIT, WAV_SAMPLE_24BIT}) {
            const TBytes bytes = WriteWav({format, 1, 8000}, Ramp(size, 1));
            EXPECT_EQ(Body(bytes, "data"), Ramp(size, 1));
            EXPECT_EQ(bytes.size() % 2, 0u);
            if (size % 2 != 0) {
                EXPECT_EQ(bytes.back(), 0);
            }
        }
    }
}

TEST_F(WavWriter, AFrameMayBeDivided) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_24BIT, 2, 44100});
    const TBytes sound = Ramp(600);
    for (std::size_t at = 0; at < sound.size(); at += 7)
        writer.Write(sound.data() + at, std::min<std::size_t>(7, sound.size() - at));
    writer.Write(nullptr, 0);
    writer.Close();
    EXPECT_EQ(Body(stream->bytes, "data"), sound);
}

TEST_F(WavWriter, AFileMayBeginInsideAStream) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->Write("before", 6);
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
    writer.Write(Ramp(8).data(), 8);
    writer.Flush();
    writer.Write(Ramp(9, 8).data(), 9);
    writer.Finish();
    EXPECT_EQ(stream->closed, 0);
    stream->Write("after", 5);
    const TBytes& bytes = stream->bytes;
    EXPECT_EQ(Text(bytes, 0, 6), "before");
    EXPECT_EQ(Text(bytes, bytes.size() - 5, 5), "after");
    EXPECT_EQ(Body({bytes.begin() + 6, bytes.end() - 5}, "data"), Ramp(17));
}

TEST_F(WavWriter, WhatIsFlushedIsAWholeFile) {
    for (const std::size_t size : {2, 3}) {
        const auto stream = Make<CMemoryOutputStream>();
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_FLOAT, 1, 8000});
        EXPECT_EQ(Ids(stream->bytes), "JUNK,fmt ,fact,data");
        TBytes sound;
        for (unsigned int i = 0; i < 5; ++i) {
            const TBytes more = Ramp(size, i * 10);
            writer.Write(more.data(), more.size());
            sound.insert(sound.end(), more.begin(), more.end());
            writer.Flush();
            EXPECT_EQ(Body(stream->bytes, "data"), sound);
            EXPECT_EQ(Number(Body(stream->bytes, "fact"), 0, 4), sound.size() / 4);
        }
        writer.Close();
        EXPECT_EQ(Body(stream->bytes, "data"), sound);
    }
}

TEST_F(WavWriter, SizesAreRefreshedWhileItWrites) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    const auto begin = std::chrono::steady_clock::now();
    const auto sizeAt = kGrowingHeader - 4;
    while (Number(stream->bytes, sizeAt, 4) == 0) {
        writer.Write("x", 1);
        ASSERT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    }
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_EQ(Number(stream->bytes, sizeAt, 4), writer.GetSize());
    ReadChunks(stream->bytes);
}

TEST_F(WavWriter, StreamsThatCannotSeekGetTheirHeaderAtOnce) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->capabilities = STREAM_CAPABILITY_WRITE;
    TCallLog log;
    stream->log = &log;
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000}, Announce(5));
    writer.Write(Ramp(4).data(), 4);
    writer.Flush();
    ExpectRaises<CIOException>(kTooMuch, [&] { writer.Write("xy", 2); });
    writer.Write(Ramp(1, 4).data(), 1);
    writer.Close();
    EXPECT_EQ(Ids(stream->bytes), "fmt ,data");
    EXPECT_EQ(Body(stream->bytes, "data"), Ramp(5));
    for (const std::string& call : log) EXPECT_NE(call.substr(0, 4), "Seek");
}

TEST_F(WavWriter, StreamsThatCannotSeekNeedALength) {
    const auto stream = Make<CMemoryOutputStream>();
    for (const std::uint32_t capabilities : {8, 9, 10}) {
        stream->capabilities = capabilities;
        ExpectRaises<COperationNotSupportedException>(kCannotGoBack, [&] {
            CWavWriter(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
        });
        EXPECT_EQ(stream->bytes, TBytes());
    }
}

TEST_F(WavWriter, LessThanAnnouncedIsTold) {
    const auto stream = Make<CMemoryOutputStream>();
    stream->capabilities = STREAM_CAPABILITY_WRITE;
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000}, Announce(6));
    writer.Write("xyxy", 4);
    ExpectRaises<CIOException>(kTooLittle, [&] { writer.Close(); });
    EXPECT_EQ(stream->closed, 1);
    writer.Close();
    // A stream that can go back gets the right size.
    const TBytes sound = Ramp(4);
    EXPECT_EQ(Body(WriteWav({WAV_SAMPLE_16BIT, 1, 8000}, sound, Announce(6)), "data"), sound);
    EXPECT_EQ(Body(WriteWav({WAV_SAMPLE_16BIT, 1, 8000}, sound, Announce(2)), "data"), sound);
}

TEST_F(WavWriter, FilesOpenedToAppendNeedALength) {
    const fs::path path = Put("file.wav", "there");
    {
        const auto stream = OpenFile(path, true);
        ExpectRaises<COperationNotSupportedException>(kCannotGoBack, [&] {
            CWavWriter(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
        });
    }
    EXPECT_EQ(ReadFile(path), "there");
    const fs::path empty = Put("empty.wav");
    CWavWriter writer(OpenFile(empty, true).Get(), {WAV_SAMPLE_16BIT, 1, 8000}, Announce(4));
    writer.Write("xyxy", 4);
    writer.Close();
    const std::string text = ReadFile(empty);
    EXPECT_EQ(Text(Body({text.begin(), text.end()}, "data"), 0, 4), "xyxy");
}

TEST_F(WavWriter, AppendingStreamsOfResourcesNeedALength) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    const auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
    stream->SetResource(resource.Get());
    ExpectRaises<COperationNotSupportedException>(kCannotGoBack, [&] {
        CWavWriter(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
    });
    EXPECT_EQ(resource->GetSize(), 0u);
}

/// Claims positions and writes to the end.
class CAppendingStream : public CMemoryOutputStream {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A8F1};

    void Write(const void* buffer, std::uint64_t size) override {
        position = static_cast<std::int64_t>(bytes.size());
        CMemoryOutputStream::Write(buffer, size);
    }
};

TEST_F(WavWriter, StreamsOfOthersThatAppendAreFoundOut) {
    const auto stream = Make<CAppendingStream>();
    ExpectRaises<COperationNotSupportedException>(kCannotGoBack, [&] {
        CWavWriter(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
    });
}

TEST_F(WavWriter, ResourcesAreWritten) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    {
        CWavWriter writer(resource.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
        writer.Write(Ramp(6).data(), 6);
        writer.Flush();
        writer.Close();
    }
    ASSERT_EQ(resource->GetSize(), kGrowingHeader + 6);
}

TEST_F(WavWriter, NamesOfFilesAreTaken) {
    const fs::path path = At("by name.wav");
    CWavWriter writer(ToVorlund(path).c_str(), {WAV_SAMPLE_16BIT, 1, 8000});
    writer.Write(Ramp(6).data(), 6);
    writer.Close();
    const std::string text = ReadFile(path);
    EXPECT_EQ(Body({text.begin(), text.end()}, "data"), Ramp(6));
    EXPECT_THROW(CWavWriter(ToVorlund(At("no/such/folder.wav")).c_str(), {}), CFileAccessException);
}

TEST_F(WavWriter, ImpossibleFormatsAreRefused) {
    const auto stream = Make<CMemoryOutputStream>();
    const auto refuse = [&stream](const TFailure& failure, const TWavWriterFormat& format,
                                  const TWavWriterOptions& options = {}) {
        ExpectRaises<CInvalidParameterException>(failure, [&] { CWavWriter(stream.Get(), format, options); });
        EXPECT_EQ(stream->bytes, TBytes());
    };
    refuse(kUnknownSamples, {static_cast<TWavSampleFormat>(5), 1, 8000});
    refuse(kBadChannels, {WAV_SAMPLE_8BIT, 0, 8000});
    refuse(kBadChannels, {WAV_SAMPLE_8BIT, 65536, 8000});
    refuse(kBadChannels, {WAV_SAMPLE_FLOAT, 16384, 8000});
    refuse(kNoRate, {WAV_SAMPLE_8BIT, 1, 0});
    refuse(kBadLength, {WAV_SAMPLE_8BIT, 1, 8000}, Announce(~std::uint64_t{0}));
    ExpectRaises<CNullPtrException>(kNoStream, [] { CWavWriter(static_cast<IOutputStream*>(nullptr), {}); });
    EXPECT_EQ(Number(Body(WriteWav({WAV_SAMPLE_FLOAT, 16383, 0xFFFFFFFF}, {}), "fmt "), 8, 4), 0xFFFFFFFFu);
}

TEST_F(WavWriter, NothingIsWrittenToAFinishedFile) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    ExpectRaises<CNullPtrException>(kWriteNull, [&] { writer.Write(nullptr, 1); });
    writer.Finish();
    const TBytes bytes = stream->bytes;
    ExpectRaises<CInvalidStateException>(kWriteFinished, [&] { writer.Write("x", 1); });
    EXPECT_THROW(writer.Flush(), CInvalidStateException);
    EXPECT_THROW(writer.SetMetadata({}), CInvalidStateException);
    writer.Finish();
    writer.Close();
    EXPECT_EQ(stream->bytes, bytes);
    EXPECT_EQ(stream->closed, 1);
}

TEST_F(WavWriter, TheDestructorFinishesAndRaisesNothing) {
    const auto stream = Make<CMemoryOutputStream>();
    { CWavWriter(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}).Write("abc", 3); }
    EXPECT_EQ(Text(Body(stream->bytes, "data"), 0, 3), "abc");
    {
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
        writer.Write("abc", 3);
        stream->maximumSize = 0;
    }
}

TEST_F(WavWriter, AFailedWriteLeavesWhatWasBefore) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_16BIT, 1, 8000});
    writer.Write(Ramp(20).data(), 20);
    stream->maximumSize = stream->bytes.size();
    EXPECT_THROW(writer.Write(Ramp(20).data(), 20), CIOException);
    EXPECT_EQ(writer.GetSize(), 20u);
    writer.Close();
    EXPECT_EQ(Body(stream->bytes, "data"), Ramp(20));
}

TEST_F(WavWriter, WhatCannotBeWrittenReachesTheCaller) {
    const auto stream = Make<CMemoryOutputStream>();
    CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000});
    writer.Write("abc", 3);
    stream->maximumSize = stream->bytes.size();
    // The byte of padding.
    ExpectRaises<CIOException>(streamfailures::kCannotWrite, [&] { writer.Close(); });
    EXPECT_EQ(stream->closed, 1);
}

TEST_F(WavWriter, AFullDeviceReachesTheCaller) {
    CRefusingPlace place;
    const auto stream = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
    stream->Open(place.GetPath().c_str(), false);
    place.Refuse();
    const auto act = [&] {
        CWavWriter writer(stream.Get(), {WAV_SAMPLE_8BIT, 1, 8000}, Announce(3));
        writer.Write("abc", 3);
        writer.Close();
    };
    ExpectRaises<CIOException>(kFileRefused, act);
}

} // namespace
} // namespace vorlund::test
