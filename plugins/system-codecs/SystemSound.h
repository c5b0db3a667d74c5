// The decoder that the system has, from the first byte to the last. A port supplies `Open` in a file
// SystemSound_<system>.cpp.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/Platform.h>

#include <cstdint>
#include <memory>

class CFileCopy;

class ISystemSound {
public:
    virtual ~ISystemSound() = default;

    /// A decoder of the file, at its first sample. Raises `CDataFormatException` when the system has none, or
    /// none for this file.
    static std::unique_ptr<ISystemSound> Open(std::shared_ptr<const CFileCopy> file);

    virtual const vorlund::TDataFormat_AudioPcm& GetFormat() const = 0;

    /// The next bytes, at most `size`; 0 at the end. Raises `CIOException` when the decoder of the system
    /// fails.
    virtual std::uint64_t Read(void* buffer, std::uint64_t size) = 0;

protected:
    ISystemSound() = default;
    ISystemSound(const ISystemSound&) = default;
    ISystemSound& operator=(const ISystemSound&) = default;
};
