// The media sample in memory.
#pragma once

#include "vorlund/data/base/FormatRecord.h"

#include <vorlund/ClassIds.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectImpl.h>

#include <cstddef>
#include <memory>

namespace vorlund {

/// Owns a buffer and a copy of a format record.
class CSwBufferMediaSample : public CObjectImpl<ISwBufferMediaSample> {
public:
    static constexpr CId ClassId = classid::CSwBufferMediaSample;

    CSwBufferMediaSample();

    IMediaSample* Clone() override;
    std::uint32_t GetSampleFlags() override { return 0; }
    bool ReadFrom(const CInputStreamSelector& source) override;
    void WriteTo(const COutputStreamSelector& target) override;

    void* GetBuffer() override { return buffer_.get(); }
    std::uint32_t GetBufferSize() override { return bufferSize_; }
    std::uint32_t GetDataSize() override { return dataSize_; }
    ISwBufferMediaSample* SetDataSize(std::uint32_t size) override;
    void SetFormat(const TDataFormat* format) override;
    void SetBufferSize(std::uint32_t size) override;
    const TDataFormat* GetFormat() override { return &format_.Get(); }

private:
    using TBlock = std::unique_ptr<std::byte[]>;

    /// Puts `block` of `size` bytes in the place of the buffer; no byte of it is valid yet.
    void ReplaceBuffer(TBlock block, std::uint32_t size);

    TBlock buffer_;
    std::uint32_t bufferSize_ = 0;
    std::uint32_t dataSize_ = 0;
    CFormatRecord format_;
};

} // namespace vorlund
