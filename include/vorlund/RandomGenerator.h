/// \file
/// `IRandomGenerator`, an endless input stream of pseudo-random bytes, as a source for tests and
/// demonstrations.
///
/// A generator never ends and has no length and no position: `Eof` is always false, `GetCapabilities` is 0,
/// `GetLength`, `Seek` and `Tell` raise `COperationNotSupportedException` "... is not supported", and `Skip`,
/// `Close` and `Flush` do nothing. `Read` of a media sample raises `CNullPtrException` "sample is NULL", else
/// `CInvalidParameterException` "Media samples are not supported". One thread at a time.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>

namespace vorlund {

/// Pseudo-random bytes of a linear congruential generator with 32 bits of state: each value is bits 16 to 23
/// of the next state, which is the former one times 214013 plus 2531011. The same seed gives the same bytes
/// on every system. D. E. Knuth, "The Art of Computer Programming", volume 2, 3.2.1. It is not fit for
/// secrets.
///
/// `Read` fills the whole buffer and returns `size`. Every call begins with a new value: a run of repeated
/// bytes that ends with the buffer is not continued by the next call.
class IRandomGenerator : public IInputStream {
public:
    using TBase = IInputStream;
    static constexpr CId InterfaceId{0x83A81FE3, 0x415C7433, 0xD766C583, 0x78CE7B6C};

    /// Copies `format`, as many bytes as its size field says, for `GetFormat` to report; at first that is the
    /// empty format. Every format is accepted; the bytes stay the same. Raises `CNullPtrException` "format is
    /// NULL".
    virtual void SetFormat(const TDataFormat* format) = 0;
    /// Sets the state, 0 at first. Returns the generator itself, with no reference added.
    virtual IRandomGenerator* SetSeed(std::uint32_t seed) = 0;
    /// How many consecutive bytes share one value, 1 at first; 0 counts as 1. Returns the generator itself,
    /// with no reference added.
    virtual IRandomGenerator* SetRepeatCount(std::uint32_t count) = 0;

protected:
    ~IRandomGenerator() = default;
};

} // namespace vorlund
