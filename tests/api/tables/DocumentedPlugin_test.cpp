// The plug-in in C of the documentation, built as it stands there.
#include "api/plugins/TestPlugins.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <vorlund/PluginStore.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(DocumentedPlugin, LoadsAndDecodes) {
    const CLibraryScope library;
    CPluginStore store;
    store.LoadPluginFile(ToVorlund(PluginFile("tone")).c_str());
    EXPECT_EQ(Narrow(store.GetReport(0).Explain()), "loaded");
    EXPECT_EQ(Narrow(store.GetReport(0).name), "tone");
    {
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes = {'T', 'O', 'N', 'E'};
        const auto decoded = CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeStream(stream.Get(), TDataFormat_AudioPcm::FormatId));
        EXPECT_EQ(decoded->GetLength(), 8000);
        decoded->Seek(5);
        TBytes bytes(8000);
        EXPECT_EQ(decoded->Read(bytes.data(), bytes.size()), 7995U);
        EXPECT_EQ(bytes[4], 64);
        EXPECT_EQ(bytes[5], 192);
    }
    store.Close();
}

} // namespace
} // namespace vorlund::test
