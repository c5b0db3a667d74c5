// The process of a scan. A port supplies this in a file ScanProcess_<system>.cpp; what its answers mean is
// PluginScan.cpp's part. Nothing here raises, except std::bad_alloc.
//
// The process inherits the pipe and nothing else: no other descriptor or handle, no signal that is held back,
// and the null device for its standard streams. When this process ends, it ends too, at the latest after its
// own limit.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vorlund {

class CScanProcess {
public:
    /// Starts the program `helper` for the plug-in `file`.
    CScanProcess(const wchar* helper, const wchar* file);
    CScanProcess(const CScanProcess&) = delete;
    CScanProcess& operator=(const CScanProcess&) = delete;
    /// Kills it, and what it has started, if it still runs, and leaves nothing of it behind.
    ~CScanProcess();

    bool IsStarted() const;
    /// Why it is not, by the system's number.
    std::int32_t GetError() const;

    /// Takes at most `size` bytes of what it has written; 0 when there are none now. Waits for nothing.
    std::size_t Read(void* buffer, std::size_t size);
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
