/// \file
/// What the tests of writers and readers share.
#pragma once

#include "support/LibraryScope.h"
#include "support/Outcome.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <vorlund/String.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlund::test {

/// The bytes of narrow text.
inline TBytes Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

/// The bytes of UTF-16 text.
inline TBytes WideBytes(std::basic_string_view<wchar> text) {
    TBytes bytes;
    for (const wchar unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

/// Text with zero units in it: `Units("a\0b")`.
template <std::size_t N> wstring Units(const char (&text)[N]) {
    return wstring(text, text + N - 1);
}

/// How the library describes the exception that ends every `CTextReader::ReadLine`.
inline constexpr const char* kLineEnd = "CObjectNotFoundException vorlund::CString::FindFirst "
                                        "src/vorlund/api/String:141 Didn't find content";
/// And what a stream of the tests raises.
inline constexpr const char* kReadFailed =
    "CIOException test::CFaultyInputStream::Read tests/support/Streams:4 Cannot read";
inline constexpr const char* kWriteFailed =
    "CIOException test::CMemoryOutputStream::Write tests/support/Streams:5 Cannot write";

/// An open library and streams that log their calls.
class CSerialTest : public testing::Test {
protected:
    ~CSerialTest() noexcept override {}

    CRefPtr<CFaultyInputStream> Source(TBytes bytes) {
        auto stream = Make<CFaultyInputStream>();
        stream->bytes = std::move(bytes);
        stream->log = &log_;
        return stream;
    }
    /// A source without a log, which would need memory.
    CRefPtr<CFaultyInputStream> QuietSource(TBytes bytes) {
        auto stream = Source(std::move(bytes));
        stream->log = nullptr;
        return stream;
    }
    CRefPtr<CMemoryOutputStream> Target() {
        auto stream = Make<CMemoryOutputStream>();
        stream->log = &log_;
        return stream;
    }

    CLibraryScope library_;
    TCallLog log_;
};

} // namespace vorlund::test
