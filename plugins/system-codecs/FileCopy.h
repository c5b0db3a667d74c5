// A copy of a stream as something that the decoders of the system can read. A port supplies this in a file
// FileCopy_<system>.cpp.
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>
#include <memory>

class CFileCopy {
public:
    /// Copies the stream from its begin. Raises what the stream raises, and `CIOException` "Cannot copy the
    /// file" when there is no room.
    explicit CFileCopy(vorlund::IInputStream& stream);
    CFileCopy(const CFileCopy&) = delete;
    CFileCopy& operator=(const CFileCopy&) = delete;
    ~CFileCopy();

    struct TState;
    const TState& GetState() const { return *state_; }

private:
    std::unique_ptr<TState> state_;
};
