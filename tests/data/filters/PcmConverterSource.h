/// \file
/// What the suites of the PCM converters share.
#pragma once

#include "support/Streams.h"

#include <vorlund/DataFormat.h>

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace vorlund::test {

/// The bytes of the samples.
template <class TSample> TBytes BytesOf(const std::vector<TSample>& samples) {
    TBytes bytes(samples.size() * sizeof(TSample));
    if (!bytes.empty()) std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

/// The samples of the bytes, without what is left behind the last whole one.
template <class TSample> std::vector<TSample> SamplesOf(const TBytes& bytes) {
    std::vector<TSample> samples(bytes.size() / sizeof(TSample));
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(TSample));
    return samples;
}

/// A stream of PCM.
inline CRefPtr<CFaultyInputStream> PcmSource(TDataFormat_AudioPcm format, TBytes bytes,
                                             TCallLog* log = nullptr) {
    auto stream = Make<CFaultyInputStream>();
    stream->bytes = std::move(bytes);
    stream->format = format;
    stream->log = log;
    return stream;
}

/// The three fields that differ between PCM formats; "no PCM" for another record.
inline std::string PcmText(IInputStream& stream) {
    const TDataFormat& head = stream.GetFormat();
    if (head.id != TDataFormat_AudioPcm::FormatId || head.size != 32) return "no PCM";
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(head);
    return "code " + std::to_string(format.sampleFormat) + ", channels " + std::to_string(format.channels) +
           ", rate " + std::to_string(format.samplesPerSec);
}

inline constexpr std::uint8_t kUnwritten = 0xA5;

/// One `Read` into a buffer of `kUnwritten` that is larger than asked for; nothing behind `size` may change.
/// Gives the bytes of the result, unwritten ones included.
inline TBytes ReadOnce(IInputStream& stream, std::size_t size) {
    TBytes buffer(size + 64, kUnwritten);
    const std::uint64_t count = stream.Read(buffer.data(), size);
    EXPECT_LE(count, size);
    for (std::size_t i = size; i < buffer.size(); ++i) EXPECT_EQ(buffer[i], kUnwritten) << i;
    buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(count, size)));
    return buffer;
}

} // namespace vorlund::test
