// The formatter against the C library's own, and its bounds.
#include "vorlund/api/text/TextFormat.h"

#include "support/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace vorlund::test {
namespace {

wstring Widen(const std::string& text) {
    return {text.begin(), text.end()};
}

/// Random directives with equal chances for every flag; the seed is fixed.
class CDirectives {
public:
    std::string Next(const char* conversions) {
        std::string text = "%";
        for (const char flag : {'-', '+', ' ', '#', '0'})
            if (Roll(3) == 0) text += flag;
        if (Roll(2)) text += std::to_string(1 + Roll(40));
        if (Roll(2)) {
            text += '.';
            if (Roll(8)) text += std::to_string(Roll(30));
        }
        length_ = text.size();
        return text + conversions[Roll(static_cast<unsigned int>(std::strlen(conversions)))];
    }

    /// `directive` with the length `length` before its conversion.
    std::string WithLength(std::string directive, const char* length) const {
        return directive.insert(length_, length);
    }

    unsigned int Roll(unsigned int sides) { return static_cast<unsigned int>(random_() % sides); }
    std::uint64_t Bits() { return random_(); }

private:
    std::mt19937_64 random_{20240229};
    std::size_t length_ = 0;
};

/// Integers of every magnitude.
std::uint64_t AnyInteger(CDirectives& directives) {
    return directives.Bits() >> directives.Roll(64);
}

/// Finite numbers of every magnitude, and plain ones.
double AnyNumber(CDirectives& directives) {
    if (directives.Roll(2)) return (static_cast<double>(directives.Roll(2000001)) - 1000000.0) / 64.0;
    const std::uint64_t bits = directives.Bits();
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    return value - value == 0 ? value : 1.0;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <class TValue> std::string OfTheCLibrary(const std::string& format, TValue value) {
    char text[2000];
    std::snprintf(text, sizeof(text), format.c_str(), value);
    return text;
}
#pragma GCC diagnostic pop

template <class TValue> std::string Ours(const std::string& format, TValue value) {
    wchar text[2000];
    const int length = FormatArguments(text, 2000, Widen(format).c_str(), value);
    EXPECT_EQ(static_cast<std::size_t>(length), std::char_traits<wchar>::length(text));
    return Narrow(text);
}

/// False where the C library gives a meaning to flags that have none for a conversion, as on Windows.
bool IsCLibraryExact() {
    return OfTheCLibrary("% u", 1) == "1";
}

/// A sum over results (FNV-1a), the same on every system: where the C library cannot be asked, the results
/// are those that it confirmed elsewhere.
class CResults {
public:
    const std::string& Add(const std::string& text) {
        for (const char unit : text + '\n') sum_ = (sum_ ^ static_cast<unsigned char>(unit)) * 0x100000001B3u;
        return text;
    }
    std::uint64_t GetSum() const { return sum_; }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325u;
};

TEST(TextFormatModel, Integers) {
    CDirectives directives;
    CResults results;
    const bool isExact = IsCLibraryExact();
    const auto check = [&](const std::string& ours, const std::string& theirs) {
        results.Add(ours);
        return !isExact || ours == theirs;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string format = directives.Next("diuoxX");
        const std::uint64_t value = AnyInteger(directives);
        const int narrow = static_cast<int>(value);
        ASSERT_TRUE(check(Ours(format, narrow), OfTheCLibrary(format, narrow))) << format << ' ' << narrow;
        const std::string wide = directives.WithLength(format, "ll");
        const long long wideValue = static_cast<long long>(value);
        ASSERT_TRUE(check(Ours(wide, wideValue), OfTheCLibrary(wide, wideValue))) << wide << ' ' << wideValue;
        ASSERT_EQ(Ours(directives.WithLength(format, "I64"), wideValue), Ours(wide, wideValue)) << wide;
        const std::string byte = directives.WithLength(format, "hh");
        ASSERT_TRUE(check(Ours(byte, narrow), OfTheCLibrary(byte, narrow))) << byte << ' ' << narrow;
        const std::string half = directives.WithLength(format, "h");
        ASSERT_TRUE(check(Ours(half, narrow), OfTheCLibrary(half, narrow))) << half << ' ' << narrow;
    }
    EXPECT_EQ(results.GetSum(), 2921013476882030966u);
}

TEST(TextFormatModel, Fractions) {
    CDirectives directives;
    CResults results;
    const bool isExact = IsCLibraryExact();
    for (int i = 0; i < 20000; ++i) {
        const std::string format = directives.Next("eEfFgGaA");
        const double value = AnyNumber(directives);
        const std::string ours = results.Add(Ours(format, value));
        if (isExact) {
            ASSERT_EQ(ours, OfTheCLibrary(format, value)) << format << ' ' << value;
        }
    }
    EXPECT_EQ(results.GetSum(), 3663070457051542433u);
}

// Bounds.

TEST(TextFormatModelBounds, EveryCapacityCutsAndTerminates) {
    const std::string whole = "ab 0001.50 text   7 (null)";
    for (std::size_t capacity = 0; capacity <= whole.size() + 3; ++capacity) {
        std::array<wchar, 40> buffer;
        buffer.fill(VRL_L('#'));
        const wchar* const nothing = nullptr;
        const int length = FormatArguments(buffer.data(), capacity, VRL_L("ab %07.2f %s %3d %s"), 1.5,
                                           VRL_L("text"), 7, nothing);
        const std::size_t expected = capacity == 0 ? 0 : std::min(capacity - 1, whole.size());
        EXPECT_EQ(static_cast<std::size_t>(length), expected);
        if (capacity > 0) {
            EXPECT_EQ(Narrow(buffer.data()), whole.substr(0, expected));
        }
        // Nothing behind the terminator is touched.
        for (std::size_t i = capacity == 0 ? 0 : expected + 1; i < buffer.size(); ++i)
            EXPECT_EQ(buffer[i], VRL_L('#')) << capacity << ' ' << i;
    }
}

TEST(TextFormatModelBounds, NothingIsReadBehindTheCut) {
    // Would be read from an address that nobody has, if it were looked at.
    const wchar* const wild = reinterpret_cast<const wchar*>(std::uintptr_t{16});
    wchar buffer[4];
    EXPECT_EQ(FormatArguments(buffer, 4, VRL_L("abc%s"), wild), 3);
    EXPECT_EQ(Narrow(buffer), "abc");
}

TEST(TextFormatModelBounds, NumberLongerThanItsBuffer) {
    // 1500 characters are kept; the padding is counted from the full length.
    std::array<wchar, 3000> buffer;
    FormatArguments(buffer.data(), buffer.size(), VRL_L("%.2000f|"), 1.0);
    EXPECT_EQ(Narrow(buffer.data()), "1." + std::string(1498, '0') + '|');
    FormatArguments(buffer.data(), buffer.size(), VRL_L("%2010.2000f|"), 1.0);
    EXPECT_EQ(Narrow(buffer.data()), "        1." + std::string(1498, '0') + '|');
}

} // namespace
} // namespace vorlund::test
