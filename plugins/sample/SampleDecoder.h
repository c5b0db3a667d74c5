// The decoder of VSA files (README.md describes the format).
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/DecoderRefusal.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>

/// Reads the samples of a VSA file: byte 0 is the first one behind the header. Its layer holds the connected
/// stream, and its defaults serve every other operation, also while nothing is connected.
class CSampleDecoder : public vorlund::CInputFilterImpl<vorlund::IInputStreamFilter> {
    using TLayer = vorlund::CInputFilterImpl<vorlund::IInputStreamFilter>;

public:
    static constexpr vorlund::CId ClassId{0x3D2B6A94, 0x8E51C07F, 0x5A90D3E6, 0xB1F84C27};

    /// Checks the header and goes to the first sample. Raises `CDataFormatException` "Stream has no
    /// positions", "No VSA file" and "Invalid VSA header", and passes on what the stream raises; the decoder
    /// is then unconnected.
    void Connect(vorlund::IInputStream* stream) override;
    const vorlund::TDataFormat& GetFormat() override;

    /// Of the samples: what the header declares, as far as the stream has it.
    std::int64_t GetLength() override { return stream_ ? length_ : TLayer::GetLength(); }
    std::int64_t Tell() override { return stream_ ? position_ : TLayer::Tell(); }
    /// Raises `CIOException` "Position before the samples".
    void Seek(std::int64_t position) override;
    bool Eof() override { return !stream_ || position_ >= length_; }
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    using TLayer::Read;
    /// At most to the end.
    void Skip(std::uint64_t count) override;

private:
    /// False when the stream is refused.
    bool ReadHeader(const vorlund::CRefusal& refusal);
    std::uint64_t GetRest() const;

    vorlund::TDataFormat_AudioPcm format_;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
};
