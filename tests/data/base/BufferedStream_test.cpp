// The filters that collect small reads and writes.
#include "data/file/RefusingPlace.h"
#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <vorlund/BufferedStream.h>
#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/MemoryStream.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <utility>

namespace vorlund::test {
namespace {

constexpr std::size_t kBlock = 32;
constexpr const char* kCannotRead =
    "CIOException test::CFaultyInputStream::Read tests/support/Streams:4 Cannot read";
constexpr const char* kCannotWrite =
    "CIOException test::CMemoryOutputStream::Write tests/support/Streams:5 Cannot write";

class BufferedStream : public testing::Test {
protected:
    ~BufferedStream() noexcept override {}
    BufferedStream() {
        source_->bytes = Ramp(100);
        source_->log = &log_;
        target_->log = &log_;
        input_->Connect(source_.Get());
        output_->Connect(target_.Get());
        log_.clear();
    }

    /// What one read delivers.
    TBytes Read(std::size_t size) {
        TBytes bytes(size);
        bytes.resize(static_cast<std::size_t>(input_->Read(bytes.data(), size)));
        return bytes;
    }
    void Write(const TBytes& bytes) { output_->Write(bytes.data(), bytes.size()); }

    CLibraryScope library_;
    TCallLog log_;
    CRefPtr<CFaultyInputStream> source_ = Make<CFaultyInputStream>();
    CRefPtr<CMemoryOutputStream> target_ = Make<CMemoryOutputStream>();
    CRefPtr<IInputStreamFilter> input_ = CRefPtr<IInputStreamFilter>::Adopt(CreateBufferedInput(kBlock));
    CRefPtr<IOutputStreamFilter> output_ = CRefPtr<IOutputStreamFilter>::Adopt(CreateBufferedOutput(kBlock));
};

TEST_F(BufferedStream, ReadsByBlocks) {
    for (unsigned int i = 0; i < 50; ++i) EXPECT_EQ(Read(2), Ramp(2, 2 * i));
    EXPECT_EQ(log_, TCallLog(4, "Read 32"));
    EXPECT_TRUE(input_->Eof());
    EXPECT_TRUE(Read(2).empty());
}

TEST_F(BufferedStream, LargeReadsGoToTheBuffer) {
    EXPECT_EQ(Read(2), Ramp(2));
    EXPECT_EQ(Read(80), Ramp(80, 2));
    EXPECT_EQ(log_, (TCallLog{"Read 32", "Read 50"}));
    EXPECT_EQ(Read(80), Ramp(18, 82));
}

TEST_F(BufferedStream, AReadFillsTheBufferAsLongAsThereIsMore) {
    source_->maximumRead = 3;
    EXPECT_EQ(Read(10), Ramp(10));
    EXPECT_EQ(Read(70), Ramp(70, 10));
    EXPECT_EQ(Read(70), Ramp(20, 80));
}

TEST_F(BufferedStream, PositionsAreThoseOfTheFilter) {
    EXPECT_EQ(Read(5), Ramp(5));
    EXPECT_EQ(input_->Tell(), 5);
    EXPECT_FALSE(input_->Eof());
    EXPECT_EQ(input_->GetLength(), 100);
    input_->Seek(90);
    EXPECT_EQ(input_->Tell(), 90);
    EXPECT_EQ(Read(4), Ramp(4, 90));
    input_->Seek(0);
    input_->Skip(3);
    EXPECT_EQ(Read(2), Ramp(2, 3));
    input_->Skip(60);
    EXPECT_EQ(input_->Tell(), 65);
    EXPECT_EQ(Read(2), Ramp(2, 65));
    source_->capabilities = 4;
    input_->Skip(20);
    EXPECT_EQ(Read(2), Ramp(2, 87));
    input_->Skip(~std::uint64_t{0});
    EXPECT_TRUE(input_->Eof());
}

TEST_F(BufferedStream, AFailedSeekLosesNothing) {
    EXPECT_EQ(Read(5), Ramp(5));
    source_->failSeekAt = 50;
    EXPECT_THROW(input_->Seek(50), CIOException);
    EXPECT_EQ(Read(5), Ramp(5, 5));
}

TEST_F(BufferedStream, FlushSetsTheStreamBack) {
    EXPECT_EQ(Read(5), Ramp(5));
    EXPECT_EQ(source_->position, 32);
    input_->Flush();
    EXPECT_EQ(source_->position, 5);
    EXPECT_EQ(log_.back(), "Flush");
    // Others may read meanwhile.
    source_->position = 20;
    EXPECT_EQ(Read(2), Ramp(2, 20));
    // Without positions it keeps what it has.
    source_->capabilities = 4;
    input_->Flush();
    EXPECT_EQ(Read(2), Ramp(2, 22));
}

TEST_F(BufferedStream, WhatTheStreamRaisesComesBehindItsBytes) {
    source_->failAt = 40;
    EXPECT_EQ(Read(38), Ramp(38));
    EXPECT_EQ(Read(10), Ramp(2, 38));
    EXPECT_FALSE(input_->Eof());
    EXPECT_EQ(Outcome([&] { Read(10); }), kCannotRead);
    source_->failAt.reset();
    EXPECT_EQ(Read(10), Ramp(10, 40));
}

TEST_F(BufferedStream, ReadsAsTheStreamDoesWhateverTheSizes) {
    std::mt19937 random(1);
    source_->bytes = Ramp(5000);
    source_->log = nullptr;
    for (std::size_t place = 0; place < 5000;) {
        const std::size_t size = random() % 100;
        source_->maximumRead = 1 + random() % 70;
        const TBytes bytes = Read(size);
        ASSERT_EQ(bytes, Ramp(std::min(size, 5000 - place), static_cast<unsigned int>(place)));
        place += bytes.size();
        ASSERT_EQ(input_->Tell(), static_cast<std::int64_t>(place));
    }
}

TEST_F(BufferedStream, UnconnectedRaises) {
    input_->Disconnect();
    output_->Disconnect();
    EXPECT_THROW(Read(1), CIOException);
    char byte;
    EXPECT_THROW(input_->Read(&byte, 0), CIOException);
    EXPECT_THROW(Write({1}), CIOException);
    EXPECT_THROW(output_->Write("", 0), CIOException);
    EXPECT_THROW(input_->Read(nullptr, 1), CNullPtrException);
    EXPECT_TRUE(input_->Eof());
    EXPECT_THROW(output_->Flush(), COperationNotSupportedException);
}

TEST_F(BufferedStream, WritesWholeBlocks) {
    for (unsigned int i = 0; i < 50; ++i) Write(Ramp(2, 2 * i));
    EXPECT_EQ(log_, TCallLog(3, "Write 32"));
    EXPECT_EQ(output_->Tell(), 100);
    EXPECT_EQ(output_->GetLength(), 100);
    EXPECT_EQ(target_->bytes, Ramp(100));
}

TEST_F(BufferedStream, LargeWritesGoDirectly) {
    Write(Ramp(2));
    Write(Ramp(80, 2));
    EXPECT_EQ(log_, (TCallLog{"Write 2", "Write 80"}));
    Write(Ramp(31, 82));
    Write(Ramp(3, 113));
    EXPECT_EQ(log_.back(), "Write 32");
    output_->Flush();
    EXPECT_EQ(target_->bytes, Ramp(116));
    EXPECT_EQ(log_.back(), "Flush");
}

TEST_F(BufferedStream, EachOfTheseWritesOut) {
    const std::pair<const char*, std::function<void()>> acts[] = {
        {"Flush", [&] { output_->Flush(); }},
        {"Seek", [&] { output_->Seek(7); }},
        {"GetLength", [&] { output_->GetLength(); }},
        {"SetFormat", [&] { output_->SetFormat(&GetEmptyFormat()); }},
        {"FlushOutput", [&] { FlushOutput(*output_); }},
        {"Close", [&] { output_->Close(); }},
        {"CloseOutput", [&] { CloseOutput(*output_); }},
        {"Connect", [&] { output_->Connect(target_.Get()); }},
        {"Disconnect", [&] { output_->Disconnect(); }},
        {"Release", [&] { output_.Reset(); }},
    };
    for (const auto& [name, act] : acts) {
        target_->bytes.clear();
        target_->position = 0;
        Write(Ramp(7));
        EXPECT_TRUE(target_->bytes.empty()) << name;
        act();
        EXPECT_EQ(target_->bytes, Ramp(7)) << name;
        if (output_) output_->Connect(target_.Get());
    }
}

TEST_F(BufferedStream, FlushOutputReachesEachFilterOfAChain) {
    const auto upper = CRefPtr<IOutputStreamFilter>::Adopt(CreateBufferedOutput());
    upper->Connect(output_.Get());
    upper->Write("abc", 3);
    FlushOutput(*upper);
    EXPECT_EQ(target_->bytes.size(), 3u);
}

TEST_F(BufferedStream, WhatIsRefusedIsToldAndTriedAgain) {
    target_->maximumSize = 0;
    Write(Ramp(30));
    EXPECT_EQ(Outcome([&] { Write(Ramp(4, 30)); }), kCannotWrite);
    EXPECT_EQ(output_->Tell(), 30);
    EXPECT_EQ(Outcome([&] { output_->Flush(); }), kCannotWrite);
    EXPECT_EQ(Outcome([&] { FlushOutput(*output_); }), kCannotWrite);
    // More than a block, of which nothing is taken.
    EXPECT_EQ(Outcome([&] { Write(Ramp(80)); }), kCannotWrite);
    EXPECT_EQ(output_->Tell(), 30);
    target_->maximumSize = 1000;
    Write(Ramp(4, 30));
    output_->Flush();
    EXPECT_EQ(target_->bytes, Ramp(34));
}

TEST_F(BufferedStream, WritesOfNothingAddNothing) {
    output_->Write("", 0);
    EXPECT_EQ(output_->Tell(), 0);
    Write(Ramp(3));
    output_->Write("", 0);
    EXPECT_EQ(output_->Tell(), 3);
    Write(Ramp(4, 3));
    output_->Flush();
    EXPECT_EQ(target_->bytes, Ramp(7));
}

TEST_F(BufferedStream, ARefusedBlockIsToldByTheClosing) {
    target_->maximumSize = 0;
    Write(Ramp(30));
    EXPECT_EQ(Outcome([&] { CloseOutput(*output_); }), kCannotWrite);
    EXPECT_EQ(target_->closed, 1);
    Write(Ramp(30));
    EXPECT_EQ(Outcome([&] { output_->Disconnect(); }), kCannotWrite);
    EXPECT_EQ(ReferencesOf(target_.Get()), 1);
    output_->Connect(target_.Get());
    Write(Ramp(30));
    EXPECT_EQ(Outcome([&] { output_.Reset(); }), "nothing");
    EXPECT_EQ(ReferencesOf(target_.Get()), 1);
}

TEST_F(BufferedStream, NullIsRefusedWhateverIsCollected) {
    EXPECT_EQ(Read(2), Ramp(2));
    EXPECT_THROW(input_->Read(nullptr, 2), CNullPtrException);
    EXPECT_EQ(Read(2), Ramp(2, 2));
    // What was collected goes first, then the stream is asked, which refuses.
    const auto memory = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
    output_->Connect(memory.Get());
    for (const std::size_t size : {2, 40}) {
        Write(Ramp(3));
        EXPECT_THROW(output_->Write(nullptr, size), CNullPtrException);
    }
    EXPECT_EQ(memory->GetLength(), 6);
}

TEST_F(BufferedStream, AStreamThatRaisesAtOnceIsHeard) {
    source_->failAt = 0;
    for (const std::size_t size : {2, 80}) EXPECT_EQ(Outcome([&] { Read(size); }), kCannotRead);
}

TEST_F(BufferedStream, AStreamThatDisconnectsAndRaisesIsForgotten) {
    source_->failAt = 40;
    source_->fail = [this] {
        input_->Disconnect();
        Raise<CIOException>(streamfailures::kCannotRead);
    };
    EXPECT_EQ(Read(80), Ramp(40));
    EXPECT_TRUE(input_->Eof());
    source_->failAt.reset();
    input_->Connect(source_.Get());
    EXPECT_EQ(Read(2), Ramp(2, 40));
}

/// Calls `act` in its next write, and refuses that.
class CActingOutputStream : public CMemoryOutputStream {
public:
    std::function<void()> act;

    void Write(const void* buffer, std::uint64_t size) override {
        if (const auto once = std::exchange(act, nullptr)) {
            once();
            Raise<CIOException>(streamfailures::kCannotWrite);
        }
        CMemoryOutputStream::Write(buffer, size);
    }
};

TEST_F(BufferedStream, AStreamThatChangesItsFilterAndRefusesIsHeard) {
    const auto stream = Make<CActingOutputStream>();
    output_->Connect(stream.Get());
    Write(Ramp(30));
    stream->act = [this] { output_->Disconnect(); };
    EXPECT_EQ(Outcome([&] { Write(Ramp(4)); }), kCannotWrite);
    EXPECT_FALSE(CRefPtr<IOutputStream>::Adopt(output_->GetOutputStream()));
    // It is destroyed while it is disconnected.
    output_->Connect(stream.Get());
    Write(Ramp(30));
    IOutputStreamFilter* const dying = output_.Detach();
    stream->act = [dying] { EXPECT_EQ(dying->Release(), 0); };
    EXPECT_EQ(Outcome([&] { dying->Disconnect(); }), kCannotWrite);
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
    // Or closed.
    IOutputStreamFilter* const closing = CreateBufferedOutput(kBlock);
    closing->Connect(stream.Get());
    closing->Write("abc", 3);
    stream->act = [closing] { EXPECT_EQ(closing->Release(), 0); };
    EXPECT_EQ(Outcome([&] { closing->Close(); }), kCannotWrite);
    EXPECT_EQ(stream->closed, 1);
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(BufferedStream, LargeWritesWithNothingCollected) {
    for (const std::size_t size : {31, 32, 33, 80}) {
        Write(Ramp(size));
        output_->Flush();
    }
    EXPECT_EQ(target_->bytes.size(), 176u);
    // As large as a block, and behind something.
    Write(Ramp(1));
    Write(Ramp(32));
    output_->Flush();
    EXPECT_EQ(target_->bytes.size(), 209u);
}

TEST_F(BufferedStream, AFullDeviceIsTold) {
    CRefusingPlace place;
    const auto file = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
    file->Open(place.GetPath().c_str(), false);
    output_->Connect(file.Get());
    place.Refuse();
    Write(Ramp(20));
    EXPECT_EQ(GetWriteError(*output_), 0u);
    EXPECT_THROW(CloseOutput(*output_), CIOException);
    EXPECT_NE(GetWriteError(*output_), 0u);
}

// The typed reader and writer, over each place in a block.
TEST_F(BufferedStream, TypedValues) {
    CVarWriter writer(output_.Get());
    CVarReader reader(input_.Get());
    const CString text("some text");
    for (int i = 0; i < 100; ++i) writer << (i % 3 == 0) << i << i * 0.5 << text;
    output_->Flush();
    source_->bytes = target_->bytes;
    for (int i = 0; i < 100; ++i) {
        bool flag = false;
        int number = -1;
        double fraction = -1;
        CString read;
        reader >> flag >> number >> fraction >> read;
        ASSERT_EQ(flag, i % 3 == 0);
        ASSERT_EQ(number, i);
        ASSERT_EQ(fraction, i * 0.5);
        ASSERT_EQ(Narrow(read), "some text");
    }
    EXPECT_TRUE(reader.Eof());
}

} // namespace
} // namespace vorlund::test
