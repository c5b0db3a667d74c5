/// \file
/// What the tests of a plug-in for sound files share: the library with the plug-in VORLUND_TEST_PLUGIN, and
/// the files of its make_files.py.
#pragma once

#include "plugins/DecoderPlugin.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace vorlund::test {

/// A line of files.txt.
struct TSoundRow {
    std::string name;
    TDataFormat_AudioPcm format;
    std::int64_t frames = 0;
    bool isLossy = false;

    std::int64_t GetLength() const { return frames * format.GetBlockSize(); }
};

inline fs::path SoundPath(const std::string& name) {
    return BesideProgram(VORLUND_TEST_PLUGIN "-files") / name;
}

inline TBytes LoadSound(const std::string& name) {
    const std::string bytes = ReadFile(SoundPath(name));
    return {bytes.begin(), bytes.end()};
}

inline std::vector<TSoundRow> LoadRows() {
    std::istringstream lines(ReadFile(SoundPath("files.txt")));
    std::vector<TSoundRow> rows;
    TSoundRow row;
    std::string format;
    std::string kind;
    while (lines >> row.name >> format >> row.format.channels >> row.format.samplesPerSec >> row.frames >>
           kind) {
        row.format.sampleFormat = format == "s16"   ? SAMPLE_FORMAT_16BIT
                                  : format == "s32" ? SAMPLE_FORMAT_32BIT
                                                    : SAMPLE_FORMAT_FLOAT;
        row.isLossy = kind == "lossy";
        rows.push_back(row);
    }
    return rows;
}

class SoundPluginTest : public CDecoderPluginTest {
protected:
    SoundPluginTest()
        : CDecoderPluginTest(VORLUND_TEST_PLUGIN, TDataFormat_AudioPcm::FormatId,
                             VORLUND_TEST_PLUGIN "-files") {}
};

} // namespace vorlund::test
