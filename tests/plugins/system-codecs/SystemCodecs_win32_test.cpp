// Decoding by what Windows has. Media Foundation is there under Wine too, but no decoder of AAC and ALAC
// comes with it: then the report says so, and where there is one every sample is compared.
#include "plugins/SoundPluginTest.h"
#include "support/Failures.h"

#include <vorlund/DecodeReport.h>

#include <cmath>

namespace vorlund::test {
namespace {

using SystemCodecs = SoundPluginTest;

void ExpectEqual(const TBytes& decoded, const TBytes& expected, bool isLossy) {
    ASSERT_EQ(decoded.size(), expected.size());
    if (!isLossy) {
        EXPECT_TRUE(decoded == expected);
        return;
    }
    for (std::size_t at = 0; at < decoded.size(); at += 4) {
        float values[2];
        std::memcpy(&values[0], decoded.data() + at, 4);
        std::memcpy(&values[1], expected.data() + at, 4);
        ASSERT_LT(std::abs(values[0] - values[1]), 1e-3F) << at;
    }
}

TEST_F(SystemCodecs, EverySampleOrTheReason) {
    for (const TSoundRow& row : LoadRows()) {
        SCOPED_TRACE(row.name);
        const wstring path = ToVorlund(SoundPath(row.name));
        CDecodeReport report;
        try {
            const auto decoded = CRefPtr<IInputStream>::Adopt(
                CInputStreamSelector(path.c_str())
                    .DecodeStream(TDataFormat_AudioPcm::FormatId, {.report = &report}));
            ExpectEqual(ReadAll(*decoded), LoadSound(row.name + ".pcm"), row.isLossy);
        } catch (const CDataFormatException&) {
            const std::string reason = Narrow(report.Explain().GetBuffer());
            EXPECT_NE(reason.find("Windows has no decoder for it (HRESULT "), std::string::npos) << reason;
        }
    }
}

} // namespace
} // namespace vorlund::test
