// The table of contents of a RIFF file.
#pragma once

#include <vorlund/WavDecoder.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace vorlund {

/// The chunks of one file in file order, duplicates included.
///
/// A chunk takes at least the eight bytes of its head, and a hostile file holds nothing else. So a record is
/// the twelve bytes that tell chunks apart, and the records are in blocks: growing copies none of them, and
/// the table stays below twice the size of any file. `TWavChunkInfo` is made when somebody asks.
class CWavChunkTable {
public:
    /// Appends a chunk: its four id bytes, the position of its data and its declared size.
    void Append(const std::uint8_t* id, std::int64_t dataOffset, std::uint32_t size);

    /// The first chunk with that id; case is ignored.
    std::optional<TWavChunkInfo> Find(const wchar* id) const;

    /// Forgets every chunk and gives the memory back.
    void Clear();

    std::size_t GetCount() const { return records_.size(); }
    TWavChunkInfo GetInfo(std::size_t index) const { return Describe(records_[index]); }

private:
    struct TRecord {
        char id[4];
        std::uint32_t dataOffset;
        std::uint32_t size;
    };
    static_assert(sizeof(TRecord) == 12);

    static TWavChunkInfo Describe(const TRecord& record);

    std::deque<TRecord> records_;
};

} // namespace vorlund
