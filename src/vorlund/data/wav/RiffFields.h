// Fields of RIFF files: numbers with the low byte first, ids of four characters.
#pragma once

#include <vorlund/DecoderSupport.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorlund::riff {

using TBytes = std::vector<std::uint8_t>;

/// Id and size of a chunk.
inline constexpr std::uint32_t kHeadSize = 8;
/// "RIFF", its size and "WAVE".
inline constexpr std::uint32_t kFileHeadSize = 12;
/// What a "ds64" chunk holds without a table: three sizes of 64 bits and the length of the table.
inline constexpr std::uint32_t kDs64Size = 28;
/// A field that cannot hold its number, which is in the "ds64" chunk.
inline constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;

/// Appends fields.
class CFields {
public:
    CFields& Text(std::string_view text) {
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        return *this;
    }
    /// Cut, or with zeros behind it.
    CFields& Text(std::string_view text, std::size_t size) {
        text = text.substr(0, size);
        return Text(text).Zeros(size - text.size());
    }
    CFields& Number(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        return *this;
    }
    CFields& Bytes(const TBytes& bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    CFields& Zeros(std::size_t count) {
        bytes_.insert(bytes_.end(), count, 0);
        return *this;
    }
    /// A chunk with a body of an even size, as readers that know of no padding need it.
    CFields& Chunk(std::string_view id, const TBytes& body) {
        Text(id).Number(body.size() + body.size() % 2, 4).Bytes(body);
        return Zeros(body.size() % 2);
    }
    std::size_t GetSize() const { return bytes_.size(); }
    const TBytes& Get() const { return bytes_; }

private:
    TBytes bytes_;
};

inline std::string LoadId(const std::uint8_t* bytes) {
    return {bytes, bytes + 4};
}

inline std::uint64_t LoadLittleEndian64(const std::uint8_t* bytes) {
    return LoadLittleEndian32(bytes) | std::uint64_t{LoadLittleEndian32(bytes + 4)} << 32;
}

/// Whether this may be the id of a chunk: printable characters.
inline bool IsId(std::string_view id) {
    if (id.size() != 4) return false;
    for (const char character : id) {
        if (character < ' ' || character > '~') return false;
    }
    return true;
}

/// What a field of 32 bits says of a size.
inline std::uint32_t Limit(std::uint64_t size) {
    return size < kSizeElsewhere ? static_cast<std::uint32_t>(size) : kSizeElsewhere;
}

/// A chunk's size in the file behind its head.
inline std::uint64_t Pad(std::uint64_t size) {
    return size + size % 2;
}

} // namespace vorlund::riff
