#include "vorlund/data/filters/WavChunkTable.h"

#include <algorithm>

namespace vorlund {
namespace {

constexpr std::size_t kIdLength = 4;

/// The id bytes with the zero that `CString` needs behind them; `CString` widens them, sign included.
struct TIdText {
    explicit TIdText(const char* id) { std::copy_n(id, kIdLength, text); }
    char text[kIdLength + 1] = {};
};

/// True when `id` has more units than a chunk id ever has.
bool IsTooLong(const wchar* id) {
    for (std::size_t i = 0; i <= kIdLength; ++i) {
        if (!id[i]) return false;
    }
    return true;
}

} // namespace

void CWavChunkTable::Append(const std::uint8_t* id, std::int64_t dataOffset, std::uint32_t size) {
    TRecord record{{}, static_cast<std::uint32_t>(dataOffset), size};
    std::copy_n(id, kIdLength, record.id);
    records_.push_back(record);
}

std::optional<TWavChunkInfo> CWavChunkTable::Find(const wchar* id) const {
    // Otherwise each comparison would measure the whole text.
    if (IsTooLong(id)) return {};
    const CString wanted(id);
    for (const TRecord& record : records_) {
        if (wanted.CompareToIgnoreCase(TIdText(record.id).text) == 0) return Describe(record);
    }
    return {};
}

void CWavChunkTable::Clear() {
    records_.clear();
}

TWavChunkInfo CWavChunkTable::Describe(const TRecord& record) {
    // Kept for callers: the offset is the low 32 bits, with their sign.
    return {TIdText(record.id).text, static_cast<std::int32_t>(record.dataOffset), record.size};
}

} // namespace vorlund
