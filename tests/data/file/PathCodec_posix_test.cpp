// Paths between UTF-16 and bytes, against a slow model.
#include "vorlund/data/file/PathCodec_posix.h"

#include <vorlund/Path.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

/// UTF-8 of a code point, surrogates included.
std::string Utf8(unsigned int code) {
    std::string bytes;
    if (code < 0x80) return std::string(1, static_cast<char>(code));
    if (code >= 0x10000) {
        bytes += static_cast<char>(0xF0 + code / 0x40000);
        bytes += static_cast<char>(0x80 + code / 0x1000 % 0x40);
        bytes += static_cast<char>(0x80 + code / 0x40 % 0x40);
    } else if (code >= 0x800) {
        bytes += static_cast<char>(0xE0 + code / 0x1000);
        bytes += static_cast<char>(0x80 + code / 0x40 % 0x40);
    } else {
        bytes += static_cast<char>(0xC0 + code / 0x40);
    }
    return bytes + static_cast<char>(0x80 + code % 0x40);
}

bool IsSurrogate(unsigned int code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

wstring Utf16(unsigned int code) {
    if (code < 0x10000) return wstring(1, static_cast<wchar>(code));
    return {static_cast<wchar>(0xD800 + (code - 0x10000) / 0x400),
            static_cast<wchar>(0xDC00 + (code - 0x10000) % 0x400)};
}

/// What the codec should make of `bytes`: at each place the one sequence that a code point has there, found
/// by reading it loosely and writing it back, or else the byte itself; so for "\", which names hold.
wstring Model(const std::string& bytes) {
    wstring text;
    for (std::size_t i = 0; i < bytes.size();) {
        std::size_t length = 0;
        for (std::size_t tried = 1; tried <= 4 && i + tried <= bytes.size() && length == 0; ++tried) {
            static constexpr unsigned int kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
            unsigned int code = static_cast<unsigned char>(bytes[i]) & kLeadBits[tried - 1];
            for (std::size_t k = 1; k < tried; ++k)
                code = code * 0x40 + (static_cast<unsigned char>(bytes[i + k]) & 0x3F);
            if (code > 0x10FFFF || IsSurrogate(code) || code == '\\' ||
                bytes.compare(i, tried, Utf8(code)) != 0)
                continue;
            text += Utf16(code);
            length = tried;
        }
        if (length == 0) {
            text += static_cast<wchar>(0xDC00 + static_cast<unsigned char>(bytes[i]));
            length = 1;
        }
        i += length;
    }
    return text;
}

/// True when the codec agrees with the model and the bytes come back.
bool IsRight(const std::string& bytes) {
    const wstring text = pathcodec::Decode(bytes);
    std::string back;
    return text == Model(bytes) && pathcodec::Encode(text.c_str(), back) && back == bytes;
}

std::string Hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char two[4];
        std::snprintf(two, sizeof(two), "%02X ", static_cast<unsigned char>(byte));
        text += two;
    }
    return text;
}

TEST(PathCodec, EveryStringOfUpToTwoBytesComesBack) {
    for (int first = 1; first < 256; ++first) {
        const std::string one(1, static_cast<char>(first));
        ASSERT_TRUE(IsRight(one)) << Hex(one);
        for (int second = 1; second < 256; ++second) {
            const std::string two = one + static_cast<char>(second);
            ASSERT_TRUE(IsRight(two)) << Hex(two);
        }
    }
}

TEST(PathCodec, EveryStringOfUpToFiveBytesFromTheEdgesComesBack) {
    // Both sides of every limit in the table of well-formed sequences.
    constexpr unsigned char kEdges[] = {0x01, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                        0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                        0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF, 0x5C};
    constexpr std::size_t kCount = std::size(kEdges);
    for (int length = 3; length <= 4; ++length) {
        std::size_t total = 1;
        for (int i = 0; i < length; ++i) total *= kCount;
        for (std::size_t number = 0; number < total; ++number) {
            std::string bytes;
            std::size_t rest = number;
            for (int i = 0; i < length; ++i, rest /= kCount)
                bytes += static_cast<char>(kEdges[rest % kCount]);
            ASSERT_TRUE(IsRight(bytes)) << Hex(bytes);
        }
    }
    for (std::size_t number = 0; number < kCount * kCount; ++number) {
        const std::string sandwich = std::string("\xF0\x9D\x84", 3) +
                                     static_cast<char>(kEdges[number / kCount]) +
                                     static_cast<char>(kEdges[number % kCount]);
        ASSERT_TRUE(IsRight(sandwich)) << Hex(sandwich);
    }
}

TEST(PathCodec, EveryCodePointComesBack) {
    // Neighbours in one string, because single calls take most of the time.
    constexpr unsigned int kRun = 64;
    std::string bytes;
    wstring text;
    for (unsigned int code = 1; code <= 0x10FFFF; ++code) {
        if (!IsSurrogate(code)) {
            bytes += Utf8(code);
            text += code == '\\' ? wstring(1, static_cast<wchar>(0xDC5C)) : Utf16(code);
        }
        if (code % kRun != kRun - 1) continue;
        std::string back;
        ASSERT_TRUE(pathcodec::Decode(bytes) == text) << "in the run that ends at " << code;
        ASSERT_TRUE(pathcodec::Encode(text.c_str(), back) && back == bytes)
            << "in the run that ends at " << code;
        bytes.clear();
        text.clear();
    }
    EXPECT_EQ(bytes, "") << "the last run is whole";
}

TEST(PathCodec, AnEncodedSurrogateIsThreeStrayBytes) {
    for (unsigned int code = 0xD800; code <= 0xDFFF; ++code) {
        const std::string bytes = Utf8(code);
        ASSERT_TRUE(IsRight(bytes)) << Hex(bytes);
        ASSERT_EQ(pathcodec::Decode(bytes).size(), 3u) << Hex(bytes);
    }
}

TEST(PathCodec, StrayBytesBecomeTheirOwnUnits) {
    EXPECT_EQ(Narrow(pathcodec::Decode("a\x80z")), Narrow(wstring{'a', 0xDC80, 'z'}));
    EXPECT_EQ(Narrow(pathcodec::Decode("\xFF")), Narrow(wstring{0xDCFF}));
    EXPECT_EQ(Narrow(pathcodec::Decode("\xED\xA0\x80")), Narrow(wstring{0xDCED, 0xDCA0, 0xDC80}));
}

TEST(PathCodec, BackslashOfANameIsToldFromThatOfATextThatIsBetweenFolders) {
    EXPECT_EQ(Narrow(pathcodec::Decode("a\\b/c")), Narrow(wstring{'a', 0xDC5C, 'b', '/', 'c'}));
    std::string bytes;
    for (const wchar* const text : {VRL_L("a\\b\\"), VRL_L("\u00E9\\b")}) {
        ASSERT_TRUE(pathcodec::Encode(text, bytes));
        EXPECT_EQ(bytes.find('\\'), std::string::npos) << bytes;
        EXPECT_NE(bytes.find("/b"), std::string::npos) << bytes;
    }
    // A pair, then the unit of a name.
    EXPECT_TRUE(IsRight("\xF0\x9F\x98\x80\\"));
}

TEST(PathCodec, StrayUnitAfterAPairStaysAlone) {
    // U+1F600, then a stray byte: the pair takes the first low surrogate only.
    EXPECT_TRUE(IsRight("\xF0\x9F\x98\x80\x80"));
    const wchar pair[] = {0xD800, 0xDC80, 0};
    std::string bytes;
    ASSERT_TRUE(pathcodec::Encode(pair, bytes));
    EXPECT_EQ(Hex(bytes), Hex("\xF0\x90\x82\x80"));
}

TEST(PathCodec, SurrogatesThatStandForNothingAreRefused) {
    std::string bytes;
    for (unsigned int unit = 0xD800; unit <= 0xDFFF; ++unit) {
        const bool isStray = unit == 0xDC5C || (unit >= 0xDC80 && unit <= 0xDCFF);
        const wchar alone[] = {static_cast<wchar>(unit), 0};
        const wchar before[] = {static_cast<wchar>(unit), 'a', 0};
        const wchar after[] = {'a', static_cast<wchar>(unit), 0};
        ASSERT_EQ(pathcodec::Encode(alone, bytes), isStray) << unit;
        ASSERT_EQ(pathcodec::Encode(before, bytes), isStray) << unit;
        ASSERT_EQ(pathcodec::Encode(after, bytes), isStray) << unit;
    }
    const wchar twice[] = {0xD800, 0xD800, 0xDC00, 0};
    EXPECT_FALSE(pathcodec::Encode(twice, bytes));
}

TEST(PathCodec, EscapedBytesStayBesideWhatNoNameHolds) {
    constexpr wchar kPath[] = {0xDC80, 'a', 0xD800, 'b', 0xDC5C, 0};
    EXPECT_EQ(PathToUtf8(kPath), "\x80"
                                 "a\xEF\xBF\xBD"
                                 "b\\");
}

TEST(PathCodec, EmptyAndNull) {
    std::string bytes = "old";
    EXPECT_TRUE(pathcodec::Encode(VRL_L(""), bytes));
    EXPECT_EQ(bytes, "");
    EXPECT_FALSE(pathcodec::Encode(nullptr, bytes));
    EXPECT_TRUE(pathcodec::Decode("").empty());
}

} // namespace
} // namespace vorlund::test
