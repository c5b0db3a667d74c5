// What the process of an isolated decoder is kept from.
#include <vorlund/DataFormat.h>
#include <vorlund/IsolatedDecoder.h>
#include <vorlund/RefPtr.h>

#include "api/isolation/Wine.h"
#include "api/plugins/TestPlugins.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vorlund::test {
namespace {

TEST(IsolatedProcess, CanReadAndNothingElse) {
    const CLibraryScope library;
    const CPluginFolder plugins;
    plugins.Add("misbehaving");
    const auto source = Make<CMemoryInputStream>();
    constexpr std::string_view kCommand = "misbehave attempts\n                          ";
    source->bytes.assign(kCommand.begin(), kCommand.end());
    const wstring folder = plugins.GetPath();
    const wchar* const folders[] = {folder.c_str()};
    const auto stream = CRefPtr<IInputStream>::Adopt(DecodeIsolated(
        source.Get(), TDataFormat_AudioPcm::FormatId, {.folders = folders, .withInstalled = false}));
    std::string report(4096, '\0');
    report.resize(stream->Read(report.data(), report.size()));
#ifdef _WIN32
    // 5: ERROR_ACCESS_DENIED.
    const std::string denied = IsWine() ? "0" : "5";
    EXPECT_EQ(report, "create " + denied + " mkdir " + denied + " registry " + denied + " terminate " +
                          denied + " inject " + denied + " read 0 job 0");
#else
    // 1: EPERM.
    EXPECT_EQ(report,
              "create 1 write 1 append 1 temporary 1 truncate 1 rename 1 unlink 1 mkdir 1 symlink 1 "
              "chmod 1 socket 1 local 1 fork 1 exec 1 kill 1 tgkill 1 prlimit 1 setrlimit 1 read 0 raise 0");
#endif
}

} // namespace
} // namespace vorlund::test
