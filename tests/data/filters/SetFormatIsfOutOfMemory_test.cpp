// The format-setting filter when memory runs out.
#include "data/filters/PcmConverterSource.h"
#include "support/LibraryScope.h"
#include "support/RefuseEachAllocation.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/SetFormatIsf.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(SetFormatIsfOutOfMemory, RefusedFormatLeavesTheOldOne) {
    const CLibraryScope library;
    const auto setter = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    const TDataFormat_AudioPcm& format = TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_51;
    EXPECT_EQ(RefuseEachAllocation([&] { setter->SetFormat(&format); },
                                   [&] {
                                       EXPECT_EQ(PcmText(*setter), "no PCM");
                                       EXPECT_EQ(setter->GetFormat().size, 20u);
                                   }),
              1u);
    EXPECT_EQ(setter->GetFormat().size, format.size);
}

} // namespace
} // namespace vorlund::test
