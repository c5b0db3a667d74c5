/// \file
/// Values and their bytes: what one target writes, every other one reads.
#pragma once

#include "support/Streams.h"

#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace vorlund::test {

struct TGoldenRow {
    std::string name;
    TBytes bytes;
    std::function<CVarWriter&(CVarWriter&)> write;
    /// Reads and compares with what is written.
    std::function<void(CVarReader&)> read;
    /// Reads after the end of the data and expects that nothing changes.
    std::function<void(CVarReader&)> readNothing;
    bool isText = false;
};

/// Images are compared, so that zeros keep their sign and a NaN equals itself.
template <class T> std::string ImageOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

template <class T> TGoldenRow Scalar(const char* name, T value, TBytes bytes) {
    return {name, std::move(bytes), [=](CVarWriter& writer) -> CVarWriter& { return writer << value; },
            [=](CVarReader& reader) {
                T read;
                std::memset(&read, 0x5A, sizeof(read));
                EXPECT_EQ(&(reader >> read), &reader);
                EXPECT_EQ(ImageOf(read), ImageOf(value));
            },
            [=](CVarReader& reader) {
                T read = value;
                reader >> read;
                EXPECT_EQ(ImageOf(read), ImageOf(value));
            }};
}

template <class TText> TGoldenRow Text(const char* name, TText text, TBytes bytes) {
    return {name,
            std::move(bytes),
            [=](CVarWriter& writer) -> CVarWriter& { return writer << text; },
            [=](CVarReader& reader) {
                CString read("before");
                EXPECT_EQ(&(reader >> read), &reader);
                EXPECT_TRUE(read == text);
            },
            [=](CVarReader& reader) {
                CString read("before");
                reader >> read;
                EXPECT_TRUE(read == "before");
            },
            true};
}

inline std::vector<TGoldenRow> GoldenRows() {
    using TFloat = std::numeric_limits<float>;
    using TDouble = std::numeric_limits<double>;
    return {
        Scalar("BoolTrue", true, {1}),
        Scalar("BoolFalse", false, {0}),
        Scalar("Char", 'A', {0x41}),
        Scalar<char>("CharHigh", static_cast<char>(0xE9), {0xE9}),
        Scalar<unsigned char>("UnsignedCharMost", 255, {0xFF}),
        Scalar<short>("Short", 0x1234, {0x34, 0x12}),
        Scalar<short>("ShortLeast", -32768, {0x00, 0x80}),
        Scalar<unsigned short>("UnsignedShort", 0xFEDC, {0xDC, 0xFE}),
        Scalar("Int", 0x12345678, {0x78, 0x56, 0x34, 0x12}),
        Scalar("IntMinusOne", -1, {0xFF, 0xFF, 0xFF, 0xFF}),
        Scalar("IntLeast", std::numeric_limits<int>::min(), {0x00, 0x00, 0x00, 0x80}),
        Scalar("UnsignedInt", 0xFEDCBA98u, {0x98, 0xBA, 0xDC, 0xFE}),
        Scalar("Int64", std::int64_t{0x0123456789ABCDEF}, {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}),
        Scalar("Int64Least", std::numeric_limits<std::int64_t>::min(), {0, 0, 0, 0, 0, 0, 0, 0x80}),
        Scalar("UnsignedInt64", std::uint64_t{0xFEDCBA9876543210},
               {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}),
        Scalar("LongLong", -2LL, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}),
        Scalar("UnsignedLongLong", 3ULL, {3, 0, 0, 0, 0, 0, 0, 0}),
        Scalar("Float", 1.5f, {0x00, 0x00, 0xC0, 0x3F}),
        Scalar("FloatMinusZero", -0.0f, {0x00, 0x00, 0x00, 0x80}),
        Scalar("FloatInfinity", TFloat::infinity(), {0x00, 0x00, 0x80, 0x7F}),
        Scalar("FloatNaN", TFloat::quiet_NaN(), {0x00, 0x00, 0xC0, 0x7F}),
        Scalar("FloatLeast", TFloat::denorm_min(), {0x01, 0x00, 0x00, 0x00}),
        Scalar("Double", -0.1, {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0xBF}),
        Scalar("DoubleInfinity", -TDouble::infinity(), {0, 0, 0, 0, 0, 0, 0xF0, 0xFF}),
        Scalar("DoubleNaN", TDouble::quiet_NaN(), {0, 0, 0, 0, 0, 0, 0xF8, 0x7F}),
        Text("TextEmpty", CString(), {0, 0, 0, 0}),
        Text("Text", CString("ab"), {2, 0, 0, 0, 0x61, 0x00, 0x62, 0x00}),
        Text("TextWide", CString(VRL_L("\u20AC\U0001F600")),
             {3, 0, 0, 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE}),
        Text("TextNarrowHigh", CString("\xE9"), {1, 0, 0, 0, 0xE9, 0xFF}),
        Text<const wchar*>("PointerEmpty", VRL_L(""), {0, 0, 0, 0}),
        Text<const wchar*>("Pointer", VRL_L("a\n"), {2, 0, 0, 0, 0x61, 0x00, 0x0A, 0x00}),
    };
}

/// The int 1, true and a text of ten units.
inline TBytes ChainBytes() {
    return {1,   0, 0,   0, 1,   10, 0,   0, 0,   'V', 0,   'o', 0,   'r', 0,
            'l', 0, 'u', 0, 'n', 0,  'd', 0, ' ', 0,   '4', 0,   '2', 0};
}

} // namespace vorlund::test
