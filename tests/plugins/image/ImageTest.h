/// \file
/// What the tests of the plug-in image share.
#pragma once

#include "plugins/DecoderPlugin.h"

#include <sstream>
#include <vector>

namespace vorlund::test {

/// A line of files.txt.
struct TPictureRow {
    std::string name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int tolerance = 0;
};

class ImageTest : public CDecoderPluginTest {
protected:
    ImageTest() : CDecoderPluginTest("image", TDataFormat_ImageRgb::FormatId, "image-files") {}

    std::vector<TPictureRow> LoadRows() const {
        std::istringstream lines(ReadFile(files_ / "files.txt"));
        std::vector<TPictureRow> rows;
        TPictureRow row;
        while (lines >> row.name >> row.width >> row.height >> row.tolerance) rows.push_back(row);
        return rows;
    }
};

} // namespace vorlund::test
