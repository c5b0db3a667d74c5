/// \file
/// What the tests of the plug-ins with decoders share: the library with the plug-in, and the files
/// that are made when the tests are built.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace vorlund::test {

/// Blue in the lowest byte, then green, red and alpha.
inline constexpr TPixelFormat kPixels{.bitsPerPixel = 32,
                                      .alphaBits = 8,
                                      .alphaShift = 24,
                                      .redBits = 8,
                                      .redShift = 16,
                                      .greenBits = 8,
                                      .greenShift = 8,
                                      .blueBits = 8,
                                      .blueShift = 0};

inline TBytes LoadBytes(const fs::path& path) {
    const std::string bytes = ReadFile(path);
    return {bytes.begin(), bytes.end()};
}

/// The text, which is ASCII.
inline std::string Narrowed(const CString& text) {
    const wstring wide = text.GetBuffer();
    return {wide.begin(), wide.end()};
}

/// The library with a plug-in, through a plug-in store of the test's own.
class CDecoderPluginTest : public testing::Test {
protected:
    /// \param name  of the plug-in
    /// \param format  what it decodes to
    /// \param files  the folder of the files
    CDecoderPluginTest(const char* name, const CId& format, const char* files)
        : files_(BesideProgram(files)), format_(format) {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        const std::string text = name;
        store_.LoadPlugin(wstring(text.begin(), text.end()).c_str());
    }
    ~CDecoderPluginTest() override { store_.Close(); }

    TBytes Load(const std::string& name) const { return LoadBytes(files_ / name); }

    /// Raises what the search raises; what the report says is in `report_`.
    CRefPtr<IInputStream> Decode(IInputStream* stream) {
        return CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeStream(stream, format_, {.report = &report_}));
    }
    CRefPtr<IInputStream> DecodeBytes(TBytes bytes) {
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes = std::move(bytes);
        return Decode(stream.Get());
    }
    CRefPtr<IInputStream> DecodeFile(const std::string& name) {
        return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeFile(
            ToVorlund(files_ / name).c_str(), format_, {.report = &report_}));
    }
    /// Why the bytes are refused; empty when they are not.
    std::string Refusal(TBytes bytes) {
        try {
            DecodeBytes(std::move(bytes));
        } catch (const CDataFormatException&) {
            return Narrowed(report_.Explain());
        }
        return "";
    }
    /// What the decoder that was connected has remarked.
    std::string GetRemarks() const {
        const TDecodeEntry* const entry = report_.GetFurthest();
        return entry ? Narrowed(entry->remarks) : "";
    }

    /// Everything from here to the end, or to `limit` bytes, in reads of `step` bytes.
    static TBytes ReadAll(IInputStream& stream, std::size_t step = 65536,
                          std::size_t limit = ~std::size_t{0}) {
        TBytes bytes;
        while (bytes.size() < limit) {
            const std::size_t at = bytes.size();
            bytes.resize(at + step);
            const std::uint64_t count = stream.Read(bytes.data() + at, step);
            bytes.resize(at + static_cast<std::size_t>(count));
            if (count == 0) break;
        }
        return bytes;
    }

    /// Reads of any size, from any place, give the bytes of `whole`, which `decoded` delivers.
    static void ExpectPositions(IInputStream& decoded, const TBytes& whole) {
        for (const std::size_t step : {1, 3, 7, 4096, 100003}) {
            const std::size_t limit = std::min<std::size_t>(step < 8 ? 3000 : ~0u, whole.size());
            decoded.Seek(0);
            const TBytes part = ReadAll(decoded, step, limit);
            ASSERT_GE(part.size(), limit);
            EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin())) << step;
        }
        const auto length = static_cast<std::int64_t>(whole.size());
        EXPECT_EQ(decoded.GetLength(), length);
        std::uint64_t place = 1;
        for (int i = 0; i < 100; ++i) {
            place = place * 6364136223846793005u + 1442695040888963407u;
            const std::size_t at = place / 7 % whole.size();
            TBytes part(std::min<std::size_t>(place % 3000 + 1, whole.size() - at));
            decoded.Seek(static_cast<std::int64_t>(at));
            ASSERT_EQ(decoded.Tell(), static_cast<std::int64_t>(at));
            ASSERT_EQ(decoded.Read(part.data(), part.size()), part.size());
            EXPECT_TRUE(
                std::equal(part.begin(), part.end(),
                           whole.begin() + decoded.Tell() - static_cast<std::ptrdiff_t>(part.size())));
        }
        decoded.Seek(length + 100);
        EXPECT_EQ(decoded.Tell(), length);
        EXPECT_TRUE(decoded.Eof());
        std::uint8_t byte = 0;
        EXPECT_EQ(decoded.Read(&byte, 1), 0u);
        decoded.Seek(length - 3);
        EXPECT_FALSE(decoded.Eof());
        decoded.Skip(1);
        EXPECT_EQ(decoded.Tell(), length - 2);
        decoded.Skip(~std::uint64_t{0});
        EXPECT_EQ(decoded.Tell(), length);
        EXPECT_THROW(decoded.Seek(-1), CIOException);
        EXPECT_EQ(decoded.Tell(), length);
        EXPECT_THROW(decoded.Read(nullptr, 1), CNullPtrException);
    }

    const fs::path files_;
    CDecodeReport report_;

private:
    const CId format_;
    CLibraryScope library_;
    CPluginStore store_;
};

/// Calls `act` inside one of its reads, the one after `calls` others.
class CActingStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x1D7E5713, 0xA15D1C0A, 0x960B8F3E, 0x7251B3A8};

    int calls = 0;
    std::function<void()> act;

    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (calls-- == 0) {
            if (const auto once = std::exchange(act, nullptr)) once();
        }
        return CMemoryInputStream::Read(buffer, size);
    }
};

} // namespace vorlund::test
