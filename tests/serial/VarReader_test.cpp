// Typed reading: bytes, the end of the data, wrong counts.
#include "serial/SerialTest.h"
#include "serial/VarGolden.h"

#include <vorlund/VarReader.h>

#include <limits>
#include <new>

namespace vorlund::test {
namespace {

using VarReader = CSerialTest;

class VarReaderGolden : public CSerialTest, public testing::WithParamInterface<TGoldenRow> {
protected:
    ~VarReaderGolden() noexcept override {}
};

TEST_P(VarReaderGolden, Reads) {
    const TGoldenRow& row = GetParam();
    const auto stream = Source(row.bytes);
    CVarReader reader(stream.Get());
    row.read(reader);
    EXPECT_TRUE(reader.Eof());
    TCallLog calls{"Read " + std::to_string(row.bytes.size())};
    if (row.isText) calls = {"Read 4", "Read " + std::to_string(row.bytes.size() - 4)};
    EXPECT_EQ(log_, calls);
}

TEST_P(VarReaderGolden, TheEndChangesNothing) {
    const auto stream = Source({});
    CVarReader reader(stream.Get());
    GetParam().readNothing(reader);
    EXPECT_EQ(reader.Tell(), 0u);
}

TEST_P(VarReaderGolden, PassesOnWhatTheStreamRaises) {
    const auto stream = Source(GetParam().bytes);
    stream->failAt = 0;
    CVarReader reader(stream.Get());
    EXPECT_EQ(Outcome([&] { GetParam().readNothing(reader); }), kReadFailed);
}

INSTANTIATE_TEST_SUITE_P(Rows, VarReaderGolden, testing::ValuesIn(GoldenRows()),
                         [](const auto& row) { return row.param.name; });

TEST_F(VarReader, Chains) {
    const auto stream = Source(ChainBytes());
    CVarReader reader(stream.Get());
    int number = 0;
    bool flag = false;
    CString text;
    reader >> number >> flag >> text;
    EXPECT_EQ(number, 1);
    EXPECT_TRUE(flag);
    EXPECT_TRUE(text == "Vorlund 42");
    EXPECT_TRUE(reader.Eof());
}

TEST_F(VarReader, EveryByteButZeroIsTrue) {
    for (int byte = 0; byte < 256; ++byte) {
        const auto stream = Source({static_cast<std::uint8_t>(byte)});
        bool value = byte == 0;
        CVarReader(stream.Get()) >> value;
        EXPECT_EQ(value, byte != 0) << byte;
    }
}

TEST_F(VarReader, BoolsStayAtTheEnd) {
    const auto stream = Source({});
    for (const bool former : {true, false}) {
        bool value = former;
        CVarReader(stream.Get()) >> value;
        EXPECT_EQ(value, former);
    }
}

// Nobody looks at what the stream returns.
TEST_F(VarReader, BytesThatDoNotArriveStay) {
    for (std::size_t arriving = 0; arriving <= 8; ++arriving) {
        const auto stream = Source(TBytes(arriving, 0xEE));
        std::uint64_t value = 0;
        CVarReader(stream.Get()) >> value;
        EXPECT_EQ(value, arriving == 0 ? 0 : 0xEEEEEEEEEEEEEEEEu >> (8 * (8 - arriving))) << arriving;
        EXPECT_EQ(log_, TCallLog{"Read 8"});
        log_.clear();
    }
}

TEST_F(VarReader, ReadsOnceWhateverArrives) {
    const auto stream = Source({1, 2, 3, 4, 5, 6, 7, 8});
    stream->maximumRead = 1;
    CVarReader reader(stream.Get());
    int first = 0;
    int second = 0;
    reader >> first >> second;
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(reader.Tell(), 2u);
}

struct TTextRow {
    const char* name;
    /// What follows the four bytes of the count.
    std::uint32_t count;
    TBytes units;
    wstring expected;
};
class VarReaderText : public CSerialTest, public testing::WithParamInterface<TTextRow> {
protected:
    ~VarReaderText() noexcept override {}

    TBytes Whole() const {
        TBytes bytes;
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(GetParam().count >> shift));
        bytes.insert(bytes.end(), GetParam().units.begin(), GetParam().units.end());
        return bytes;
    }
};

TEST_P(VarReaderText, Reads) {
    const auto stream = Source(Whole());
    CString text("before");
    CVarReader(stream.Get()) >> text;
    EXPECT_EQ(Narrow(text), Narrow(GetParam().expected));
}

constexpr std::uint32_t kMaxUnits = 0x3FFFFFFE;
INSTANTIATE_TEST_SUITE_P(
    Rows, VarReaderText,
    testing::Values(TTextRow{"Empty", 0, {}, {}}, TTextRow{"EmptyWithMoreBehind", 0, {'a', 0}, {}},
                    TTextRow{"One", 1, {'a', 0}, VRL_L("a")},
                    TTextRow{"OneWithMoreBehind", 1, {'a', 0, 'b', 0}, VRL_L("a")},
                    TTextRow{"ZeroUnitEnds", 3, {'a', 0, 0, 0, 'b', 0}, VRL_L("a")},
                    TTextRow{"AsLongAsBefore", 6, WideBytes(VRL_L("behind")), VRL_L("behind")},
                    TTextRow{"AsLongAsBeforeCut", 6, WideBytes(VRL_L("beh")), VRL_L("beh")},
                    TTextRow{"AsLongAsBeforeGone", 6, {}, {}},
                    TTextRow{"OneLessThanBefore", 5, WideBytes(VRL_L("later")), VRL_L("later")},
                    TTextRow{"OneMoreThanBefore", 7, WideBytes(VRL_L("earlier")), VRL_L("earlier")},
                    TTextRow{"NothingArrives", 5, {}, {}}, TTextRow{"HalfAUnitArrives", 5, {'a'}, {}},
                    TTextRow{"OneAndAHalfArrive", 5, {'a', 0, 'b'}, VRL_L("a")},
                    TTextRow{"TwoOfFiveArrive", 5, {'a', 0, 'b', 0}, VRL_L("ab")},
                    TTextRow{"OneOfAMillionArrives", 1000000, {'a', 0}, VRL_L("a")},
                    TTextRow{"OneOfMostArrives", kMaxUnits, {'a', 0}, VRL_L("a")},
                    TTextRow{"NothingOfMostArrives", kMaxUnits, {}, {}}),
    [](const auto& row) { return row.param.name; });

// Long texts come in pieces.
TEST_F(VarReader, LongTexts) {
    for (const int count : {65535, 65536, 65537, 131072, 131073, 300000}) {
        for (const int missing : {0, 1, 70000}) {
            const auto target = Make<CMemoryOutputStream>();
            wstring long_(static_cast<std::size_t>(count), 0);
            for (std::size_t i = 0; i < long_.size(); ++i) long_[i] = static_cast<wchar>(1 + i % 50000);
            CVarWriter(target.Get()) << long_.c_str() << 77;
            if (missing > count) continue;
            auto bytes = target->bytes;
            if (missing) bytes.resize(bytes.size() - 4 - 2 * static_cast<std::size_t>(missing));
            const auto stream = Source(bytes);
            CVarReader reader(stream.Get());
            CString text;
            int behind = 0;
            reader >> text >> behind;
            ASSERT_EQ(text.Length(), static_cast<unsigned int>(count - missing));
            EXPECT_EQ(long_.compare(0, text.Length(), text.GetBuffer()), 0);
            EXPECT_EQ(behind, missing ? 0 : 77);
        }
    }
}

struct TWrongCountRow {
    const char* name;
    std::uint32_t count;
};
class VarReaderWrongCount : public CSerialTest, public testing::WithParamInterface<TWrongCountRow> {
protected:
    ~VarReaderWrongCount() noexcept override {}
};

TEST_P(VarReaderWrongCount, RaisesAndLeavesTheText) {
    const std::uint32_t count = GetParam().count;
    const auto stream = Source({static_cast<std::uint8_t>(count), static_cast<std::uint8_t>(count >> 8),
                                static_cast<std::uint8_t>(count >> 16),
                                static_cast<std::uint8_t>(count >> 24), 'a', 0, 'b', 0});
    CVarReader reader(stream.Get());
    CString text("before");
    EXPECT_THROW(reader >> text, std::bad_alloc);
    EXPECT_TRUE(text == "before");
    EXPECT_EQ(reader.Tell(), 4u);
    text += " and after";
    EXPECT_TRUE(text == "before and after");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VarReaderWrongCount,
    testing::Values(TWrongCountRow{"MinusOne", 0xFFFFFFFF}, TWrongCountRow{"MinusTwo", 0xFFFFFFFE},
                    TWrongCountRow{"Least", 0x80000000}, TWrongCountRow{"Most", 0x7FFFFFFF},
                    TWrongCountRow{"TooMany", kMaxUnits + 1}, TWrongCountRow{"WrapsWhenDoubled", 0x40000000}),
    [](const auto& row) { return row.param.name; });

TEST(VarReaderAllocate, RefusesNegativeCounts) {
    for (const int count : {-1, -2, std::numeric_limits<int>::min()}) {
        CString text("before");
        EXPECT_THROW(text.Allocate(count), std::bad_alloc);
        EXPECT_TRUE(text == "before");
    }
}

/// A record of every type, cut at every byte: what arrives is read, nothing raises.
TEST_F(VarReader, TruncatedAtEveryByte) {
    const auto target = Make<CMemoryOutputStream>();
    CVarWriter(target.Get()) << 0x01010101 << true << VRL_L("ab") << 1.5 << 'z' << short{0x0202}
                             << std::int64_t{0x0303030303030303};
    for (std::size_t size = 0; size <= target->bytes.size(); ++size) {
        SCOPED_TRACE(size);
        const auto stream = Source({target->bytes.begin(), target->bytes.begin() + static_cast<int>(size)});
        CVarReader reader(stream.Get());
        int number = 0;
        bool flag = false;
        CString text("x");
        double fraction = 0;
        char letter = 'y';
        short little = 0;
        std::int64_t big = 0;
        reader >> number >> flag >> text >> fraction >> letter >> little >> big;
        EXPECT_TRUE(reader.Eof());
        EXPECT_EQ(number, size >= 4 ? 0x01010101 : 0x01010101 & ((1 << 8 * size) - 1));
        EXPECT_EQ(flag, size >= 5);
        EXPECT_EQ(Narrow(text), size < 9 ? "x" : size < 11 ? "" : size < 13 ? "a" : "ab");
        if (size <= 13) {
            EXPECT_EQ(fraction, 0);
        }
        if (size >= 21) {
            EXPECT_EQ(fraction, 1.5);
        }
        EXPECT_EQ(letter, size >= 22 ? 'z' : 'y');
        EXPECT_EQ(little, size >= 24 ? 0x0202 : size >= 23 ? 2 : 0);
        EXPECT_EQ(big == 0x0303030303030303, size >= 32);
    }
}

/// A stream that raises at byte n: the values before are read, and the text is whole or empty.
TEST_F(VarReader, RaisingAtEveryByte) {
    const TBytes bytes = ChainBytes();
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(bytes.size()); ++at) {
        SCOPED_TRACE(at);
        const auto stream = Source(bytes);
        CVarReader reader(stream.Get());
        int number = 0;
        bool flag = false;
        CString text("before");
        // Every byte from there on: the reads before it get what is there, and the one at it raises.
        stream->failAt = at;
        const std::string outcome = Outcome([&] {
            reader >> number;
            reader >> flag >> text;
            char behind = 0;
            reader >> behind;
        });
        EXPECT_EQ(outcome, kReadFailed);
        EXPECT_EQ(number, at >= 4 ? 1 : at == 0 ? 0 : 1);
        EXPECT_EQ(flag, at >= 5);
        if (at < 9) {
            EXPECT_TRUE(text == "before");
        }
        if (at == 9) {
            EXPECT_EQ(text.Length(), 0u);
        }
        if (at > 9) {
            EXPECT_EQ(text.Length(), static_cast<unsigned int>((at - 9) / 2));
        }
    }
}

TEST_F(VarReader, RaisingInALongText) {
    const auto target = Make<CMemoryOutputStream>();
    CVarWriter(target.Get()) << wstring(200000, 'a').c_str();
    const auto stream = Source(target->bytes);
    stream->failAt = 4 + 2 * 65536;
    CString text("before");
    EXPECT_EQ(Outcome([&] { CVarReader(stream.Get()) >> text; }), kReadFailed);
    EXPECT_EQ(text.Length(), 0u);
}

TEST_F(VarReader, RaisingInATextAsLongAsBefore) {
    const auto stream = Source({6, 0, 0, 0, 'a', 0});
    stream->failAt = 4;
    CString text("before");
    EXPECT_EQ(Outcome([&] { CVarReader(stream.Get()) >> text; }), kReadFailed);
    EXPECT_EQ(text.Length(), 0u);
}

TEST_F(VarReader, AClaimOfTooManyBytesIsNotBelieved) {
    const auto stream = Source({2, 0, 0, 0, 'a', 0, 'b', 0});
    stream->exaggeration = std::uint64_t{1} << 40;
    CString text;
    int number = 0;
    CVarReader(stream.Get()) >> text >> number;
    EXPECT_EQ(Narrow(text), "ab");
}

// A reference binds to no other type.
template <class T>
concept TReadable = requires(CVarReader& reader, T value) {
    reader >> value;
};
enum TPlainEnum : int { PLAIN_ZERO };
static_assert(TReadable<bool&> && TReadable<char&> && TReadable<unsigned char&> && TReadable<short&> &&
              TReadable<unsigned short&> && TReadable<int&> && TReadable<unsigned int&> &&
              TReadable<float&> && TReadable<double&> && TReadable<CString&>);
static_assert(TReadable<std::int64_t&> && TReadable<std::uint64_t&> && TReadable<long long&> &&
              TReadable<unsigned long long&>);
static_assert(!TReadable<const int&> && !TReadable<wchar*&> && !TReadable<const wchar*&> &&
              !TReadable<signed char&> && !TReadable<long double&> && !TReadable<wchar&> &&
              !TReadable<TPlainEnum&> && !TReadable<void*&> && !TReadable<wstring&>);

} // namespace
} // namespace vorlund::test
