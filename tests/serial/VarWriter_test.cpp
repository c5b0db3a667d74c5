// Typed writing: bytes, calls of the stream, what compiles.
#include "serial/SerialTest.h"
#include "serial/VarGolden.h"

#include <vorlund/VarWriter.h>

#include <cstddef>
#include <functional>

namespace vorlund::test {
namespace {

class VarWriter : public CSerialTest {
protected:
    ~VarWriter() noexcept override {}
    CRefPtr<CMemoryOutputStream> stream_ = Target();
    CVarWriter writer_{stream_.Get()};
};

TEST_F(VarWriter, WritesNothingByItself) {
    EXPECT_TRUE(log_.empty());
}

class VarWriterGolden : public VarWriter, public testing::WithParamInterface<TGoldenRow> {
protected:
    ~VarWriterGolden() noexcept override {}
};

TEST_P(VarWriterGolden, Writes) {
    const TGoldenRow& row = GetParam();
    row.write(writer_);
    EXPECT_EQ(stream_->bytes, row.bytes);
    TCallLog calls{"Write " + std::to_string(row.bytes.size())};
    if (row.isText) calls = {"Write 4", "Write " + std::to_string(row.bytes.size() - 4)};
    EXPECT_EQ(log_, calls);
}

TEST_P(VarWriterGolden, ReturnsTheWriter) {
    EXPECT_EQ(&GetParam().write(writer_), &writer_);
}

TEST_P(VarWriterGolden, PassesOnWhatTheStreamRaises) {
    stream_->maximumSize = GetParam().bytes.size() - 1;
    EXPECT_EQ(Outcome([&] { GetParam().write(writer_); }), kWriteFailed);
}

INSTANTIATE_TEST_SUITE_P(Rows, VarWriterGolden, testing::ValuesIn(GoldenRows()),
                         [](const auto& row) { return row.param.name; });

TEST_F(VarWriter, Chains) {
    writer_ << 1 << true << VRL_L("Vorlund 42");
    EXPECT_EQ(stream_->bytes, ChainBytes());
}

TEST_F(VarWriter, ATextEndsAtItsFirstZeroUnit) {
    CString text("abcd");
    text[2u] = 0;
    writer_ << text << VRL_L("x\0y");
    EXPECT_EQ(stream_->bytes, (TBytes{2, 0, 0, 0, 'a', 0, 'b', 0, 1, 0, 0, 0, 'x', 0}));
}

TEST_F(VarWriter, ANullTextIsEmpty) {
    writer_ << static_cast<const wchar*>(nullptr) << static_cast<wchar*>(nullptr);
    EXPECT_EQ(stream_->bytes, TBytes(8));
}

TEST_F(VarWriter, WritesWhereTheStreamStands) {
    writer_ << std::int64_t{-1};
    writer_.Seek(2);
    writer_ << std::uint16_t{0};
    EXPECT_EQ(writer_.Tell(), 4u);
    EXPECT_EQ(stream_->bytes, (TBytes{255, 255, 0, 0, 255, 255, 255, 255}));
}

TEST_F(VarWriter, CopiesWriteToTheSameStream) {
    CVarWriter copy(writer_);
    writer_ << 'a';
    copy << 'b';
    EXPECT_EQ(stream_->bytes, Bytes("ab"));
    const auto other = Target();
    CVarWriter third(other.Get());
    copy = third;
    copy << 'c';
    EXPECT_EQ(other->bytes, Bytes("c"));
}

// What is no value of the format does not compile, instead of becoming a bool or an int on the quiet.
template <class T>
concept TWritable = requires(CVarWriter& writer, T value) {
    writer << value;
};

enum TPlainEnum : int { PLAIN_ZERO };
enum class TScopedEnum { Zero };
struct TAny {};

static_assert(TWritable<bool> && TWritable<char> && TWritable<unsigned char> && TWritable<short> &&
              TWritable<unsigned short> && TWritable<int> && TWritable<unsigned int> && TWritable<float> &&
              TWritable<double>);
static_assert(TWritable<std::int64_t> && TWritable<std::uint64_t> && TWritable<long long> &&
              TWritable<unsigned long long> && TWritable<std::int32_t> && TWritable<std::uint32_t> &&
              TWritable<std::int16_t> && TWritable<std::uint8_t>);
static_assert(TWritable<CString> && TWritable<const CString> && TWritable<wchar*> &&
              TWritable<const wchar*> && TWritable<const wchar (&)[4]>);
static_assert(!TWritable<const char*> && !TWritable<char*> && !TWritable<const char (&)[4]> &&
              !TWritable<void*> && !TWritable<int*> && !TWritable<CString*> && !TWritable<std::nullptr_t> &&
              !TWritable<void (*)()> && !TWritable<int TAny::*>);
static_assert(!TWritable<signed char> && !TWritable<long double> && !TWritable<char32_t> &&
              !TWritable<wchar> && !TWritable<TPlainEnum> && !TWritable<TScopedEnum> && !TWritable<TAny>);
// `long` has no size of its own: it passes where it is the 64-bit integer.
static_assert(TWritable<long> == std::is_same_v<long, std::int64_t>);

} // namespace
} // namespace vorlund::test
