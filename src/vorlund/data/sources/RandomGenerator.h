// The generator of random bytes.
#pragma once

#include "vorlund/data/base/FormatRecord.h"
#include "vorlund/data/sources/EndlessSourceImpl.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RandomGenerator.h>

namespace vorlund {

extern const TEndlessSourceFailures kRandomGeneratorFailures;

/// Pseudo-random bytes in any format.
class CRandomGenerator : public CEndlessSourceImpl<IRandomGenerator, kRandomGeneratorFailures> {
public:
    static constexpr CId ClassId = classid::CRandomGenerator;

    const TDataFormat& GetFormat() override { return format_.Get(); }
    using CEndlessSourceImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override;

    void SetFormat(const TDataFormat* format) override;
    IRandomGenerator* SetSeed(std::uint32_t seed) override;
    IRandomGenerator* SetRepeatCount(std::uint32_t count) override;

protected:
    ~CRandomGenerator() = default;

private:
    CFormatRecord format_;
    std::uint32_t state_ = 0;
    std::uint32_t repeatCount_ = 1;
};

} // namespace vorlund
