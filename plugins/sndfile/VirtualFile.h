// A stream of ours as libsndfile reads it.
#pragma once

#include <vorlund/Stream.h>

#include <sndfile.h>

#include <cstdint>
#include <exception>
#include <vector>

/// Gives libsndfile the bytes of a stream, with one part of them exchanged if need be. Exceptions of the
/// stream must not pass through libsndfile: the first one is kept, everything after it reads as the end of
/// the file, and `RethrowFailure` raises it again.
class CVirtualFile {
public:
    /// `stream` can seek and tell, and lives during each call. Nobody else needs to leave it where it is:
    /// each read goes to its own position.
    explicit CVirtualFile(vorlund::IInputStream& stream);

    /// Puts `bytes` in the place of the stream's bytes from `from` to `to`.
    void Exchange(std::int64_t from, std::int64_t to, std::vector<std::uint8_t> bytes);

    /// What `sf_open_virtual` takes, with `this`.
    static SF_VIRTUAL_IO* GetCallbacks();

    /// Raises what the stream has raised since the last call, if anything.
    void RethrowFailure();

    std::int64_t GetLength() const { return length_; }
    std::int64_t Seek(std::int64_t position);
    std::int64_t GetPosition() const { return position_; }
    /// As many bytes as there are, at most `count`.
    std::int64_t Read(void* buffer, std::int64_t count);

private:
    std::int64_t ReadStream(std::uint8_t* buffer, std::int64_t position, std::int64_t count);

    vorlund::IInputStream& stream_;
    /// The part that is exchanged: where it begins, what stands there, and how much further the stream is
    /// behind it.
    std::int64_t exchangedAt_ = 0;
    std::vector<std::uint8_t> exchanged_;
    std::int64_t shift_ = 0;
    std::int64_t length_ = 0;
    std::int64_t position_ = 0;
    std::exception_ptr failure_;
};
