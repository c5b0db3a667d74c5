// Reading files.
#include "data/file/PathFailures.h"
#include "data/file/TemporaryFolder.h"
#include "support/DebugRecorder.h"
#include "support/Probes.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>

#include <limits>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const wchar* kSource = filefailures::kInputFile;
constexpr const wchar* kRead = VRL_L("vorlund::CFileInputStream::Read");
constexpr const wchar* kSeek = VRL_L("vorlund::CFileInputStream::Seek");
constexpr const wchar* kNotOpen = VRL_L("File is not open");

constexpr TFailure kLengthNotOpen{VRL_L("vorlund::CFileInputStream::GetLength"), kSource, 96, kNotOpen};
constexpr TFailure kSeekNotOpen{kSeek, kSource, 103, kNotOpen};
constexpr TFailure kSeekFailed{kSeek, kSource, 106, VRL_L("_fseeki64 failed")};
constexpr TFailure kTellNotOpen{VRL_L("vorlund::CFileInputStream::Tell"), kSource, 112, kNotOpen};
constexpr TFailure kReadNullBuffer{kRead, kSource, 126, VRL_L("buffer is NULL")};
constexpr TFailure kReadNotOpen{kRead, kSource, 129, kNotOpen};
constexpr TFailure kReadNullSample{kRead, kSource, 137, VRL_L("sample is NULL")};
constexpr TFailure kReadNoSamples{kRead, kSource, 139, VRL_L("Media samples are not supported")};
constexpr TFailure kSkipNotOpen{VRL_L("vorlund::CFileInputStream::Skip"), kSource, 145, kNotOpen};
constexpr TFailure kFlushNotSupported{VRL_L("vorlund::CFileInputStream::Flush"), kSource, 152,
                                      VRL_L("Flush is not supported")};

class FileInputStream : public CFileTest {
protected:
    ~FileInputStream() noexcept override = default;

    void Open(const fs::path& path) { stream_->Open(ToVorlund(path).c_str()); }

    /// What one `Read` of `size` bytes delivers.
    std::string Read(std::uint64_t size) {
        std::string bytes(static_cast<std::size_t>(size), '\0');
        bytes.resize(static_cast<std::size_t>(stream_->Read(bytes.data(), size)));
        return bytes;
    }

    void ExpectClosed() {
        EXPECT_EQ(stream_->GetCapabilities(), 0u);
        EXPECT_TRUE(stream_->Eof());
        ExpectRaises<COperationNotSupportedException>(kTellNotOpen, [&] { stream_->Tell(); });
    }

    CRefPtr<IFileInputStream> stream_ = CreateAs<IFileInputStream>(classid::CFileInputStream);
};

/// Bytes that show where they are.
std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

TEST_F(FileInputStream, Identity) {
    EXPECT_EQ(stream_->GetClassId(), CId(0x998C022A, 0xA4F74171, 0xB92B4A73, 0x71BD8306));
    EXPECT_TRUE(stream_.Query<IFileInputStream>());
    EXPECT_TRUE(stream_.Query<IInputStream>());
    EXPECT_TRUE(stream_.Query<IStream>());
    EXPECT_TRUE(stream_.Query<IObject>());
    EXPECT_FALSE(stream_.Query<IOutputStream>());
    EXPECT_FALSE(stream_.Query<IFileOutputStream>());
}

TEST_F(FileInputStream, ClosedAnswers) {
    EXPECT_EQ(stream_->GetCapabilities(), 0u);
    EXPECT_TRUE(stream_->Eof());
    EXPECT_FALSE(stream_->SupportsMediaSamples(0));
    EXPECT_EQ(&stream_->GetFormat(), &GetEmptyFormat());
    stream_->Close();
    stream_->Close();
}

TEST_F(FileInputStream, ClosedGetLengthRaises) {
    ExpectRaises<COperationNotSupportedException>(kLengthNotOpen, [&] { stream_->GetLength(); });
}
TEST_F(FileInputStream, ClosedSeekRaises) {
    for (const std::int64_t position : {0, 5, -1})
        ExpectRaises<COperationNotSupportedException>(kSeekNotOpen, [&] { stream_->Seek(position); });
}
TEST_F(FileInputStream, ClosedTellRaises) {
    ExpectRaises<COperationNotSupportedException>(kTellNotOpen, [&] { stream_->Tell(); });
}
TEST_F(FileInputStream, ClosedReadRaises) {
    char buffer[4];
    for (const std::uint64_t size : {4, 0})
        ExpectRaises<CIOException>(kReadNotOpen, [&] { stream_->Read(buffer, size); });
}
TEST_F(FileInputStream, ClosedSkipRaises) {
    for (const std::uint64_t count : {0, 4})
        ExpectRaises<CIOException>(kSkipNotOpen, [&] { stream_->Skip(count); });
}
TEST_F(FileInputStream, NullBufferComesBeforeNotOpen) {
    for (const std::uint64_t size : {0, 4})
        ExpectRaises<CNullPtrException>(kReadNullBuffer, [&] { stream_->Read(nullptr, size); });
}
TEST_F(FileInputStream, NullBufferRaisesWhenOpen) {
    Open(Put("a", "abc"));
    for (const std::uint64_t size : {0, 4})
        ExpectRaises<CNullPtrException>(kReadNullBuffer, [&] { stream_->Read(nullptr, size); });
}
TEST_F(FileInputStream, MediaSamplesAreRefusedOpenOrNot) {
    const auto sample = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
    for (int i = 0; i < 2; ++i) {
        ExpectRaises<CNullPtrException>(kReadNullSample,
                                        [&] { stream_->Read(static_cast<IMediaSample*>(nullptr)); });
        ExpectRaises<CInvalidParameterException>(kReadNoSamples, [&] { stream_->Read(sample.Get()); });
        Open(Put("a", "abc"));
    }
}
TEST_F(FileInputStream, FlushRaisesOpenOrNot) {
    ExpectRaises<COperationNotSupportedException>(kFlushNotSupported, [&] { stream_->Flush(); });
    Open(Put("a", "abc"));
    ExpectRaises<COperationNotSupportedException>(kFlushNotSupported, [&] { stream_->Flush(); });
}

TEST_F(FileInputStream, OpenAnswers) {
    Open(Put("a", "abcdef"));
    EXPECT_EQ(stream_->GetCapabilities(), 7u);
    EXPECT_EQ(stream_->GetLength(), 6);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_FALSE(stream_->SupportsMediaSamples(1));
    EXPECT_EQ(&stream_->GetFormat(), &GetEmptyFormat());
}

TEST_F(FileInputStream, EmptyFileIsAtItsEnd) {
    Open(Put("empty"));
    EXPECT_EQ(stream_->GetCapabilities(), 7u);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_TRUE(stream_->Eof());
    EXPECT_EQ(Read(10), "");
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(FileInputStream, ReadsToTheEnd) {
    Open(Put("a", "abcdef"));
    EXPECT_EQ(Read(4), "abcd");
    EXPECT_EQ(stream_->Tell(), 4);
    EXPECT_EQ(Read(0), "");
    EXPECT_EQ(Read(100), "ef");
    EXPECT_EQ(stream_->Tell(), 6);
    EXPECT_TRUE(stream_->Eof());
    EXPECT_EQ(Read(1), "");
    EXPECT_EQ(stream_->Tell(), 6);
}

TEST_F(FileInputStream, BytesAreNotTranslated) {
    const std::string bytes("a\r\nb\n\x1A\0c\xFF", 10);
    Open(Put("a", bytes));
    EXPECT_EQ(Read(100), bytes);
}

TEST_F(FileInputStream, OnlyTheLow32BitsOfTheSizeCount) {
    constexpr std::uint64_t kLow32Zero = std::uint64_t{1} << 32;
    Open(Put("a", "abcdef"));
    char buffer[8] = "-------";
    EXPECT_EQ(stream_->Read(buffer, kLow32Zero), 0u);
    EXPECT_EQ(stream_->Read(buffer, 7 * kLow32Zero), 0u);
    EXPECT_STREQ(buffer, "-------");
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_EQ(stream_->Read(buffer, kLow32Zero + 3), 3u);
    EXPECT_STREQ(buffer, "abc----");
    EXPECT_EQ(stream_->Tell(), 3);
}

TEST_F(FileInputStream, SeekIsAbsolute) {
    Open(Put("a", "abcdef"));
    stream_->Seek(4);
    EXPECT_EQ(stream_->Tell(), 4);
    EXPECT_EQ(Read(1), "e");
    stream_->Seek(1);
    EXPECT_EQ(Read(2), "bc");
    stream_->Seek(6);
    EXPECT_TRUE(stream_->Eof());
    stream_->Seek(0);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(Read(10), "abcdef");
}

TEST_F(FileInputStream, PositionsBeyondTheEndReadNothing) {
    Open(Put("a", "abcdef"));
    for (const std::int64_t position : {std::int64_t{7}, std::int64_t{1} << 33, std::int64_t{1} << 62,
                                        std::numeric_limits<std::int64_t>::max()}) {
        stream_->Seek(position);
        EXPECT_EQ(stream_->Tell(), position);
        EXPECT_TRUE(stream_->Eof());
        EXPECT_EQ(Read(10), "");
        EXPECT_EQ(Read(100000), "");
        EXPECT_EQ(stream_->Tell(), position);
    }
    stream_->Seek(5);
    EXPECT_EQ(Read(10), "f");
}

TEST_F(FileInputStream, FirstReadBeyondTheEndLeavesNoBuffer) {
    // The buffer is allocated by a read that finds nothing for it.
    Open(Put("a", "abcdef"));
    stream_->Seek(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Read(1), "");
    stream_->Seek(1);
    EXPECT_EQ(Read(3), "bcd");
    EXPECT_EQ(stream_->Tell(), 4);
}

TEST_F(FileInputStream, NegativeSeekFailsAndLeavesThePosition) {
    Open(Put("a", "abcdef"));
    for (const std::int64_t position : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        stream_->Seek(2);
        ExpectRaises<CIOException>(kSeekFailed, [&] { stream_->Seek(position); });
        EXPECT_EQ(stream_->Tell(), 2);
        EXPECT_EQ(Read(1), "c");
    }
}

TEST_F(FileInputStream, SkipMovesFromThePosition) {
    Open(Put("a", "abcdef"));
    stream_->Skip(0);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->Skip(2);
    EXPECT_EQ(Read(1), "c");
    stream_->Skip(1);
    EXPECT_EQ(Read(1), "e");
    stream_->Skip(100);
    EXPECT_EQ(stream_->Tell(), 105);
    EXPECT_TRUE(stream_->Eof());
}

TEST_F(FileInputStream, SkipWrapsIn64Bits) {
    Open(Put("a", "abcdef"));
    stream_->Seek(5);
    stream_->Skip(std::uint64_t{0} - 3);
    EXPECT_EQ(stream_->Tell(), 2);
    // A step back beyond the start, and one that turns negative at the upper end.
    ExpectRaises<CIOException>(kSeekFailed, [&] { stream_->Skip(std::uint64_t{0} - 3); });
    EXPECT_EQ(stream_->Tell(), 2);
    ExpectRaises<CIOException>(kSeekFailed, [&] { stream_->Skip(std::uint64_t{1} << 63); });
    EXPECT_EQ(stream_->Tell(), 2);
    stream_->Skip(std::uint64_t{1} << 40);
    EXPECT_EQ(stream_->Tell(), (std::int64_t{1} << 40) + 2);
}

TEST_F(FileInputStream, LengthIsKeptWhenTheFileGrows) {
    const fs::path path = Put("a", "abc");
    Open(path);
    EXPECT_EQ(Read(2), "ab");
    WriteFile(path, "abcdefgh");
    EXPECT_EQ(stream_->GetLength(), 3);
    EXPECT_EQ(Read(1), "c");
    EXPECT_TRUE(stream_->Eof());
    // What came later can be read all the same.
    EXPECT_EQ(Read(100), "defgh");
    EXPECT_EQ(stream_->GetLength(), 3);
    EXPECT_TRUE(stream_->Eof());
}

TEST_F(FileInputStream, LengthIsKeptWhenTheFileShrinks) {
    const fs::path path = Put("a", Pattern(200000));
    Open(path);
    stream_->Seek(100000);
    fs::resize_file(path, 100010);
    EXPECT_EQ(Read(50000).size(), 10u);
    EXPECT_EQ(stream_->Tell(), 100010);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(Read(1), "");
    EXPECT_EQ(stream_->Tell(), 100010);
    EXPECT_EQ(stream_->GetLength(), 200000);
}

TEST_F(FileInputStream, SeekToWhereTheFileStandsKeepsTheBuffer) {
    const fs::path path = Put("a", std::string(2000, 'a'));
    Open(path);
    EXPECT_EQ(Read(4), "aaaa");
    {
        std::fstream other(path, std::ios::binary | std::ios::in | std::ios::out);
        other << std::string(2000, 'b');
        ASSERT_TRUE(other.flush());
    }
    // New bytes would show that the file was read again.
    for (int i = 0; i < 10; ++i) {
        stream_->Seek(stream_->Tell());
        stream_->Skip(0);
        EXPECT_EQ(Read(4), "aaaa");
        stream_->Skip(4);
        EXPECT_FALSE(stream_->Eof());
    }
    // Nor do small steps ask again, back and forth.
    stream_->Seek(8);
    EXPECT_EQ(Read(4), "aaaa");
    stream_->Close();
    Open(path);
    EXPECT_EQ(Read(4), "bbbb");
}

TEST_F(FileInputStream, SeekThatLeavesTheBufferDropsIt) {
    const fs::path path = Put("a", std::string(200000, 'a'));
    // In the buffer, behind it, and beyond the end; back to where the buffer was.
    for (const std::int64_t away : {150000, 199999, 500000}) {
        const auto other = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
        Open(Put("a", std::string(200000, 'a')));
        EXPECT_EQ(Read(8), "aaaaaaaa");
        other->Open(ToVorlund(path).c_str(), false);
        const std::string bytes(200000, 'b');
        other->Write(bytes.data(), bytes.size());
        other->Flush();
        stream_->Seek(away);
        stream_->Seek(0);
        EXPECT_EQ(Read(8), "bbbbbbbb") << away;
        stream_->Close();
    }
}

TEST_F(FileInputStream, EveryMixOfStepsEqualsTheFile) {
    const std::string bytes = Pattern(400000);
    Open(Put("a", bytes));
    // Around the sizes at which reading changes its ways.
    constexpr std::uint32_t kSizes[] = {0,    1,    4,     7,     100,   1024,  4095,  4096,
                                        4097, 8192, 12288, 65535, 65536, 65537, 70000, 200000};
    std::mt19937 random(20);
    std::size_t position = 0;
    std::string buffer(400001, '\0');
    for (int step = 0; step < 20000; ++step) {
        const std::uint32_t size = kSizes[random() % std::size(kSizes)];
        switch (random() % 6) {
        case 0:
            position = random() % (bytes.size() + 1000);
            stream_->Seek(static_cast<std::int64_t>(position));
            break;
        case 1:
            position += size;
            stream_->Skip(size);
            break;
        case 2: {
            const std::size_t back = std::min<std::size_t>(position, random() % 5000);
            position -= back;
            stream_->Skip(std::uint64_t{0} - back);
            break;
        }
        default: {
            const std::size_t expected =
                position < bytes.size() ? std::min<std::size_t>(size, bytes.size() - position) : 0;
            ASSERT_EQ(stream_->Read(buffer.data(), size), expected) << step;
            ASSERT_EQ(buffer.compare(0, expected, bytes, std::min(position, bytes.size()), expected), 0)
                << step;
            position += expected;
        }
        }
        ASSERT_EQ(stream_->Tell(), static_cast<std::int64_t>(position)) << step;
        ASSERT_EQ(stream_->Eof(), position >= bytes.size()) << step;
        if (position > bytes.size() + 300000) stream_->Seek(static_cast<std::int64_t>(position = 0));
    }
}

TEST_F(FileInputStream, CloseForgetsTheFile) {
    const fs::path path = Put("a", "abc");
    Open(path);
    EXPECT_EQ(Read(1), "a");
    stream_->Close();
    ExpectClosed();
    ExpectRaises<COperationNotSupportedException>(kLengthNotOpen, [&] { stream_->GetLength(); });
    stream_->Close();
    // The system lets it go as well.
    EXPECT_TRUE(fs::remove(path));
}

TEST_F(FileInputStream, OpenAgainStartsAfresh) {
    Open(Put("a", "abc"));
    EXPECT_EQ(Read(2), "ab");
    Open(Put("b", "wxyz"));
    EXPECT_EQ(stream_->GetLength(), 4);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_EQ(Read(10), "wxyz");
    stream_->Close();
    Open(At("a"));
    EXPECT_EQ(Read(10), "abc");
}

TEST_F(FileInputStream, LastReleaseClosesTheFile) {
    const fs::path path = Put("a", "abc");
    Open(path);
    Read(1);
    stream_.Reset();
    EXPECT_TRUE(fs::remove(path));
}

TEST_F(FileInputStream, OpenRaisesForWhatCannotBeOpenedAndLeavesTheStreamClosed) {
    const fs::path good = Put("good", "abc");
    const wstring folder = ToVorlund(folder_.GetPath());
    for (const wstring& path :
         {ToVorlund(At("missing.wav")), ToVorlund(At("no/such/folder")), wstring(), folder,
          folder + VRL_L('/'), wstring(VRL_L(".")), ToVorlund(good) + VRL_L('/'), wstring(500, VRL_L('x'))}) {
        Open(good);
        ExpectRaisesFor<CFileAccessException>(path, filefailures::kCannotRead,
                                              [&] { stream_->Open(path.c_str()); });
        ExpectClosed();
    }
    Open(good);
    ExpectRaisesFor<CFileAccessException>(VRL_L("(null)"), filefailures::kCannotRead,
                                          [&] { stream_->Open(nullptr); });
    ExpectClosed();
    Open(good);
    EXPECT_EQ(Read(10), "abc");
}

TEST_F(FileInputStream, EachFailureIsReportedOnceAsAnExceptionOnly) {
    CDebugRecorder recorder;
    const fs::path path = At("missing.wav");
    ExpectRaisesFor<CFileAccessException>(ToVorlund(path), filefailures::kCannotRead, [&] { Open(path); });
    ASSERT_EQ(recorder.GetEntries().size(), 1u);
    EXPECT_EQ(recorder.GetEntries()[0].type, DEBUG_MESSAGE_OUTPUT);
}

TEST_F(FileInputStream, TwoStreamsReadOneFile) {
    const fs::path path = Put("a", "abcdef");
    Open(path);
    const auto other = CreateAs<IFileInputStream>(classid::CFileInputStream);
    other->Open(ToVorlund(path).c_str());
    EXPECT_EQ(Read(3), "abc");
    char buffer[6];
    EXPECT_EQ(other->Read(buffer, 6), 6u);
    EXPECT_EQ(std::string(buffer, 6), "abcdef");
    EXPECT_EQ(Read(3), "def");
}

TEST_F(FileInputStream, PositionsAndLengthsAre64Bit) {
    constexpr std::int64_t kFar = (std::int64_t{5} << 30) + 17;
    const fs::path path = Put("sparse");
    {
        std::error_code refused;
        fs::resize_file(path, static_cast<std::uintmax_t>(kFar), refused);
        ASSERT_FALSE(refused) << refused.message();
        std::ofstream tail(path, std::ios::binary | std::ios::app);
        tail << "tail";
    }
    Open(path);
    EXPECT_EQ(stream_->GetLength(), kFar + 4);
    stream_->Seek(kFar - 2);
    EXPECT_EQ(stream_->Tell(), kFar - 2);
    EXPECT_FALSE(stream_->Eof());
    EXPECT_EQ(Read(4), std::string("\0\0ta", 4));
    EXPECT_EQ(stream_->Tell(), kFar + 2);
    EXPECT_EQ(Read(4), "il");
    EXPECT_TRUE(stream_->Eof());
    stream_->Seek(1);
    stream_->Skip(static_cast<std::uint64_t>(kFar));
    EXPECT_EQ(Read(100000), "ail");
    // Not at the same place modulo 2^32.
    stream_->Seek(kFar & 0xFFFFFFFF);
    EXPECT_EQ(Read(4), std::string(4, '\0'));
}

} // namespace
} // namespace vorlund::test
