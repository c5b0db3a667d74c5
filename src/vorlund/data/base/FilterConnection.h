// Connecting a filter for a while.
#pragma once

#include <vorlund/StreamFilter.h>

#include <utility>

namespace vorlund {

/// Disconnects and drops what that raises: another exception is on its way, and this one has been reported
/// when it was built.
inline void DisconnectQuietly(IInputStreamFilter& filter) {
    try {
        filter.Disconnect();
    } catch (...) {
    }
}

/// A filter connected to a stream, and disconnected at the end in any case. Holds no reference to either.
class CFilterConnection {
public:
    CFilterConnection(IInputStreamFilter& filter, IInputStream* stream) : filter_(&filter) {
        try {
            filter.Connect(stream);
        } catch (...) {
            // A filter that refuses should be unconnected, but this one may still hold the stream.
            DisconnectQuietly(filter);
            throw;
        }
    }
    CFilterConnection(const CFilterConnection&) = delete;
    CFilterConnection& operator=(const CFilterConnection&) = delete;
    ~CFilterConnection() {
        if (filter_) DisconnectQuietly(*filter_);
    }

    /// Ends the connection now; what `Disconnect` raises passes on.
    void Disconnect() { std::exchange(filter_, nullptr)->Disconnect(); }

private:
    IInputStreamFilter* filter_;
};

} // namespace vorlund
