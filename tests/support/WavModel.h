/// \file
/// What the WAV decoders make of a file that lies in memory, told a second time and in another way: as
/// arithmetic on the bytes. Tests and fuzz targets compare.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace vorlund::test {

struct TWavModelChunk {
    /// The id bytes up to the first zero.
    std::string id;
    std::uint64_t offset;
    std::uint32_t size;
};

/// What the WAV decoder answers for a whole file.
struct TWavModelAnswer {
    /// The reason of the `CDataFormatException`, or empty when the file is accepted.
    std::string reason;
    /// Set once the "fmt " chunk was accepted.
    std::optional<std::uint16_t> channels = {};
    std::uint32_t samplesPerSec = 0;
    std::uint16_t bits = 0;
    /// The "data" chunk of an accepted file.
    std::uint64_t dataOffset = 0;
    std::uint32_t dataSize = 0;
};

class CWavModel {
public:
    CWavModel(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {
        if (!HasHeader()) return;
        chunks_.reserve(8);
        // A head must be there whole; what it declares need not be.
        for (std::uint64_t head = 12; head + 8 <= size_; head += 8 + std::uint64_t{chunks_.back().size}) {
            const char* const id = reinterpret_cast<const char*>(bytes_ + head);
            chunks_.push_back({std::string(id, strnlen(id, 4)), head + 8, Word(head + 4)});
        }
    }

    bool HasHeader() const {
        return size_ >= 12 && std::memcmp(bytes_, "RIFF", 4) == 0 && std::memcmp(bytes_ + 8, "WAVE", 4) == 0;
    }

    const std::vector<TWavModelChunk>& GetChunks() const { return chunks_; }

    /// The first chunk with that id, or null.
    const TWavModelChunk* Find(const std::string& id) const {
        for (const TWavModelChunk& chunk : chunks_) {
            if (std::equal(chunk.id.begin(), chunk.id.end(), id.begin(), id.end(),
                           [](char left, char right) { return Lower(left) == Lower(right); }))
                return &chunk;
        }
        return nullptr;
    }

    /// Bytes of the chunk that are in the file.
    std::uint64_t GetStored(const TWavModelChunk& chunk) const {
        const std::uint64_t rest = size_ - chunk.offset;
        return rest < chunk.size ? rest : chunk.size;
    }

    TWavModelAnswer Decode() const {
        if (!HasHeader()) return {"Invalid header"};
        const TWavModelChunk* const format = Find("fmt ");
        if (!format) return {"Cannot find fmt chunk"};
        if (GetStored(*format) < 16) return {"Invalid fmt chunk size"};
        if (Half(format->offset) != 1) return {"Unsupported wave format"};
        const std::uint16_t bits = Half(format->offset + 14);
        if (bits != 8 && bits != 16) return {"Usupported bits per sample"};
        TWavModelAnswer answer{"", Half(format->offset + 2), Word(format->offset + 4), bits};
        if (const TWavModelChunk* const data = Find("data")) {
            answer.dataOffset = data->offset;
            answer.dataSize = data->size;
        } else {
            answer.reason = "Cannot find data chunk ";
        }
        return answer;
    }

private:
    static char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
    std::uint16_t Half(std::uint64_t at) const {
        return static_cast<std::uint16_t>(bytes_[at] + bytes_[at + 1] * 256);
    }
    std::uint32_t Word(std::uint64_t at) const { return Half(at) + Half(at + 2) * 65536u; }

    const std::uint8_t* bytes_;
    std::uint64_t size_;
    std::vector<TWavModelChunk> chunks_;
};

} // namespace vorlund::test
