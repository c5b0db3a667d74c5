// The filter that gives a stream another format.
#pragma once

#include "vorlund/data/base/FormatRecord.h"

#include <vorlund/ClassIds.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>

namespace vorlund {

/// Hands everything on except the format.
class CSetFormatIsf : public CInputFilterImpl<ISetFormatIsf> {
public:
    static constexpr CId ClassId = classid::CSetFormatIsf;

    void Close() override;
    std::int64_t GetLength() override;
    void Flush() override;
    void Seek(std::int64_t position) override;
    std::int64_t Tell() override;

    const TDataFormat& GetFormat() override { return format_.Get(); }
    void Read(IMediaSample* sample) override;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;
    void Skip(std::uint64_t count) override;

    void SetFormat(const TDataFormat* format) override;

private:
    CFormatRecord format_;
};

} // namespace vorlund
