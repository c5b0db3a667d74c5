/// \file
/// What the tests of a plug-in for sound files share: the library with the plug-in VORLUND_TEST_PLUGIN, and
/// the files of its make_files.py.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/Streams.h"

#include <vorlund/DataFormat.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

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

/// The library with the plug-in, through a plug-in store of the test's own.
class SoundPluginTest : public testing::Test {
protected:
    SoundPluginTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(ToVorlund(VORLUND_TEST_PLUGIN).c_str());
    }
    ~SoundPluginTest() override { store_.Close(); }

    /// Raises what the search raises.
    static CRefPtr<IInputStream> Decode(IInputStream* stream) {
        return CRefPtr<IInputStream>::Adopt(
            CInputStreamSelector(stream).DecodeStream(TDataFormat_AudioPcm::FormatId));
    }
    static CRefPtr<IInputStream> DecodeFile(const std::string& name) {
        const wstring path = ToVorlund(SoundPath(name));
        return CRefPtr<IInputStream>::Adopt(
            CInputStreamSelector(path.c_str()).DecodeStream(TDataFormat_AudioPcm::FormatId));
    }
    static CRefPtr<IInputStream> DecodeBytes(const TBytes& bytes) {
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes = bytes;
        return Decode(stream.Get());
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

private:
    CLibraryScope library_;
    CPluginStore store_;
};

} // namespace vorlund::test
