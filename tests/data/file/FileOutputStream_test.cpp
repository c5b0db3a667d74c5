// Writing files.
#include "data/file/PathFailures.h"
#include "data/file/RefusingPlace.h"
#include "data/file/TemporaryFolder.h"
#include "support/Probes.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/RefPtr.h>

#include <limits>

namespace vorlund::test {
namespace {

constexpr const wchar* kSource = filefailures::kOutputFile;
constexpr const wchar* kSeek = VRL_L("vorlund::CFileOutputStream::Seek");
constexpr const wchar* kWrite = VRL_L("vorlund::CFileOutputStream::Write");
constexpr const wchar* kFlush = VRL_L("vorlund::CFileOutputStream::Flush");
constexpr const wchar* kNotOpen = VRL_L("File is not open");

constexpr TFailure kLengthNotOpen{VRL_L("vorlund::CFileOutputStream::GetLength"), kSource, 87, kNotOpen};
constexpr TFailure kFlushNotOpen{kFlush, kSource, 98, kNotOpen};
constexpr TFailure kFlushFailed{kFlush, kSource, 100, VRL_L("fwrite failed")};
constexpr TFailure kSeekNotOpen{kSeek, kSource, 106, kNotOpen};
constexpr TFailure kTellNotOpen{VRL_L("vorlund::CFileOutputStream::Tell"), kSource, 115, kNotOpen};
constexpr TFailure kWriteNotOpen{kWrite, kSource, 128, kNotOpen};
constexpr TFailure kWriteFailed{kWrite, kSource, 131, VRL_L("fwrite failed")};

class FileOutputStream : public CFileTest {
protected:
    ~FileOutputStream() noexcept override = default;

    void Open(const fs::path& path, bool append = false) { stream_->Open(ToVorlund(path).c_str(), append); }
    void Write(std::string_view bytes) { stream_->Write(bytes.data(), bytes.size()); }

    void ExpectClosed() {
        EXPECT_EQ(stream_->GetCapabilities(), 0u);
        ExpectRaises<COperationNotSupportedException>(kTellNotOpen, [&] { stream_->Tell(); });
    }

    CRefPtr<IFileOutputStream> stream_ = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
};

TEST_F(FileOutputStream, Identity) {
    EXPECT_EQ(stream_->GetClassId(), CId(0x039A99B9, 0x85864E63, 0xA613F839, 0xF0D8B4AD));
    EXPECT_TRUE(stream_.Query<IFileOutputStream>());
    EXPECT_TRUE(stream_.Query<IOutputStream>());
    EXPECT_TRUE(stream_.Query<IStream>());
    EXPECT_TRUE(stream_.Query<IObject>());
    EXPECT_FALSE(stream_.Query<IInputStream>());
    EXPECT_FALSE(stream_.Query<IFileInputStream>());
}

TEST_F(FileOutputStream, ClosedAnswers) {
    EXPECT_EQ(stream_->GetCapabilities(), 0u);
    stream_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    stream_->SetFormat(nullptr);
    stream_->Close();
    stream_->Close();
}

TEST_F(FileOutputStream, ClosedGetLengthRaises) {
    ExpectRaises<COperationNotSupportedException>(kLengthNotOpen, [&] { stream_->GetLength(); });
}
TEST_F(FileOutputStream, ClosedFlushRaises) {
    ExpectRaises<COperationNotSupportedException>(kFlushNotOpen, [&] { stream_->Flush(); });
}
TEST_F(FileOutputStream, ClosedSeekRaises) {
    for (const std::int64_t position : {0, 5, -1})
        ExpectRaises<COperationNotSupportedException>(kSeekNotOpen, [&] { stream_->Seek(position); });
}
TEST_F(FileOutputStream, ClosedTellRaises) {
    ExpectRaises<COperationNotSupportedException>(kTellNotOpen, [&] { stream_->Tell(); });
}
TEST_F(FileOutputStream, ClosedWriteRaises) {
    for (const std::uint64_t size : {1, 0})
        ExpectRaises<CIOException>(kWriteNotOpen, [&] { stream_->Write("x", size); });
    // Unlike reading, writing does not look at the buffer first.
    ExpectRaises<CIOException>(kWriteNotOpen, [&] { stream_->Write(nullptr, 1); });
}

TEST_F(FileOutputStream, OpenAnswers) {
    Open(At("a"));
    EXPECT_EQ(stream_->GetCapabilities(), 11u);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_TRUE(fs::exists(At("a")));
}

TEST_F(FileOutputStream, OpenTruncates) {
    const fs::path path = Put("a", "something long");
    Open(path);
    EXPECT_EQ(fs::file_size(path), 0u);
    Write("new");
    stream_->Close();
    EXPECT_EQ(ReadFile(path), "new");
}

TEST_F(FileOutputStream, OpenAppends) {
    const fs::path path = Put("a", "old");
    Open(path, true);
    EXPECT_EQ(stream_->GetCapabilities(), 11u);
    EXPECT_EQ(stream_->GetLength(), 3);
    Write("new");
    stream_->Close();
    EXPECT_EQ(ReadFile(path), "oldnew");
    Open(At("created"), true);
    Write("first");
    stream_->Close();
    EXPECT_EQ(ReadFile(At("created")), "first");
}

TEST_F(FileOutputStream, AppendedBytesGoToTheEndWhereverThePositionStands) {
    const fs::path path = Put("a", "0123456789");
    Open(path, true);
    EXPECT_EQ(stream_->Tell(), 0);
    Write("abc");
    EXPECT_EQ(stream_->Tell(), 13);
    stream_->Seek(5);
    EXPECT_EQ(stream_->Tell(), 5);
    Write("d");
    EXPECT_EQ(stream_->Tell(), 14);
    Write("e");
    EXPECT_EQ(stream_->Tell(), 15);
    stream_->Flush();
    EXPECT_EQ(stream_->Tell(), 15);
    EXPECT_EQ(stream_->GetLength(), 15);
    EXPECT_EQ(stream_->Tell(), 15);
    stream_->Seek(2);
    EXPECT_EQ(stream_->GetLength(), 15);
    EXPECT_EQ(stream_->Tell(), 2);
    stream_->Close();
    EXPECT_EQ(ReadFile(path), "0123456789abcde");
}

TEST_F(FileOutputStream, BytesAreNotTranslated) {
    const std::string bytes("a\nb\r\n\x1A\0c\xFF", 10);
    Open(At("a"));
    Write(bytes);
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), bytes);
}

TEST_F(FileOutputStream, WritesOfEverySizeFollowEachOther) {
    std::string expected;
    Open(At("a"));
    for (const std::size_t size : {1u, 0u, 7u, 4095u, 4096u, 4097u, 100u, 65536u, 300001u, 3u}) {
        const std::string bytes(size, static_cast<char>('a' + size % 26));
        Write(bytes);
        expected += bytes;
        EXPECT_EQ(stream_->Tell(), static_cast<std::int64_t>(expected.size()));
    }
    EXPECT_EQ(stream_->GetLength(), static_cast<std::int64_t>(expected.size()));
    stream_->Close();
    EXPECT_TRUE(ReadFile(At("a")) == expected);
}

TEST_F(FileOutputStream, SeekIsAbsoluteAndOverwrites) {
    Open(At("a"));
    Write("0123456789");
    stream_->Seek(3);
    EXPECT_EQ(stream_->Tell(), 3);
    Write("ab");
    EXPECT_EQ(stream_->Tell(), 5);
    EXPECT_EQ(stream_->GetLength(), 10);
    EXPECT_EQ(stream_->Tell(), 5);
    Write("c");
    stream_->Seek(0);
    Write("X");
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), "X12abc6789");
}

TEST_F(FileOutputStream, GapBehindTheEndReadsAsZeros) {
    Open(At("a"));
    stream_->Seek(4);
    EXPECT_EQ(stream_->GetLength(), 0);
    Write("x");
    EXPECT_EQ(stream_->GetLength(), 5);
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), std::string("\0\0\0\0x", 5));
}

TEST_F(FileOutputStream, NegativeSeekFailsAndLeavesThePosition) {
    Open(At("a"));
    Write("abc");
    for (const std::int64_t position : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        ExpectRaises<CIOException>(filefailures::kOutputSeekFailed, [&] { stream_->Seek(position); });
        EXPECT_EQ(stream_->Tell(), 3);
    }
    Write("def");
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), "abcdef");
}

TEST_F(FileOutputStream, FlushMakesBytesVisible) {
    Open(At("a"));
    stream_->Flush();
    Write("abc");
    stream_->Flush();
    EXPECT_EQ(ReadFile(At("a")), "abc");
    Write("def");
    stream_->Flush();
    EXPECT_EQ(ReadFile(At("a")), "abcdef");
}

TEST_F(FileOutputStream, CloseWritesTheRestAndForgetsTheFile) {
    Open(At("a"));
    Write("abc");
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), "abc");
    ExpectClosed();
    ExpectRaises<CIOException>(kWriteNotOpen, [&] { Write("d"); });
    stream_->Close();
    EXPECT_TRUE(fs::remove(At("a")));
}

TEST_F(FileOutputStream, OpenClosesTheFileBefore) {
    Open(At("a"));
    Write("abc");
    Open(At("b"));
    EXPECT_EQ(ReadFile(At("a")), "abc");
    EXPECT_EQ(stream_->Tell(), 0);
    Write("d");
    // After appending, positions mean what they say again.
    Open(At("a"), true);
    Write("d");
    Open(At("c"));
    Write("0123");
    stream_->Seek(1);
    Write("x");
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), "abcd");
    EXPECT_EQ(ReadFile(At("b")), "d");
    EXPECT_EQ(ReadFile(At("c")), "0x23");
}

TEST_F(FileOutputStream, LastReleaseWritesTheRest) {
    Open(At("a"));
    Write("abc");
    stream_.Reset();
    EXPECT_EQ(ReadFile(At("a")), "abc");
    EXPECT_TRUE(fs::remove(At("a")));
}

TEST_F(FileOutputStream, SetFormatDoesNothing) {
    Open(At("a"));
    stream_->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_MONO);
    stream_->SetFormat(nullptr);
    EXPECT_EQ(stream_->GetLength(), 0);
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(FileOutputStream, OpenRaisesForWhatCannotBeOpenedAndLeavesTheStreamClosed) {
    const wstring folder = ToVorlund(folder_.GetPath());
    for (const bool append : {false, true}) {
        for (const wstring& path : {ToVorlund(At("no/such/folder")), wstring(), folder, folder + VRL_L('/'),
                                    wstring(VRL_L(".")), wstring(500, VRL_L('x'))}) {
            Open(At("good"));
            Write("abc");
            ExpectRaisesFor<CFileAccessException>(path, filefailures::kCannotWrite,
                                                  [&] { stream_->Open(path.c_str(), append); });
            ExpectClosed();
            EXPECT_EQ(ReadFile(At("good")), "abc");
        }
        ExpectRaisesFor<CFileAccessException>(VRL_L("(null)"), filefailures::kCannotWrite,
                                              [&] { stream_->Open(nullptr, append); });
    }
    Open(At("good"));
    EXPECT_EQ(stream_->GetCapabilities(), 11u);
}

TEST_F(FileOutputStream, ShortWriteRaises) {
    CRefusingPlace place;
    stream_->Open(place.GetPath().c_str(), false);
    place.Refuse();
    // More than any buffer of the C runtime takes.
    const std::string bytes(1 << 20, 'x');
    ExpectRaises<CIOException>(kWriteFailed, [&] { Write(bytes); });
    EXPECT_EQ(stream_->GetCapabilities(), 11u) << "a failed write leaves the stream open";
    stream_->Close();
    ExpectClosed();
}

TEST_F(FileOutputStream, FlushRaisesForWhatCannotBeWrittenOut) {
    CRefusingPlace place;
    stream_->Open(place.GetPath().c_str(), false);
    place.Refuse();
    Write("waits in the buffer");
    ExpectRaises<CIOException>(kFlushFailed, [&] { stream_->Flush(); });
    stream_->Close();
    ExpectClosed();
}

TEST_F(FileOutputStream, WhatNoMemoryHoldsIsAShortWrite) {
    Open(At("a"));
    Write("abc");
    ExpectRaises<CIOException>(kWriteFailed, [&] { stream_->Write(nullptr, 1); });
    stream_->Write(nullptr, 0);
    stream_->Close();
    EXPECT_EQ(ReadFile(At("a")), "abc");
}

TEST_F(FileOutputStream, PositionsAndLengthsAre64Bit) {
    constexpr std::int64_t kFar = (std::int64_t{5} << 30) + 17;
    const fs::path path = At("sparse");
    Open(path);
    Write("head");
    stream_->Seek(kFar);
    EXPECT_EQ(stream_->Tell(), kFar);
    Write("tail");
    EXPECT_EQ(stream_->Tell(), kFar + 4);
    EXPECT_EQ(stream_->GetLength(), kFar + 4);
    stream_->Seek(2);
    Write("re");
    stream_->Close();
    EXPECT_EQ(fs::file_size(path), static_cast<std::uintmax_t>(kFar + 4));
    Open(path, true);
    EXPECT_EQ(stream_->GetLength(), kFar + 4);
    Write("!");
    EXPECT_EQ(stream_->Tell(), kFar + 5);
    stream_->Close();

    const auto input = CreateAs<IFileInputStream>(classid::CFileInputStream);
    input->Open(ToVorlund(path).c_str());
    char bytes[8] = {};
    EXPECT_EQ(input->Read(bytes, 5), 5u);
    EXPECT_EQ(std::string(bytes, 5), std::string("here\0", 5));
    input->Seek(kFar - 1);
    EXPECT_EQ(input->Read(bytes, 8), 6u);
    EXPECT_EQ(std::string(bytes, 6), std::string("\0tail!", 6));
}

} // namespace
} // namespace vorlund::test
