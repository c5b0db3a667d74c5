/// \file
/// The default behaviour of filters, for the library's own classes and for those of plug-ins: derive from
/// `CInputFilterImpl<Interface>` or `COutputFilterImpl<Interface>` and override what the filter changes. The
/// connected stream is `stream_`, empty without one.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/StreamImpl.h>

#include <utility>

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

/// The operations of a filter that are inside a call on the connected stream: one entry each, on their
/// stacks. That stream may use the filter meanwhile, connect it to another stream, or release its last
/// reference; so an operation that touches the filter after such a call makes a `CCall` before it and asks
/// that first. Costs a few instructions and no memory. One thread at a time. Since version 0.1.
class CFilterCalls {
public:
    /// One operation, for the length of a block.
    class CCall {
    public:
        /// Not inline: compilers take what is stored here for an address that outlives its block.
        [[gnu::noinline]] explicit CCall(CFilterCalls& calls)
            : calls_(&calls), outer_(calls.innermost_), changes_(calls.changes_) {
            calls.innermost_ = this;
        }
        CCall(const CCall&) = delete;
        CCall& operator=(const CCall&) = delete;
        ~CCall() {
            if (calls_) calls_->innermost_ = outer_;
        }

        /// False when the filter has been destroyed: nothing of it may be touched any more.
        bool IsAlive() const { return calls_ != nullptr; }
        /// False also when `NoteChange` was called since.
        bool IsUnchanged() const { return calls_ && calls_->changes_ == changes_; }

    private:
        friend class CFilterCalls;

        CFilterCalls* calls_;
        CCall* const outer_;
        const unsigned int changes_;
    };

    CFilterCalls() = default;
    CFilterCalls(const CFilterCalls&) = delete;
    CFilterCalls& operator=(const CFilterCalls&) = delete;
    ~CFilterCalls() {
        for (CCall* call = innermost_; call; call = call->outer_) call->calls_ = nullptr;
    }

    /// Tells the operations under way that what they began with is no more.
    void NoteChange() { ++changes_; }

private:
    CCall* innermost_ = nullptr;
    unsigned int changes_ = 0;
};

/// The connection of a filter over `TBaseImpl` to a `TStream`.
template <class TBaseImpl, class TStream> class CConnectedImpl : public TBaseImpl {
public:
    void Disconnect() override {
        calls_.NoteChange();
        stream_.Reset();
    }

protected:
    CConnectedImpl() = default;
    ~CConnectedImpl() noexcept(false) = default;

    /// How every `Connect` begins: adds a reference to `stream` and disconnects.
    ///
    /// \return `stream`. Empty when there is nothing to connect: for null, when a stream has destroyed or
    ///         connected this filter meanwhile, and while it is being destroyed. Then return, and touch
    ///         nothing.
    ///
    /// Raises what the streams raise. Since version 0.1.
    CRefPtr<TStream> BeginConnect(TStream* stream) {
        const CFilterCalls::CCall call(calls_);
        // The new reference comes first: the former stream, or this filter, may hold the only other one.
        auto next = CRefPtr<TStream>::Share(stream);
        if (call.IsAlive()) this->Disconnect();
        if (!call.IsAlive() || stream_ || this->isDying_) next.Reset();
        return next;
    }

    /// While the object is whole, because the stream may use it once more.
    void GiveBack() { stream_.Reset(); }

    CRefPtr<TStream> stream_;
    CFilterCalls calls_;
};

/// An input filter that forwards everything to the connected stream, except that it has the empty format. One
/// thread at a time.
///
/// The stream may call the filter from inside each of its own operations. What it does to the connection then
/// holds.
///
/// \warning `Skip` does nothing, even when connected, and the position stays: override it, or `Seek`.
template <class TInterface>
class CInputFilterImpl : public CConnectedImpl<CInputStreamImpl<TInterface>, IInputStream> {
    using TOperation = filterdefaults::TOperation;
    using TConnection = CConnectedImpl<CInputStreamImpl<TInterface>, IInputStream>;

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
        if (auto next = this->BeginConnect(stream)) stream_ = std::move(next);
    }
    IInputStream* GetInputStream() override { return CRefPtr<IInputStream>(stream_).Detach(); }

protected:
    ~CInputFilterImpl() noexcept(false) = default;

    using TConnection::stream_;

private:
    IInputStream& Connected(TOperation operation) {
        if (!stream_) filterdefaults::RaiseInputNotConnected(operation);
        return *stream_;
    }
};

/// An output filter that forwards everything to the connected stream. One thread at a time. The stream may
/// call the filter, as for input.
template <class TInterface>
class COutputFilterImpl : public CConnectedImpl<COutputStreamImpl<TInterface>, IOutputStream> {
    using TOperation = filterdefaults::TOperation;
    using TConnection = CConnectedImpl<COutputStreamImpl<TInterface>, IOutputStream>;

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
        if (auto next = this->BeginConnect(stream)) stream_ = std::move(next);
        return true;
    }
    IOutputStream* GetOutputStream() override { return CRefPtr<IOutputStream>(stream_).Detach(); }

protected:
    ~COutputFilterImpl() noexcept(false) = default;

    using TConnection::stream_;

private:
    IOutputStream& Connected(TOperation operation) {
        if (!stream_) filterdefaults::RaiseOutputNotConnected(operation);
        return *stream_;
    }
};

} // namespace vorlund
