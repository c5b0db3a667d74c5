// The reader of one chunk of a RIFF/WAVE file.
#pragma once

#include "vorlund/data/base/GuardedFilterImpl.h"
#include "vorlund/data/base/Lending.h"
#include "vorlund/data/filters/WavChunkTable.h"

#include <vorlund/ClassIds.h>
#include <vorlund/WavDecoder.h>

#include <cstdint>
#include <optional>

namespace vorlund {

class CWavRecords;

extern const TGuardedFilterFailures kWavChunkDecoderFailures;

/// Indexes the file when it is connected, then shows the selected chunk as a stream of its own. The table and
/// the selection belong to the connection: they are empty while there is none.
class CWavChunkDecoder : public CGuardedFilterImpl<IWavChunkDecoder, kWavChunkDecoderFailures>,
                         public ILendingInput {
public:
    static constexpr CId ClassId = classid::CWavChunkDecoder;

    std::uint32_t GetCapabilities() override;
    std::int64_t GetLength() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;

    bool Eof() override;
    using CGuardedFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override;

    void Connect(IInputStream* stream) override;
    void Disconnect() override;

    IObjectList* EnumerateChunks() override;
    std::uint64_t GetChunkSize() override;
    std::int64_t GetChunkOffset() override;
    void SelectChunk(const wchar* id) override;

private:
    /// Fills the table from `stream`, which is connected. Stops when `call` no longer holds.
    void IndexChunks(IInputStream& stream, CWavRecords& records, const CFilterCalls::CCall& call);
    /// Makes `chunk`, or none, the selected one.
    void Select(std::optional<TWavChunkInfo> chunk);
    /// Calls of the stream that are under way no longer move the position.
    void SetPosition(std::uint64_t position);
    /// As much of `count` as the selected chunk still holds.
    std::uint64_t Clamp(std::uint64_t count) const;

    /// `stream_`, if it lends; only while there is one.
    ILendingInput* lender_ = nullptr;
    CWavChunkTable chunks_;
    std::optional<TWavChunkInfo> current_;
    /// Inside the selected chunk.
    std::uint64_t position_ = 0;
};

} // namespace vorlund
