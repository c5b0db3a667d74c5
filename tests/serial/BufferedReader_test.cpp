// The base of buffered readers: positions and the buffer.
#include "serial/SerialTest.h"

#include <vorlund/BufferedReader.h>
#include <vorlund/TextReader.h>
#include <vorlund/VarReader.h>

#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

namespace vorlund::test {
namespace {

/// Opens the protected side, as derived readers use it.
class COpenReader : public CBufferedReader {
public:
    COpenReader(IInputStream* stream, int size) : CBufferedReader(stream, size) {}
    using CBufferedReader::buffered_;
    using CBufferedReader::capacity_;
    using CBufferedReader::FillBuffer;
    using CBufferedReader::RemoveBufferedData;
    void Flush() override {
        ++flushes;
        CBufferedReader::Flush();
    }
    TBytes Buffered() const { return {buffer_, buffer_ + buffered_}; }

    int flushes = 0;
};

static_assert(std::is_base_of_v<CClassObject, CReader> && std::is_base_of_v<CReader, CBufferedReader>);
static_assert(std::is_base_of_v<CReader, CVarReader> && std::is_base_of_v<CBufferedReader, CTextReader>);

using BufferedReader = CSerialTest;

TEST_F(BufferedReader, StartsEmpty) {
    const auto stream = Source(Ramp(10));
    {
        COpenReader reader(stream.Get(), 4);
        EXPECT_EQ(reader.buffered_, 0);
        EXPECT_EQ(reader.capacity_, 4);
        EXPECT_EQ(reader.Tell(), 0u);
        EXPECT_FALSE(reader.Eof());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
    EXPECT_TRUE(log_.empty());
}

TEST_F(BufferedReader, FillingReadsOnceWhatHasRoom) {
    const auto stream = Source(Ramp(10));
    stream->maximumRead = 3;
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    EXPECT_EQ(reader.Buffered(), Ramp(3));
    reader.FillBuffer();
    reader.FillBuffer();
    EXPECT_EQ(reader.Buffered(), Ramp(8));
    EXPECT_EQ(log_, (TCallLog{"Read 3", "Read 3", "Read 2"}));
    reader.FillBuffer();
    EXPECT_EQ(log_.size(), 3u) << "a full buffer asks for nothing";
}

TEST_F(BufferedReader, FillingAtTheEndAddsNothing) {
    const auto stream = Source(Ramp(2));
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    reader.FillBuffer();
    EXPECT_EQ(reader.Buffered(), Ramp(2));
    EXPECT_EQ(log_, (TCallLog{"Read 8", "Read 6"}));
}

TEST_F(BufferedReader, PositionIsThatOfTheFirstByteNotConsumed) {
    const auto stream = Source(Ramp(200));
    COpenReader reader(stream.Get(), 100);
    reader.FillBuffer();
    ASSERT_EQ(reader.buffered_, 100);
    EXPECT_EQ(reader.Tell(), 0u);
    reader.RemoveBufferedData(30);
    EXPECT_EQ(reader.Tell(), 30u);
    EXPECT_EQ(reader.Buffered().front(), 30);
    reader.FillBuffer();
    EXPECT_EQ(reader.Tell(), 30u);
    EXPECT_EQ(reader.buffered_, 100);
    EXPECT_EQ(reader.Buffered().back(), 129);
}

struct TRemoveRow {
    const char* name;
    int count;
    TBytes left;
};
class BufferedReaderRemove : public CSerialTest, public testing::WithParamInterface<TRemoveRow> {
protected:
    ~BufferedReaderRemove() noexcept override {}
};

TEST_P(BufferedReaderRemove, Leaves) {
    const auto stream = Source({1, 2, 3, 4, 5});
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    reader.RemoveBufferedData(GetParam().count);
    EXPECT_EQ(reader.Buffered(), GetParam().left);
    EXPECT_EQ(reader.Tell(), 5 - GetParam().left.size());
}

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();
INSTANTIATE_TEST_SUITE_P(Rows, BufferedReaderRemove,
                         testing::Values(TRemoveRow{"None", 0, {1, 2, 3, 4, 5}},
                                         TRemoveRow{"One", 1, {2, 3, 4, 5}}, TRemoveRow{"AllButOne", 4, {5}},
                                         TRemoveRow{"All", 5, {}}, TRemoveRow{"More", 6, {}},
                                         TRemoveRow{"Most", kIntMax, {}},
                                         TRemoveRow{"Negative", -1, {1, 2, 3, 4, 5}},
                                         TRemoveRow{"MostNegative", kIntMin, {1, 2, 3, 4, 5}}),
                         [](const auto& row) { return row.param.name; });

TEST_F(BufferedReader, AfterRemovingMoreThanAllTheStreamTellsTheEnd) {
    const auto stream = Source(Ramp(4));
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    EXPECT_TRUE(stream->Eof());
    EXPECT_FALSE(reader.Eof());
    reader.RemoveBufferedData(5);
    EXPECT_TRUE(reader.Eof());
    stream->bytes.push_back(9);
    EXPECT_FALSE(reader.Eof());
}

TEST_F(BufferedReader, SeekDiscardsThroughTheVirtualOperation) {
    const auto stream = Source(Ramp(20));
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    reader.Seek(15);
    EXPECT_EQ(reader.flushes, 1);
    EXPECT_EQ(reader.buffered_, 0);
    EXPECT_EQ(reader.Tell(), 15u);
    reader.FillBuffer();
    EXPECT_EQ(reader.Buffered(), (TBytes{15, 16, 17, 18, 19}));
    EXPECT_EQ(log_, (TCallLog{"Read 8", "Seek 15", "Read 8"}));
}

TEST_F(BufferedReader, FlushLeavesTheStream) {
    const auto stream = Source(Ramp(20));
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    reader.Flush();
    EXPECT_EQ(reader.buffered_, 0);
    EXPECT_EQ(reader.Tell(), 8u);
    EXPECT_EQ(log_, (TCallLog{"Read 8"}));
}

TEST_F(BufferedReader, AStreamThatRaisesLeavesTheBuffer) {
    const auto stream = Source(Ramp(20));
    stream->failAt = 3;
    COpenReader reader(stream.Get(), 8);
    reader.FillBuffer();
    EXPECT_EQ(Outcome([&] { reader.FillBuffer(); }), kReadFailed);
    EXPECT_EQ(reader.Buffered(), Ramp(3));
    EXPECT_EQ(reader.Tell(), 0u);
}

TEST_F(BufferedReader, AClaimOfTooManyBytesFillsTheBufferAtMost) {
    const auto stream = Source(Ramp(20));
    for (const std::uint64_t claim : {std::uint64_t{1}, std::uint64_t{1} << 31, ~std::uint64_t{0} - 8}) {
        stream->exaggeration = claim;
        COpenReader reader(stream.Get(), 8);
        reader.FillBuffer();
        EXPECT_EQ(reader.buffered_, 8);
    }
}

TEST_F(BufferedReader, WithoutRoomNothingIsRead) {
    const auto stream = Source(Ramp(20));
    COpenReader reader(stream.Get(), 0);
    reader.FillBuffer();
    reader.RemoveBufferedData(1);
    EXPECT_EQ(reader.buffered_, 0);
    EXPECT_EQ(reader.Tell(), 0u);
    EXPECT_TRUE(log_.empty());
}

TEST_F(BufferedReader, NegativeSizesRaise) {
    const auto stream = Source({});
    for (const int size : {-1, kIntMin}) EXPECT_THROW(COpenReader(stream.Get(), size), std::bad_alloc);
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

} // namespace
} // namespace vorlund::test
