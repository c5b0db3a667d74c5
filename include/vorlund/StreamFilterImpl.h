/// \file
/// The default behaviour of filters, for the library's own classes and for those of plug-ins: derive from
/// `CInputFilterImpl<Interface>` or `COutputFilterImpl<Interface>` and override what the filter changes. The
/// connected stream is `stream_`, empty without one.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/StreamImpl.h>

namespace vorlund {

/// Not for applications and plug-ins: the out-of-line parts of the two templates below, exported because
/// those call them. What they raise names `CInputStreamFilter` and `COutputStreamFilter`.
namespace filterdefaults {

/// The operations of a filter that need a connected stream.
enum class TOperation { GetLength, Flush, Seek, Tell };

/// Raises `COperationNotSupportedException` "Stream is not connected" in the name of the operation.
[[noreturn]] VRL_API void RaiseInputNotConnected(TOperation operation);
[[noreturn]] VRL_API void RaiseOutputNotConnected(TOperation operation);
/// Raises `CNullPtrException` "sample is NULL" for null, else `CInvalidParameterException` "Media samples are
/// not supported".
[[noreturn]] VRL_API void ReadSample(IMediaSample* sample);
/// Raises `CNullPtrException` "buffer is NULL" for a null buffer, then `CIOException` "Stream is not
/// connected" for a null stream; otherwise reads from the stream.
VRL_API std::uint64_t Read(IInputStream* stream, void* buffer, std::uint64_t size);
/// Raises `CIOException` "Stream is not connected" for a null stream; otherwise writes to it.
VRL_API void Write(IOutputStream* stream, const void* buffer, std::uint64_t size);

} // namespace filterdefaults

/// An input filter that forwards everything to the connected stream, except that it has the empty format. One
/// thread at a time.
///
/// \warning `Skip` does nothing, even when connected, and the position stays: override it, or `Seek`.
template <class TInterface> class CInputFilterImpl : public CInputStreamImpl<TInterface> {
    using TOperation = filterdefaults::TOperation;

public:
    void Close() override {
        if (stream_) stream_->Close();
    }
    std::uint32_t GetCapabilities() override { return stream_ ? stream_->GetCapabilities() : 0; }
    std::int64_t GetLength() override { return Connected(TOperation::GetLength).GetLength(); }
    void Flush() override { Connected(TOperation::Flush).Flush(); }
    void Seek(std::int64_t position) override { Connected(TOperation::Seek).Seek(position); }
    std::int64_t Tell() override { return Connected(TOperation::Tell).Tell(); }
    bool Eof() override { return stream_ ? stream_->Eof() : true; }
    void Read(IMediaSample* sample) override { filterdefaults::ReadSample(sample); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        return filterdefaults::Read(stream_.Get(), buffer, size);
    }

    void Connect(IInputStream* stream) override {
        // The new reference comes first: the former stream may hold the only other one.
        auto next = CRefPtr<IInputStream>::Share(stream);
        this->Disconnect();
        stream_ = std::move(next);
    }
    void Disconnect() override { stream_.Reset(); }
    IInputStream* GetInputStream() override { return CRefPtr<IInputStream>(stream_).Detach(); }

protected:
    ~CInputFilterImpl() noexcept(false) = default;

    CRefPtr<IInputStream> stream_;

private:
    IInputStream& Connected(TOperation operation) {
        if (!stream_) filterdefaults::RaiseInputNotConnected(operation);
        return *stream_;
    }
};

/// An output filter that forwards everything to the connected stream. One thread at a time.
template <class TInterface> class COutputFilterImpl : public COutputStreamImpl<TInterface> {
    using TOperation = filterdefaults::TOperation;

public:
    void Close() override {
        if (stream_) stream_->Close();
    }
    std::uint32_t GetCapabilities() override { return stream_ ? stream_->GetCapabilities() : 0; }
    std::int64_t GetLength() override { return Connected(TOperation::GetLength).GetLength(); }
    void Flush() override { Connected(TOperation::Flush).Flush(); }
    void Seek(std::int64_t position) override { Connected(TOperation::Seek).Seek(position); }
    std::int64_t Tell() override { return Connected(TOperation::Tell).Tell(); }
    void SetFormat(const TDataFormat* format) override {
        if (stream_) stream_->SetFormat(format);
    }
    void Write(const void* buffer, std::uint64_t size) override {
        filterdefaults::Write(stream_.Get(), buffer, size);
    }

    bool Connect(IOutputStream* stream) override {
        auto next = CRefPtr<IOutputStream>::Share(stream);
        this->Disconnect();
        stream_ = std::move(next);
        return true;
    }
    void Disconnect() override { stream_.Reset(); }
    IOutputStream* GetOutputStream() override { return CRefPtr<IOutputStream>(stream_).Detach(); }

protected:
    ~COutputFilterImpl() noexcept(false) = default;

    CRefPtr<IOutputStream> stream_;

private:
    IOutputStream& Connected(TOperation operation) {
        if (!stream_) filterdefaults::RaiseOutputNotConnected(operation);
        return *stream_;
    }
};

} // namespace vorlund
