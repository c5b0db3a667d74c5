/// \file
/// Filters: streams that read from, or write to, another stream, the connected one. `CInputFilterImpl` and
/// `COutputFilterImpl` (StreamFilterImpl.h) hold the defaults.
#pragma once

#include <vorlund/Stream.h>

namespace vorlund {

/// An input stream that reads from another one. Every decoder and converter is one.
class IInputStreamFilter : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x60A36D1A, 0x010B4DAA, 0x840BBFB2, 0xEAE35868};

    /// Disconnects, then holds `stream` with a reference of its own; null leaves the filter unconnected.
    /// Decoders raise `CDataFormatException` for data that are not theirs and are then unconnected; they must
    /// accept `stream` at any position.
    virtual void Connect(IInputStream* stream) = 0;
    /// Releases the connected stream, if any.
    virtual void Disconnect() = 0;
    /// The connected stream with one reference for the caller, or null.
    virtual IInputStream* GetInputStream() = 0;

protected:
    ~IInputStreamFilter() = default;
};

/// An output stream that writes to another one.
class IOutputStreamFilter : public IOutputStream {
public:
    using TBase = IOutputStream;
    static constexpr CId InterfaceId{0xF707CD17, 0x548A42AA, 0xAAE8930B, 0x9F2F32E3};

    /// Disconnects, then holds `stream` with a reference of its own; null leaves the filter unconnected.
    /// Returns true.
    virtual bool Connect(IOutputStream* stream) = 0;
    /// Releases the connected stream, if any.
    virtual void Disconnect() = 0;
    /// The connected stream with one reference for the caller, or null.
    virtual IOutputStream* GetOutputStream() = 0;

protected:
    ~IOutputStreamFilter() = default;
};

} // namespace vorlund
