// What the two output streams of resources have in common.
#pragma once

#include "vorlund/data/resource/ResourceWriter.h"

#include <vorlund/Exception.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

/// What an output stream of resources raises, in its own name.
struct TResourceOsFailures {
    TFailure lengthUnbound;
    TFailure flushUnsupported;
    TFailure seekUnbound;
    TFailure seekNegative;
    TFailure tellUnbound;
    TFailure writeNull;
    TFailure writeUnbound;
    TFailure writeOutOfMemory;
};

/// Where the writes of a stream go.
enum class TWritePlace { Position, End };

/// An output stream bound to a resource. `kFailures` is a `TResourceOsFailures`.
template <class TInterface, TWritePlace kPlace, const auto& kFailures>
class CResourceOsImpl : public COutputStreamImpl<TInterface> {
public:
    void Close() override {
        position_ = 0;
        resource_.Bind(nullptr);
    }
    std::uint32_t GetCapabilities() override {
        return resource_ ? STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_WRITE : 0;
    }
    std::int64_t GetLength() override {
        if (!resource_) Raise<COperationNotSupportedException>(kFailures.lengthUnbound);
        return static_cast<std::int64_t>(resource_->GetSize());
    }
    void Flush() override { Raise<COperationNotSupportedException>(kFailures.flushUnsupported); }
    void Seek(std::int64_t position) override {
        if (position < 0) Raise<CInvalidParameterException>(kFailures.seekNegative);
        if (!resource_) Raise<COperationNotSupportedException>(kFailures.seekUnbound);
        position_ = static_cast<std::uint64_t>(position);
    }
    std::int64_t Tell() override {
        if (!resource_) Raise<COperationNotSupportedException>(kFailures.tellUnbound);
        return static_cast<std::int64_t>(position_);
    }

    void SetFormat(const TDataFormat* format) override {
        if (resource_) resource_->SetFormat(format);
    }
    void Write(const void* buffer, std::uint64_t size) override {
        if (!buffer && size > 0) Raise<CNullPtrException>(kFailures.writeNull);
        if (!resource_) Raise<CIOException>(kFailures.writeUnbound);
        if (size == 0) return;
        std::optional<std::uint64_t> start;
        if constexpr (kPlace == TWritePlace::Position) start = position_;
        const auto end = resource_.Write(start, buffer, size);
        if (!end) Raise<COutOfMemoryException>(kFailures.writeOutOfMemory);
        position_ = *end;
    }

    void SetResource(IResource* resource) override { resource_.Bind(resource); }

protected:
    ~CResourceOsImpl() noexcept(false) = default;

private:
    CResourceWriter resource_;
    std::uint64_t position_ = 0;
};

} // namespace vorlund
