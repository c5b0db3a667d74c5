// How many exceptions are thrown for a file that no decoder takes. The program's own `__cxa_throw` counts
// them and goes on to the runtime's.
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include "data/file/TemporaryFolder.h"
#include "support/LibraryScope.h"
#include "support/WavBuilder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

#include <dlfcn.h>

namespace {
thread_local int throwCount = 0;
}

extern "C" __attribute__((visibility("default"))) void __cxa_throw(void* object, void* type,
                                                                   void (*destroy)(void*)) {
    using TThrow = void(void*, void*, void (*)(void*));
    static auto* const next = reinterpret_cast<TThrow*>(dlsym(RTLD_NEXT, "__cxa_throw"));
    ++throwCount;
    next(object, type, destroy);
    std::abort();
}

namespace vorlund::test {
namespace {

TEST(DecoderRefusalThrows, OnlyWhatTheCallerGets) {
    const CLibraryScope library;
    const CTemporaryFolder folder;
    const fs::path path = folder.GetPath() / "a";
    const TBytes files[] = {
        TBytes(100),
        CWavBuilder().Chunk("data", TBytes(6)).Build(),
        CWavBuilder().Format({}, 10).Chunk("data", TBytes(6)).Build(),
        CWavBuilder().Format({.tag = 3, .bits = 32}).Chunk("data", TBytes(8)).Build(),
        CWavBuilder().Format({.bits = 24}).Chunk("data", TBytes(6)).Build(),
        CWavBuilder().Format({}).Build(),
    };
    for (const TBytes& bytes : files) {
        WriteFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        throwCount = 0;
        EXPECT_THROW(
            v.GetCodecClassStore().DecodeFile(ToVorlund(path).c_str(), TDataFormat_AudioPcm::FormatId),
            CDataFormatException);
        EXPECT_EQ(throwCount, 1) << &bytes - files;
    }
}

} // namespace
} // namespace vorlund::test
