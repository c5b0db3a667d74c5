// The plug-in in a process of its own.
#include "plugins/SoundPluginTest.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/IsolatedDecoder.h>

namespace vorlund::test {
namespace {

using SndfileIsolated = SoundPluginTest;

TEST_F(SndfileIsolated, GivesTheSameSamples) {
    for (const char* const name : {"24.wav", "16.flac", "stereo.ogg", "stereo.opus", "vbr.mp3", "24.caf"}) {
        SCOPED_TRACE(name);
        const wstring path = ToVorlund(SoundPath(name));
        const CInputStreamSelector source(path.c_str());
        // The plug-in is one of those that come with the library.
        const auto apart = CRefPtr<IInputStream>::Adopt(
            DecodeIsolated(source.GetInputStreamTmp(), TDataFormat_AudioPcm::FormatId));
        const auto here = DecodeFile(name);
        EXPECT_EQ(apart->GetLength(), here->GetLength());
        EXPECT_TRUE(ReadAll(*apart) == ReadAll(*here));
        apart->Seek(apart->GetLength() / 3);
        here->Seek(here->GetLength() / 3);
        EXPECT_TRUE(ReadAll(*apart, 5000, 100000) == ReadAll(*here, 5000, 100000));
        EXPECT_EQ(Narrow(ListChain(*apart)[0].className.GetBuffer()), "sndfile::CSndfileDecoder (isolated)");
    }
}

} // namespace
} // namespace vorlund::test
