// What the generated sources have in common: streams without end, length and position.
#pragma once

#include "vorlund/data/base/NoMediaSamples.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

/// What an endless source raises, in its own name.
struct TEndlessSourceFailures {
    TFailure seek;
    TFailure tell;
    TFailure getLength;
    TFailure bufferIsNull;
    TFailure sampleIsNull;
    TFailure noMediaSamples;
};

/// An input stream that never ends. `kFailures` is a `TEndlessSourceFailures` or extends it.
template <class TInterface, const auto& kFailures>
class CEndlessSourceImpl : public CInputStreamImpl<TInterface> {
public:
    std::uint32_t GetCapabilities() override { return 0; }
    std::int64_t GetLength() override { Raise<COperationNotSupportedException>(kFailures.getLength); }
    void Seek(std::int64_t) override { Raise<COperationNotSupportedException>(kFailures.seek); }
    std::int64_t Tell() override { Raise<COperationNotSupportedException>(kFailures.tell); }
    bool Eof() override { return false; }
    void Read(IMediaSample* sample) override {
        RefuseMediaSample(sample, kFailures.sampleIsNull, kFailures.noMediaSamples);
    }
    std::uint64_t Read(void* buffer, std::uint64_t size) override = 0;

protected:
    CEndlessSourceImpl() = default;
    ~CEndlessSourceImpl() = default;
};

} // namespace vorlund
