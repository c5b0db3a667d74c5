// A process of FFmpeg's programs, which reads a file and writes to a pipe.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

/// The full path of a program in a folder of PATH, the working folder excepted; empty when there is none.
std::string FindProgram(const std::string& name);

class CFfmpegProcess {
public:
    /// Starts `program`, a full path. It finds `file` as its descriptor 3, nothing to read, and nobody who
    /// reads its messages.
    CFfmpegProcess(const std::string& program, std::vector<std::string> arguments, int file);
    CFfmpegProcess(const CFfmpegProcess&) = delete;
    CFfmpegProcess& operator=(const CFfmpegProcess&) = delete;
    /// Kills it if it still runs.
    ~CFfmpegProcess();

    bool IsStarted() const { return process_ > 0; }

    /// At most `size` bytes of what it writes. 0 at its end, and -1 when it says nothing for 10 s.
    ssize_t Read(void* buffer, size_t size);
    /// After its end: whether it went well.
    bool HasSucceeded();

private:
    bool Reap(int options);

    pid_t process_ = -1;
    int pipe_ = -1;
    int status_ = -1;
};
