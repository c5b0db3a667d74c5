// WAV files on the disk, by the way that applications go: selector or file name in, PCM out.
#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/Emulated.h"
#include "support/Failures.h"
#include "support/Probes.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorlund::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

class WavFiles : public CFileTest {
protected:
    wstring PutWav(const TBytes& bytes) const {
        return ToVorlund(Put("test.wav", {reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    }
    static CRefPtr<IInputStream> Decode(const wstring& path) {
        return CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId));
    }
    static TBytes ReadSome(IInputStream& stream, std::uint64_t most) {
        TBytes bytes(most);
        bytes.resize(stream.Read(bytes.data(), most));
        return bytes;
    }
    /// The reason with which decoding the file is refused.
    static std::string Refusal(const wstring& path) {
        try {
            Decode(path);
        } catch (const CDataFormatException& exception) {
            return Narrow(exception.GetReason());
        }
        return "accepted";
    }
    static std::string CannotDecode(const wstring& path) {
        return Narrow(PathMessage(VRL_L("Cannot decode file '%s'"), path));
    }
};

TEST_F(WavFiles, DecodesThroughASelector) {
    const TBytes pcm = Ramp(100000);
    const wstring path = PutWav(CWavBuilder()
                                    .Format({.channels = 2, .samplesPerSec = 22050})
                                    .Chunk("LIST", Ramp(26))
                                    .Chunk("data", pcm)
                                    .Build());
    const CInputStreamSelector selector(path.c_str());
    const auto stream = CRefPtr<IInputStream>::Adopt(selector.DecodeStream(TDataFormat_AudioPcm::FormatId));
    EXPECT_EQ(stream->GetClassId(), classid::CWavDecoder);
    EXPECT_EQ(stream->GetCapabilities(), 7u);
    EXPECT_EQ(stream->GetLength(), 100000);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(stream->GetFormat());
    ASSERT_EQ(format.id, TDataFormat_AudioPcm::FormatId);
    EXPECT_EQ(format.channels, 2u);
    EXPECT_EQ(format.samplesPerSec, 22050u);
    EXPECT_EQ(format.sampleFormat, SAMPLE_FORMAT_16BIT);

    TBytes read;
    while (!stream->Eof()) {
        const TBytes block = ReadSome(*stream, 4096);
        read.insert(read.end(), block.begin(), block.end());
    }
    EXPECT_EQ(read, pcm);
    EXPECT_EQ(ReadSome(*stream, 1), TBytes{});
    stream->Seek(4);
    EXPECT_EQ(stream->Tell(), 4);
    EXPECT_EQ(ReadSome(*stream, 100), Ramp(100, 4));
    EXPECT_EQ(ReferencesOf(selector.GetInputStreamTmp()), 2) << "the selector's and the decoder's";
}

TEST_F(WavFiles, DecodesByName) {
    for (const CId& wanted : {TDataFormat_AudioPcm::FormatId, CId::Null()}) {
        const wstring path = PutWav(PlainWav({.bits = 8}, Ramp(1000)));
        const auto stream =
            CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(path.c_str(), wanted));
        EXPECT_EQ(stream->GetClassId(), classid::CWavDecoder);
        EXPECT_EQ(ReadSome(*stream, 2000), Ramp(1000));
    }
}

TEST_F(WavFiles, NamesTheFileThatItCannotDecode) {
    for (const TBytes& bytes : {TBytes{}, Ramp(100), PlainWav({.tag = 3}, Ramp(8)), CWavBuilder().Build(),
                                CWavBuilder().Format({}).Build()}) {
        const wstring path = PutWav(bytes);
        EXPECT_EQ(Refusal(path), CannotDecode(path));
        // Nothing holds the file any more.
        EXPECT_TRUE(fs::remove(At("test.wav")));
    }
}

TEST_F(WavFiles, AFileThatShrinksEndsEarly) {
    const wstring path = PutWav(PlainWav({}, Ramp(200000)));
    const auto stream = Decode(path);
    EXPECT_EQ(ReadSome(*stream, 10), Ramp(10));
    fs::resize_file(At("test.wav"), 44);
    stream->Seek(150000);
    EXPECT_EQ(ReadSome(*stream, 10), TBytes{});
    EXPECT_EQ(stream->GetLength(), 200000);
}

// Data beyond 2 GiB. The files are sparse: two unused chunks bring the data to its place.

struct TFarRow {
    const char* name;
    /// Where the first data byte is.
    std::uint64_t offset;
    /// What the chunk decoder answers.
    std::int64_t told;
    bool isDecoded;
};
class WavFilesFarData : public WavFiles, public testing::WithParamInterface<TFarRow> {
protected:
    static constexpr std::uint64_t kDataSize = 64;

    /// Bytes 0 to 255 again and again where the file is not empty: in its first KiB behind the heads, and in
    /// the data.
    wstring PutFarWav(std::uint64_t offset) const {
        // Behind the format: one head, as many bytes as it takes, another head.
        const std::uint64_t heads = 12 + 24 + 8;
        const std::uint64_t gap = offset - 8 - heads;
        const auto first = static_cast<std::uint32_t>(std::min<std::uint64_t>(gap, 0xFFFFFFFF));
        CWavBuilder front;
        front.Format({.channels = 2}).Declare("junk", first, Ramp(1024, 1));
        CWavBuilder back;
        if (first < gap) {
            // A head more is needed, for what one size cannot say.
            front = CWavBuilder();
            front.Format({.channels = 2}).Declare("junk", 0x80000000, Ramp(1024, 1));
        }
        const wstring path = ToVorlund(At("far.wav"));
        const auto file = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        file->Open(path.c_str(), false);
        WriteAt(*file, 0, front.Build());
        if (first < gap) {
            const std::uint64_t second = heads + 0x80000000;
            TBytes head;
            AppendText(head, "junk");
            Append32(head, static_cast<std::uint32_t>(offset - 8 - second - 8));
            WriteAt(*file, second, head);
        }
        TBytes data;
        AppendText(data, "data");
        Append32(data, kDataSize);
        const TBytes pcm = Ramp(kDataSize, 77);
        data.insert(data.end(), pcm.begin(), pcm.end());
        WriteAt(*file, offset - 8, data);
        file->Close();
        return path;
    }
    static void WriteAt(IOutputStream& file, std::uint64_t position, const TBytes& bytes) {
        file.Seek(static_cast<std::int64_t>(position));
        file.Write(bytes.data(), bytes.size());
    }
};

TEST_P(WavFilesFarData, GoesByTheLow32BitsOfItsOffset) {
    const wstring path = PutFarWav(GetParam().offset);
    const auto file = CreateAs<IFileInputStream>(classid::CFileInputStream);
    file->Open(path.c_str());
    ASSERT_EQ(file->GetLength(), static_cast<std::int64_t>(GetParam().offset + kDataSize));

    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    chunks->Connect(file.Get());
    const auto seekFails = [&](auto&& act) {
        try {
            act();
        } catch (const CIOException& exception) {
            EXPECT_EQ(Narrow(exception.GetReason()), "_fseeki64 failed");
            return true;
        }
        return false;
    };
    EXPECT_EQ(seekFails([&] { chunks->SelectChunk(VRL_L("data")); }), !GetParam().isDecoded);
    EXPECT_EQ(chunks->GetChunkOffset(), GetParam().told);
    EXPECT_EQ(chunks->GetChunkSize(), kDataSize);
    chunks->Disconnect();

    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    EXPECT_EQ(seekFails([&] { decoder->Connect(file.Get()); }), !GetParam().isDecoded);
    EXPECT_EQ(ReferencesOf(file.Get()), GetParam().isDecoded ? 2 : 1);
    decoder->Disconnect();

    if (!GetParam().isDecoded) {
        EXPECT_EQ(Refusal(path), CannotDecode(path));
        return;
    }
    // What is at the offset that was told.
    file->Seek(GetParam().told);
    const TBytes expected = ReadSome(*file, kDataSize);
    EXPECT_EQ(expected.size(), kDataSize);
    const auto decoded = Decode(path);
    EXPECT_EQ(ReadSome(*decoded, 1000), expected);
    EXPECT_TRUE(decoded->Eof());
    decoded->Seek(32);
    EXPECT_EQ(ReadSome(*decoded, 1000), TBytes(expected.begin() + 32, expected.end()));
    EXPECT_EQ(expected == Ramp(kDataSize, 77),
              GetParam().told == static_cast<std::int64_t>(GetParam().offset));
}

INSTANTIATE_TEST_SUITE_P(Rows, WavFilesFarData,
                         testing::Values(TFarRow{"Near", 0x10000, 0x10000, true},
                                         TFarRow{"Across2GiB", 0x7FFFFFE0, 0x7FFFFFE0, true},
                                         TFarRow{"LastBelow2GiB", 0x7FFFFFFF, 0x7FFFFFFF, true},
                                         TFarRow{"At2GiB", 0x80000000, -0x80000000ll, false},
                                         TFarRow{"At3GiB", 0xC0000000, -0x40000000ll, false},
                                         TFarRow{"LastBelow4GiB", 0xFFFFFFFF, -1, false},
                                         TFarRow{"Behind4GiB", 0x100000100, 0x100, true},
                                         TFarRow{"Behind4GiBInTheHeads", 0x100000000, 0, true}),
                         [](const auto& row) { return row.param.name; });

// Time.

/// The size of the hostile file; the sanitizers' machinery makes it too slow for them.
constexpr std::size_t kHostileSize = kIsSanitized ? 4u << 20 : 64u << 20;

TEST_F(WavFiles, AFileOfEmptyChunksIsIndexedInTime) {
    CWavBuilder builder;
    TBytes heads;
    for (int i = 0; i < 1024; ++i) {
        AppendText(heads, "junk");
        Append32(heads, 0);
    }
    while (heads.size() < kHostileSize) heads.insert(heads.end(), heads.begin(), heads.end());
    heads.resize(kHostileSize);
    builder.Raw(heads).Format({}).Chunk("data", Ramp(4, 9));
    const wstring path = PutWav(builder.Build());

    using TClock = std::chrono::steady_clock;
    const auto start = TClock::now();
    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    const auto file = CreateAs<IFileInputStream>(classid::CFileInputStream);
    file->Open(path.c_str());
    chunks->Connect(file.Get());
    const auto connected = TClock::now();
    chunks->SelectChunk(VRL_L("data"));
    const auto selected = TClock::now();
    EXPECT_EQ(chunks->GetChunkOffset(), static_cast<std::int64_t>(12 + kHostileSize + 24 + 8));
    chunks->Disconnect();
    EXPECT_EQ(ReadSome(*Decode(path), 10), Ramp(4, 9));
    const auto decoded = TClock::now();

    const auto seconds = [](TClock::duration time) { return std::chrono::duration<double>(time).count(); };
    std::printf("connected in %.3f s, selected in %.3f s, decoded and destroyed in %.3f s\n",
                seconds(connected - start), seconds(selected - connected), seconds(decoded - selected));
    if (!kIsSanitized) {
        const double limit = IsEmulated() ? 10 * kEmulatorTimeFactor : 10;
        EXPECT_LT(seconds(connected - start), limit);
        EXPECT_LT(seconds(decoded - selected), limit);
    }
}

} // namespace
} // namespace vorlund::test
