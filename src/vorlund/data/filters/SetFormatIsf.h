// The filter that gives a stream another format.
#pragma once

#include "vorlund/data/base/FormatRecord.h"
#include "vorlund/data/base/GuardedFilterImpl.h"
#include "vorlund/data/base/Lending.h"

#include <vorlund/ClassIds.h>
#include <vorlund/SetFormatIsf.h>

#include <cstdint>

namespace vorlund {

/// What the filter raises.
struct TSetFormatIsfFailures : TGuardedFilterFailures {
    TFailure getLengthNotConnected;
};
extern const TSetFormatIsfFailures kSetFormatIsfFailures;

/// Hands everything on except the format.
class CSetFormatIsf : public CGuardedFilterImpl<ISetFormatIsf, kSetFormatIsfFailures>, public ILendingInput {
public:
    static constexpr CId ClassId = classid::CSetFormatIsf;

    void Close() override;
    std::int64_t GetLength() override;
    void Flush() override;

    const TDataFormat& GetFormat() override { return format_.Get(); }

    void Connect(IInputStream* stream) override;
    CLoan Lend(std::uint64_t size, std::uint64_t grain) override;

    void SetFormat(const TDataFormat* format) override;

private:
    /// `stream_`, if it lends; only while there is one.
    ILendingInput* lender_ = nullptr;
    CFormatRecord format_;
};

} // namespace vorlund
