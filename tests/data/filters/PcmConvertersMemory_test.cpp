// Reading through the PCM converters and the format-setting filter allocates nothing.
#include "data/filters/PcmConverterSource.h"
#include "support/Allocations.h"
#include "support/LibraryScope.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/SetFormatIsf.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

/// Reads all of `stream` and looks at it in every other way.
std::size_t AllocationsOfReading(IInputStream& stream) {
    char buffer[4096];
    std::uint64_t total = 0;
    const CAllocationCount count;
    for (const std::uint64_t size : {std::uint64_t{1}, std::uint64_t{100}, std::uint64_t{4096}}) {
        stream.Seek(0);
        while (!stream.Eof() && stream.Read(buffer, size) > 0) ++total;
    }
    stream.Skip(8);
    stream.Tell();
    stream.GetLength();
    stream.GetFormat();
    stream.Flush();
    const std::size_t allocations = count.Get();
    EXPECT_GT(total, 0u);
    return allocations;
}

TEST(PcmConvertersMemory, NoAllocationPerRead) {
    const CLibraryScope library;
    const auto source = PcmSource({SAMPLE_FORMAT_16BIT, 2, 44100}, TBytes(100000));
    const auto format = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    const auto channels = CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
    const auto setter = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    for (std::uint32_t code = 0; code < 4; ++code) {
        format->SetSampleFormat(code);
        format->Connect(source.Get());
        EXPECT_EQ(AllocationsOfReading(*format), 0u);
    }
    for (const std::uint32_t count : {1u, 2u, 6u}) {
        channels->SetNumChannels(count);
        channels->Connect(source.Get());
        EXPECT_EQ(AllocationsOfReading(*channels), 0u);
    }
    setter->Connect(source.Get());
    EXPECT_EQ(AllocationsOfReading(*setter), 0u);
}

} // namespace
} // namespace vorlund::test
