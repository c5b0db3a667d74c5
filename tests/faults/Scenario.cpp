#include "faults/Scenario.h"

#include "faults/FaultPoints.h"
#include "support/Text.h"
#include "support/WavBuilder.h"

#include <vorlund/StreamSelector.h>
#include <vorlund/VarWriter.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fstream>

namespace vorlund::faults {
namespace {

namespace fs = std::filesystem;
using test::TBytes;

void WriteFile(const fs::path& path, const TBytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// A recording for the decoder of the sample plug-in: 8 bits, one channel.
TBytes MakeSampleRecording() {
    TBytes bytes;
    test::AppendText(bytes, "VSA1");
    bytes.insert(bytes.end(), {1, 8, 0, 0});
    test::Append32(bytes, 8000);
    test::Append32(bytes, 1000);
    const TBytes samples = test::Ramp(1000);
    bytes.insert(bytes.end(), samples.begin(), samples.end());
    return bytes;
}

void WriteRecords() {
    v.Init();
    {
        CVarWriter writer(COutputStreamSelector(files.records.c_str()).GetOutputStreamTmp());
        for (int i = 0; i < 5; ++i) writer << i << i * 0.5 << CString("text of a record");
    }
    v.Close();
}

} // namespace

TFiles files;

void CResult::Add(const char* format, ...) {
    std::va_list list;
    va_start(list, format);
    const int written = std::vsnprintf(text_ + size_, sizeof text_ - size_, format, list);
    va_end(list);
    if (written > 0) size_ = std::min(size_ + static_cast<std::size_t>(written), sizeof text_ - 1);
}

void CResult::AddBytes(const void* bytes, std::size_t size) {
    std::uint64_t digest = 14695981039346656037u;
    for (std::size_t i = 0; i < size; ++i) {
        digest ^= static_cast<const unsigned char*>(bytes)[i];
        digest *= 1099511628211u;
    }
    Add("[%u %08x]", static_cast<unsigned int>(size), static_cast<unsigned int>(digest));
}

void CResult::AddText(const wchar* text) {
    for (; text && *text; ++text) Add(*text < 127 ? "%c" : "<%x>", static_cast<unsigned int>(*text));
    Add(";");
}

wstring ToVorlundPath(const fs::path& path) {
    const std::u16string units = path.u16string();
    return {units.begin(), units.end()};
}

void PrepareFiles(const fs::path& folder, const fs::path& programFolder) {
    fs::remove_all(folder);
    fs::create_directories(folder / "listed" / "inner");
    const TBytes wav = test::CWavBuilder()
                           .Format({.channels = 2, .samplesPerSec = 8000})
                           .Chunk("LIST", test::Ramp(40))
                           .Chunk("data", test::Ramp(20000))
                           .Chunk("tail", test::Ramp(8))
                           .Build();
    WriteFile(folder / "input.wav", wav);
    WriteFile(folder / "input.vsa", MakeSampleRecording());
    for (const char* const name : {"a.txt", "b.txt", "c.wav"})
        WriteFile(folder / "listed" / name, test::Ramp(10));
    TBytes lines;
    for (int i = 0; i < 60; ++i) test::AppendText(lines, "line number " + std::to_string(i) + "\r\n");
    WriteFile(folder / "lines.txt", lines);
    files = {folder,
             ToVorlundPath(folder / "listed" / ""),
             ToVorlundPath(folder / "input.wav"),
             ToVorlundPath(folder / "input.vsa"),
             ToVorlundPath(folder / "output"),
             ToVorlundPath(folder / "lines.txt"),
             ToVorlundPath(folder / "records"),
             ToVorlundPath(programFolder / "sample" / "")};
    WriteRecords();
}

float GetWaitLimit() {
    return IsArmed() ? 0.3f : 60.0f;
}

} // namespace vorlund::faults
