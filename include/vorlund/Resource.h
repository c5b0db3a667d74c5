/// \file
/// Resources: blocks of bytes in memory with the data format that describes them, and the streams that read
/// and write them.
///
/// Reference counts are plain: one thread at a time binds, unbinds and releases. The data are guarded by the
/// resource's own lock, which `Load`, `Save` and the streams take by themselves, so that several threads may
/// read and write one resource, each through a stream of its own. Whoever uses the pointer that `Lock`
/// returns, or calls `SetSize`, `SetFormat` or `GetFormat` while other threads work with the resource, must
/// hold its lock.
#pragma once

#include <vorlund/ReadWriteLock.h>
#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

class CInputStreamSelector;
class COutputStreamSelector;
class IInputStreamFilter;

/// A block of bytes with its format; the counterpart of a file in memory. Empty at first: no data, the empty
/// format, modification count 0.
///
/// A resource holds up to 2^32-1 bytes (on 32-bit systems less than 2^31); there is no memory for more.
///
/// \code{.cpp}
/// const auto sound = CreateAs<IResource>(classid::CAudioClip);
/// const TDataFormat_AudioPcm pcm;
/// sound->SetFormat(&pcm); // so that the file is decoded, not loaded as it is
/// sound->LoadDecoded(CInputStreamSelector(VRL_L("strings.wav")));
/// const auto* const samples = static_cast<const std::int16_t*>(sound->Lock(LOCK_MODE_READ));
/// std::printf("%d bytes, %d\n", static_cast<int>(sound->GetSize()), samples[0]);
/// // prints 405720 bytes, 3142
/// sound->Unlock();
/// \endcode
class IResource : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x2D087DA3, 0x67F84135, 0xB0560213, 0x09558126};

    /// Replaces the data by what `filter` makes of them, and the format by the filter's: connects the filter
    /// to a stream that reads this resource, reads the filter to its end, disconnects it, and swaps data and
    /// format under the write lock. Whatever raises, the filter is disconnected and the resource is as it
    /// was.
    ///
    /// Raises `CNullPtrException` "filter is NULL", `CDataFormatException` "Data format is locked" when the
    /// format is locked and the filter's has another identifier, `COutOfMemoryException` "malloc failed", and
    /// what the filter raises.
    virtual void ApplyFilter(IInputStreamFilter* filter) = 0;

    /// How often a write lock was released. Needs no lock.
    virtual std::uint32_t GetModificationCount() = 0;

    /// The resource's own copy of its format record, never null; valid until the format changes.
    virtual const TDataFormat* GetFormat() = 0;

    /// Size of the data in bytes. Needs no lock.
    virtual std::uint64_t GetSize() = 0;

    /// Fills the resource in its own format. When the source's format has the same identifier, this is
    /// `Load`, and the format record stays. Otherwise the source is decoded to the resource's format through
    /// the codec class store; the resource takes the decoded bytes and the decoded stream's format record.
    ///
    /// Raises what `DecodeStream` raises, `CDataFormatException` "Data format is locked" when the format is
    /// locked and the decoded one has another identifier (the resource is then as it was), and as `Load`.
    virtual void LoadDecoded(const CInputStreamSelector& source) = 0;

    /// Fills the resource from the source's stream: reads `GetLength()` bytes from the stream's position on.
    /// The former data are freed first; the format stays.
    ///
    /// \warning The stream must be at position 0. From any other position its data end before `GetLength()`
    /// bytes, and the resource is left empty without an exception: `Seek(0)` first.
    ///
    /// The resource is left empty when the stream has no bytes, when there is no memory for them, when the
    /// stream ends before (because its file cannot be read, too: see `GetReadError`), and when it raises.
    /// `COperationNotSupportedException` (streams that do not know their length raise it) does not reach the
    /// caller; everything else does.
    virtual void Load(const CInputStreamSelector& source) = 0;

    /// Takes the lock, waiting without limit, and returns the data, or null when there are none; valid until
    /// the size changes or other data come. Locks may be nested: see `CReadWriteLock`. Raises nothing.
    virtual void* Lock(TLockMode mode) = 0;

    /// From now on only formats of the same identifier are accepted. There is no way back.
    virtual void LockFormat() = 0;

    /// Writes the data to the target's stream by one `Write`, under the read lock, and closes the stream.
    /// With `raw` they go there as they are, otherwise through the target's `EncodeStream`.
    ///
    /// Raises `CNullPtrException` "Stream pointer is NULL" when the target is empty or there is no encoder,
    /// and what the stream raises, which is then not closed. When a file could not take everything, and that
    /// shows only as it is closed, `CIOException` "fwrite failed".
    virtual void Save(const COutputStreamSelector& target, bool raw) = 0;

    /// Copies the format record, as many bytes as its size field says, and at least the head. Raises
    /// `CNullPtrException` "format is NULL", and `CDataFormatException` "Data format is locked" when the
    /// format is locked and the identifiers differ.
    virtual void SetFormat(const TDataFormat* format) = 0;

    /// Replaces the data by `size` bytes that are not initialised; 0 frees them. Without the memory the
    /// resource has the size, but no data: `Lock` gives null, and reading and saving yield no bytes.
    virtual void SetSize(std::uint64_t size) = 0;

    /// Gives back the calling thread's innermost lock. Raises nothing.
    virtual void Unlock() = 0;

protected:
    ~IResource() = default;
};

/// An input stream that reads a resource. Every `Read` takes and releases the resource's read lock, so a
/// writer may change the resource between two reads.
///
/// Bound, it has capabilities 15, the length and the format of the resource, and positions up to the length:
/// what goes beyond, negative positions included, stops there. Unbound, it is at its end, in the empty
/// format, with capabilities 0; `GetLength`, `Seek` and `Tell` raise `COperationNotSupportedException` "No
/// resource bound", `Read` raises `CIOException` "No resource bound", and `Skip` `CIOException` "Stream is
/// not bound to a resource". `Close` unbinds and goes to position 0; `Flush` does nothing.
class IResourceIs : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0xCAD2D74A, 0x49D68166, 0x1A1AF214, 0x8C09F304};

    /// Unbinds, then binds `resource` and adds a reference; null leaves the stream unbound. The position
    /// stays.
    virtual void SetResource(IResource* resource) = 0;

protected:
    ~IResourceIs() = default;
};

/// An output stream that writes into a resource. Every `Write` takes and releases the resource's write lock.
///
/// Bound, it has capabilities 11 and the length of the resource. A write replaces bytes and makes the
/// resource grow, in amortised constant time per byte for the library's own resources (any other is copied as
/// a whole whenever it grows). Positions may lie beyond the end: the next write fills the gap with zeros.
/// `SetFormat` goes to the resource.
///
/// Unbound, it has capabilities 0 and ignores `SetFormat`; `GetLength`, `Seek` and `Tell` raise
/// `COperationNotSupportedException` "No resource bound", `Write` raises `CIOException` "No resource bound".
/// Always, `Flush` raises `COperationNotSupportedException` "Flush unsupported"; `Seek` raises
/// `CInvalidParameterException` "position is negative" and keeps the position; `Write` raises
/// `CNullPtrException` "buffer is NULL" unless the size is 0, and `COutOfMemoryException` "malloc failed",
/// with the resource as it was. `Close` unbinds and goes to position 0.
class IResourceOs : public IOutputStream {
public:
    using TBase = IOutputStream;
    static constexpr CId InterfaceId{0x60835710, 0x8B48D505, 0x73546CD5, 0x0894B3EE};

    /// Unbinds, then binds `resource` and adds a reference; null leaves the stream unbound. The position
    /// stays.
    virtual void SetResource(IResource* resource) = 0;

protected:
    ~IResourceOs() = default;
};

/// The same, but every write goes to the end of the resource, wherever the position is, and leaves the
/// position there. Several threads may append to one resource, each through a stream of its own; every write
/// stays in one piece.
class IAppendingRos : public IResourceOs {
public:
    using TBase = IResourceOs;
    static constexpr CId InterfaceId{0xBF13277B, 0xC978146C, 0x5655EB5C, 0x244CDD04};

protected:
    ~IAppendingRos() = default;
};

} // namespace vorlund
