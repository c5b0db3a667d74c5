// Conversion at true scale against another program: within one step, and equal where it saturates.
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <vorlund/AudioConversion.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

TBytes LoadRaw(const std::string& name) {
    std::ifstream file(BesideProgram("conversion-files") / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::int64_t GetSample(const TBytes& bytes, std::size_t index, std::size_t size) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < size; ++i)
        word |= std::uint32_t{bytes[index * size + i]} << 8 * (i + 4 - size);
    return static_cast<std::int32_t>(word) >> 8 * (4 - size);
}

TEST(AudioConversionSox, AgreesWithinOneStep) {
    const CLibraryScope library;
    const TBytes source = LoadRaw("floats.raw");
    const std::size_t count = source.size() / sizeof(float);
    ASSERT_GT(count, 200000u);
    std::vector<float> floats(count);
    std::memcpy(floats.data(), source.data(), source.size());
    std::uint64_t overs = 0;
    for (const float value : floats) overs += std::abs(value) > 1;
    ASSERT_GT(overs, 10000u);

    const std::pair<std::uint32_t, const char*> rows[] = {
        {BUFFER_FORMAT_16BIT, "s16.raw"}, {BUFFER_FORMAT_24BIT, "s24.raw"}, {BUFFER_FORMAT_32BIT, "s32.raw"}};
    for (const auto& [format, name] : rows) {
        const std::size_t size = GetBufferSampleSize(format);
        const TBytes expected = LoadRaw(name);
        ASSERT_EQ(expected.size(), count * size) << name;
        TBytes result(expected.size());
        EXPECT_EQ(ConvertAudio(result.data(), source.data(), count, {.to = format}), overs) << name;
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t ours = GetSample(result, i, size);
            const std::int64_t theirs = GetSample(expected, i, size);
            ASSERT_LE(std::abs(ours - theirs), std::abs(floats[i]) > 1 ? 0 : 1) << name << ' ' << floats[i];
        }
    }
}

} // namespace
} // namespace vorlund::test
