/// \file
/// Output streams for files that are larger than anybody wants to keep.
#pragma once

#include "support/Streams.h"

#include <algorithm>

namespace vorlund::test {

/// Keeps the first bytes and the last ones, and counts those between.
class CSparseStream : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A8F2};
    static constexpr std::size_t kKept = 65536;

    TBytes head = TBytes(kKept);
    /// What was written last, beyond the head: position and bytes of at most `kKept`.
    std::int64_t tailAt = 0;
    TBytes tail;
    std::int64_t length = 0;
    std::int64_t position = 0;

    std::int64_t GetLength() override { return length; }
    void Seek(std::int64_t newPosition) override { position = newPosition; }
    std::int64_t Tell() override { return position; }
    void Write(const void* buffer, std::uint64_t size) override {
        const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
        if (position < static_cast<std::int64_t>(kKept)) {
            const std::size_t count =
                static_cast<std::size_t>(std::min<std::uint64_t>(size, kKept - position));
            std::copy_n(bytes, count, head.begin() + static_cast<std::ptrdiff_t>(position));
        } else if (size <= kKept) {
            tailAt = position;
            tail.assign(bytes, bytes + size);
        }
        position += static_cast<std::int64_t>(size);
        length = std::max(length, position);
    }
};

/// Reads what a `CSparseStream` has kept of its head and of what was written last.
class CSparseInput : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A8F4};
    const CSparseStream* from = nullptr;
    std::int64_t position = 0;

    std::uint32_t GetCapabilities() override { return 7; }
    std::int64_t GetLength() override { return from->length; }
    std::int64_t Tell() override { return position; }
    void Seek(std::int64_t to) override { position = to; }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        auto* const bytes = static_cast<std::uint8_t*>(buffer);
        const std::uint64_t count = std::min<std::uint64_t>(size, from->length - position);
        for (std::uint64_t i = 0; i < count; ++i, ++position) {
            const bool isTail = position >= from->tailAt;
            bytes[i] = isTail ? from->tail.at(position - from->tailAt) : from->head.at(position);
        }
        return count;
    }
};

/// Writes on, but goes over blocks of zeros, so that the file has holes.
class CHoleyStream : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x64D87F05, 0xB81E93A2, 0x51B3A8F3};

    CRefPtr<IOutputStream> target;

    void Close() override { target->Close(); }
    std::int64_t GetLength() override { return target->GetLength(); }
    void Flush() override { target->Flush(); }
    void Seek(std::int64_t position) override { target->Seek(position); }
    std::int64_t Tell() override { return target->Tell(); }
    void Write(const void* buffer, std::uint64_t size) override {
        const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
        const bool isHole =
            size > 65536 && std::all_of(bytes, bytes + 65536, [](auto byte) { return byte == 0; });
        if (!isHole) return target->Write(buffer, size);
        target->Seek(target->Tell() + static_cast<std::int64_t>(size) - 1);
        target->Write(bytes + size - 1, 1);
    }
};

} // namespace vorlund::test
