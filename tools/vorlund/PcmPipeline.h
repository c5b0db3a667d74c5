// Turns decoded PCM into the PCM that was asked for.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>
#include <optional>

/// What PCM is to become; what is not set stays as it is.
struct TPcmTarget {
    /// A `TSampleFormat`.
    std::optional<std::uint32_t> sampleFormat = {};
    /// 1, 2 or 6.
    std::optional<std::uint32_t> channels = {};
};

/// A decoded stream and the library's converters behind it: first the samples, then the channels. The
/// converters take 1,024 bytes at a time and would tear frames, so they are read in whole frames that fit at
/// every stage: no sample is lost or shifted. Bytes of a last, partial frame cannot be converted and are left
/// out.
class CPcmPipeline {
public:
    /// \param decoded  PCM
    /// \param name     the name of the input in failure texts
    ///
    /// Raises `TProgramError` for PCM that cannot be converted.
    CPcmPipeline(vorlund::CRefPtr<vorlund::IInputStream> decoded, const TPcmTarget& target,
                 const vorlund::wstring& name);

    /// Of what `Read` delivers.
    const vorlund::TDataFormat_AudioPcm& GetFormat() const { return format_; }
    /// The last stream of the chain.
    vorlund::IInputStream& GetEnd() const { return *end_; }

    /// Reads up to `size` bytes; 0 at the end. `size` must be 4 KiB or more.
    std::uint64_t Read(std::uint8_t* buffer, std::uint64_t size);

private:
    vorlund::CRefPtr<vorlund::IInputStream> end_;
    vorlund::TDataFormat_AudioPcm format_;
    /// What the converters can deliver at a time; 0 when they only pass bytes on.
    std::uint64_t step_ = 0;
};
