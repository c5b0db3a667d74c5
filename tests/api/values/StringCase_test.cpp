// Comparison without regard to case follows the C runtime in the locale of the program.
#include <vorlund/String.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace {

using vorlund::CString;
using vorlund::wchar;
using vorlund::wstring;

/// Sets a locale, and the one from before at the end.
class CLocaleScope {
public:
    explicit CLocaleScope(const char* name) : before_(std::setlocale(LC_CTYPE, nullptr)) {
        isSet_ = std::setlocale(LC_CTYPE, name) != nullptr;
    }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;
    ~CLocaleScope() { std::setlocale(LC_CTYPE, before_.c_str()); }

    bool IsSet() const { return isSet_; }

private:
    std::string before_;
    bool isSet_;
};

/// A locale with the letters of Unicode.
#ifdef _WIN32
constexpr const char* kWideLocale = "English_United States.1252";
#else
constexpr const char* kWideLocale = "C.UTF-8";
#endif

int Compare(unsigned int left, unsigned int right) {
    const wstring text(1, static_cast<wchar>(left));
    return CString(text.c_str()).CompareToIgnoreCase(wstring(1, static_cast<wchar>(right)).c_str());
}

/// All pairs of units that are equal and follow each other among their equals, the lesser unit first.
std::vector<std::pair<unsigned int, unsigned int>> EqualUnits() {
    std::vector<CString> texts;
    for (unsigned int unit = 0; unit < 0x10000; ++unit)
        texts.emplace_back(wstring(1, static_cast<wchar>(unit)).c_str());
    std::vector<unsigned int> units(texts.size());
    std::iota(units.begin(), units.end(), 0u);
    std::stable_sort(units.begin(), units.end(), [&](unsigned int left, unsigned int right) {
        return texts[left].CompareToIgnoreCase(texts[right].GetBuffer()) < 0;
    });
    std::vector<std::pair<unsigned int, unsigned int>> pairs;
    for (std::size_t i = 1; i < units.size(); ++i) {
        if (texts[units[i - 1]].CompareToIgnoreCase(texts[units[i]].GetBuffer()) == 0)
            pairs.emplace_back(units[i - 1], units[i]);
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

TEST(StringCase, InTheInitialLocaleTheLettersOfAscii) {
    // The same list on every target: glibc, and Wine's runtime for 32 and 64 bits.
    std::vector<std::pair<unsigned int, unsigned int>> letters;
    for (unsigned int letter = 'A'; letter <= 'Z'; ++letter) letters.emplace_back(letter, letter + 32);
    const CLocaleScope initial("C");
    ASSERT_TRUE(initial.IsSet());
    EXPECT_EQ(EqualUnits(), letters);
}

TEST(StringCase, ALocaleAddsItsLetters) {
    EXPECT_EQ(Compare(0xE9, 0xC9), 1);
    EXPECT_EQ(Compare(0x436, 0x416), 1);
    {
        const CLocaleScope wide(kWideLocale);
        ASSERT_TRUE(wide.IsSet());
        EXPECT_EQ(Compare(0xE9, 0xC9), 0);
        EXPECT_EQ(Compare(0x436, 0x416), 0);
        EXPECT_EQ(Compare(0xE9, 0xCA), -1);
        // Narrow texts are widened with their sign first.
        EXPECT_EQ(CString("\xE9").CompareToIgnoreCase("\xC9"), 1);
    }
    EXPECT_EQ(Compare(0xE9, 0xC9), 1);
}

TEST(StringCase, EveryUnitAsTheRuntimeHasIt) {
    const CLocaleScope wide(kWideLocale);
    ASSERT_TRUE(wide.IsSet());
    int letters = 0;
    for (unsigned int unit = 1; unit < 0x10000; ++unit) {
        const auto upper = static_cast<unsigned int>(std::towupper(static_cast<std::wint_t>(unit)));
        if (upper > 0xFFFF) continue;
        EXPECT_EQ(Compare(unit, upper), 0) << unit;
        letters += upper != unit;
    }
    EXPECT_GT(letters, 1000);
}

TEST(StringCase, TheEndOfATextIsBelowEveryUnit) {
    for (unsigned int unit = 1; unit < 0x10000; ++unit) {
        const wstring text(1, static_cast<wchar>(unit));
        EXPECT_EQ(CString().CompareToIgnoreCase(text.c_str()), -1);
        EXPECT_EQ(CString(text.c_str()).CompareToIgnoreCase(""), 1);
    }
}

} // namespace
