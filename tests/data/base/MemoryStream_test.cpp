// Streams over bytes in memory.
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/Streams.h"

#include <vorlund/MemoryStream.h>

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace vorlund::test {
namespace {

class MemoryStream : public testing::Test {
protected:
    ~MemoryStream() noexcept override {}

    TBytes Written() {
        const auto* const data = static_cast<const std::uint8_t*>(output_->GetData());
        return {data, data + output_->GetLength()};
    }
    void Write(const TBytes& bytes) { output_->Write(bytes.data(), bytes.size()); }
    static TBytes Read(IInputStream& stream, std::size_t size) {
        TBytes bytes(size);
        bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), size)));
        return bytes;
    }

    CLibraryScope library_;
    CRefPtr<IMemoryOutputStream> output_ = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
};

TEST_F(MemoryStream, KeepsWhatIsWritten) {
    EXPECT_EQ(output_->GetLength(), 0);
    for (unsigned int i = 0; i < 1000; ++i) Write(Ramp(i % 9, i));
    TBytes expected;
    for (unsigned int i = 0; i < 1000; ++i) {
        const TBytes part = Ramp(i % 9, i);
        expected.insert(expected.end(), part.begin(), part.end());
    }
    EXPECT_EQ(Written(), expected);
    EXPECT_EQ(output_->Tell(), static_cast<std::int64_t>(expected.size()));
}

TEST_F(MemoryStream, WritesAtPositions) {
    Write(Ramp(10));
    output_->Seek(2);
    Write({100, 101});
    EXPECT_EQ(Written(), (TBytes{0, 1, 100, 101, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(output_->Tell(), 4);
    output_->Seek(12);
    EXPECT_EQ(output_->Tell(), 12);
    EXPECT_EQ(output_->GetLength(), 10);
    Write({50});
    EXPECT_EQ(Written(), (TBytes{0, 1, 100, 101, 4, 5, 6, 7, 8, 9, 0, 0, 50}));
    output_->Seek(500);
    Write({51});
    EXPECT_EQ(Written().size(), 501u);
    EXPECT_EQ(Written()[499], 0);
}

TEST_F(MemoryStream, SizesAreCutAndFilled) {
    Write(Ramp(10));
    output_->SetSize(4);
    EXPECT_EQ(Written(), Ramp(4));
    EXPECT_EQ(output_->Tell(), 4);
    output_->SetSize(6);
    EXPECT_EQ(Written(), (TBytes{0, 1, 2, 3, 0, 0}));
    EXPECT_EQ(output_->Tell(), 4);
    const void* const room = output_->GetData();
    output_->SetSize(0);
    Write(Ramp(3));
    EXPECT_EQ(output_->GetData(), room);
    EXPECT_EQ(Written(), Ramp(3));
}

TEST_F(MemoryStream, TakesItsOwnBytes) {
    Write(Ramp(200));
    output_->Write(output_->GetData(), 200);
    TBytes expected = Ramp(200);
    const TBytes once = Ramp(200);
    expected.insert(expected.end(), once.begin(), once.end());
    EXPECT_EQ(Written(), expected);
}

TEST_F(MemoryStream, RefusesWhatCannotBe) {
    Write(Ramp(3));
    EXPECT_EQ(Outcome([&] { output_->Seek(-1); }),
              "CIOException vorlund::CMemoryOutput::Seek src/vorlund/data/base/MemoryStreams:1 "
              "Position is negative");
    EXPECT_EQ(Outcome([&] { output_->Write(nullptr, 1); }),
              "CNullPtrException vorlund::CMemoryOutput::Write src/vorlund/data/base/MemoryStreams:2 "
              "buffer is NULL");
    output_->Write(nullptr, 0);
    EXPECT_THROW(output_->SetSize(~std::uint64_t{0}), std::bad_alloc);
    // Half of all addresses: no system with 64-bit ones has that.
    if (sizeof(void*) == 8) {
        EXPECT_THROW(output_->SetSize(std::numeric_limits<std::int64_t>::max()), std::bad_alloc);
        EXPECT_EQ(Written(), Ramp(3));
    }
    output_->Seek(std::numeric_limits<std::int64_t>::max());
    EXPECT_THROW(output_->Write("a", 1), std::bad_alloc);
    EXPECT_THROW(output_->Write("a", ~std::uint64_t{0}), std::bad_alloc);
    EXPECT_EQ(Written(), Ramp(3));
}

TEST_F(MemoryStream, ReadsItsCallersBytes) {
    const TBytes bytes = Ramp(10);
    const auto input = CRefPtr<IMemoryInputStream>::Adopt(CreateMemoryInput(bytes.data(), bytes.size()));
    EXPECT_EQ(input->GetLength(), 10);
    EXPECT_EQ(input->GetCapabilities(), 7u);
    EXPECT_EQ(Read(*input, 4), Ramp(4));
    EXPECT_EQ(input->Tell(), 4);
    input->Skip(2);
    char byte;
    EXPECT_EQ(input->Read(&byte, 0), 0u);
    EXPECT_FALSE(input->Eof());
    EXPECT_EQ(Read(*input, 10), Ramp(4, 6));
    EXPECT_TRUE(input->Eof());
    EXPECT_EQ(Read(*input, 10), TBytes());
    input->Seek(8);
    input->Skip(100);
    EXPECT_EQ(input->Tell(), 10);
    input->Seek(100);
    EXPECT_EQ(input->Tell(), 100);
    EXPECT_TRUE(input->Eof());
    EXPECT_EQ(Read(*input, 1), TBytes());
    input->Seek(9);
    EXPECT_EQ(Read(*input, 1), Ramp(1, 9));
    input->SetData(bytes.data() + 5, 2);
    EXPECT_EQ(Read(*input, 10), Ramp(2, 5));
    input->SetData(nullptr, 0);
    EXPECT_EQ(Read(*input, 10), TBytes());
    EXPECT_EQ(Outcome([&] { input->Seek(-1); }),
              "CIOException vorlund::CMemoryInput::Seek src/vorlund/data/base/MemoryStreams:3 "
              "Position is negative");
    EXPECT_EQ(Outcome([&] { input->Read(nullptr, 0); }),
              "CNullPtrException vorlund::CMemoryInput::Read src/vorlund/data/base/MemoryStreams:4 "
              "buffer is NULL");
    EXPECT_EQ(Outcome([&] { input->SetData(nullptr, 1); }),
              "CNullPtrException vorlund::CMemoryInput::SetData src/vorlund/data/base/MemoryStreams:5 "
              "data is NULL");
}

} // namespace
} // namespace vorlund::test
