/// \file
/// `CReader`, the base of what reads from an input stream.
#pragma once

#include <vorlund/ClassObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Holds an input stream with a reference of its own and passes positions on to it.
///
/// Raises nothing itself; what the stream raises passes on. The stream must not be null, which only debug
/// builds check. One thread at a time.
class VRL_API CReader : public CClassObject {
public:
    CReader(const CReader&) = delete;
    CReader& operator=(const CReader&) = delete;
    /// Releases the stream; raises what its destruction raises.
    ~CReader() noexcept(false) override;

    /// True when no further byte can be read.
    virtual bool Eof();
    /// Sets the position, in bytes from the start of the stream.
    virtual void Seek(std::uint64_t position);
    /// The position of the next byte, in bytes from the start of the stream.
    virtual std::uint64_t Tell();

protected:
    /// Holds `stream` with a reference of its own.
    explicit CReader(IInputStream* stream);

    CRefPtr<IInputStream> stream_;
};

} // namespace vorlund
