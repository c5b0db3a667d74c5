/// \file
/// The filter that gives a stream another data format.
#pragma once

#include <vorlund/StreamFilter.h>

namespace vorlund {

/// Forwards everything to the connected stream and only replaces the format that is reported: for streams
/// whose own format is missing or wrong. The bytes are not examined, so any stream and any format is
/// accepted.
///
/// `Close` closes the connected stream and disconnects. Without a connected stream `Seek`, `Tell` and
/// `GetLength` raise `COperationNotSupportedException`, `Read`, `Skip` and `Flush` `CIOException`, all of
/// them "Stream is not connected". One thread at a time.
class ISetFormatIsf : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0x198AC22C, 0x4F6A4652, 0x97D12DBC, 0x2B68391F};

    /// Reports a copy of `format` from now on, connected or not: as many bytes as its size field says, at
    /// least the head. Null means the empty format, which is also reported before the first call. A reference
    /// that `GetFormat` returned is not valid after this call.
    virtual void SetFormat(const TDataFormat* format) = 0;

protected:
    ~ISetFormatIsf() = default;
};

} // namespace vorlund
