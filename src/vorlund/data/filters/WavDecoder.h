// The decoder of PCM WAV files.
#pragma once

#include "vorlund/data/base/Lending.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/WavDecoder.h>

#include <cstdint>

namespace vorlund {

/// Adds the format to a private chunk decoder, which does everything else; every other operation is the chunk
/// decoder's own, its failures included.
class CWavDecoder : public CObjectImpl<IWavDecoder>, public ILendingInput {
public:
    static constexpr CId ClassId = classid::CWavDecoder;

    void Close() override { Chunks().Close(); }
    std::uint32_t GetCapabilities() override { return Chunks().GetCapabilities(); }
    std::int64_t GetLength() override { return Chunks().GetLength(); }
    void Flush() override { Chunks().Flush(); }
    void Seek(std::int64_t position) override { Chunks().Seek(position); }
    std::int64_t Tell() override { return Chunks().Tell(); }

    bool Eof() override { return Chunks().Eof(); }
    const TDataFormat& GetFormat() override { return format_; }
    void Read(IMediaSample* sample) override { Chunks().Read(sample); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override { return Chunks().Read(buffer, size); }
    bool SupportsMediaSamples(std::uint32_t argument) override {
        return Chunks().SupportsMediaSamples(argument);
    }
    void Skip(std::uint64_t count) override { Chunks().Skip(count); }
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override {
        Chunks();
        return lender_ ? lender_->Lend(size, grain) : CLoan();
    }

    void Connect(IInputStream* stream) override;
    void Disconnect() override { Chunks().Disconnect(); }
    IInputStream* GetInputStream() override { return Chunks().GetInputStream(); }

protected:
    /// Disconnects the chunk decoder, which others may hold too when its class was replaced.
    ~CWavDecoder() noexcept(false);

private:
    /// The chunk decoder, made through the class store when it is first needed. Raises what the class store
    /// raises, and `CBugException` "Cannot create chunk decoder" when the class yields no chunk decoder.
    IWavChunkDecoder& Chunks() {
        if (!chunks_) CreateChunks();
        return *chunks_;
    }
    void CreateChunks();

    CRefPtr<IWavChunkDecoder> chunks_;
    /// The same, if it lends.
    ILendingInput* lender_ = nullptr;
    TDataFormat_AudioPcm format_;
    CFilterCalls calls_;
};

} // namespace vorlund
