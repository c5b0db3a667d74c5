// Formats, through the one operation that takes them.
#include "support/DebugRecorder.h"

#include <vorlund/Debug.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

template <class... TArguments> std::string Print(const wchar* format, TArguments... arguments) {
    const CDebugRecorder recorder;
    CDebug::PrintMessage(DEBUG_MESSAGE_OUTPUT, format, arguments...);
    const auto entries = recorder.GetEntries();
    return entries.size() == 1 ? Narrow(entries[0].text) : "<not one message>";
}

struct TRow {
    const wchar* format;
    std::string actual;
    std::string expected;
};

void Check(const std::vector<TRow>& rows) {
    for (const TRow& row : rows) EXPECT_EQ(row.actual, row.expected) << "format " << Narrow(row.format);
}

#define ROW(expected, format, ...)                                                                           \
    TRow {                                                                                                   \
        VRL_L(format), Print(VRL_L(format) __VA_OPT__(, ) __VA_ARGS__), expected                             \
    }

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();
constexpr long long kMin64 = std::numeric_limits<long long>::min();
constexpr long long kMax64 = std::numeric_limits<long long>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(TextFormat, PlainText) {
    Check({
        ROW("", ""),
        ROW("text", "text"),
        ROW("100%", "100%%"),
        ROW("%%", "%%%%"),
        ROW("[%]", "[%5%]"),
        ROW("%d", "% %d"),
        ROW("caf\u00E9 \u65E5 \U0001F600", "caf\u00E9 \u65E5 \U0001F600"),
    });
}

TEST(TextFormat, SignedIntegers) {
    Check({
        ROW("0", "%d", 0),
        ROW("-1", "%d", -1),
        ROW("42", "%i", 42),
        ROW("2147483647", "%d", kMax),
        ROW("-2147483648", "%d", kMin),
        ROW("[    5]", "[%5d]", 5),
        ROW("[5    ]", "[%-5d]", 5),
        ROW("[00005]", "[%05d]", 5),
        ROW("[-0005]", "[%05d]", -5),
        ROW("[5    ]", "[%-05d]", 5),
        ROW("+5 -5", "%+d %+d", 5, -5),
        ROW(" 5 -5", "% d % d", 5, -5),
        ROW("+5", "% +d", 5),
        ROW("+0005", "%+05d", 5),
        ROW("007", "%.3d", 7),
        ROW("-007", "%.3d", -7),
        ROW("[  007]", "[%5.3d]", 7),
        ROW("[  007]", "[%05.3d]", 7),
        ROW("[007  ]", "[%-5.3d]", 7),
        ROW("[]", "[%.0d]", 0),
        ROW("[]", "[%.d]", 0),
        ROW("[   ]", "[%3.0d]", 0),
        ROW("[+]", "[%+.0d]", 0),
        ROW("5", "%.0d", 5),
        ROW("123456", "%3d", 123456),
        ROW("123456", "%.3d", 123456),
    });
}

TEST(TextFormat, UnsignedIntegers) {
    Check({
        ROW("4294967295", "%u", 4294967295u),
        ROW("0", "%u", 0u),
        ROW("37777777777", "%o", 4294967295u),
        ROW("017", "%#o", 15u),
        ROW("0", "%#o", 0u),
        ROW("0", "%#.0o", 0u),
        ROW("0017", "%#.4o", 15u),
        ROW("ffffffff", "%x", 4294967295u),
        ROW("DEADBEEF", "%X", 0xDEADBEEFu),
        ROW("0x1f 0X1F", "%#x %#X", 31u, 31u),
        ROW("0", "%#x", 0u),
        ROW("[  0x1f]", "[%#6x]", 31u),
        ROW("[0x001f]", "[%#06x]", 31u),
        ROW("[0x1f  ]", "[%-#6x]", 31u),
        ROW("0x001f", "%#.4x", 31u),
        ROW("[]", "[%.0x]", 0u),
        ROW("5", "%+u", 5u),
        ROW("0000002A", "%08X", 42u),
    });
}

TEST(TextFormat, Lengths) {
    Check({
        ROW("-1", "%hhd", 255),
        ROW("255", "%hhu", -1),
        ROW("ff", "%hhx", -1),
        ROW("-1", "%hd", 65535),
        ROW("65535", "%hu", -1),
        ROW("-7", "%ld", -7L),
        ROW("7", "%lu", 7UL),
        ROW("-9223372036854775808", "%lld", kMin64),
        ROW("9223372036854775807", "%I64d", kMax64),
        ROW("-9223372036854775808", "%I64i", kMin64),
        ROW("18446744073709551615", "%llu", ~0ULL),
        ROW("18446744073709551615", "%I64u", ~0ULL),
        ROW("ffffffffffffffff", "%I64x", ~0ULL),
        ROW("0XFFFFFFFFFFFFFFFF", "%#I64X", ~0ULL),
        ROW("1777777777777777777777", "%llo", ~0ULL),
        ROW("-5 7", "%I32d %I32u", -5, 7u),
        ROW("-5 7", "%Id %Iu", std::ptrdiff_t{-5}, std::size_t{7}),
        ROW("-5 7", "%zd %zu", std::ptrdiff_t{-5}, std::size_t{7}),
        ROW("-5", "%td", std::ptrdiff_t{-5}),
        ROW("-5 7", "%jd %ju", std::intmax_t{-5}, std::uintmax_t{7}),
        ROW("-5 7", "%Ld %Lu", -5LL, 7ULL),
        // The arguments behind are still found.
        ROW("1 2 3 4 5", "%lld %d %hhd %I64u %zu", 1LL, 2, 3, 4ULL, std::size_t{5}),
    });
}

TEST(TextFormat, Texts) {
    const wchar* const wide = VRL_L("w\u00EFde");
    const char* const narrow = "narrow";
    // One byte of a code page is one unit, with its sign extended.
    const char* const bytes = "\xE9\x7F\x80";
    const wchar* const nullWide = nullptr;
    const char* const nullNarrow = nullptr;
    Check({
        ROW("w\u00EFde", "%s", wide),
        ROW("w\u00EFde w\u00EFde", "%ls %ws", wide, wide),
        ROW("w\u00EFde w\u00EFde", "%lS %wS", wide, wide),
        ROW("narrow narrow narrow", "%S %hs %hS", narrow, narrow, narrow),
        ROW("\uFFE9\u007F\uFF80", "%S", bytes),
        ROW("\uFFE9\u007F\uFF80", "%hs", bytes),
        ROW("", "%s", VRL_L("")),
        ROW("[    ab]", "[%6s]", VRL_L("ab")),
        ROW("[ab    ]", "[%-6s]", VRL_L("ab")),
        ROW("[    ab]", "[%06s]", VRL_L("ab")),
        ROW("[ab]", "[%.2s]", VRL_L("abc")),
        ROW("[abc]", "[%.9s]", VRL_L("abc")),
        ROW("[]", "[%.0s]", VRL_L("abc")),
        ROW("[    ab]", "[%6.2s]", VRL_L("abc")),
        ROW("[ab    ]", "[%-6.2S]", "abc"),
        ROW("(null) (null)", "%s %S", nullWide, nullNarrow),
        ROW("[(nul]", "[%.4s]", nullWide),
        ROW("[  (null)]", "[%8hs]", nullNarrow),
        ROW("50%s", "%s", VRL_L("50%s")),
    });
}

TEST(TextFormat, TextWithAPrecisionNeedsNoEnd) {
    const wchar wide[3] = {'a', 'b', 'c'};
    const char narrow[3] = {'d', 'e', 'f'};
    EXPECT_EQ(Print(VRL_L("%.3s %.3S"), wide, narrow), "abc def");
}

TEST(TextFormat, Units) {
    Check({
        ROW("A", "%c", VRL_L('A')),
        ROW("\u65E5", "%c", VRL_L('\u65E5')),
        ROW("\u65E5 \u65E5", "%lc %wc", VRL_L('\u65E5'), VRL_L('\u65E5')),
        ROW("n n n", "%C %hc %hC", 'n', 'n', 'n'),
        ROW("\uFFE9", "%C", static_cast<signed char>('\xE9')),
        ROW("\uFFE9", "%hc", 0xE9),
        ROW("\u00E9", "%lC", 0xE9),
        ROW("[   A]", "[%4c]", VRL_L('A')),
        ROW("[A   ]", "[%-4c]", VRL_L('A')),
        // A zero unit ends the text, as in C.
        ROW("[", "[%c]", 0),
    });
}

TEST(TextFormat, WidthAndPrecisionAsArguments) {
    Check({
        ROW("[    5]", "[%*d]", 5, 5),
        ROW("[5    ]", "[%*d]", -5, 5),
        ROW("[5]", "[%*d]", 0, 5),
        ROW("[00005]", "[%0*d]", 5, 5),
        ROW("[005]", "[%.*d]", 3, 5),
        ROW("[5]", "[%.*d]", -3, 5),
        ROW("[  ab]", "[%*.*s]", 4, 2, VRL_L("abc")),
        ROW("[ab  ]", "[%-*.*s]", 4, 2, VRL_L("abc")),
        ROW("[abc]", "[%.*s]", -1, VRL_L("abc")),
        ROW("[ 1.50]", "[%*.*f]", 5, 2, 1.5),
    });
}

TEST(TextFormat, WidthsWithoutEndFillTheMessage) {
    const std::string blanks(1023, ' ');
    const std::string zeros(1023, '0');
    EXPECT_EQ(Print(VRL_L("%2000000000d"), 1), blanks);
    EXPECT_EQ(Print(VRL_L("%99999999999999999999d"), 1), blanks);
    EXPECT_EQ(Print(VRL_L("%.99999999999999999999d"), 1), zeros);
    EXPECT_EQ(Print(VRL_L("%02147483647d"), 1), zeros);
    EXPECT_EQ(Print(VRL_L("%*d"), kMax, 1), blanks);
    EXPECT_EQ(Print(VRL_L("%*d"), kMin, 1), "1" + std::string(1022, ' '));
    EXPECT_EQ(Print(VRL_L("%.*d"), kMax, 1), zeros);
    EXPECT_EQ(Print(VRL_L("%.*d"), kMin, 1), "1");
    EXPECT_EQ(Print(VRL_L("%2147483647s"), VRL_L("x")), blanks);
    EXPECT_EQ(Print(VRL_L("%2147483647.2147483647f"), 1.5), blanks);
    EXPECT_EQ(Print(VRL_L("%.2147483647f"), 1.5), "1.5" + std::string(1020, '0'));
    EXPECT_EQ(Print(VRL_L("%.2147483647s"), VRL_L("x")), "x");
    EXPECT_EQ(Print(VRL_L("%2147483647c"), 'x'), blanks);
}

TEST(TextFormat, UnknownConversionsFillTheMessageToo) {
    const wstring rest(2000, VRL_L('x'));
    EXPECT_EQ(Print((VRL_L("a%y") + rest).c_str()), "a%y" + std::string(1020, 'x'));
}

TEST(TextFormat, Fractions) {
    Check({
        ROW("1.500000", "%f", 1.5),
        ROW("-0.000000", "%f", -0.0),
        ROW("2", "%.0f", 2.5),
        ROW("4", "%.0f", 3.5),
        ROW("2.", "%#.0f", 2.5),
        ROW("0.10", "%.2f", 0.1),
        ROW("0.1000000000000000055511151231257827021181583404541015625", "%.55f", 0.1),
        ROW("[    1.50]", "[%8.2f]", 1.5),
        ROW("[1.50    ]", "[%-8.2f]", 1.5),
        ROW("[-0001.50]", "[%08.2f]", -1.5),
        ROW("[+0001.50]", "[%+08.2f]", 1.5),
        ROW("[ 1.5]", "[% .1f]", 1.5),
        ROW("1.500000e+00", "%e", 1.5),
        ROW("1.5E+100", "%.1E", 1.5e100),
        ROW("5e-324", "%.0e", 5e-324),
        ROW("1.7976931348623157e+308", "%.17g", std::numeric_limits<double>::max()),
        ROW("0.0001 1e-05", "%g %g", 0.0001, 0.00001),
        ROW("100000 1e+06", "%g %g", 100000.0, 1000000.0),
        ROW("1.00000", "%#g", 1.0),
        ROW("1E-10", "%G", 1e-10),
        ROW("0x1.8p+0", "%a", 1.5),
        ROW("0X1.8P+0", "%A", 1.5),
        ROW("0x1.999999999999ap-4", "%a", 0.1),
        ROW("-0x0p+0", "%a", -0.0),
        ROW("[0x0001.8p+0]", "[%011a]", 1.5),
        ROW("[-0x001.8p+0]", "[%011a]", -1.5),
        ROW("[   0x1.8p+0]", "[%11a]", 1.5),
        ROW("1.500000", "%lf", 1.5),
        ROW("1.500000 2.5", "%Lf %Lg", 1.5L, 2.5L),
        // Arguments behind a long number are still found.
        ROW("1.500 7", "%.3Lf %d", 1.5L, 7),
    });
}

TEST(TextFormat, InfinitiesAndNan) {
    Check({
        ROW("inf -inf INF -INF", "%f %f %F %F", kInfinity, -kInfinity, kInfinity, -kInfinity),
        ROW("nan NAN", "%e %E", kNan, kNan),
        ROW("-nan", "%f", -kNan),
        ROW("+inf", "%+f", kInfinity),
        ROW("[     inf]", "[%8f]", kInfinity),
        ROW("[     inf]", "[%08f]", kInfinity),
        ROW("[inf     ]", "[%-8.1g]", kInfinity),
        ROW("inf nan", "%a %a", kInfinity, kNan),
        ROW("INF NAN", "%A %G", kInfinity, kNan),
        ROW("inf", "%Lf", static_cast<long double>(kInfinity)),
    });
}

TEST(TextFormat, LargestNumberIsWhole) {
    const std::string text = Print(VRL_L("%f"), std::numeric_limits<double>::max());
    EXPECT_EQ(text.size(), 316u);
    EXPECT_EQ(text.substr(0, 20), "17976931348623157081");
    EXPECT_EQ(text.substr(309), ".000000");
}

TEST(TextFormat, Pointers) {
    const std::string zeros(2 * sizeof(void*) - 8, '0');
    void* const pointer = reinterpret_cast<void*>(std::uintptr_t{0x00ABCDEF});
    EXPECT_EQ(Print(VRL_L("%p"), pointer), zeros + "00ABCDEF");
    EXPECT_EQ(Print(VRL_L("%p"), static_cast<void*>(nullptr)), zeros + "00000000");
    EXPECT_EQ(Print(VRL_L("[%20p]"), pointer),
              "[" + std::string(12 - zeros.size(), ' ') + zeros + "00ABCDEF]");
}

TEST(TextFormat, CountIsNotWritten) {
    int count = 77;
    EXPECT_EQ(Print(VRL_L("ab%n%d"), &count, 5), "ab5");
    EXPECT_EQ(count, 77);
}

TEST(TextFormat, UnknownConversionsPrintTheRestAsItStands) {
    Check({
        ROW("%y", "%y"),
        ROW("%I6x", "%I6x"),
        ROW("%I3x", "%I3x"),
        ROW("%I6", "%I6"),
        ROW("%I3", "%I3"),
        ROW("a%", "a%"),
        ROW("a%5", "a%5"),
        ROW("a%-", "a%-"),
        ROW("a%.", "a%."),
        ROW("a%l", "a%l"),
        ROW("1 %k %s %n", "%d %k %s %n", 1),
        ROW("%\u65E5", "%\u65E5"),
    });
}

} // namespace
} // namespace vorlund::test
