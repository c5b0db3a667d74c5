// How often the system is asked for bytes when a file is opened and identified. The program's own `pread64`
// counts and goes on to the C library's.

#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/Vorlund.h>

#include "data/file/TemporaryFolder.h"
#include "support/LibraryScope.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <atomic>

#include <dlfcn.h>
#include <unistd.h>

namespace {
std::atomic<int> readCount = 0;
}

extern "C" __attribute__((visibility("default"))) ssize_t pread64(int file, void* buffer, size_t size,
                                                                  off64_t position) {
    using TRead = ssize_t(int, void*, size_t, off64_t);
    static auto* const next = reinterpret_cast<TRead*>(dlsym(RTLD_NEXT, "pread64"));
    ++readCount;
    return next(file, buffer, size, position);
}

namespace vorlund::test {
namespace {

struct TOpenedFile {
    const char* what;
    TBytes bytes;
    /// -1: is rejected.
    std::int64_t length;
    /// Behind much data, what is there and once more the begin, which has left the window.
    int reads;
};

std::vector<TOpenedFile> OpenedFiles() {
    const TWavFormat format{};
    TBytes cut = CWavBuilder().Format(format).Chunk("data", TBytes(100'000)).Build();
    cut.resize(50'000);
    const auto small = CWavBuilder().Format(format).Chunk("data", Ramp(100));
    return {
        {"small", CWavBuilder(small).Build(), 100, 1},
        {"without data", CWavBuilder().Format(format).Chunk("data", {}).Build(), 0, 1},
        {"larger than the first block", CWavBuilder().Format(format).Chunk("data", TBytes(100'000)).Build(),
         100'000, 1},
        {"cut", cut, 100'000, 1},
        {"odd byte at the end", CWavBuilder(small).Raw(TBytes(1)).Build(), 100, 1},
        {"half a head at the end", CWavBuilder(small).Raw(TBytes(7)).Build(), 100, 1},
        {"chunk behind much data",
         CWavBuilder().Format(format).Chunk("data", TBytes(100'000)).Chunk("note", Ramp(9)).Build(), 100'000,
         3},
        {"odd byte behind much data",
         CWavBuilder().Format(format).Chunk("data", TBytes(100'000)).Raw(TBytes(1)).Build(), 100'000, 3},
        {"header alone", CWavBuilder().Build(), -1, 1},
        {"less than a header", TBytes(5), -1, 1},
        {"no WAV", TBytes(100), -1, 1},
        {"nothing", {}, -1, 1},
    };
}

TEST(DecodeFileCalls, NoneOnlyConfirmsTheEnd) {
    const CLibraryScope library;
    const CTemporaryFolder folder;
    const fs::path path = folder.GetPath() / "a";
    for (const TOpenedFile& file : OpenedFiles()) {
        SCOPED_TRACE(file.what);
        WriteFile(path, {reinterpret_cast<const char*>(file.bytes.data()), file.bytes.size()});
        std::int64_t length = -1;
        int reads = 0;
        readCount = 0;
        try {
            const auto stream = CRefPtr<IInputStream>::Adopt(
                v.GetCodecClassStore().DecodeFile(ToVorlund(path).c_str(), TDataFormat_AudioPcm::FormatId));
            reads = readCount;
            length = stream->GetLength();
        } catch (const CDataFormatException&) {
            reads = readCount;
        }
        EXPECT_EQ(length, file.length);
        EXPECT_EQ(reads, file.reads);
    }
}

} // namespace
} // namespace vorlund::test
