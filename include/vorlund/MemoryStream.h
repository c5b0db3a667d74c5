/// \file
/// Streams over bytes in memory, for one thread. Resources (Resource.h) are for several: they take a lock for
/// each operation.
#pragma once

#include <vorlund/Stream.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// Keeps what is written. Writing behind the end fills the gap with zeros. `SetFormat`, `Close` and `Flush`
/// do nothing. `Seek` raises `CIOException` "Position is negative"; `Write` raises `CNullPtrException`
/// "buffer is NULL" for a null buffer of more than 0 bytes, and `std::bad_alloc`, with the bytes as they
/// were. One thread at a time. Since version 0.1.
class IMemoryOutputStream : public IOutputStream {
public:
    using TBase = IOutputStream;
    static constexpr CId InterfaceId{0x3B0F6E54, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    /// The bytes, valid until the next operation that changes them; may be null when there are none.
    virtual const void* GetData() = 0;
    /// Cuts the bytes, or appends zeros. Room once made stays, so 0 begins anew without another allocation.
    /// A position behind the new end moves to it. Raises `std::bad_alloc`.
    virtual void SetSize(std::uint64_t size) = 0;

protected:
    ~IMemoryOutputStream() = default;
};

/// Reads bytes of its caller, without a copy, in the empty format (`ISetFormatIsf` gives them another).
/// Positions behind the end are allowed and read nothing; `Seek` raises `CIOException` "Position is
/// negative". `Skip` moves, at most to the end. `Close` and `Flush` do nothing. One thread at a time. Since
/// version 0.1.
class IMemoryInputStream : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x3B0F6E55, 0x7A1D4C88, 0x95E20B71, 0xD46A8F13};

    /// Reads `size` bytes of `data` from now on, from the first one. They must stay while they are read.
    /// Raises `CNullPtrException` "data is NULL" unless the size is 0.
    virtual void SetData(const void* data, std::uint64_t size) = 0;

protected:
    ~IMemoryInputStream() = default;
};

/// A new stream without bytes, with one reference for the caller. Raises `std::bad_alloc`, and
/// `CBugException` "Not initialized" while the library is closed. Since version 0.1.
VRL_API IMemoryOutputStream* CreateMemoryOutput();

/// A new stream that reads `size` bytes of `data`, as `SetData`, with one reference for the caller. Raises
/// what `SetData` raises and the same as `CreateMemoryOutput`. Since version 0.1.
VRL_API IMemoryInputStream* CreateMemoryInput(const void* data, std::uint64_t size);

} // namespace vorlund
