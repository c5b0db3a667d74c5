/// \file
/// Streams for programs in C++20: spans, whole streams, frames and seconds, and a part of a stream as a
/// stream.
#pragma once

#include <vorlund/AudioConversion.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/FormatCast.h>
#include <vorlund/MakeObject.h>
#include <vorlund/StreamImpl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorlund {

/// Values that lie one behind the other and may be copied byte by byte: spans, arrays, vectors. Since version
/// 0.1.
template <class TRange>
concept TPlainValues = std::ranges::contiguous_range<TRange> && std::ranges::sized_range<TRange> &&
    std::is_trivially_copyable_v<std::ranges::range_value_t<TRange>>;

/// Reads as many whole values as the stream has and `values` takes, and returns how many. Of a value that the
/// stream ends in, the bytes are lost. Raises what the stream raises. Since version 0.1.
template <TPlainValues TRange> std::size_t ReadValues(IInputStream& stream, TRange&& values) {
    const auto bytes = std::as_writable_bytes(std::span(values));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const std::uint64_t wanted = bytes.size() - filled;
        const std::uint64_t count = std::min(stream.Read(bytes.data() + filled, wanted), wanted);
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return filled / sizeof(std::ranges::range_value_t<TRange>);
}

/// All that is left of a stream, at most `limit` bytes: the limit is for streams that may have no end. Raises
/// `std::length_error` when there is more, `std::bad_alloc`, and what the stream raises. Since version 0.1.
inline std::vector<std::byte> ReadAll(IInputStream& stream, std::size_t limit = std::size_t{1} << 30) {
    constexpr std::size_t kFirst = 65536;
    std::vector<std::byte> bytes(std::min(kFirst, limit));
    std::size_t filled = 0;
    while ((filled += ReadValues(stream, std::span(bytes).subspan(filled))) == bytes.size()) {
        if (filled == limit) {
            std::byte more;
            if (stream.Read(&more, 1) == 0) break;
            throw std::length_error("vorlund::ReadAll: the stream is longer than the limit");
        }
        bytes.resize(bytes.size() > limit / 2 ? limit : bytes.size() * 2);
    }
    bytes.resize(filled);
    return bytes;
}

/// Writes values as they are in memory. Raises what the stream raises. Since version 0.1.
template <TPlainValues TRange> void WriteValues(IOutputStream& stream, const TRange& values) {
    const auto bytes = std::as_bytes(std::span(values));
    stream.Write(bytes.data(), bytes.size());
}

/// Sound by frames and seconds, as floats at true scale (AudioConversion.h), of a PCM stream of any format.
/// One thread at a time. Since version 0.1.
///
/// \code{.cpp}
/// const CInputStreamSelector file(VRL_L("strings.wav"));
/// CFrameReader sound(CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId)));
/// const std::vector<float> samples = sound.ReadRest(); // channels interleaved, full scale is 1
/// std::printf("%zu samples of %u channels\n", samples.size(), sound.GetChannels());
/// // prints 202860 samples of 2 channels
/// \endcode
class CFrameReader {
public:
    /// Holds a reference to `pcm`, which `DecodeStream` for example has given. Raises `std::invalid_argument`
    /// when its format is not PCM, has no channels or an unknown sample format.
    explicit CFrameReader(CRefPtr<IInputStream> pcm) : pcm_(std::move(pcm)) {
        const auto* const format = pcm_ ? FormatCast<TDataFormat_AudioPcm>(pcm_->GetFormat()) : nullptr;
        if (!format || format->GetBlockSize() == 0 || format->samplesPerSec == 0)
            throw std::invalid_argument("vorlund::CFrameReader: the stream is no PCM");
        format_ = *format;
    }

    const TDataFormat_AudioPcm& GetFormat() const { return format_; }
    std::uint32_t GetChannels() const { return format_.channels; }

    /// Frames of the whole stream. Raises where the stream has no length.
    std::uint64_t GetFrameCount() const {
        return static_cast<std::uint64_t>(pcm_->GetLength()) / format_.GetBlockSize();
    }
    double GetSeconds() const { return static_cast<double>(GetFrameCount()) / format_.samplesPerSec; }

    /// Goes to a frame, or to the one that is heard at a time. Raises what `Seek` raises.
    void SeekFrame(std::uint64_t frame) {
        pcm_->Seek(static_cast<std::int64_t>(frame * format_.GetBlockSize()));
    }
    void SeekSeconds(double seconds) {
        SeekFrame(static_cast<std::uint64_t>(std::max(0.0, seconds * format_.samplesPerSec)));
    }

    /// Fills `samples` with whole frames, channels interleaved, and returns how many frames: less than fit
    /// only at the end. Raises what the stream raises, and `std::bad_alloc`.
    std::size_t Read(std::span<float> samples) {
        const std::size_t frame = format_.GetBlockSize();
        bytes_.resize(samples.size() / format_.channels * frame);
        const std::size_t frames =
            static_cast<std::size_t>(ReadFrames(*pcm_, bytes_.data(), bytes_.size())) / frame;
        ConvertAudio(samples.data(), bytes_.data(), frames,
                     {.from = format_.sampleFormat, .to = BUFFER_FORMAT_FLOAT, .channels = format_.channels});
        return frames;
    }

    /// All frames that are left.
    std::vector<float> ReadRest() {
        constexpr std::size_t kBlock = 16384;
        std::vector<float> samples;
        std::size_t frames = kBlock;
        while (frames == kBlock) {
            const std::size_t filled = samples.size();
            samples.resize(filled + kBlock * format_.channels);
            frames = Read(std::span(samples).subspan(filled));
            samples.resize(filled + frames * format_.channels);
        }
        return samples;
    }

private:
    CRefPtr<IInputStream> pcm_;
    TDataFormat_AudioPcm format_;
    std::vector<std::byte> bytes_;
};

/// A part of a stream as a stream: bytes `begin` to `begin` + `length` of another that can seek, in its
/// format, with positions from 0 on. It sets the other's position before each read, so several parts of one
/// stream can be read in turns. Positions behind the end are allowed and read nothing; `Seek` below 0 raises
/// `std::invalid_argument`. Made by `MakeObject<CSubStream>(stream, begin, length)`. One thread at a time,
/// for all parts of a stream. Since version 0.1.
class CSubStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x5F20A7E4, 0x1C8B4D93, 0xB6E09A35, 0x72D4F81C};

    std::int64_t GetLength() override { return length_; }
    std::uint32_t GetCapabilities() override {
        return STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_READ;
    }
    void Seek(std::int64_t position) override {
        if (position < 0) throw std::invalid_argument("vorlund::CSubStream: the position is negative");
        position_ = position;
    }
    std::int64_t Tell() override { return position_; }
    bool Eof() override { return position_ >= length_; }
    const TDataFormat& GetFormat() override { return stream_->GetFormat(); }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) return CInputStreamImpl::Read(buffer, size);
        if (Eof()) return 0;
        stream_->Seek(begin_ + position_);
        const std::uint64_t wanted = std::min(size, static_cast<std::uint64_t>(length_ - position_));
        const std::uint64_t count = std::min(stream_->Read(buffer, wanted), wanted);
        position_ += static_cast<std::int64_t>(count);
        return count;
    }
    void Skip(std::uint64_t count) override {
        position_ += static_cast<std::int64_t>(
            std::min(count, static_cast<std::uint64_t>(std::max<std::int64_t>(0, length_ - position_))));
    }

protected:
    /// What lies behind the stream's end is cut off. Raises `std::invalid_argument` for no stream and a
    /// negative begin.
    CSubStream(CRefPtr<IInputStream> stream, std::int64_t begin, std::int64_t length)
        : stream_(std::move(stream)), begin_(begin) {
        if (!stream_ || begin < 0) throw std::invalid_argument("vorlund::CSubStream: no such part");
        length_ =
            std::clamp<std::int64_t>(stream_->GetLength() - begin, 0, std::max<std::int64_t>(0, length));
    }
    ~CSubStream() = default;

private:
    CRefPtr<IInputStream> stream_;
    std::int64_t begin_;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
};

} // namespace vorlund
