// What SDL does not tell of a sound server, asked of the server itself: SDL notices another default device
// only by chance, and does not tell inputs that hear an output from others.
#pragma once

#include <memory>
#include <string>
#include <string_view>

class ISoundServer {
public:
    virtual ~ISoundServer() = default;

    /// Asks anew. Everything stays as it was when the server does not answer any more.
    virtual void Refresh() = 0;
    /// Whether there is reason to ask anew. Does not wait.
    virtual bool HasChanged() = 0;
    virtual int CountOutputs() = 0;
    /// As SDL names it; empty when there is none.
    virtual std::string GetDefault(bool isInput) = 0;
    /// Whether the input hears an output; and, if so, the default one.
    virtual bool IsLoopback(const std::string& name) = 0;
    virtual bool IsDefaultLoopback(const std::string& name) = 0;
};

/// The server behind SDL's `driver`; null when SDL tells everything that there is to know. One thread.
std::unique_ptr<ISoundServer> ConnectSoundServer(std::string_view driver);
