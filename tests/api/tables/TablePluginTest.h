/// \file
/// The plug-in with a table that tests change, and what its classes are.
#pragma once

#include "api/plugins/TestPlugins.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {

inline constexpr CId kTableDecoder{0x7AB1E001, 1, 2, 3};
inline constexpr CId kTableForward{0x7AB1E002, 1, 2, 3};
inline constexpr CId kTableForwardSource{0x7AB1EF00, 1, 2, 3};
inline constexpr CId kTableOutput{0x7AB1E003, 1, 2, 3};
inline constexpr CId kTableInput{0x7AB1E004, 1, 2, 3};

/// Loads the plug-in whose table the tests change.
class CTablePluginTest : public testing::Test {
protected:
    ~CTablePluginTest() noexcept override { store_.Close(); }

    /// Loads the plug-in with that number of a case.
    TPluginReport Load(int number, const std::string& name = "table") {
        std::string bytes = ReadFile(PluginFile("table_plugin"));
        const std::size_t at = bytes.find("TABLE CASE ");
        EXPECT_NE(at, std::string::npos);
        bytes[at + 11] = static_cast<char>('0' + number / 10);
        bytes[at + 12] = static_cast<char>('0' + number % 10);
        const fs::path path = folder_.PathOf(name);
        WriteFile(path, bytes);
        store_.LoadPluginFile(ToVorlund(path).c_str());
        return store_.GetReport(store_.GetReportCount() - 1);
    }
    static CRefPtr<CMemoryInputStream> Bytes(const std::string& text) {
        auto stream = Make<CMemoryInputStream>();
        stream->bytes.assign(text.begin(), text.end());
        return stream;
    }
    CRefPtr<IInputStream> Decode(IInputStream* stream) {
        return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeStream(
            stream, TDataFormat_AudioPcm::FormatId, {.report = &report_}));
    }
    CRefPtr<IInputStream> Decode(const std::string& text) { return Decode(Bytes(text).Get()); }

    /// An object of one of its classes.
    static CRefPtr<IInputStreamFilter> Create(const CId& id) {
        return CRefPtr<IInputStreamFilter>::Adopt(
            static_cast<IInputStreamFilter*>(v.GetClassStore().CreateObject(id)));
    }

    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
    CDecodeReport report_;
};

} // namespace vorlund::test
