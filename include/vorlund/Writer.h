/// \file
/// `CWriter`, the base of what writes to an output stream.
#pragma once

#include <vorlund/ClassObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Holds an output stream with a reference of its own and passes positions on to it. Copies share the stream.
///
/// Raises nothing itself; what the stream raises passes on. The stream must not be null, which only debug
/// builds check. One thread at a time.
///
/// A derived class says `using CWriter::operator=;`, so that its own assignment does not hide the virtual
/// one.
class VRL_API CWriter : public CClassObject {
public:
    /// Releases the stream; raises what its destruction raises.
    ~CWriter() noexcept(false) override;

    /// Takes the other's stream with a reference of its own and releases the former one. Nothing else of the
    /// writer changes: formats stay.
    virtual CWriter& operator=(const CWriter& other);

    /// Sets the stream's position, in bytes from the start.
    virtual void Seek(std::uint64_t position);
    /// The stream's position, in bytes from the start.
    virtual std::uint64_t Tell();

protected:
    /// Holds `stream` with a reference of its own.
    explicit CWriter(IOutputStream* stream);
    /// Shares the stream of `other`.
    CWriter(const CWriter& other);

    CRefPtr<IOutputStream> stream_;
};

} // namespace vorlund
