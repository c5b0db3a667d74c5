// The sample plug-ins in other languages decode what the one in C++ decodes.
#include "api/plugins/TestPlugins.h"
#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/PluginStore.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <string>

namespace vorlund::test {
namespace {

class SampleTables : public testing::TestWithParam<const char*> {
protected:
    SampleTables() {
        store_.LoadPluginFile(
            ToVorlund(BesideProgram("sample") / (std::string("vorlund_") + GetParam() + kPluginEnding))
                .c_str());
    }
    ~SampleTables() noexcept override { store_.Close(); }

    CRefPtr<IInputStream> Decode(unsigned int bits) {
        TBytes file;
        AppendText(file, "VSA1");
        file.push_back(2);
        file.push_back(static_cast<std::uint8_t>(bits));
        Append16(file, 0);
        Append32(file, 8000);
        Append32(file, 100);
        const TBytes samples = Ramp(400);
        file.insert(file.end(), samples.begin(), samples.end());
        const auto stream = Make<CMemoryInputStream>();
        stream->bytes = file;
        return CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeStream(
            stream.Get(), TDataFormat_AudioPcm::FormatId, {.report = &report_}));
    }

    CLibraryScope library_;
    CPluginStore store_;
    CDecodeReport report_;
};

TEST_P(SampleTables, LoadsAndDecodes) {
    EXPECT_EQ(Narrow(store_.GetReport(0).Explain()), "loaded");
    const auto decoded = Decode(16);
    EXPECT_EQ(decoded->GetLength(), 400);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
    EXPECT_EQ(format.sampleFormat, SAMPLE_FORMAT_16BIT);
    EXPECT_EQ(format.channels, 2U);
    EXPECT_EQ(format.samplesPerSec, 8000U);
    TBytes bytes(500);
    EXPECT_EQ(decoded->Read(bytes.data(), 500), 400U);
    bytes.resize(400);
    EXPECT_EQ(bytes, Ramp(400));
    decoded->Seek(333);
    EXPECT_EQ(decoded->Read(bytes.data(), 2), 2U);
    EXPECT_EQ(bytes[0], 333 % 256);
    EXPECT_EQ(decoded->Tell(), 335);
}

TEST_P(SampleTables, RefusesWithItsReason) {
    EXPECT_THROW(Decode(24), CDataFormatException);
    const TDecodeEntry* const entry = report_.GetFurthest();
    ASSERT_TRUE(entry);
    EXPECT_EQ(Narrow(entry->reason), "Invalid VSA header");
    EXPECT_EQ(Narrow(entry->container), "VSA");
    EXPECT_EQ(Narrow(entry->values), "channels 2, bits 24");
}

INSTANTIATE_TEST_SUITE_P(Languages, SampleTables, testing::Values(VORLUND_TEST_SAMPLES),
                         [](const auto& sample) { return std::string(sample.param).substr(7); });

} // namespace
} // namespace vorlund::test
