/// \file
/// What the tests of the generated sources share.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/MediaSample.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include "support/Failures.h"
#include "support/Probes.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

namespace vorlund::test {

/// The records of an endless source.
struct TEndlessRows {
    TFailure seek, tell, getLength, bufferIsNull, sampleIsNull, noMediaSamples;
};

/// Checks what an endless source refuses and what it leaves undone. It does not read.
inline void ExpectEndless(IInputStream& stream, const TEndlessRows& rows, std::uint32_t capabilities) {
    for (const std::int64_t position : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40}) {
        ExpectRaises<COperationNotSupportedException>(rows.seek, [&] { stream.Seek(position); });
    }
    ExpectRaises<COperationNotSupportedException>(rows.tell, [&] { stream.Tell(); });
    ExpectRaises<COperationNotSupportedException>(rows.getLength, [&] { stream.GetLength(); });
    for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}}) {
        ExpectRaises<CNullPtrException>(rows.bufferIsNull,
                                        [&] { stream.Read(static_cast<void*>(nullptr), size); });
    }
    ExpectRaises<CNullPtrException>(rows.sampleIsNull,
                                    [&] { stream.Read(static_cast<IMediaSample*>(nullptr)); });
    const auto sample = CreateAs<IMediaSample>(classid::CSwBufferMediaSample);
    ExpectRaises<CInvalidParameterException>(rows.noMediaSamples, [&] { stream.Read(sample.Get()); });

    EXPECT_EQ(stream.GetCapabilities(), capabilities);
    EXPECT_FALSE(stream.Eof());
    for (const std::uint32_t argument : {0U, 1U, ~0U}) EXPECT_FALSE(stream.SupportsMediaSamples(argument));
    stream.Close();
    stream.Flush();
    for (const std::uint64_t count : {std::uint64_t{0}, std::uint64_t{7}, ~std::uint64_t{0}})
        stream.Skip(count);
    EXPECT_FALSE(stream.Eof());
    EXPECT_EQ(stream.GetCapabilities(), capabilities);
}

/// The next `size` bytes.
inline TBytes ReadBytes(IInputStream& stream, std::size_t size) {
    // One more byte: the stream must not touch it.
    TBytes bytes(size + 1, 0xA5);
    EXPECT_EQ(stream.Read(bytes.data(), size), size);
    EXPECT_EQ(bytes.back(), 0xA5);
    bytes.pop_back();
    return bytes;
}

/// The next `count` pixels, read at once.
inline std::vector<std::uint32_t> ReadPixels(IInputStream& stream, std::size_t count) {
    const TBytes bytes = ReadBytes(stream, count * 4);
    std::vector<std::uint32_t> pixels(count);
    for (std::size_t i = 0; i < count; ++i) {
        pixels[i] = bytes[4 * i] | std::uint32_t{bytes[4 * i + 1]} << 8 |
                    std::uint32_t{bytes[4 * i + 2]} << 16 | std::uint32_t{bytes[4 * i + 3]} << 24;
    }
    return pixels;
}

/// A video format with those three values, and with others than the sources' in all the rest.
inline TDataFormat_VideoRgb VideoFormat(std::uint32_t width, std::uint32_t height, float frameRate = 25) {
    TDataFormat_VideoRgb format;
    format.size = 1234;
    format.image.id = CId(9, 9, 9, 9);
    format.image.size = 77;
    format.image.pixelFormat = {5, 16, 1, 15, 5, 10, 5, 5, 5, 0};
    format.image.width = width;
    format.image.height = height;
    format.frameRate = frameRate;
    return format;
}

/// Checks the whole record that a video source reports.
inline void ExpectVideoFormat(const TDataFormat& actual, std::uint32_t width, std::uint32_t height,
                              float frameRate) {
    ASSERT_EQ(actual.id, CId(0x1EF1EB17, 0xD158429A, 0x862DA3D5, 0x897BF1D1));
    ASSERT_EQ(actual.size, 92U);
    const auto& video = static_cast<const TDataFormat_VideoRgb&>(actual);
    EXPECT_EQ(video.image.id, CId(0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5));
    EXPECT_EQ(video.image.size, 68U);
    EXPECT_EQ(video.image.pixelFormat, (TPixelFormat{0, 32, 8, 24, 8, 16, 8, 8, 8, 0}));
    EXPECT_EQ(video.image.width, width);
    EXPECT_EQ(video.image.height, height);
    EXPECT_EQ(video.frameRate, frameRate);
}

/// Sizes whose frames 32 bits cannot state: just so, by wrapping to little or to nothing, and by far.
inline const std::vector<std::pair<std::uint32_t, std::uint32_t>> kTooLargeSizes = {
    {1U << 15, 1U << 15},
    {1U << 30, 1},
    {1, 1U << 30},
    {(1U << 30) + 1, 1},
    {65536, 65536},
    {1U << 31, 1U << 31},
    {65537, 65536},
    {~0U, ~0U},
    {1U << 31, 2},
    {~0U, 1},
    {1, ~0U},
    {0x40000001, 4},
};

} // namespace vorlund::test
