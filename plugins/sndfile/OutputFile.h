// A stream of ours as libsndfile writes to it.
#pragma once

#include <vorlund/Stream.h>

#include <sndfile.h>

#include <cstdint>
#include <exception>
#include <vector>

/// Byte 0 is where the stream stands at first. Exceptions of the stream must not pass through libsndfile: the
/// first one is kept, nothing is written after it, and `RethrowFailure` raises it again.
class COutputFile {
public:
    /// `stream` can seek and tell, and lives during each call. Raises what it raises.
    explicit COutputFile(vorlund::IOutputStream& stream);

    /// What `sf_open_virtual` takes, with `this`.
    static SF_VIRTUAL_IO* GetCallbacks();

    /// Raises what the stream has raised since the last call, if anything.
    void RethrowFailure();
    /// From now on the stream is not used any more.
    void Abandon() { isAbandoned_ = true; }

    std::int64_t GetLength() const { return length_; }
    std::int64_t Seek(std::int64_t position);
    std::int64_t GetPosition() const { return position_; }
    std::int64_t Write(const void* buffer, std::int64_t count);

    /// The first bytes of the file, as they were written last: at most `kMaxHead`.
    const std::vector<std::uint8_t>& GetHead() const { return head_; }
    static constexpr std::int64_t kMaxHead = 64 * 1024;

private:
    void KeepHead(const void* buffer, std::int64_t count);

    vorlund::IOutputStream& stream_;
    const std::int64_t start_;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
    bool isAbandoned_ = false;
    std::exception_ptr failure_;
    std::vector<std::uint8_t> head_;
};
