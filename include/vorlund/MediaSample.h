/// \file
/// Media samples: pieces of media data that fill themselves from, and write themselves to, streams. One
/// thread at a time.
#pragma once

#include <vorlund/Object.h>

#include <cstdint>

namespace vorlund {

class CInputStreamSelector;
class COutputStreamSelector;
struct TDataFormat;

/// A piece of media data.
class IMediaSample : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0x2DA6B640, 0x211E4513, 0xA04CAAF0, 0x831601D2};

    /// A new, empty sample of the same class, owned by the caller; neither data nor format are copied.
    virtual IMediaSample* Clone() = 0;
    /// 0 in every class of the library.
    virtual std::uint32_t GetSampleFlags() = 0;
    /// Fills the sample from the stream that `source` holds; true when at least one byte was read. Raises
    /// what the stream raises; the data size is then as it was.
    virtual bool ReadFrom(const CInputStreamSelector& source) = 0;
    /// Writes the sample to the stream that `target` holds: as many bytes as are valid, but no more than the
    /// sample's buffer has. A file gets them at once, so that a full device shows here: `CIOException`
    /// "fwrite failed". Raises what the stream raises. A buffered sample raises `CNullPtrException` "Stream
    /// pointer is NULL" when `target` is empty.
    virtual void WriteTo(const COutputStreamSelector& target) = 0;

protected:
    ~IMediaSample() = default;
};

/// A sample in a memory block of its own.
class ISwBufferMediaSample : public IMediaSample {
public:
    using TBase = IMediaSample;
    static constexpr CId InterfaceId{0xDD26FE1D, 0x4A1C43D6, 0xB9CB618F, 0xC1057F72};

    /// The block, valid until the buffer size changes.
    virtual void* GetBuffer() = 0;
    /// Size of the block in bytes; 4096 at first.
    virtual std::uint32_t GetBufferSize() = 0;
    /// Valid bytes at the start of the block; 0 at first.
    virtual std::uint32_t GetDataSize() = 0;
    /// States the number of valid bytes; returns the sample, without a reference. A block smaller than the
    /// *former* data size is first replaced by one of that size; the new size is not compared, so it may
    /// exceed the block. A block that grows keeps its bytes.
    virtual ISwBufferMediaSample* SetDataSize(std::uint32_t size) = 0;
    /// Copies the format record, as many bytes as its size field says, and at least the head. Raises
    /// `CNullPtrException` "format is NULL".
    virtual void SetFormat(const TDataFormat* format) = 0;
    /// Replaces the block by an uninitialised one of `size` bytes and sets the data size to 0; nothing
    /// happens when the size is the same. Raises `std::bad_alloc`, with the sample as it was.
    virtual void SetBufferSize(std::uint32_t size) = 0;
    /// The sample's copy of the format, valid until it changes; the empty format at first.
    virtual const TDataFormat* GetFormat() = 0;

protected:
    ~ISwBufferMediaSample() = default;
};

} // namespace vorlund
