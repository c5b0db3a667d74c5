// A process of the program vorlund-plugin-scan, in which plug-ins may do what they should not do here. A port
// supplies this in a file ChildProcess_<system>.cpp; what is said between the two is the part of those who
// start it. Nothing here raises, except std::bad_alloc.
//
// The process inherits its end of the channel and nothing else: no other descriptor or handle, no signal that
// is held back, and the null device for its standard streams. When this process ends, the channel does too.
#pragma once

#include <vorlund/Platform.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vorlund {

class CChildProcess {
public:
    using TClock = std::chrono::steady_clock;

    /// Starts the program with the number of its end of the channel, which goes both ways, and `arguments`,
    /// which hold no quotation marks.
    CChildProcess(const wchar* program, const std::vector<wstring>& arguments);
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;
    /// Kills it, and what it has started, if it still runs, and leaves nothing of it behind.
    ~CChildProcess();

    bool IsStarted() const;
    /// Why it is not, by the system's number.
    std::int32_t GetError() const;

    /// Takes at most `size` bytes of what it has written; 0 when there are none now. Waits for nothing.
    std::size_t Read(void* buffer, std::size_t size);
    /// Gives it `size` bytes; false when it has not taken them by `deadline`, or ends.
    bool Write(const void* bytes, std::size_t size, TClock::time_point deadline);
    /// Returns when it has written something or ended, perhaps also without a reason; after at most some 20
    /// ms.
    void Wait();
    /// Whether it has ended. What it wrote before may still have to be read.
    bool HasEnded();
    /// The signal that ended it, or what it returned; 0 when it returned 0, or when somebody else of this
    /// process has taken that away.
    std::int32_t GetEnd() const;

private:
    struct TState;
    std::unique_ptr<TState> state_;
};

} // namespace vorlund
