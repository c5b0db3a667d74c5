/// \file
/// What the tests of the plug-in y4m share.
#pragma once

#include "plugins/DecoderPlugin.h"

#include <sstream>
#include <vector>

namespace vorlund::test {

/// A line of files.txt.
struct TVideoRow {
    std::string name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::int64_t frames = 0;
    float rate = 0;
};

class Y4mTest : public CDecoderPluginTest {
protected:
    Y4mTest() : CDecoderPluginTest("y4m", TDataFormat_VideoRgb::FormatId, "y4m-files") {}

    std::vector<TVideoRow> LoadRows() const {
        std::istringstream lines(ReadFile(files_ / "files.txt"));
        std::vector<TVideoRow> rows;
        TVideoRow row;
        while (lines >> row.name >> row.width >> row.height >> row.frames >> row.rate) rows.push_back(row);
        return rows;
    }

    static TBytes MakeBytes(const std::string& text) { return {text.begin(), text.end()}; }
};

} // namespace vorlund::test
