// A stream of ours as the libraries for pictures read it.
#pragma once

#include <vorlund/Stream.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>
#include <vector>

/// The bytes of a stream, from its first one on. Exceptions of the stream must not pass through a library
/// written in C: the first one is kept, everything after it reads as the end of the file, and
/// `RethrowFailure` raises it again.
class CPictureSource {
public:
    /// Reads the first bytes. The stream can seek, and lives during each call. Raises what it raises when it
    /// is asked for its length.
    explicit CPictureSource(vorlund::IInputStream& stream);

    /// The first bytes of the file, while nothing else has been read: enough to tell its kind.
    std::span<const std::uint8_t> GetHead() const { return block_; }
    std::int64_t GetLength() const { return length_; }

    /// False when the file ends before.
    bool ReadWhole(std::uint8_t* buffer, std::size_t size) noexcept;
    /// The next bytes, valid until the next call; none at the end.
    std::span<const std::uint8_t> ReadBlock() noexcept;

    /// Raises what the stream has raised, if anything.
    void RethrowFailure();

private:
    /// Fills the block when it is used up; false at the end.
    bool Fill() noexcept;

    vorlund::IInputStream& stream_;
    std::int64_t length_;
    std::vector<std::uint8_t> buffer_;
    /// What of the buffer has not been handed out.
    std::span<const std::uint8_t> block_;
    std::exception_ptr failure_;
};
