/// \file
/// RIFF/WAVE files byte by byte, right ones and wrong ones.
#pragma once

#include "support/Streams.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlund::test {

inline void Append16(TBytes& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

inline void Append32(TBytes& bytes, std::uint32_t value) {
    Append16(bytes, value);
    Append16(bytes, value >> 16);
}

inline void AppendText(TBytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

/// The first 16 bytes of a "fmt " chunk.
struct TWavFormat {
    std::uint16_t tag = 1;
    std::uint16_t channels = 1;
    std::uint32_t samplesPerSec = 44100;
    std::uint16_t bits = 16;
    /// What the decoder does not look at; by default what belongs there.
    std::optional<std::uint32_t> bytesPerSec = {};
    std::optional<std::uint16_t> blockAlign = {};

    /// The record, with zeros or cut to `size` bytes.
    TBytes Record(std::size_t size = 16) const {
        const std::uint32_t block = channels * (bits / 8u);
        TBytes bytes;
        Append16(bytes, tag);
        Append16(bytes, channels);
        Append32(bytes, samplesPerSec);
        Append32(bytes, bytesPerSec.value_or(block * samplesPerSec));
        Append16(bytes, blockAlign.value_or(static_cast<std::uint16_t>(block)));
        Append16(bytes, bits);
        bytes.resize(size);
        return bytes;
    }
};

/// Puts a file together: `CWavBuilder().Format({}).Chunk("data", Ramp(100)).Build()`.
class CWavBuilder {
public:
    /// Replaces the words of the file header.
    CWavBuilder& Header(std::string_view riff, std::string_view wave) {
        riff_ = riff;
        wave_ = wave;
        return *this;
    }
    /// Replaces the size in the file header, which is right by default.
    CWavBuilder& RiffSize(std::uint32_t size) {
        riffSize_ = size;
        return *this;
    }
    /// A chunk that declares what it holds; nothing is padded.
    CWavBuilder& Chunk(std::string_view id, const TBytes& data) {
        return Declare(id, static_cast<std::uint32_t>(data.size()), data);
    }
    /// A chunk that declares `size` bytes and holds `data`.
    CWavBuilder& Declare(std::string_view id, std::uint32_t size, const TBytes& data = {}) {
        AppendText(body_, id);
        Append32(body_, size);
        return Raw(data);
    }
    CWavBuilder& Format(const TWavFormat& format, std::size_t size = 16) {
        return Chunk("fmt ", format.Record(size));
    }
    /// Bytes as they are: a pad byte, half a chunk head.
    CWavBuilder& Raw(const TBytes& bytes) {
        body_.insert(body_.end(), bytes.begin(), bytes.end());
        return *this;
    }

    TBytes Build() const {
        TBytes bytes;
        AppendText(bytes, riff_);
        Append32(bytes, riffSize_.value_or(static_cast<std::uint32_t>(4 + body_.size())));
        AppendText(bytes, wave_);
        bytes.insert(bytes.end(), body_.begin(), body_.end());
        return bytes;
    }

private:
    std::string_view riff_ = "RIFF";
    std::string_view wave_ = "WAVE";
    std::optional<std::uint32_t> riffSize_;
    TBytes body_;
};

/// A file of a "fmt " chunk and a "data" chunk.
inline TBytes PlainWav(const TWavFormat& format, const TBytes& data) {
    return CWavBuilder().Format(format).Chunk("data", data).Build();
}

} // namespace vorlund::test
