// The table of contents of a RIFF file.
#pragma once

#include <vorlund/WavDecoder.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace vorlund {

/// The chunks of one file in file order, duplicates included.
///
/// A chunk takes at least the eight bytes of its head, and a hostile file holds nothing else: millions of
/// equal heads, or of unequal ones. So the table is a row of 32-bit words, read in order, that says no more
/// than what tells chunks apart:
///
/// - a chunk is its id and its size;
/// - its position follows if it is not right behind the chunk before, which streams of files never say;
/// - a count follows if equal chunks come right behind it: how many;
/// - a word before each sixteen chunks has two bits for each, which say what of these follows.
///
/// So a run of equal chunks takes a few words, and any other chunk of a file less than nine bytes. The words
/// are in blocks: growing copies none of them. `TWavChunkInfo` is made when somebody asks.
class CWavChunkTable {
public:
    /// A run has at most so many chunks behind its first one. Then the next begins, for another few words.
    static constexpr std::uint32_t kMaxRepetitions = (std::uint32_t{1} << 26) - 1;

    /// Appends a chunk: its four id bytes, the position of its data and its declared size. Raises
    /// `std::bad_alloc`; the table then stays as it is, and takes no more chunks until it is cleared.
    void Append(const std::uint8_t* id, std::int64_t dataOffset, std::uint32_t size);

    /// The first chunk with that id; case is ignored.
    std::optional<TWavChunkInfo> Find(const wchar* id) const;

    /// Forgets every chunk and gives the memory back.
    void Clear();

private:
    using TChunkId = std::array<char, 4>;
    static constexpr std::size_t kBlockLength = 128;

    /// Equal chunks, one behind the other.
    struct TRun {
        TChunkId id{};
        std::uint32_t size = 0;
        /// Of the first one.
        std::uint32_t dataOffset = 0;
        std::uint32_t repetitions = 0;

        /// From one head to the next.
        std::uint32_t GetStep() const;
        TWavChunkInfo Describe() const;
    };

public:
    /// Goes through the chunks in order, as long as the table lives and is not changed.
    class CReader {
    public:
        explicit CReader(const CWavChunkTable& table) : table_(table) {}

        /// The next chunk, or nothing behind the last one.
        std::optional<TWavChunkInfo> GetNext();
        /// The same for whole runs; not between two chunks of one.
        const TRun* GetNextRun();

    private:
        std::uint32_t NextWord() {
            const std::size_t at = nextWord_++;
            return table_.blocks_[at / kBlockLength][at % kBlockLength];
        }

        const CWavChunkTable& table_;
        std::size_t nextWord_ = 0;
        std::size_t nextRun_ = 0;
        std::uint32_t group_ = 0;
        /// What is left of it: `GetNext` takes one chunk after the other away.
        TRun run_;
        bool isInRun_ = false;
        std::uint32_t expectedOffset_ = 0;
    };

private:
    /// Adds a chunk to the last run. False if there is none, or none that can be longer.
    bool Repeat();
    void AppendRun(std::uint32_t id, std::uint32_t dataOffset, std::uint32_t size);
    /// Appends a word, and says where it stays.
    std::uint32_t* Push(std::uint32_t word) {
        if (next_ == end_) AddBlock();
        *next_ = word;
        return next_++;
    }
    void AddBlock();

    std::deque<std::array<std::uint32_t, kBlockLength>> blocks_;
    /// The rest of the last block.
    std::uint32_t* next_ = nullptr;
    std::uint32_t* end_ = nullptr;
    std::size_t runCount_ = 0;
    /// The word before the last group.
    std::uint32_t* group_ = nullptr;
    /// The count of the last run, null while it is one chunk.
    std::uint32_t* repetitions_ = nullptr;
    std::uint32_t lastId_ = 0;
    std::uint32_t lastSize_ = 0;
    /// Where the data of a chunk right behind the last one begin.
    std::uint32_t expectedOffset_ = 0;
};

} // namespace vorlund
