/// \file
/// The default behaviour of streams, for the library's own classes and for those of plug-ins: derive from
/// `CInputStreamImpl<Interface>` or `COutputStreamImpl<Interface>` and override what the stream can do.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Stream.h>

namespace vorlund {

/// Not for applications and plug-ins: the out-of-line parts of `CInputStreamImpl` below, exported because
/// that template calls them. What they raise names "vorlund::CInputStream::Read".
namespace streamdefaults {
/// Raises `CNullPtrException` "buffer is NULL" for null; otherwise reads nothing and returns 0.
VRL_API std::uint64_t Read(void* buffer, std::uint64_t size);
/// Raises `CNullPtrException` "sample is NULL" for null, else `CInvalidStateException` "Media samples are not
/// supported".
[[noreturn]] VRL_API void ReadSample(IMediaSample* sample);
} // namespace streamdefaults

/// An input stream without data: at its end, at position 0 and of length 0, in the empty format, with all
/// four capabilities (15). The bit of writing is part of the default.
template <class TInterface> class CInputStreamImpl : public CObjectImpl<TInterface> {
public:
    void Close() override {}
    std::uint32_t GetCapabilities() override { return 15; }
    std::int64_t GetLength() override { return 0; }
    void Flush() override {}
    void Seek(std::int64_t) override {}
    std::int64_t Tell() override { return 0; }
    bool Eof() override { return true; }
    const TDataFormat& GetFormat() override { return GetEmptyFormat(); }
    void Read(IMediaSample* sample) override { streamdefaults::ReadSample(sample); }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        return streamdefaults::Read(buffer, size);
    }
    bool SupportsMediaSamples(std::uint32_t) override { return false; }
    void Skip(std::uint64_t) override {}

protected:
    ~CInputStreamImpl() = default;
};

/// An output stream that drops what is written, with capabilities 11.
template <class TInterface> class COutputStreamImpl : public CObjectImpl<TInterface> {
public:
    void Close() override {}
    std::uint32_t GetCapabilities() override { return 11; }
    std::int64_t GetLength() override { return 0; }
    void Flush() override {}
    void Seek(std::int64_t) override {}
    std::int64_t Tell() override { return 0; }
    void SetFormat(const TDataFormat*) override {}
    void Write(const void*, std::uint64_t) override {}

protected:
    ~COutputStreamImpl() = default;
};

} // namespace vorlund
