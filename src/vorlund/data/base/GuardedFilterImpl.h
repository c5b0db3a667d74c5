// What the input filters that raise in their own name have in common: the checks before each operation.
#pragma once

#include "vorlund/data/base/NoMediaSamples.h"

#include <vorlund/Exception.h>
#include <vorlund/StreamFilterImpl.h>

#include <cstdint>

namespace vorlund {

/// What a guarded filter raises, in its own name.
struct TGuardedFilterFailures {
    TFailure seekNotConnected;
    TFailure tellNotConnected;
    TFailure flushNotConnected;
    TFailure readNoBuffer;
    TFailure readNotConnected;
    TFailure readNoSample;
    TFailure readSample;
    TFailure skipNotConnected;
};

/// An input filter that hands everything on to the connected stream, and raises in the name of the class
/// around it while there is none. `kFailures` is a `TGuardedFilterFailures` or extends it.
///
/// A class that does more than to hand on asks the guard of the operation for the stream first: `ForSeek` in
/// its `Seek`, and so on. `Flush` and `GetLength` are left to each class, because what they raise without a
/// stream differs by class. After a call on the stream nothing of the filter is touched, unless a `CCall`
/// says that it is still there.
template <class TInterface, const auto& kFailures>
class CGuardedFilterImpl : public CInputFilterImpl<TInterface> {
public:
    std::int64_t GetLength() override = 0;
    void Flush() override = 0;
    void Seek(std::int64_t position) override { ForSeek().Seek(position); }
    std::int64_t Tell() override { return ForTell().Tell(); }

    void Read(IMediaSample* sample) override {
        RefuseMediaSample(sample, kFailures.readNoSample, kFailures.readSample);
    }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        return ForRead(buffer).Read(buffer, size);
    }
    void Skip(std::uint64_t count) override { ForSkip().Skip(count); }

protected:
    ~CGuardedFilterImpl() noexcept(false) = default;

    /// The connected stream. Raises `TException` from `failure` when there is none.
    template <class TException> IInputStream& Connected(const TFailure& failure) const {
        if (!stream_) Raise<TException>(failure);
        return *stream_;
    }
    IInputStream& ForSeek() const {
        return Connected<COperationNotSupportedException>(kFailures.seekNotConnected);
    }
    IInputStream& ForTell() const {
        return Connected<COperationNotSupportedException>(kFailures.tellNotConnected);
    }
    IInputStream& ForRead(const void* buffer) const {
        if (!buffer) Raise<CNullPtrException>(kFailures.readNoBuffer);
        return Connected<CIOException>(kFailures.readNotConnected);
    }
    IInputStream& ForSkip() const { return Connected<CIOException>(kFailures.skipNotConnected); }

    using CInputFilterImpl<TInterface>::BeginConnect;
    using CInputFilterImpl<TInterface>::calls_;
    using CInputFilterImpl<TInterface>::stream_;
};

} // namespace vorlund
