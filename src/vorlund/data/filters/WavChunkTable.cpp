#include "vorlund/data/filters/WavChunkTable.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vorlund {
namespace {

constexpr std::size_t kIdLength = 4;
constexpr std::uint32_t kHeadSize = 8;

/// What follows the id and the size of a chunk, in this order.
constexpr std::uint32_t kHasOffset = 1;
constexpr std::uint32_t kHasRepetitions = 2;
constexpr unsigned int kBitsPerRun = 2;
constexpr std::size_t kGroupLength = 32 / kBitsPerRun;

/// The bits of a run in the word of its group.
unsigned int GetShift(std::size_t run) {
    return static_cast<unsigned int>(run % kGroupLength) * kBitsPerRun;
}

/// True when `id` has more units than a chunk id ever has.
bool IsTooLong(const wchar* id) {
    for (std::size_t i = 0; i <= kIdLength; ++i) {
        if (!id[i]) return false;
    }
    return true;
}

/// The id bytes with the zero that `CString` needs behind them; `CString` widens them, sign included.
struct TIdText {
    explicit TIdText(const std::array<char, kIdLength>& id) { std::copy(id.begin(), id.end(), text); }
    char text[kIdLength + 1] = {};
};

} // namespace

std::uint32_t CWavChunkTable::TRun::GetStep() const {
    return kHeadSize + size;
}

TWavChunkInfo CWavChunkTable::TRun::Describe() const {
    // Kept for callers: the offset is the low 32 bits, with their sign.
    return {TIdText(id).text, static_cast<std::int32_t>(dataOffset), size};
}

void CWavChunkTable::Append(const std::uint8_t* id, std::int64_t dataOffset, std::uint32_t size) {
    std::uint32_t idWord;
    std::memcpy(&idWord, id, sizeof idWord);
    const auto offset = static_cast<std::uint32_t>(dataOffset);
    const bool isEqual = idWord == lastId_ && size == lastSize_ && offset == expectedOffset_;
    if (!isEqual || !Repeat()) AppendRun(idWord, offset, size);
    expectedOffset_ = offset + size + kHeadSize;
}

bool CWavChunkTable::Repeat() {
    if (runCount_ == 0) return false;
    if (!repetitions_) {
        repetitions_ = Push(0);
        *group_ |= kHasRepetitions << GetShift(runCount_ - 1);
    }
    if (*repetitions_ == kMaxRepetitions) return false;
    ++*repetitions_;
    return true;
}

void CWavChunkTable::AppendRun(std::uint32_t id, std::uint32_t dataOffset, std::uint32_t size) {
    if (runCount_ % kGroupLength == 0) group_ = Push(0);
    Push(id);
    Push(size);
    if (dataOffset != expectedOffset_) {
        Push(dataOffset);
        *group_ |= kHasOffset << GetShift(runCount_);
    }
    lastId_ = id;
    lastSize_ = size;
    repetitions_ = nullptr;
    ++runCount_;
}

void CWavChunkTable::AddBlock() {
    auto& block = blocks_.emplace_back();
    next_ = block.data();
    end_ = next_ + block.size();
}

const CWavChunkTable::TRun* CWavChunkTable::CReader::GetNextRun() {
    if (nextRun_ == table_.runCount_) return nullptr;
    if (nextRun_ % kGroupLength == 0) group_ = NextWord();
    const std::uint32_t bits = group_ >> GetShift(nextRun_);
    ++nextRun_;
    run_.id = std::bit_cast<TChunkId>(NextWord());
    run_.size = NextWord();
    run_.dataOffset = bits & kHasOffset ? NextWord() : expectedOffset_;
    run_.repetitions = bits & kHasRepetitions ? NextWord() : 0;
    expectedOffset_ = run_.dataOffset + (run_.repetitions + 1) * run_.GetStep();
    return &run_;
}

std::optional<TWavChunkInfo> CWavChunkTable::CReader::GetNext() {
    if (isInRun_ && run_.repetitions > 0) {
        --run_.repetitions;
        run_.dataOffset += run_.GetStep();
    } else {
        isInRun_ = GetNextRun() != nullptr;
        if (!isInRun_) return {};
    }
    return run_.Describe();
}

std::optional<TWavChunkInfo> CWavChunkTable::Find(const wchar* id) const {
    // Otherwise each comparison would measure the whole text.
    if (IsTooLong(id)) return {};
    const CString wanted(id);
    CReader reader(*this);
    while (const TRun* const run = reader.GetNextRun()) {
        if (wanted.CompareToIgnoreCase(TIdText(run->id).text) == 0) return run->Describe();
    }
    return {};
}

void CWavChunkTable::Clear() {
    blocks_.clear();
    next_ = end_ = nullptr;
    runCount_ = 0;
    expectedOffset_ = 0;
}

} // namespace vorlund
