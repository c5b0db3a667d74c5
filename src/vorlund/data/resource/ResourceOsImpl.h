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

/// An output stream bound to a resource.
template <class TInterface> class CResourceOsImpl : public COutputStreamImpl<TInterface> {
public:
    void Close() override {
        position_ = 0;
        resource_.Bind(nullptr);
    }
    std::uint32_t GetCapabilities() override {
        return resource_ ? STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL | STREAM_CAPABILITY_WRITE : 0;
    }
    std::int64_t GetLength() override {
        if (!resource_) Raise<COperationNotSupportedException>(failures_.lengthUnbound);
        return static_cast<std::int64_t>(resource_->GetSize());
    }
    void Flush() override { Raise<COperationNotSupportedException>(failures_.flushUnsupported); }
    void Seek(std::int64_t position) override {
        if (position < 0) Raise<CInvalidParameterException>(failures_.seekNegative);
        if (!resource_) Raise<COperationNotSupportedException>(failures_.seekUnbound);
        position_ = static_cast<std::uint64_t>(position);
    }
    std::int64_t Tell() override {
        if (!resource_) Raise<COperationNotSupportedException>(failures_.tellUnbound);
        return static_cast<std::int64_t>(position_);
    }

    void SetFormat(const TDataFormat* format) override {
        if (resource_) resource_->SetFormat(format);
    }
    void Write(const void* buffer, std::uint64_t size) override {
        if (!buffer && size > 0) Raise<CNullPtrException>(failures_.writeNull);
        if (!resource_) Raise<CIOException>(failures_.writeUnbound);
        if (size == 0) return;
        std::optional<std::uint64_t> start;
        if (place_ == TWritePlace::Position) start = position_;
        const auto end = resource_.Write(start, buffer, size);
        if (!end) Raise<COutOfMemoryException>(failures_.writeOutOfMemory);
        position_ = *end;
    }

    void SetResource(IResource* resource) override { resource_.Bind(resource); }

protected:
    CResourceOsImpl(const TResourceOsFailures& failures, TWritePlace place)
        : failures_(failures), place_(place) {}
    ~CResourceOsImpl() noexcept(false) = default;

private:
    const TResourceOsFailures& failures_;
    const TWritePlace place_;
    CResourceWriter resource_;
    std::uint64_t position_ = 0;
};

} // namespace vorlund
