/// \file
/// What the fuzz targets of the WAV path share: the open library, a stream over the input, and a model of
/// reading in one chunk.
#pragma once

#include "FuzzInput.h"

#include "support/WavModel.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamImpl.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::fuzz {

/// Opens the library for the rest of the process, without any output.
inline void OpenLibrary() {
    struct TLibrary {
        TLibrary() {
            for (int type = DEBUG_MESSAGE_OUTPUT; type <= DEBUG_MESSAGE_STDERR; ++type) {
                CDebug::SetHandler(static_cast<TDebugMessageType>(type),
                                   [](TDebugMessageType, const wchar*, void*) {});
            }
            v.Init();
        }
        ~TLibrary() { v.Close(); }
    };
    static const TLibrary library;
}

/// Numbers that the input decides: everything else about a run is equal, so a finding can be repeated.
class CDice {
public:
    CDice(const std::uint8_t* data, std::size_t size) {
        // FNV-1a.
        for (std::size_t i = 0; i < size; ++i) state_ = (state_ ^ data[i]) * 0x100000001B3u;
    }
    /// A number below `limit`.
    std::uint64_t Roll(std::uint64_t limit) {
        // Steele, Lea and Flood, "Fast splittable pseudorandom number generators" (2014).
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        return (z ^ z >> 31) % limit;
    }

private:
    std::uint64_t state_ = 0xCBF29CE484222325u;
};

/// The input as a stream. Positions beyond the end are allowed and read nothing.
class CFuzzStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x6C1B0F1E, 0x2F7A4A55, 0x9F5B7C3D, 0x8E21D604};

    static CRefPtr<CFuzzStream> Create(const std::uint8_t* data, std::size_t size) {
        auto stream = CRefPtr<CFuzzStream>::Adopt(static_cast<CFuzzStream*>(NewObject<CFuzzStream>()));
        stream->data_ = data;
        stream->size_ = static_cast<std::int64_t>(size);
        return stream;
    }

    /// The most bytes that one read delivers.
    std::uint64_t mostPerRead = std::numeric_limits<std::uint64_t>::max();
    /// Reading at this position or behind it raises `CIOException`.
    std::int64_t failsAt = std::numeric_limits<std::int64_t>::max();

    std::int64_t GetPosition() const { return position_; }
    int GetReferences() const { return references_; }

    std::int64_t GetLength() override { return size_; }
    void Seek(std::int64_t position) override { position_ = position; }
    std::int64_t Tell() override { return position_; }
    bool Eof() override { return position_ >= size_; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (position_ >= failsAt) {
            throw CIOException(VRL_L("CFuzzStream::Read"), VRL_L("fuzz/WavFuzz"), 1, VRL_L("on request"));
        }
        if (position_ < 0 || position_ >= size_) return 0;
        const std::uint64_t count =
            std::min({size, mostPerRead, static_cast<std::uint64_t>(size_ - position_)});
        std::memcpy(buffer, data_ + position_, static_cast<std::size_t>(count));
        position_ += static_cast<std::int64_t>(count);
        return count;
    }
    void Skip(std::uint64_t count) override { position_ += static_cast<std::int64_t>(count); }

private:
    const std::uint8_t* data_ = nullptr;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
};

/// Reads, seeks and skips at random in the chunk that `decoder` has selected, and compares every answer with
/// arithmetic on the file. The decoder is at the first byte of the chunk.
inline void CheckReading(IInputStream& decoder, const CFuzzStream& stream, const std::uint8_t* file,
                         std::size_t fileSize, std::uint64_t chunkOffset, std::uint64_t chunkSize,
                         CDice& dice) {
    // Where the decoder says that it is, and where the file below it is: a skip moves only the latter.
    std::uint64_t position = 0;
    std::uint64_t below = chunkOffset;
    const auto left = [&] { return position < chunkSize ? chunkSize - position : 0; };
    constexpr std::size_t kBuffer = 64;
    std::uint8_t buffer[kBuffer];
    std::uint8_t untouched[kBuffer];
    std::memset(untouched, 0xA5, kBuffer);
    for (int step = 0; step < 16; ++step) {
        Check(decoder.GetLength() == static_cast<std::int64_t>(chunkSize));
        Check(decoder.Tell() == static_cast<std::int64_t>(position));
        Check(decoder.Eof() == (position >= chunkSize));
        switch (dice.Roll(4)) {
        case 0:
        case 1: {
            const std::uint64_t size = dice.Roll(kBuffer + 1);
            const std::uint64_t stored = below < fileSize ? fileSize - below : 0;
            const std::uint64_t expected = std::min({size, left(), stored, stream.mostPerRead});
            std::memset(buffer, 0xA5, kBuffer);
            Check(decoder.Read(buffer, size) == expected);
            const auto count = static_cast<std::size_t>(expected);
            if (count > 0) Check(std::memcmp(buffer, file + below, count) == 0);
            // Nothing behind what was delivered is touched.
            Check(std::memcmp(buffer + count, untouched, kBuffer - count) == 0);
            position += expected;
            below += expected;
            break;
        }
        case 2: {
            const std::uint64_t target = dice.Roll(8) == 0
                                             ? ~dice.Roll(1000)
                                             : dice.Roll(std::min(chunkSize, std::uint64_t{fileSize}) + 3);
            decoder.Seek(static_cast<std::int64_t>(target));
            position = std::min(target, chunkSize);
            below = chunkOffset + position;
            break;
        }
        default: {
            const std::uint64_t count = dice.Roll(8) == 0 ? ~dice.Roll(1000) : dice.Roll(64);
            decoder.Skip(count);
            below += std::min(count, left());
        }
        }
        Check(stream.GetPosition() == static_cast<std::int64_t>(below));
    }
}

/// Reads the chunk from its first byte to its end, which must be `expected`.
inline void CheckWhole(IInputStream& decoder, const std::uint8_t* expected, std::uint64_t size,
                       std::size_t block) {
    const std::unique_ptr<std::uint8_t[]> buffer(new std::uint8_t[block]);
    std::uint64_t position = 0;
    decoder.Seek(0);
    while (const std::uint64_t count = decoder.Read(buffer.get(), block)) {
        Check(count <= size - position);
        Check(std::memcmp(buffer.get(), expected + position, static_cast<std::size_t>(count)) == 0);
        position += count;
        Check(decoder.Tell() == static_cast<std::int64_t>(position));
    }
    Check(position == size);
}

} // namespace vorlund::fuzz
